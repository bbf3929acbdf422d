#include "klv/streams/shared_bytes.h"

#include "klv/base/memory.h"

#include <algorithm>
#include <new>

namespace klv {

shared_bytes* shared_bytes::make(std::uint32_t capacity) noexcept
{
    void* place = vMemAlloc(sizeof(shared_bytes));
    if (!place)
        return nullptr;
    auto* bytes = new (place) shared_bytes;
    if (!bytes->reserve(capacity)) {
        bytes->release();
        return nullptr;
    }
    return bytes;
}

shared_bytes* shared_bytes::borrow(std::uint8_t** slot, std::uint32_t capacity, bool growable) noexcept
{
    void* place = vMemAlloc(sizeof(shared_bytes));
    if (!place)
        return nullptr;
    auto* bytes = new (place) shared_bytes;
    bytes->data_ = *slot;
    bytes->allocated_ = capacity;
    bytes->slot_ = slot;
    bytes->growable_ = growable;
    return bytes;
}

void shared_bytes::release() noexcept
{
    if (slot_ && growable_)
        *slot_ = data_;
    if (--references_ > 0)
        return;
    if (!slot_)
        vMemFree(data_);
    vMemFree(this);
}

bool shared_bytes::reserve(std::uint32_t capacity) noexcept
{
    if (capacity <= allocated_)
        return true;
    if (!growable_)
        return false;
    const auto generous
        = static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{allocated_} * 3 / 2, UINT32_MAX));
    auto wanted = std::max(capacity, generous);
    void* block = vMemRealloc(data_, wanted);
    if (!block && wanted > capacity) {
        wanted = capacity;
        block = vMemRealloc(data_, wanted);
    }
    if (!block)
        return false;
    data_ = static_cast<std::uint8_t*>(block);
    allocated_ = wanted;
    return true;
}

} // namespace klv
