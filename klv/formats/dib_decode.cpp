#include "klv/formats/dib_decode.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace klv {

masked_pixels::channel::channel(std::uint32_t channel_mask)
    : mask(channel_mask)
    , shift(channel_mask == 0 ? 0 : std::countr_zero(channel_mask))
    , greatest(channel_mask >> shift)
{
    for (std::uint32_t raw = 0; raw <= greatest && raw < small.size() && greatest != 0; ++raw)
        small[raw] = static_cast<std::uint8_t>((raw * 255 + greatest / 2) / greatest);
}

masked_pixels::masked_pixels(const channel_masks& masks, unsigned bits)
    : red_(masks.red)
    , green_(masks.green)
    , blue_(masks.blue)
    , wide_(bits == 32)
    , plain_bgr_(
          bits == 32 && masks.red == 0x00FF0000 && masks.green == 0x0000FF00 && masks.blue == 0x000000FF)
{
}

void masked_pixels::to_24(const std::uint8_t* source, std::uint8_t* line, std::int32_t width) const
{
    if (plain_bgr_) {
        for (std::int32_t x = 0; x < width; ++x, source += 4, line += 3) {
            line[0] = source[0];
            line[1] = source[1];
            line[2] = source[2];
        }
        return;
    }
    for (std::int32_t x = 0; x < width; ++x, line += 3) {
        std::uint32_t pixel = source[0] | std::uint32_t{source[1]} << 8;
        if (wide_)
            pixel |= std::uint32_t{source[2]} << 16 | std::uint32_t{source[3]} << 24;
        source += wide_ ? 4 : 2;
        line[0] = blue_.value(pixel);
        line[1] = green_.value(pixel);
        line[2] = red_.value(pixel);
    }
}

namespace {

constexpr std::uint8_t escape = 0;
constexpr std::uint8_t end_of_row = 0;
constexpr std::uint8_t end_of_bitmap = 1;
constexpr std::uint8_t delta = 2;
/// A count is a byte; a pixel has three bytes at most.
constexpr std::size_t most_literal_bytes = 255 * 3;

void put_nibble(std::uint8_t* row, std::uint32_t x, int value)
{
    std::uint8_t& byte = row[x / 2];
    byte = static_cast<std::uint8_t>(x % 2 == 0 ? (byte & 0x0F) | value << 4 : (byte & 0xF0) | value);
}

/// Data that is there as a whole.
class one_piece final : public byte_pieces {
public:
    explicit one_piece(std::span<const std::uint8_t> data)
        : data_(data)
    {
    }
    std::span<const std::uint8_t> next() override { return std::exchange(data_, {}); }

private:
    std::span<const std::uint8_t> data_;
};

} // namespace

run_length_rows::run_length_rows(byte_pieces& source, unsigned bits, std::int32_t width)
    : source_(source)
    , bits_(bits)
    , width_(static_cast<std::uint32_t>(std::max(width, 0)))
{
}

bool run_length_rows::read(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        if (piece_.empty())
            piece_ = source_.next();
        if (piece_.empty())
            return false;
        const std::size_t count = std::min(bytes.size(), piece_.size());
        std::copy_n(piece_.begin(), count, bytes.begin());
        piece_ = piece_.subspan(count);
        bytes = bytes.subspan(count);
    }
    return true;
}

bool run_length_rows::next(std::uint8_t* row)
{
    if (rows_to_skip_ > 0) {
        --rows_to_skip_;
        return true;
    }
    while (!ended_) {
        std::array<std::uint8_t, 2> code{};
        if (!read(code))
            return false;
        const std::uint8_t value = code[1];
        if (code[0] != escape) {
            if (!run(row, code[0], value))
                return false;
        } else if (value == end_of_row) {
            x_ = 0;
            return true;
        } else if (value == end_of_bitmap) {
            ended_ = true;
        } else if (value == delta) {
            std::array<std::uint8_t, 2> move{};
            if (!read(move))
                return false;
            x_ = std::min(x_ + move[0], width_);
            if (move[1] > 0) {
                rows_to_skip_ = move[1] - 1U;
                return true;
            }
        } else if (!literals(row, value)) {
            return false;
        }
    }
    return true;
}

bool run_length_rows::run(std::uint8_t* row, std::uint32_t count, std::uint8_t first)
{
    std::array<std::uint8_t, 3> pixel{first};
    if (bits_ == 24 && !read(std::span(pixel).subspan(1)))
        return false;
    put(row, pixel.data(), count, true);
    return true;
}

/// Literal pixels, padded to a whole number of 16-bit words.
bool run_length_rows::literals(std::uint8_t* row, std::uint32_t count)
{
    std::array<std::uint8_t, most_literal_bytes> pixels{};
    const std::size_t size = (std::size_t{count} * bits_ + 7) / 8;
    if (!read(std::span(pixels).first(size)))
        return false;
    put(row, pixels.data(), count, false);
    std::array<std::uint8_t, 1> padding{};
    if (size % 2 != 0)
        (void)read(padding);
    return true;
}

void run_length_rows::put(std::uint8_t* row, const std::uint8_t* pixels, std::uint32_t count, bool repeated)
{
    count = std::min(count, width_ - x_);
    if (bits_ == 4) {
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint8_t pair = pixels[repeated ? 0 : i / 2];
            put_nibble(row, x_ + i, i % 2 == 0 ? pair >> 4 : pair & 0x0F);
        }
    } else if (bits_ == 8 && repeated) {
        std::memset(row + x_, pixels[0], count);
    } else {
        const std::size_t bytes = bits_ / 8;
        for (std::uint32_t i = 0; i < count && repeated; ++i)
            std::copy_n(pixels, bytes, row + (x_ + i) * bytes);
        if (!repeated)
            std::copy_n(pixels, count * bytes, row + x_ * bytes);
    }
    x_ += count;
}

bool decode_run_lengths(std::span<const std::uint8_t> data, unsigned bits, std::int32_t width,
    std::int32_t height, std::uint8_t* rows, std::size_t stride)
{
    one_piece source(data);
    run_length_rows decoder(source, bits, width);
    for (std::int32_t y = 0; y < height; ++y)
        if (!decoder.next(rows + stride * static_cast<std::size_t>(y)))
            return false;
    return true;
}

} // namespace klv
