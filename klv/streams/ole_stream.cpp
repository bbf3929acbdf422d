#include "klv/streams/ole_stream.h"

#include <algorithm>

namespace klv {

namespace {

std::uint32_t limited(std::uint64_t value)
{
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, UINT32_MAX));
}

} // namespace

vOLESTREAM::vOLESTREAM(IStream* const* stream, const vSTRING& name, std::uint32_t) noexcept
    : typed_stream(name)
    , stream_(stream ? *stream : nullptr)
{
    STATSTG statistics{};
    std::uint64_t position = 0;
    if (!stream_ || FAILED(stream_->Stat(&statistics, STATFLAG_NONAME))
        || FAILED(stream_->Seek(0, STREAM_SEEK_CUR, &position))) {
        set_status(vSTREAM_OPEN_ERROR);
        return;
    }
    size_ = limited(statistics.cbSize);
    position_ = limited(position);
}

bool vOLESTREAM::seek(std::uint32_t position) noexcept
{
    return stream_ && SUCCEEDED(stream_->Seek(position, STREAM_SEEK_SET, nullptr));
}

std::uint32_t vOLESTREAM::get(std::uint8_t* to, std::uint32_t size) noexcept
{
    const auto wanted = std::min(size, size_ - std::min(position_, size_));
    std::uint32_t read = 0;
    if (wanted > 0 && (!seek(position_) || FAILED(stream_->Read(to, wanted, &read)))) {
        set_status(vSTREAM_READ_ERROR);
        return 0;
    }
    position_ += read;
    if (read < size)
        set_status(vSTREAM_END);
    return read;
}

std::uint32_t vOLESTREAM::put(const std::uint8_t* from, std::uint32_t size) noexcept
{
    std::uint32_t written = 0;
    if (!stream_ || FAILED(stream_->Write(from, size, &written)))
        return 0;
    position_ += written;
    size_ = std::max(size_, position_);
    return written;
}

std::uint32_t vOLESTREAM::MoveFromCur(std::int32_t distance) noexcept
{
    position_ += static_cast<std::uint32_t>(distance);
    return seek(position_) ? position_ : 0;
}

std::uint32_t vOLESTREAM::MoveFromStart(std::uint32_t position) noexcept
{
    if (!seek(position))
        return 0;
    return position_ = position;
}

std::uint32_t vOLESTREAM::MoveFromEnd(std::int32_t distance) noexcept
{
    position_ = size_ + static_cast<std::uint32_t>(distance);
    return seek(position_) ? position_ : 0;
}

} // namespace klv
