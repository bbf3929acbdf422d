#include "klv/geometry/planar/decompose.h"

#include "klv/geometry/planar/arrangement.h"

#include <algorithm>

namespace klv {

bool DecomposePolyPolygon(
    std::span<const POINT> points, std::span<const int> counts, poly_polygon& loops, self_crossings crossings)
{
    loops = poly_polygon();
    arrangement graph(points, counts, crossings == self_crossings::yes);
    graph.visit_loops([](std::int32_t) { return true; },
        [&](std::int32_t, std::span<const POINT> loop) { loops.append(loop); });
    return !loops.counts.empty();
}

bool DecomposeEvenOdd(std::span<const POINT> points, std::span<const int> counts, poly_polygon& loops)
{
    loops = poly_polygon();
    arrangement graph(points, counts, true);
    graph.visit_loops([](std::int32_t) { return true; },
        [&](std::int32_t level, std::span<const POINT> loop) {
            loops.append(loop);
            // Its right side is inside when the winding there, level + 1, is odd.
            if (level % 2 != 0)
                std::reverse(
                    loops.points.end() - static_cast<std::ptrdiff_t>(loop.size()), loops.points.end());
        });
    return !loops.counts.empty();
}

} // namespace klv
