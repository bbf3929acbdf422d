#pragma once

#include "klv/base/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace klv {

inline constexpr std::size_t screen_palette_size = 256;
/// First entry of the 6 x 6 x 6 colour cube: entry 20 + 36 red + 6 green + blue, each 0 to 5.
inline constexpr std::size_t colour_cube_first = 20;
inline constexpr std::uint8_t palette_white = 235;

/// A LOGPALETTE with room for all its entries.
struct palette_256 {
    std::uint16_t version = LOGPALETTE_VERSION;
    std::uint16_t count = screen_palette_size;
    std::array<PALETTEENTRY, screen_palette_size> entries{};

    const LOGPALETTE* log_palette() const { return reinterpret_cast<const LOGPALETTE*>(this); }
};

/// The colours of a surface of 16 colours.
inline constexpr std::array<RGBQUAD, 16> default_16_colours{
    {{0, 0, 0, 0}, {0, 0, 128, 0}, {0, 128, 0, 0}, {0, 128, 128, 0}, {128, 0, 0, 0}, {128, 0, 128, 0},
        {128, 128, 0, 0}, {192, 192, 192, 0}, {128, 128, 128, 0}, {0, 0, 255, 0}, {0, 255, 0, 0},
        {0, 255, 255, 0}, {255, 0, 0, 0}, {255, 0, 255, 0}, {255, 255, 0, 0}, {255, 255, 255, 0}}};

/// Sixteen levels of a channel, spread by a gamma: level i is round(255 (i / 15)^(1 / gamma)).
using gamma_levels = std::array<std::uint8_t, 16>;

/// \param gamma_tenths 6 to 22; odd values take the even one below. Anything else is the default, 14.
gamma_levels levels_for_gamma(int gamma_tenths);
/// Reads "1.4" (digit, point, digit) as tenths. \return the default, 14, for anything else.
int gamma_tenths_from_text(std::string_view text);
/// The user's gamma from the registry, in tenths; writes the default there when it has no key yet.
int gamma_tenths_from_registry() noexcept;

/// A palette entry as a bitmap's colour table has it.
[[nodiscard]] constexpr RGBQUAD quad_of(const PALETTEENTRY& entry)
{
    return {entry.peBlue, entry.peGreen, entry.peRed, 0};
}

/// The library's 256-colour palette: static colours at both ends, greys, and the colour cube.
palette_256 make_screen_palette(const gamma_levels& levels) noexcept;

} // namespace klv
