#pragma once

#include "klv/base/types.h"
#include "klv/geometry/planar/poly_polygon.h"

#include <span>

namespace klv {

/// Whether crossings of a contour with itself split it, too.
enum class self_crossings { no, yes };

/// Splits contours at their crossings into simple loops, by walking the planar graph whose nodes are the
/// crossings and changing to the other contour at each of them. The loops start at the nodes, in the order
/// in which the nodes are found; a contour that crosses none is a loop of its own. Each loop has one more
/// turn of the contours around it on its inner side than on its outer side all along, also where many edges
/// meet in one point or lie on each other; edges that lie on each other in opposite directions cancel out.
///
/// Crossings are rounded to whole coordinates. Nothing else moves. Any number of points and crossings; points
/// that repeat the one before are taken once. May throw std::bad_alloc.
/// \return false when there is no loop
[[nodiscard]] bool DecomposePolyPolygon(std::span<const POINT> points, std::span<const int> counts,
    poly_polygon& loops, self_crossings crossings);

/// The loops of the area that the contours enclose by the even-odd rule, each in the direction that
/// UnionPolyPolygon expects: outlines in direction 2, holes in direction 1, however they ran before. May
/// throw std::bad_alloc.
/// \return false when there is no loop
[[nodiscard]] bool DecomposeEvenOdd(
    std::span<const POINT> points, std::span<const int> counts, poly_polygon& loops);

} // namespace klv
