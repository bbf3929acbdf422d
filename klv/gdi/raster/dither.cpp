#include "klv/gdi/raster/dither.h"

#include <algorithm>

namespace klv::gdi {

namespace {

// Order in which the cells of the pattern take the colours from dark to light: the 8 x 8 ordered dither
// matrix of Bayer.
constexpr std::array<std::uint8_t, 64> bayer = [] {
    std::array<std::uint8_t, 64> order{};
    for (unsigned y = 0; y < 8; ++y)
        for (unsigned x = 0; x < 8; ++x) {
            unsigned value = 0;
            for (unsigned bit = 0; bit < 3; ++bit) {
                const unsigned xb = x >> bit & 1;
                const unsigned yb = y >> bit & 1;
                value = value << 2 | (xb ^ yb) << 1 | yb;
            }
            order[y * 8 + x] = static_cast<std::uint8_t>(value);
        }
    return order;
}();

int luminance(const RGBQUAD& q) { return 299 * q.rgbRed + 587 * q.rgbGreen + 114 * q.rgbBlue; }

// Takes the nearest colour 64 times, each time of what the colours taken so far leave over (pattern
// dithering after Knoll), then lays them out by brightness.
dither_pattern make_pattern(const colour_table& table, rgb colour)
{
    const int wanted[3] = {static_cast<int>(colour >> 16 & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
        static_cast<int>(colour & 0xFF)};
    int left_over[3] = {0, 0, 0};
    dither_pattern taken{};
    for (std::uint8_t& index : taken) {
        rgb target = 0;
        for (int c = 0; c < 3; ++c)
            target = target << 8 | static_cast<rgb>(std::clamp(wanted[c] + left_over[c], 0, 255));
        index = static_cast<std::uint8_t>(nearest_index(table, target));
        const RGBQUAD& q = table.entries[index];
        left_over[0] += wanted[0] - q.rgbRed;
        left_over[1] += wanted[1] - q.rgbGreen;
        left_over[2] += wanted[2] - q.rgbBlue;
    }
    std::stable_sort(taken.begin(), taken.end(), [&](std::uint8_t a, std::uint8_t b) {
        return luminance(table.entries[a]) < luminance(table.entries[b]);
    });
    dither_pattern pattern{};
    for (std::size_t i = 0; i < pattern.size(); ++i)
        pattern[i] = taken[bayer[i]];
    return pattern;
}

} // namespace

const dither_pattern& dither(const colour_table& table, rgb colour)
{
    struct entry {
        std::uint32_t version = 0;
        rgb colour = 0;
        dither_pattern pattern{};
    };
    static thread_local std::array<entry, 64> cache;
    entry& e = cache[(colour * 2654435761U >> 26) % cache.size()];
    if (e.version != table.version || e.colour != colour)
        e = {table.version, colour, make_pattern(table, colour)};
    return e.pattern;
}

} // namespace klv::gdi
