#include "platform/dib_decode.h"

#include "platform/byte_reader.h"

#include <algorithm>
#include <cstring>

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

/// Where run-length data is written: a position that may lie past the right edge, where nothing is stored.
class run_target {
public:
    run_target(unsigned bits, std::int32_t width, std::int32_t height, std::uint8_t* rows, std::size_t stride)
        : bits_(bits)
        , width_(static_cast<std::uint32_t>(std::max(width, 0)))
        , height_(static_cast<std::uint32_t>(std::max(height, 0)))
        , rows_(rows)
        , stride_(stride)
    {
    }

    [[nodiscard]] bool full() const { return y_ >= height_; }
    void next_row()
    {
        x_ = 0;
        ++y_;
    }
    void move(std::uint32_t dx, std::uint32_t dy)
    {
        x_ = std::min(x_ + dx, width_);
        y_ = std::min(y_ + dy, height_);
    }
    void run(std::uint32_t count, std::uint8_t value)
    {
        count = std::min(count, width_ - x_);
        if (bits_ == 8) {
            std::memset(row() + x_, value, count);
            x_ += count;
            return;
        }
        for (std::uint32_t i = 0; i < count; ++i)
            put_nibble(i % 2 == 0 ? value >> 4 : value & 0x0F);
    }
    void copy(std::span<const std::uint8_t> pixels, std::uint32_t count)
    {
        count = std::min(count, width_ - x_);
        if (bits_ == 8) {
            std::memcpy(row() + x_, pixels.data(), count);
            x_ += count;
            return;
        }
        for (std::uint32_t i = 0; i < count; ++i)
            put_nibble(i % 2 == 0 ? pixels[i / 2] >> 4 : pixels[i / 2] & 0x0F);
    }

private:
    [[nodiscard]] std::uint8_t* row() const { return rows_ + stride_ * y_; }
    void put_nibble(int value)
    {
        std::uint8_t& byte = row()[x_ / 2];
        byte = static_cast<std::uint8_t>(x_ % 2 == 0 ? (byte & 0x0F) | value << 4 : (byte & 0xF0) | value);
        ++x_;
    }

    unsigned bits_;
    std::uint32_t width_;
    std::uint32_t height_;
    std::uint8_t* rows_;
    std::size_t stride_;
    std::uint32_t x_ = 0; // at most width_
    std::uint32_t y_ = 0;
};

constexpr std::uint8_t escape = 0;
constexpr std::uint8_t end_of_row = 0;
constexpr std::uint8_t end_of_bitmap = 1;
constexpr std::uint8_t delta = 2;

} // namespace

bool decode_run_lengths(std::span<const std::uint8_t> data, unsigned bits, std::int32_t width,
    std::int32_t height, std::uint8_t* rows, std::size_t stride)
{
    byte_reader in(data);
    run_target out(bits, width, height, rows, stride);
    while (!out.full()) {
        const std::uint8_t count = in.u8();
        const std::uint8_t value = in.u8();
        if (!in.ok())
            return false;
        if (count != escape) {
            out.run(count, value);
        } else if (value == end_of_row) {
            out.next_row();
        } else if (value == end_of_bitmap) {
            return true;
        } else if (value == delta) {
            const std::uint8_t dx = in.u8();
            out.move(dx, in.u8());
        } else {
            // Literal pixels, padded to a whole number of 16-bit words.
            const std::size_t size = (std::size_t{value} * bits + 7) / 8;
            const auto pixels = in.bytes(size);
            if (pixels.size() < size)
                return false;
            out.copy(pixels, value);
            in.skip(size % 2);
        }
    }
    return true;
}

} // namespace klv
