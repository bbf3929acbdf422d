#pragma once

#include "klv/streams/shared_bytes.h"
#include "klv/streams/typed_stream.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace klv {

class vFILE;

/// A stream in memory, its own or a caller's. Its own grows, and moves once to a temporary file when its
/// capacity would reach spill_limit bytes.
class vMEMSTREAM : public typed_stream<vMEMSTREAM> {
public:
    static constexpr std::uint32_t spill_limit = 100'000'000;
    static constexpr bool swaps_on_reading = true;

    vMEMSTREAM() noexcept;
    explicit vMEMSTREAM(const vSTRING& name, std::uint32_t = 0) noexcept;
    /// Works on the caller's buffer of size bytes at *slot, which the caller keeps. A growable buffer comes
    /// from vMemAlloc; where it moved to is written back to *slot when the stream is destroyed.
    vMEMSTREAM(std::uint8_t** slot, std::uint32_t size, const vSTRING& name = vSTRING(), int growable = 1,
        std::uint32_t = 0) noexcept;
    /// Refers to the same bytes, which the last stream that refers to them frees. The copy has its own
    /// position, size and lock.
    vMEMSTREAM(const vMEMSTREAM& other) noexcept;
    ~vMEMSTREAM() override;

    using typed_stream::operator=;
    /// Refers to the bytes of source from now on, positioned at their start.
    vMEMSTREAM& operator=(vMEMSTREAM& source) noexcept;

    std::uint32_t MoveFromCur(std::int32_t distance) noexcept final;
    std::uint32_t MoveFromStart(std::uint32_t position) noexcept final;
    /// Moves to distance bytes before the end, kept within the data.
    std::uint32_t MoveFromEnd(std::int32_t distance) noexcept final;
    std::uint32_t CurrentPos() const noexcept final { return overflow_ ? overflow_position() : position_; }
    std::uint32_t Size() const noexcept final { return overflow_ ? overflow_size() : size_; }
    int AtEnd() const noexcept final { return CurrentPos() >= Size(); }
    std::span<const std::uint8_t> View(std::uint32_t size) noexcept final;

    /// Bytes that can be held before the next growth step.
    std::uint32_t Capacity() const noexcept { return capacity_; }
    /// \return whether the stream has moved to a temporary file.
    bool Spilled() const noexcept { return overflow_ != nullptr; }

protected:
    int LockStream(std::uint8_t** address) noexcept override;
    void ReleaseStream() noexcept override;

private:
    friend class typed_stream<vMEMSTREAM>;
    static constexpr std::uint32_t initial_capacity = 10;
    static constexpr std::uint32_t growth_step = 1024;

    std::uint32_t get(std::uint8_t* to, std::uint32_t size) noexcept
    {
        if (size != 0 && size <= size_ - position_) [[likely]] {
            std::memcpy(to, bytes_->data() + position_, size);
            position_ += size;
            return size;
        }
        return get_rest(to, size);
    }
    std::uint32_t put(const std::uint8_t* from, std::uint32_t size) noexcept
    {
        if (size != 0 && std::uint64_t{position_} + size < writable_end_) [[likely]] {
            std::memcpy(bytes_->data() + position_, from, size);
            position_ += size;
            if (position_ > size_)
                size_ = position_;
            return size;
        }
        return update(from, size);
    }

    std::uint32_t get_rest(std::uint8_t* to, std::uint32_t size) noexcept;
    std::uint32_t update(const std::uint8_t* from, std::uint32_t size) noexcept;
    bool make_room(std::uint32_t size) noexcept;
    bool spill() noexcept;
    void allow_writing() noexcept;
    void release_bytes() noexcept;
    void share_overflow(const vMEMSTREAM& other) noexcept;
    std::uint32_t overflow_position() const noexcept;
    std::uint32_t overflow_size() const noexcept;
    template <class Operation> auto pass_on(Operation operation) noexcept;

    shared_bytes* bytes_ = nullptr; // made by the first write of an own stream
    std::uint32_t position_ = 0; // never past size_
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = initial_capacity;
    std::uint32_t writable_end_ = 0; // capacity_ while bytes_ may be written in place, else 0
    std::unique_ptr<vFILE> overflow_; // once set, bytes_ is gone and position_ and size_ are 0
    bool growable_ = true;
    bool locked_ = false;
};

} // namespace klv
