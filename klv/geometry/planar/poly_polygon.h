#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"

#include <span>
#include <vector>

namespace klv {

/// Polygons: the points of all contours one after the other, and how many each has. Contours close without
/// repeating their first point.
struct poly_polygon {
    std::vector<POINT, vALLOCATOR<POINT>> points;
    std::vector<int, vALLOCATOR<int>> counts;

    void append(std::span<const POINT> contour)
    {
        points.insert(points.end(), contour.begin(), contour.end());
        counts.push_back(static_cast<int>(contour.size()));
    }
};

/// Calls visit(contour) for the points of each contour in order.
/// \param points const or not; the contours are spans of the same
template <typename P, typename VISIT>
void for_each_contour(std::span<P> points, std::span<const int> counts, VISIT&& visit)
{
    std::size_t at = 0;
    for (const int count : counts) {
        visit(points.subspan(at, static_cast<std::size_t>(count)));
        at += static_cast<std::size_t>(count);
    }
}

} // namespace klv
