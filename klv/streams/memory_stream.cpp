#include "klv/streams/memory_stream.h"

#include "klv/base/wrapping.h"
#include "klv/streams/file.h"

#include <algorithm>

namespace klv {

vMEMSTREAM::vMEMSTREAM() noexcept = default;

vMEMSTREAM::vMEMSTREAM(const vSTRING& name, std::uint32_t) noexcept
    : typed_stream(name)
{
}

vMEMSTREAM::vMEMSTREAM(
    std::uint8_t** slot, std::uint32_t size, const vSTRING& name, int growable, std::uint32_t) noexcept
    : typed_stream(name)
    , bytes_(shared_bytes::borrow(slot, size, growable != 0))
    , size_(bytes_ ? size : 0)
    , capacity_(size_)
    , growable_(growable != 0)
{
    if (!bytes_)
        set_status(vSTREAM_OPEN_ERROR);
    allow_writing();
}

vMEMSTREAM::vMEMSTREAM(const vMEMSTREAM& other) noexcept
    : typed_stream(other)
    , bytes_(other.bytes_)
    , position_(other.position_)
    , size_(other.size_)
    , capacity_(other.capacity_)
    , growable_(other.growable_)
{
    if (bytes_)
        bytes_->add_reference();
    share_overflow(other);
    allow_writing();
}

vMEMSTREAM& vMEMSTREAM::operator=(vMEMSTREAM& source) noexcept
{
    if (this == &source)
        return *this;
    if (source.bytes_)
        source.bytes_->add_reference();
    release_bytes();
    share_overflow(source);
    bytes_ = source.bytes_;
    position_ = 0;
    size_ = source.size_;
    capacity_ = source.capacity_;
    growable_ = source.growable_;
    allow_writing();
    MoveFromStart(0);
    return *this;
}

vMEMSTREAM::~vMEMSTREAM() { release_bytes(); }

void vMEMSTREAM::share_overflow(const vMEMSTREAM& other) noexcept
{
    overflow_.reset(other.overflow_ ? new vFILE(*other.overflow_) : nullptr);
    if (other.overflow_ && !overflow_)
        set_status(vSTREAM_OPEN_ERROR);
}

void vMEMSTREAM::release_bytes() noexcept
{
    if (bytes_)
        bytes_->release();
    bytes_ = nullptr;
    writable_end_ = 0;
}

void vMEMSTREAM::allow_writing() noexcept { writable_end_ = bytes_ && !locked_ ? capacity_ : 0; }

// Does on the temporary file what was asked of this stream, and takes its status.
template <class Operation> auto vMEMSTREAM::pass_on(Operation operation) noexcept
{
    const auto answer = operation(*overflow_);
    set_status(overflow_->Status());
    return answer;
}

std::uint32_t vMEMSTREAM::get_rest(std::uint8_t* to, std::uint32_t size) noexcept
{
    if (overflow_)
        return pass_on([&](vFILE& file) { return file.ReadPlain(to, size); });
    const auto count = std::min(size, size_ - position_);
    if (count > 0)
        std::memcpy(to, bytes_->data() + position_, count);
    position_ += count;
    if (count < size)
        set_status(vSTREAM_END);
    return count;
}

std::uint32_t vMEMSTREAM::update(const std::uint8_t* from, std::uint32_t size) noexcept
{
    if (locked_ || size == 0)
        return 0;
    if (!overflow_ && !make_room(size)) {
        set_status(vSTREAM_OPEN_ERROR);
        return 0;
    }
    if (overflow_)
        return pass_on([&](vFILE& file) { return file.WritePlain(from, size); });
    std::memcpy(bytes_->data() + position_, from, size);
    position_ += size;
    size_ = std::max(size_, position_);
    return size;
}

// Lets size bytes be written at the position: in the buffer, or in the temporary file that takes its place.
bool vMEMSTREAM::make_room(std::uint32_t size) noexcept
{
    const auto end = std::uint64_t{position_} + size;
    if (!growable_)
        return bytes_ && end <= capacity_;

    auto capacity = std::uint64_t{capacity_};
    if (capacity <= end) {
        capacity += growth_step + size;
        const bool own = !bytes_ || !bytes_->borrowed();
        if (own && capacity >= spill_limit)
            return spill();
    }
    if (capacity > UINT32_MAX)
        return false;
    const auto needed = static_cast<std::uint32_t>(capacity);
    if (!bytes_)
        bytes_ = shared_bytes::make(needed);
    else if (!bytes_->reserve(needed))
        return false;
    if (!bytes_)
        return false;
    capacity_ = needed;
    allow_writing();
    return true;
}

// Moves the bytes to a temporary file; on failure they stay where they are.
bool vMEMSTREAM::spill() noexcept
{
    std::unique_ptr<vFILE> file(new vFILE);
    if (!file || file->Status() != vSTREAM_OK)
        return false;
    if (size_ > 0 && file->WritePlain(bytes_->data(), size_) != size_)
        return false;
    file->MoveFromStart(position_);
    overflow_ = std::move(file);
    release_bytes();
    position_ = 0;
    size_ = 0;
    return true;
}

std::uint32_t vMEMSTREAM::overflow_position() const noexcept { return overflow_->CurrentPos(); }
std::uint32_t vMEMSTREAM::overflow_size() const noexcept { return overflow_->Size(); }

std::uint32_t vMEMSTREAM::MoveFromCur(std::int32_t distance) noexcept
{
    if (overflow_)
        return pass_on([&](vFILE& file) { return file.MoveFromCur(distance); });
    return MoveFromStart(position_ + static_cast<std::uint32_t>(distance));
}

std::uint32_t vMEMSTREAM::MoveFromStart(std::uint32_t position) noexcept
{
    if (overflow_)
        return pass_on([&](vFILE& file) { return file.MoveFromStart(position); });
    if (Status() == vSTREAM_END)
        set_status(vSTREAM_OK);
    if (position > size_)
        set_status(vSTREAM_END);
    return position_ = std::min(position, size_);
}

std::uint32_t vMEMSTREAM::MoveFromEnd(std::int32_t distance) noexcept
{
    if (overflow_)
        return pass_on([&](vFILE& file) { return file.MoveFromEnd(wrap_neg(distance)); });
    const auto target = std::int64_t{size_} - distance;
    return position_ = static_cast<std::uint32_t>(std::clamp<std::int64_t>(target, 0, size_));
}

std::span<const std::uint8_t> vMEMSTREAM::View(std::uint32_t size) noexcept
{
    if (overflow_)
        return overflow_->View(size);
    if (!bytes_)
        return {};
    return {bytes_->data() + position_, std::min(size, size_ - position_)};
}

int vMEMSTREAM::LockStream(std::uint8_t** address) noexcept
{
    *address = nullptr;
    if (overflow_ || (!bytes_ && !make_room(0)))
        return 0;
    *address = bytes_->data();
    locked_ = true;
    allow_writing();
    return 1;
}

void vMEMSTREAM::ReleaseStream() noexcept
{
    locked_ = false;
    allow_writing();
}

} // namespace klv
