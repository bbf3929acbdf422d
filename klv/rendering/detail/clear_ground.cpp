#include "klv/rendering/detail/clear_ground.h"

#include <algorithm>
#include <array>
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

// So many samples at a time, so that those of the usual kinds are told by vector instructions.
constexpr std::int32_t block = 16;
using sample_block = std::array<std::uint32_t, block>;

// False when a sample of the block is neither the same on both grounds nor the bare ground.
bool solve_usual(const sample_block& black, const sample_block& white, sample_block& into)
{
    std::uint32_t unusual = 0;
    for (std::size_t i = 0; i < black.size(); ++i) {
        const std::uint32_t on_black = black[i] & colour_bits;
        const std::uint32_t differs = (black[i] ^ white[i]) & colour_bits;
        const bool same = differs == 0;
        unusual |= same ? 0 : (differs ^ colour_bits) | on_black;
        into[i] = same ? on_black | opaque : 0;
    }
    return unusual == 0;
}

void solve(std::uint8_t* on_black, const std::uint8_t* on_white, std::int32_t samples)
{
    const std::size_t bytes = sizeof(std::uint32_t) * static_cast<std::size_t>(samples);
    sample_block black{}, white{}, solutions{};
    std::memcpy(black.data(), on_black, bytes);
    std::memcpy(white.data(), on_white, bytes);
    if (!solve_usual(black, white, solutions))
        for (std::size_t i = 0; i < black.size(); ++i)
            solutions[i] = solved(black[i] & colour_bits, white[i] & colour_bits);
    std::memcpy(on_black, solutions.data(), bytes);
}

} // namespace

void solve_alpha(const mutable_pixel_rows& on_black, const pixel_rows& on_white) noexcept
{
    for (std::int32_t y = 0; y < on_black.height; ++y) {
        std::uint8_t* const to = on_black.row(y);
        const std::uint8_t* const from = on_white.row(y);
        std::int32_t x = 0;
        for (; x + block <= on_black.width; x += block)
            solve(to + 4 * x, from + 4 * x, block);
        if (x < on_black.width)
            solve(to + 4 * x, from + 4 * x, on_black.width - x);
    }
}

} // namespace klv
