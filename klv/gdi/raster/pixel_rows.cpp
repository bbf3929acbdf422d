#include "klv/gdi/raster/pixel_rows.h"

#include <cstring>

namespace klv::gdi {

namespace {

template <class Pixel> void load_wide(const std::uint8_t* row, std::int32_t x, std::span<std::uint32_t> out)
{
    const std::uint8_t* from = row + static_cast<std::size_t>(x) * sizeof(Pixel);
    for (std::size_t i = 0; i < out.size(); ++i) {
        Pixel p;
        std::memcpy(&p, from + i * sizeof(Pixel), sizeof(Pixel));
        out[i] = p;
    }
}

template <class Pixel> void store_wide(std::uint8_t* row, std::int32_t x, std::span<const std::uint32_t> in)
{
    std::uint8_t* to = row + static_cast<std::size_t>(x) * sizeof(Pixel);
    for (std::size_t i = 0; i < in.size(); ++i) {
        const auto p = static_cast<Pixel>(in[i] & static_cast<Pixel>(~Pixel{0}));
        std::memcpy(to + i * sizeof(Pixel), &p, sizeof(Pixel));
    }
}

void load_24(const std::uint8_t* row, std::int32_t x, std::span<std::uint32_t> out)
{
    const std::uint8_t* from = row + static_cast<std::size_t>(x) * 3;
    for (std::uint32_t& p : out) {
        p = from[0] | std::uint32_t{from[1]} << 8 | std::uint32_t{from[2]} << 16;
        from += 3;
    }
}

void store_24(std::uint8_t* row, std::int32_t x, std::span<const std::uint32_t> in)
{
    std::uint8_t* to = row + static_cast<std::size_t>(x) * 3;
    for (const std::uint32_t p : in) {
        to[0] = static_cast<std::uint8_t>(p & 0xFF);
        to[1] = static_cast<std::uint8_t>(p >> 8 & 0xFF);
        to[2] = static_cast<std::uint8_t>(p >> 16 & 0xFF);
        to += 3;
    }
}

// Pixels of 1 or 4 bits, the first in a byte's top bits.
template <unsigned Bits> struct packed {
    static constexpr std::size_t per_byte = 8 / Bits;
    static constexpr std::uint32_t mask = (1U << Bits) - 1;
    static constexpr unsigned shift(std::size_t x)
    {
        return static_cast<unsigned>(8 - Bits - (x % per_byte) * Bits);
    }

    static void load(const std::uint8_t* row, std::int32_t x, std::span<std::uint32_t> out)
    {
        auto at = static_cast<std::size_t>(x);
        for (std::uint32_t& p : out) {
            p = std::uint32_t{row[at / per_byte]} >> shift(at) & mask;
            ++at;
        }
    }

    static void store(std::uint8_t* row, std::int32_t x, std::span<const std::uint32_t> in)
    {
        auto at = static_cast<std::size_t>(x);
        for (const std::uint32_t p : in) {
            std::uint8_t& byte = row[at / per_byte];
            byte = static_cast<std::uint8_t>((byte & ~(mask << shift(at)) & 0xFFU) | (p & mask) << shift(at));
            ++at;
        }
    }
};

} // namespace

void load_pixels(const surface& s, std::int32_t x, std::int32_t y, std::span<std::uint32_t> out)
{
    const std::uint8_t* row = s.row(y);
    switch (s.bits) {
    case 1:
        packed<1>::load(row, x, out);
        break;
    case 4:
        packed<4>::load(row, x, out);
        break;
    case 8:
        load_wide<std::uint8_t>(row, x, out);
        break;
    case 16:
        load_wide<std::uint16_t>(row, x, out);
        break;
    case 24:
        load_24(row, x, out);
        break;
    default:
        load_wide<std::uint32_t>(row, x, out);
        break;
    }
}

void store_pixels(const surface& s, std::int32_t x, std::int32_t y, std::span<const std::uint32_t> in)
{
    std::uint8_t* row = s.row(y);
    switch (s.bits) {
    case 1:
        packed<1>::store(row, x, in);
        break;
    case 4:
        packed<4>::store(row, x, in);
        break;
    case 8:
        store_wide<std::uint8_t>(row, x, in);
        break;
    case 16:
        store_wide<std::uint16_t>(row, x, in);
        break;
    case 24:
        store_24(row, x, in);
        break;
    default:
        store_wide<std::uint32_t>(row, x, in);
        break;
    }
}

std::uint32_t read_pixel(const surface& s, std::int32_t x, std::int32_t y)
{
    std::uint32_t pixel = 0;
    load_pixels(s, x, y, {&pixel, 1});
    return pixel;
}

} // namespace klv::gdi
