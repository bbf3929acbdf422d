#pragma once

#include "klv/base/memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

namespace klv {

/// Owns an array of plain values on vMemAlloc. Growth answers true or false and never throws; on false the
/// contents are unchanged. Copying may fail too, hence only by copy_from. Moving leaves the source empty.
template <class T> class vBUFFER {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
    static_assert(alignof(T) <= alignof(std::max_align_t));

public:
    vBUFFER() noexcept = default;
    ~vBUFFER() { vMemFree(data_); }
    vBUFFER(const vBUFFER&) = delete;
    vBUFFER& operator=(const vBUFFER&) = delete;
    vBUFFER(vBUFFER&& other) noexcept { swap(other); }
    vBUFFER& operator=(vBUFFER&& other) noexcept
    {
        vBUFFER(std::move(other)).swap(*this);
        return *this;
    }

    void swap(vBUFFER& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    [[nodiscard]] T* data() noexcept { return data_; }
    [[nodiscard]] const T* data() const noexcept { return data_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] T& operator[](std::size_t i) noexcept { return data_[i]; }
    [[nodiscard]] const T& operator[](std::size_t i) const noexcept { return data_[i]; }
    [[nodiscard]] T& back() noexcept { return data_[size_ - 1]; }
    [[nodiscard]] const T& back() const noexcept { return data_[size_ - 1]; }
    [[nodiscard]] T* begin() noexcept { return data_; }
    [[nodiscard]] T* end() noexcept { return data_ + size_; }
    [[nodiscard]] const T* begin() const noexcept { return data_; }
    [[nodiscard]] const T* end() const noexcept { return data_ + size_; }
    [[nodiscard]] std::span<T> span() noexcept { return {data_, size_}; }
    [[nodiscard]] std::span<const T> span() const noexcept { return {data_, size_}; }

    /// Makes room for exactly count items in all, unless there is more already.
    [[nodiscard]] bool reserve(std::size_t count) noexcept
    {
        if (count <= capacity_)
            return true;
        if (count > max_count)
            return false;
        void* block = vMemRealloc(data_, static_cast<std::uint32_t>(count * sizeof(T)));
        if (!block)
            return false;
        data_ = static_cast<T*>(block);
        capacity_ = count;
        return true;
    }

    /// Sets the number of items; new ones are zero-filled.
    [[nodiscard]] bool resize(std::size_t count) noexcept
    {
        const std::size_t old = size_;
        if (!resize_uninitialized(count))
            return false;
        if (count > old)
            std::memset(static_cast<void*>(data_ + old), 0, (count - old) * sizeof(T));
        return true;
    }

    /// Sets the number of items; new ones hold anything and must be written before they are read.
    [[nodiscard]] bool resize_uninitialized(std::size_t count) noexcept
    {
        if (!reserve(count))
            return false;
        size_ = count;
        return true;
    }

    /// Appends one item; the capacity grows by half, so that appending is linear in the whole.
    [[nodiscard]] bool push_back(const T& item) noexcept
    {
        const T copy = item;
        if (size_ == capacity_ && !grow_for(1))
            return false;
        data_[size_++] = copy;
        return true;
    }

    /// Appends items, which must not lie in this buffer.
    [[nodiscard]] bool append(std::span<const T> items) noexcept
    {
        if (items.empty())
            return true;
        if (items.size() > capacity_ - size_ && !grow_for(items.size()))
            return false;
        std::memcpy(static_cast<void*>(data_ + size_), items.data(), items.size_bytes());
        size_ += items.size();
        return true;
    }

    /// Replaces the contents by items, which must not lie in this buffer.
    [[nodiscard]] bool assign(std::span<const T> items) noexcept
    {
        if (!reserve(items.size()))
            return false;
        size_ = 0;
        return append(items);
    }
    [[nodiscard]] bool copy_from(const vBUFFER& other) noexcept
    {
        return this == &other || assign(other.span());
    }

    /// Empties the buffer and keeps its memory.
    void clear() noexcept { size_ = 0; }
    /// Drops items from the end.
    void truncate(std::size_t count) noexcept { size_ = std::min(size_, count); }
    /// Empties the buffer and frees its memory.
    void release() noexcept { vBUFFER().swap(*this); }

private:
    static constexpr std::size_t max_count = std::numeric_limits<std::uint32_t>::max() / sizeof(T);

    bool grow_for(std::size_t more) noexcept
    {
        if (more > max_count - size_)
            return false;
        constexpr std::size_t least = 16;
        const std::size_t needed = size_ + more;
        return reserve(
            std::min(std::max({needed, capacity_ + capacity_ / 2, least}), std::size_t{max_count}));
    }

    T* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace klv
