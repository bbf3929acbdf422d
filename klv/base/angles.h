#pragma once

#include <numbers>

/// Degrees are what the interface speaks, radians what the functions of the standard library take.
namespace klv {

inline constexpr double pi = std::numbers::pi;

[[nodiscard]] constexpr double to_radians(double degrees) noexcept { return degrees * pi / 180.0; }
[[nodiscard]] constexpr double to_degrees(double radians) noexcept { return radians * 180.0 / pi; }
/// Tenths of a degree, the unit of escapements and of arcs.
[[nodiscard]] constexpr double tenths_to_radians(double tenths) noexcept { return tenths * pi / 1800; }

} // namespace klv
