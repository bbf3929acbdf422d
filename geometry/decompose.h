#pragma once

#include <span>
#include <vector>

#include "core/memory.h"
#include "platform/types.h"

namespace klv {

/// Polygons: the points of all contours one after the other, and how many each has. No contour repeats its
/// first point.
struct poly_polygon {
    std::vector<POINT, vALLOCATOR<POINT>> points;
    std::vector<int, vALLOCATOR<int>> counts;
};

/// Whether crossings of a contour with itself split it, too.
enum class self_crossings { no, yes };

/// Splits contours at their crossings into simple loops, by walking the planar graph whose nodes are the
/// crossings and changing to the other contour at each of them. Without a crossing the contours come out as
/// they are. \return false when nothing results, memory is out or there are more than 65535 crossings
[[nodiscard]] bool DecomposePolyPolygon(std::span<const POINT> points, std::span<const int> counts,
    poly_polygon& loops, self_crossings crossings) noexcept;

} // namespace klv
