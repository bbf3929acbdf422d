#pragma once

#include "klv/core/point.h"

namespace klv {

/// From point to the control point of the curve that arrives from prev; the curve that leaves for next has
/// the opposite one. The tangent is that of the circle through the three points, and parallel to the chord
/// when they are in line.
[[nodiscard]] vPOINT CalculateControlPointVector(
    const vPOINT& prev, const vPOINT& point, const vPOINT& next) noexcept;

} // namespace klv
