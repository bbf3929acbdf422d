#include "klv/streams/stream.h"

#include "klv/base/buffer.h"
#include "klv/streams/compression/compression_frame.h"
#include "klv/streams/compression/explode.h"
#include "klv/streams/compression/implode.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace klv {

void vSTREAM::SwapULong(std::uint32_t* value) noexcept
{
    *value = *value >> 24 | (*value >> 8 & 0xFF00) | (*value << 8 & 0xFF0000) | *value << 24;
}

void vSTREAM::SwapUWord(std::uint16_t* value) noexcept
{
    *value = static_cast<std::uint16_t>((*value >> 8 | *value << 8) & 0xFFFF);
}

void vSTREAM::SwapSLong(std::int32_t* value) noexcept
{
    auto bits = static_cast<std::uint32_t>(*value);
    SwapULong(&bits);
    *value = static_cast<std::int32_t>(bits);
}

void vSTREAM::SwapSWord(std::int16_t* value) noexcept
{
    auto bits = static_cast<std::uint16_t>(*value);
    SwapUWord(&bits);
    *value = static_cast<std::int16_t>(bits);
}

std::uint32_t vSTREAM::write_block(const std::uint8_t* data, std::uint32_t size) noexcept
{
    // Room for a frame whose data is one byte shorter than the block, the longest that is kept.
    vBUFFER<std::uint8_t> frame;
    if (size == 0 || !frame.resize_uninitialized(std::size_t{compression_frame::header_size} + size - 1))
        return WritePlain(data, size);
    const auto imploded = implode({data, size}, frame.span().subspan(compression_frame::header_size));
    if (!imploded)
        return WritePlain(data, size);

    const compression_frame kept{static_cast<std::uint32_t>(*imploded)};
    const auto header = kept.header();
    std::copy(header.begin(), header.end(), frame.begin());
    const auto whole = compression_frame::header_size + kept.size;
    return WritePlain(frame.data(), whole) == whole ? kept.size : 0;
}

// The frame that starts at a position, when the stream holds all of it. The stream is left at its data.
std::optional<compression_frame> vSTREAM::frame_at(std::uint32_t start) noexcept
{
    std::array<std::uint8_t, compression_frame::header_size> header;
    MoveFromStart(start);
    if (ReadPlain(header.data(), compression_frame::header_size) != compression_frame::header_size)
        return std::nullopt;
    const auto frame = compression_frame::read(header);
    const bool whole = frame && frame->size <= Size() - CurrentPos();
    return whole ? frame : std::nullopt;
}

// The next size bytes, in place or read into buffer. Nothing, and a read error, when they can't be had.
std::optional<std::span<const std::uint8_t>> vSTREAM::fetch(
    std::uint32_t size, vBUFFER<std::uint8_t>& buffer) noexcept
{
    if (const auto in_place = View(size); in_place.size() == size)
        return in_place;
    if (buffer.resize_uninitialized(size) && ReadPlain(buffer.data(), size) == size)
        return buffer.span();
    status_ = vSTREAM_READ_ERROR;
    return std::nullopt;
}

std::int32_t vSTREAM::read_block(std::uint8_t* buffer, std::uint32_t size) noexcept
{
    read_was_compressed_ = 0;
    const auto got = ReadPlain(buffer, size);
    if (got < compression_frame::marker_size || !compression_frame::begins({buffer, got}))
        return static_cast<std::int32_t>(got);

    // A frame may be longer than the block that it stands for, so it is fetched on its own.
    const auto status = status_;
    const auto start = CurrentPos() - got;
    const auto frame = frame_at(start);
    if (!frame) {
        MoveFromStart(start + got);
        status_ = status;
        return static_cast<std::int32_t>(got);
    }

    read_was_compressed_ = 1;
    vBUFFER<std::uint8_t> fetched;
    const auto imploded = fetch(frame->size, fetched);
    if (!imploded)
        return 0;
    const auto block = explode(*imploded, {buffer, size});
    MoveFromStart(start + compression_frame::header_size + frame->size);
    if (block.state == explode_state::damaged)
        status_ = vSTREAM_READ_ERROR;
    else if (block.size < size)
        status_ = vSTREAM_END;
    else if (status_ == vSTREAM_END)
        status_ = vSTREAM_OK;
    return static_cast<std::int32_t>(block.size);
}

// Writes bytes as one block. A frame counts as written whatever its length.
bool vSTREAM::write_whole(const std::uint8_t* data, std::uint32_t size) noexcept
{
    const auto written = WriteBlock(data, size);
    const bool whole = compress_ ? written > 0 : written == size;
    if (!whole)
        status_ = vSTREAM_WRITE_ERROR;
    return whole;
}

// Writes the block that this stream's imploded bytes stand for into target.
bool vSTREAM::decode_into(vSTREAM& target, std::span<const std::uint8_t> imploded) noexcept
{
    std::array<std::uint8_t, 3 * exploder::window_size> window;
    exploder decoder(imploded);
    std::size_t history = 0;
    while (decoder.state() == explode_state::more) {
        const auto end = decoder.decode(window, history);
        const auto fresh = static_cast<std::uint32_t>(end - history);
        if (fresh > 0 && !target.write_whole(window.data() + history, fresh))
            return false;
        history = std::min(end, exploder::window_size);
        std::memmove(window.data(), window.data() + (end - history), history);
    }
    if (decoder.state() == explode_state::damaged)
        status_ = vSTREAM_READ_ERROR;
    return decoder.state() == explode_state::complete;
}

void vSTREAM::copy_rest_of(vSTREAM& source, std::uint32_t small_chunk) noexcept
{
    if (&source == this || source.AtEnd())
        return;
    // The size does not count bytes that wait in the write cache of the source.
    const auto left = source.Size() > source.CurrentPos() ? source.Size() - source.CurrentPos() : small_chunk;
    vBUFFER<std::uint8_t> chunk;
    if (!chunk.resize_uninitialized(left) && !chunk.resize_uninitialized(small_chunk))
        return;

    source.status_ = vSTREAM_OK;
    bool done = true;
    while (done && !source.AtEnd()) {
        const auto start = source.CurrentPos();
        const auto frame = compress_ ? std::nullopt : source.frame_at(start);
        if (frame) {
            vBUFFER<std::uint8_t> fetched;
            const auto imploded = source.fetch(frame->size, fetched);
            done = imploded && source.decode_into(*this, *imploded);
            source.MoveFromStart(start + compression_frame::header_size + frame->size);
        } else {
            source.MoveFromStart(start);
            const auto got = source.ReadPlain(chunk.data(), static_cast<std::uint32_t>(chunk.size()));
            done = got > 0 && write_whole(chunk.data(), got);
        }
    }
    if (source.status_ != vSTREAM_READ_ERROR)
        source.status_ = vSTREAM_OK;
}

vSTREAM& vSTREAM::operator=(vSTREAM& source) noexcept
{
    constexpr std::uint32_t small_chunk = 1000;
    copy_rest_of(source, small_chunk);
    return *this;
}

} // namespace klv
