#pragma once

#include "klv/core/point.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

inline constexpr std::int32_t arrowhead_pen_numerator = 4;
inline constexpr std::int32_t arrowhead_reference_width = 10;

/// Closed polygons in units of a tenth of the line's width. The line arrives from the right and ends at the
/// origin.
struct arrowhead_design {
    bool hollow;
    std::span<const vPOINT> outline;
    std::span<const vPOINT> clip_outline;
};

extern const std::array<arrowhead_design, 10> arrowhead_designs;

} // namespace klv
