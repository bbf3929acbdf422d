#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

/// Resolutions as the formats write them, in dots per inch as the module speaks of them.
namespace klv::imaging {

inline constexpr double metres_in_inch = 0.0254;
inline constexpr double centimetres_in_inch = 2.54;
/// No picture has more; a file that says so is damaged.
inline constexpr double most_dots_per_inch = 1e6;

/// \return whole dots per inch; 0 for a number that is none
[[nodiscard]] inline std::int32_t whole_dots_per_inch(double dots)
{
    return dots > 0 && dots <= most_dots_per_inch ? static_cast<std::int32_t>(std::lround(dots)) : 0;
}

[[nodiscard]] inline std::int32_t dots_per_inch_of_metre(double pixels_per_metre)
{
    return whole_dots_per_inch(pixels_per_metre * metres_in_inch);
}

[[nodiscard]] inline std::int32_t pixels_per_metre(std::int32_t dots_per_inch)
{
    const double dots = std::clamp<double>(dots_per_inch, 0, most_dots_per_inch);
    return static_cast<std::int32_t>(std::lround(dots / metres_in_inch));
}

} // namespace klv::imaging
