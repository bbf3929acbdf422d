#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace klv {

/// One pattern of 8 x 8 pixels: rows from top to bottom, the most significant bit leftmost. A 0 bit is the
/// pattern's ink.
using gem_pattern = std::array<std::uint8_t, 8>;

/// Style 2 has the densities and patterns 1 to 24, style 3 the hatches 1 to 12.
inline constexpr int gem_pattern_style = 2;
inline constexpr int gem_hatch_style = 3;
inline constexpr int gem_patterns_of_pattern_style = 24;
inline constexpr int gem_patterns_of_hatch_style = 12;

/// \return the pattern of a style and an index; nothing when there is none
std::optional<gem_pattern> find_gem_pattern(int style, int index) noexcept;

} // namespace klv
