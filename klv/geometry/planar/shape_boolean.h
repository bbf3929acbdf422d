#pragma once

#include "klv/base/types.h"
#include "klv/geometry/planar/decompose.h"
#include "klv/geometry/planar/poly_polygon.h"

#include <span>

namespace klv {

/// The outline of everything that contours of direction 2 enclose more often than contours of direction 1
/// take it away: outlines in direction 2, holes in direction 1, in the order in which DecomposePolyPolygon
/// finds them. Without self_crossings the contours must not cross themselves. May throw std::bad_alloc.
/// \param frames so many outlines around everything count as well, and don't show in the result
/// \return false when nothing results
[[nodiscard]] bool UnionPolyPolygon(std::span<const POINT> points, std::span<const int> counts,
    poly_polygon& result, self_crossings crossings, int frames = 0);

} // namespace klv
