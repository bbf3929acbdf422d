#include "klv/gdi/raster/surface.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <iterator>
#include <new>

namespace klv::gdi {

namespace {

// Bitmaps beyond these sizes are refused; rows and sums of rows then fit in 64 bits with ease.
constexpr std::int32_t largest_side = 1 << 20;
constexpr std::uint64_t largest_bytes = std::uint64_t{1} << 31;

constexpr rgb static_colours[20]
    = {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xC0C0C0, 0xC0DCC0, 0xA6CAF0,
        0xFFFBF0, 0xA0A0A4, 0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};

constexpr rgb sixteen_colours[16] = {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080,
    0x808080, 0xC0C0C0, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};

std::uint32_t distance(const RGBQUAD& a, rgb b)
{
    const auto square = [](int d) { return static_cast<std::uint32_t>(d * d); };
    return square(a.rgbRed - static_cast<int>(b >> 16 & 0xFF))
        + square(a.rgbGreen - static_cast<int>(b >> 8 & 0xFF))
        + square(a.rgbBlue - static_cast<int>(b & 0xFF));
}

unsigned search_nearest(const colour_table& table, rgb colour)
{
    unsigned best = 0;
    std::uint32_t best_distance = UINT32_MAX;
    for (unsigned i = 0; i < table.count && best_distance != 0; ++i) {
        const std::uint32_t d = distance(table.entries[i], colour);
        if (d < best_distance) {
            best_distance = d;
            best = i;
        }
    }
    return best;
}

// Answers of earlier searches; a table's version tells its contents.
struct nearest_cache_entry {
    std::uint32_t version = 0;
    rgb colour = 0;
    unsigned index = 0;
};
constexpr std::size_t nearest_cache_size = 4096;

/// A channel of eight bits moved to the bits of a mask, its low bits dropped or its high bits repeated.
std::uint32_t to_channel(std::uint32_t value, std::uint32_t mask)
{
    if (mask == 0)
        return 0;
    const int width = std::popcount(mask);
    const std::uint32_t scaled = width <= 8 ? value >> (8 - width) : value << (width - 8);
    return scaled << std::countr_zero(mask) & mask;
}

std::uint32_t from_channel(std::uint32_t pixel, std::uint32_t mask)
{
    if (mask == 0)
        return 0;
    const int width = std::popcount(mask);
    const std::uint32_t value = (pixel & mask) >> std::countr_zero(mask);
    if (width >= 8)
        return value >> (width - 8) & 0xFF;
    return value * 255 / ((1U << width) - 1);
}

} // namespace

void colour_table::changed()
{
    static std::atomic<std::uint32_t> last_version = 0;
    version = ++last_version;
}

surface surface_memory::make(std::int32_t width, std::int32_t height, int bits, bool bottom_up)
{
    if (width <= 0 || height <= 0 || width > largest_side || height > largest_side)
        return {};
    const std::uint64_t row_bytes
        = dib_row_bytes(static_cast<std::uint64_t>(width), static_cast<unsigned>(bits));
    const std::uint64_t bytes = row_bytes * static_cast<std::uint64_t>(height);
    if (bytes > largest_bytes)
        return {};
    bytes_.reset(new (std::nothrow) std::uint8_t[bytes]());
    if (!bytes_)
        return {};
    const auto stride = static_cast<std::ptrdiff_t>(row_bytes);
    surface s;
    s.width = width;
    s.height = height;
    s.bits = bits;
    s.masks = bits == 16 ? masks_555 : masks_888;
    s.stride = bottom_up ? -stride : stride;
    s.top = bottom_up ? first() + stride * (height - 1) : first();
    return s;
}

rgb palette_colour(std::span<const PALETTEENTRY> palette, std::size_t index)
{
    if (index >= palette.size())
        return 0;
    const PALETTEENTRY& e = palette[index];
    return std::uint32_t{e.peRed} << 16 | std::uint32_t{e.peGreen} << 8 | e.peBlue;
}

std::shared_ptr<colour_table> default_colour_table(int bits)
{
    auto table = std::make_shared<colour_table>();
    table->count = 1U << bits;
    if (bits == 1) {
        table->entries[1] = to_quad(0xFFFFFF);
    } else if (bits == 4) {
        std::transform(
            std::begin(sixteen_colours), std::end(sixteen_colours), table->entries.begin(), to_quad);
    } else {
        for (std::size_t i = 0; i < 10; ++i) {
            table->entries[i] = to_quad(static_colours[i]);
            table->entries[246 + i] = to_quad(static_colours[10 + i]);
        }
    }
    table->changed();
    return table;
}

unsigned nearest_index(const colour_table& table, rgb colour)
{
    static thread_local std::array<nearest_cache_entry, nearest_cache_size> cache;
    auto& entry = cache[(colour * 2654435761U >> 20) % nearest_cache_size];
    if (entry.version != table.version || entry.colour != colour)
        entry = {table.version, colour, search_nearest(table, colour)};
    return entry.index;
}

std::uint32_t pixel_of(const surface& s, rgb colour)
{
    if (s.has_table())
        return nearest_index(*s.table, colour);
    if (s.bits == 24 || s.masks == masks_888)
        return colour & 0xFFFFFF;
    return to_channel(colour >> 16 & 0xFF, s.masks.red) | to_channel(colour >> 8 & 0xFF, s.masks.green)
        | to_channel(colour & 0xFF, s.masks.blue);
}

rgb colour_of(const surface& s, std::uint32_t pixel)
{
    if (s.has_table())
        return to_rgb(s.table->entries[pixel & 0xFF]);
    if (s.bits == 24 || s.masks == masks_888)
        return pixel & 0xFFFFFF;
    return from_channel(pixel, s.masks.red) << 16 | from_channel(pixel, s.masks.green) << 8
        | from_channel(pixel, s.masks.blue);
}

std::uint32_t used_bits(const surface& s)
{
    if (s.bits >= 24 || s.bits == 16)
        return s.bits == 24 ? 0xFFFFFF : s.masks.red | s.masks.green | s.masks.blue;
    return (1U << s.bits) - 1;
}

} // namespace klv::gdi
