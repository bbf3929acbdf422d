#include "klv/rendering/detail/clear_ground.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace klv {
namespace {

static_assert(std::endian::native == std::endian::little); // as the surfaces of the drawing interface are

constexpr std::uint32_t colour_bits = 0x00FFFFFF;
constexpr std::uint32_t opaque = 0xFF000000;

int channel(std::uint32_t sample, int index) { return static_cast<int>(sample >> 8 * index & 0xFF); }

std::uint32_t solved(std::uint32_t black, std::uint32_t white)
{
    // Blending rounds each channel by itself.
    constexpr int rounding = 1;
    const int blue = channel(white, 0) - channel(black, 0);
    const int green = channel(white, 1) - channel(black, 1);
    const int red = channel(white, 2) - channel(black, 2);
    const auto [least, most] = std::minmax({blue, green, red});
    if (least < 0 || most - least > rounding)
        return white | opaque;
    const int alpha = 255 - green;
    // No channel is brighter than its alpha, whatever the rounding.
    std::uint32_t sample = static_cast<std::uint32_t>(alpha) << 24;
    for (int i = 0; i < 3; ++i)
        sample |= static_cast<std::uint32_t>(std::min(channel(black, i), alpha)) << 8 * i;
    return sample;
}

std::uint32_t load(const std::uint8_t* sample)
{
    std::uint32_t value = 0;
    std::memcpy(&value, sample, sizeof value);
    return value & colour_bits;
}

} // namespace

void solve_alpha(const mutable_pixel_rows& on_black, const pixel_rows& on_white) noexcept
{
    for (std::int32_t y = 0; y < on_black.height; ++y) {
        std::uint8_t* to = on_black.row(y);
        const std::uint8_t* from = on_white.row(y);
        for (std::int32_t x = 0; x < on_black.width; ++x, to += 4, from += 4) {
            const std::uint32_t black = load(to), white = load(from);
            const std::uint32_t sample = black == white ? black | opaque
                : black == 0 && white == colour_bits    ? 0
                                                        : solved(black, white);
            std::memcpy(to, &sample, sizeof sample);
        }
    }
}

} // namespace klv
