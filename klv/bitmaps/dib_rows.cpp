#include "klv/bitmaps/dib_rows.h"

#include "klv/bitmaps/pixels/colour_matcher.h"
#include "klv/formats/dib_decode.h"

#include <cstring>

namespace klv {

namespace {

std::uint8_t index_of(const std::uint8_t* line, std::int32_t x, std::uint32_t bits)
{
    switch (bits) {
    case 1:
        return line[x / 8] >> (7 - x % 8) & 1;
    case 4:
        return x % 2 == 0 ? line[x / 2] >> 4 : line[x / 2] & 0x0F;
    default:
        return line[x];
    }
}

void put_index(std::uint8_t* line, std::int32_t x, std::uint32_t bits, unsigned index)
{
    const unsigned shift = bits == 1 ? 7U - static_cast<unsigned>(x % 8) : x % 2 == 0 ? 4U : 0U;
    const unsigned mask = (bits == 1 ? 1U : 0x0FU) << shift;
    std::uint8_t& byte = line[bits == 1 ? x / 8 : x / 2];
    byte = static_cast<std::uint8_t>((byte & ~mask) | (index << shift & mask));
}

void indices_to_24(const std::uint8_t* source, std::uint32_t bits, std::uint8_t* line, std::int32_t width,
    std::span<const RGBQUAD> colours)
{
    for (std::int32_t x = 0; x < width; ++x, line += 3) {
        const std::uint8_t index = index_of(source, x, bits);
        const RGBQUAD colour = index < colours.size() ? colours[index] : RGBQUAD{};
        line[0] = colour.rgbBlue;
        line[1] = colour.rgbGreen;
        line[2] = colour.rgbRed;
    }
}

} // namespace

void ReadLine1To8(
    const std::uint8_t* source, std::uint8_t* line, std::int32_t width, const dib_line_colours&) noexcept
{
    for (std::int32_t x = 0; x < width; ++x)
        line[x] = index_of(source, x, 1);
}

void ReadLine4To8(
    const std::uint8_t* source, std::uint8_t* line, std::int32_t width, const dib_line_colours&) noexcept
{
    for (std::int32_t x = 0; x < width; ++x)
        line[x] = index_of(source, x, 4);
}

void ReadLine8To8(
    const std::uint8_t* source, std::uint8_t* line, std::int32_t width, const dib_line_colours&) noexcept
{
    std::memcpy(line, source, static_cast<std::size_t>(width));
}

void ReadLine8To24(const std::uint8_t* source, std::uint8_t* line, std::int32_t width,
    const dib_line_colours& colours) noexcept
{
    indices_to_24(source, 8, line, width, colours.source);
}

void ReadLine24To8(const std::uint8_t* source, std::uint8_t* line, std::int32_t width,
    const dib_line_colours& colours) noexcept
{
    for (std::int32_t x = 0; x < width; ++x, source += 3)
        line[x] = colours.destination ? colours.destination->nearest(source[0], source[1], source[2]) : 0;
}

void ReadLine24To24(
    const std::uint8_t* source, std::uint8_t* line, std::int32_t width, const dib_line_colours&) noexcept
{
    std::memcpy(line, source, static_cast<std::size_t>(width) * 3);
}

void WriteLine8(const std::uint8_t* line, std::uint8_t* destination, std::int32_t width) noexcept
{
    std::memcpy(destination, line, static_cast<std::size_t>(width));
}

void WriteLine24(const std::uint8_t* line, std::uint8_t* destination, std::int32_t width) noexcept
{
    std::memcpy(destination, line, static_cast<std::size_t>(width) * 3);
}

void read_line_as_24(std::span<const std::uint8_t> source, std::uint32_t bits, std::uint8_t* line,
    std::int32_t width, std::span<const RGBQUAD> colours) noexcept
{
    switch (bits) {
    case 1:
    case 4:
    case 8:
        indices_to_24(source.data(), bits, line, width, colours);
        break;
    case 16:
    case 32:
        masked_pixels(default_channel_masks(bits), bits).to_24(source.data(), line, width);
        break;
    case 24:
        WriteLine24(source.data(), line, width);
        break;
    default:
        std::memset(line, 0, static_cast<std::size_t>(width) * 3);
    }
}

void read_line_as_indices(
    const std::uint8_t* source, std::uint32_t bits, std::uint8_t* line, std::int32_t width) noexcept
{
    std::int32_t x = 0;
    if (bits == 8) {
        WriteLine8(source, line, width);
        return;
    }
    if (bits == 4)
        for (; x + 2 <= width; x += 2, ++source) {
            line[x] = *source >> 4;
            line[x + 1] = *source & 0x0F;
        }
    else if (bits == 1)
        for (; x + 8 <= width; x += 8, ++source)
            for (int i = 0; i < 8; ++i)
                line[x + i] = *source >> (7 - i) & 1;
    for (std::int32_t rest = x; x < width; ++x)
        line[x] = index_of(source, x - rest, bits);
}

void write_indices(
    const std::uint8_t* line, std::uint8_t* destination, std::uint32_t bits, std::int32_t width) noexcept
{
    std::int32_t x = 0;
    if (bits == 8) {
        WriteLine8(line, destination, width);
        return;
    }
    if (bits == 4)
        for (; x + 2 <= width; x += 2)
            *destination++ = static_cast<std::uint8_t>((line[x] & 0x0F) << 4 | (line[x + 1] & 0x0F));
    else if (bits == 1)
        for (; x + 8 <= width; x += 8) {
            unsigned byte = 0;
            for (int i = 0; i < 8; ++i)
                byte = byte << 1 | (line[x + i] & 1U);
            *destination++ = static_cast<std::uint8_t>(byte);
        }
    for (std::int32_t rest = x; x < width; ++x)
        put_index(destination, x - rest, bits, line[x]);
}

void copy_pixels(const std::uint8_t* source, std::int32_t source_x, std::uint8_t* destination,
    std::int32_t destination_x, std::int32_t width, std::uint32_t bits) noexcept
{
    if (bits >= 8) {
        const std::size_t bytes = bits / 8;
        std::memcpy(destination + bytes * static_cast<std::size_t>(destination_x),
            source + bytes * static_cast<std::size_t>(source_x), bytes * static_cast<std::size_t>(width));
        return;
    }
    for (std::int32_t x = 0; x < width; ++x)
        put_index(destination, destination_x + x, bits, index_of(source, source_x + x, bits));
}

} // namespace klv
