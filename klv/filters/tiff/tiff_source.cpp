#include "klv/filters/tiff/tiff_source.h"

#include "klv/streams/stream.h"

#include <algorithm>

namespace klv {

tiff_source::tiff_source(vSTREAM& stream) noexcept
    : stream_(stream)
    , start_(stream.CurrentPos())
{
    size_ = stream.Size() - std::min(stream.Size(), start_);
    in_memory_ = stream.View(size_);
    if (in_memory_.size() < size_)
        in_memory_ = {};
}

std::span<const std::uint8_t> tiff_source::bytes(
    std::uint32_t position, std::size_t count, tiff_buffer& buffer)
{
    if (position > size_ || count > size_ - position)
        return {};
    if (!in_memory_.empty())
        return in_memory_.subspan(position, count);
    buffer.resize(count);
    if (read(position, buffer) != count)
        return {};
    return buffer;
}

std::size_t tiff_source::read(std::uint32_t position, std::span<std::uint8_t> to) noexcept
{
    if (position >= size_)
        return 0;
    const std::size_t wanted = std::min<std::size_t>(to.size(), size_ - position);
    if (!in_memory_.empty()) {
        std::copy_n(in_memory_.begin() + position, wanted, to.begin());
        return wanted;
    }
    stream_.MoveFromStart(start_ + position);
    return std::min<std::size_t>(stream_.ReadPlain(to.data(), static_cast<std::uint32_t>(wanted)), wanted);
}

void tiff_cursor::seek(std::uint32_t position) noexcept
{
    window_ = {};
    read_to_ = position;
}

bool tiff_cursor::read(std::span<std::uint8_t> to)
{
    const std::size_t at_hand = std::min(window_.size(), to.size());
    std::copy_n(window_.begin(), at_hand, to.begin());
    skip(at_hand);
    const auto rest = to.subspan(at_hand);
    if (rest.empty())
        return true;
    const std::size_t got = source_->read(read_to_, rest);
    seek(read_to_ + static_cast<std::uint32_t>(got));
    return got == rest.size();
}

void tiff_cursor::refill()
{
    const auto file = source_->in_memory();
    if (!file.empty()) {
        const std::uint32_t at = position();
        window_ = file.subspan(std::min<std::size_t>(at, file.size()));
        read_to_ = at + static_cast<std::uint32_t>(window_.size());
        return;
    }
    if (buffer_.empty())
        buffer_.resize(longest_view);
    std::ranges::copy(window_, buffer_.begin());
    const std::size_t got = source_->read(read_to_, std::span(buffer_).subspan(window_.size()));
    window_ = std::span<const std::uint8_t>(buffer_).first(window_.size() + got);
    read_to_ += static_cast<std::uint32_t>(got);
}

tiff_bits tiff_bits::refilled(tiff_bits bits)
{
    bits.move_cursor();
    const auto window = bits.in_->ahead(sizeof(std::uint64_t));
    bits.next_ = window.data();
    bits.end_ = bits.next_ + window.size();
    if (window.size() >= sizeof(std::uint64_t)) {
        bits.fill();
        return bits;
    }
    bits.bits_ = bits.held_ != 0 ? bits.bits_ & ~std::uint64_t{0} << (64 - bits.held_) : 0;
    for (; bits.next_ != bits.end_ && bits.held_ <= 64 - 8; ++bits.next_) {
        bits.held_ += 8;
        bits.bits_ |= std::uint64_t{*bits.next_} << (64 - bits.held_);
    }
    return bits;
}

} // namespace klv
