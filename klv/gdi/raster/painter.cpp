#include "klv/gdi/raster/painter.h"

#include "klv/gdi/raster/pixel_fill.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace klv::gdi {

namespace {

template <class Pixel> Pixel* pixels_of(const surface& s, const span& p)
{
    return reinterpret_cast<Pixel*>(s.row(p.y)) + p.x0;
}
std::size_t length(const span& p) { return static_cast<std::size_t>(p.x1 - p.x0); }

// ---- One value -----------------------------------------------------------------------------------------

template <class Pixel> void copy_wide(const surface& s, pixel_op op, std::span<const span> spans)
{
    const auto value = static_cast<Pixel>(op.xor_bits);
    // Whole rows that lie one after the other in memory are one run.
    const bool rows_touch = s.stride == static_cast<std::ptrdiff_t>(sizeof(Pixel)) * s.width;
    const std::size_t whole_row = rows_touch ? static_cast<std::size_t>(s.width) : SIZE_MAX;
    for (std::size_t i = 0; i < spans.size(); ++i) {
        Pixel* const to = pixels_of<Pixel>(s, spans[i]);
        std::size_t count = length(spans[i]);
        if (count == whole_row)
            for (; i + 1 < spans.size() && spans[i + 1].y == spans[i].y + 1
                 && length(spans[i + 1]) == whole_row;
                 ++i)
                count += whole_row;
        fill_pixels(to, count, value);
    }
}

template <class Pixel> void mix_wide(const surface& s, pixel_op op, std::span<const span> spans)
{
    const auto keep = static_cast<Pixel>(op.and_bits & static_cast<Pixel>(~Pixel{0}));
    const auto flip = static_cast<Pixel>(op.xor_bits);
    for (const span& p : spans) {
        Pixel* to = pixels_of<Pixel>(s, p);
        for (std::size_t i = 0; i < length(p); ++i)
            to[i] = static_cast<Pixel>((to[i] & keep) ^ flip);
    }
}

// Four pixels of 24 bits are three words of 32, so the words repeat after twelve bytes.
void copy_24(const surface& s, pixel_op op, std::span<const span> spans)
{
    std::array<std::uint8_t, 48> pattern;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        pattern[i] = static_cast<std::uint8_t>(op.xor_bits >> (8 * (i % 3)) & 0xFF);
    for (const span& p : spans) {
        std::uint8_t* to = s.row(p.y) + std::ptrdiff_t{p.x0} * 3;
        std::size_t bytes = length(p) * 3;
        for (; bytes >= pattern.size(); bytes -= pattern.size(), to += pattern.size())
            std::memcpy(to, pattern.data(), pattern.size());
        for (std::size_t i = 0; i < bytes; ++i)
            to[i] = pattern[i];
    }
}

void mix_24(const surface& s, pixel_op op, std::span<const span> spans)
{
    for (const span& p : spans) {
        std::uint8_t* to = s.row(p.y) + std::ptrdiff_t{p.x0} * 3;
        for (std::size_t i = 0; i < length(p); ++i)
            for (unsigned c = 0; c < 3; ++c, ++to)
                *to = static_cast<std::uint8_t>(
                    (*to & op.and_bits >> (8 * c)) ^ (op.xor_bits >> (8 * c) & 0xFF));
    }
}

// Rows of 1- and 4-bit surfaces are whole words of 32 bits, whose first pixel lies in the highest bits.
constexpr std::uint32_t big_endian(std::uint32_t word)
{
    if constexpr (std::endian::native == std::endian::big)
        return word;
    else
        return word << 24 | (word & 0xFF00U) << 8 | (word >> 8 & 0xFF00U) | word >> 24;
}
std::uint32_t load_word(const std::uint8_t* at)
{
    std::uint32_t word = 0;
    std::memcpy(&word, at, sizeof word);
    return big_endian(word);
}
void store_word(std::uint8_t* at, std::uint32_t word)
{
    word = big_endian(word);
    std::memcpy(at, &word, sizeof word);
}

// Pixels of 1 or 4 bits: whole words in the middle, masked ones at both ends.
template <unsigned Bits> void mix_packed(const surface& s, pixel_op op, std::span<const span> spans)
{
    constexpr std::int32_t per_word = 32 / Bits;
    constexpr std::uint32_t spread = Bits == 1 ? 0xFFFFFFFFU : 0x11111111U;
    const std::uint32_t keep = (op.and_bits & ((1U << Bits) - 1)) * spread;
    const std::uint32_t flip = (op.xor_bits & ((1U << Bits) - 1)) * spread;
    const auto mix = [keep, flip](std::uint8_t* at, std::uint32_t mask) {
        const std::uint32_t word = load_word(at);
        store_word(at, (word & (keep | ~mask)) ^ (flip & mask));
    };
    for (const span& p : spans) {
        std::uint8_t* at = s.row(p.y) + p.x0 / per_word * 4;
        std::uint8_t* const last = s.row(p.y) + (p.x1 - 1) / per_word * 4;
        const std::uint32_t head = 0xFFFFFFFFU >> (static_cast<unsigned>(p.x0 % per_word) * Bits);
        const std::uint32_t tail = 0xFFFFFFFFU
            << (static_cast<unsigned>(per_word - 1 - (p.x1 - 1) % per_word) * Bits);
        if (at == last) {
            mix(at, head & tail);
            continue;
        }
        mix(at, head);
        if (keep == 0) {
            for (at += 4; at != last; at += 4)
                store_word(at, flip);
        } else {
            for (at += 4; at != last; at += 4)
                mix(at, 0xFFFFFFFFU);
        }
        mix(last, tail);
    }
}

// ---- Tiles ---------------------------------------------------------------------------------------------

template <class Put> void for_tile(const op_tile& tile, const span& p, Put put)
{
    const pixel_op* const ops = tile.row(p.y);
    std::int32_t column = tile.column(p.x0);
    for (std::int32_t x = p.x0; x < p.x1; ++x) {
        put(x, ops[column]);
        if (++column == tile.width)
            column = 0;
    }
}

/// The operations of some pixels of a tile's row, from a column on, in a form that is applied to many at
/// once.
template <class Pixel> struct tile_piece {
    static constexpr std::int32_t most_pixels = 128;

    std::array<Pixel, most_pixels> keep;
    std::array<Pixel, most_pixels> flip;

    void gather(const pixel_op* ops, std::int32_t width, std::int32_t column, std::int32_t count)
    {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            keep[i] = static_cast<Pixel>(ops[column].and_bits & static_cast<Pixel>(~Pixel{0}));
            flip[i] = static_cast<Pixel>(ops[column].xor_bits & static_cast<Pixel>(~Pixel{0}));
            if (++column == width)
                column = 0;
        }
    }
    void apply(Pixel* __restrict to, std::int32_t count) const
    {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            to[i] = static_cast<Pixel>((to[i] & keep[i]) ^ flip[i]);
    }
};

template <class Pixel> void tile_wide(const surface& s, const op_tile& tile, std::span<const span> spans)
{
    using piece_type = tile_piece<Pixel>;
    piece_type piece;
    // A piece of whole tiles serves for the rest of the row.
    const bool repeats = tile.width <= piece_type::most_pixels;
    const std::int32_t longest
        = repeats ? piece_type::most_pixels / tile.width * tile.width : piece_type::most_pixels;
    for (const span& p : spans) {
        Pixel* const to = pixels_of<Pixel>(s, p);
        const std::int32_t whole = p.x1 - p.x0;
        for (std::int32_t done = 0; done < whole; done += longest) {
            const std::int32_t count = std::min(longest, whole - done);
            if (done == 0 || !repeats)
                piece.gather(tile.row(p.y), tile.width, tile.column(p.x0 + done), count);
            piece.apply(to + done, count);
        }
    }
}

void tile_24(const surface& s, const op_tile& tile, std::span<const span> spans)
{
    for (const span& p : spans) {
        std::uint8_t* const row = s.row(p.y);
        for_tile(tile, p, [row](std::int32_t x, pixel_op op) {
            std::uint8_t* const to = row + std::ptrdiff_t{x} * 3;
            for (unsigned c = 0; c < 3; ++c)
                to[c] = static_cast<std::uint8_t>(
                    (to[c] & op.and_bits >> (8 * c)) ^ (op.xor_bits >> (8 * c) & 0xFF));
        });
    }
}

template <unsigned Bits> void tile_packed(const surface& s, const op_tile& tile, std::span<const span> spans)
{
    constexpr std::int32_t per_byte = 8 / Bits;
    constexpr unsigned mask = (1U << Bits) - 1;
    for (const span& p : spans) {
        std::uint8_t* const row = s.row(p.y);
        for_tile(tile, p, [row](std::int32_t x, pixel_op op) {
            const auto shift
                = static_cast<unsigned>(8 - static_cast<std::int32_t>(Bits) * (x % per_byte + 1));
            std::uint8_t& d = row[x / per_byte];
            const unsigned mixed = ((d >> shift & op.and_bits) ^ op.xor_bits) & mask;
            d = static_cast<std::uint8_t>((d & ~(mask << shift) & 0xFFU) | mixed << shift);
        });
    }
}

std::int32_t wrapped(std::int32_t value, std::int32_t size)
{
    const std::int32_t rest = value % size;
    return rest < 0 ? rest + size : rest;
}

} // namespace

pixel_op make_pixel_op(INT rop2, std::uint32_t pixel, std::uint32_t used)
{
    // A mix mode less one is its truth table: bit 2 P + D is the result for those values.
    const auto table = static_cast<std::uint32_t>(rop2 - 1) & 15U;
    const auto all = [](bool set) { return set ? 0xFFFFFFFFU : 0U; };
    const auto result = [&](unsigned p, unsigned d) { return all((table >> (2 * p + d) & 1) != 0); };
    const auto where = [&](std::uint32_t for_one, std::uint32_t for_zero) {
        return (pixel & for_one) | (~pixel & for_zero);
    };
    const std::uint32_t xor_bits = where(result(1, 0), result(0, 0));
    const std::uint32_t and_bits = where(result(1, 0) ^ result(1, 1), result(0, 0) ^ result(0, 1));
    const bool keeps_unused = (and_bits & used) != 0;
    return {(and_bits & used) | (keeps_unused ? ~used : 0), xor_bits & used};
}

solid_painter::solid_painter(const surface& s, pixel_op op, paint_meter* meter)
    : surface_(s)
    , op_(op)
    , paint_(choose(s, op))
    , meter_(meter)
{
}

solid_painter::paint_function solid_painter::choose(const surface& s, pixel_op op)
{
    const bool copies = op.and_bits == 0;
    switch (s.bits) {
    case 1:
        return mix_packed<1>;
    case 4:
        return mix_packed<4>;
    case 8:
        return copies ? copy_wide<std::uint8_t> : mix_wide<std::uint8_t>;
    case 16:
        return copies ? copy_wide<std::uint16_t> : mix_wide<std::uint16_t>;
    case 24:
        return copies ? copy_24 : mix_24;
    default:
        return copies ? copy_wide<std::uint32_t> : mix_wide<std::uint32_t>;
    }
}

const pixel_op* op_tile::row(std::int32_t y) const
{
    return ops.data() + std::ptrdiff_t{wrapped(y, height)} * width;
}

std::int32_t op_tile::column(std::int32_t x) const { return wrapped(x, width); }

tile_painter::tile_painter(const surface& s, const op_tile& tile, paint_meter* meter)
    : surface_(s)
    , tile_(tile)
    , paint_(choose(s))
    , meter_(meter)
{
}

tile_painter::paint_function tile_painter::choose(const surface& s)
{
    switch (s.bits) {
    case 1:
        return tile_packed<1>;
    case 4:
        return tile_packed<4>;
    case 8:
        return tile_wide<std::uint8_t>;
    case 16:
        return tile_wide<std::uint16_t>;
    case 24:
        return tile_24;
    default:
        return tile_wide<std::uint32_t>;
    }
}

} // namespace klv::gdi
