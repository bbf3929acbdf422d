#pragma once

#include "klv/base/types.h"
#include "klv/devices/outline/point_list.h"

#include <span>

namespace klv {

/// Appends closed polygons cut to a rectangle, edges included (Sutherland and Hodgman, 1974). Inside the
/// rectangle every point keeps its winding number; along its edges pieces may run back over themselves.
void clip_polygons(
    std::span<const POINT> points, std::span<const int> counts, const RECT& rect, LISTINFO& out) noexcept;

} // namespace klv
