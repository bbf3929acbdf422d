#include "klv/geometry/planar/contour_offset.h"

#include "klv/base/saturating.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/contour_index.h"
#include "klv/geometry/planar/crossings.h"
#include "klv/geometry/planar/shape_boolean.h"

#include <algorithm>
#include <cmath>

// Offsetting a polygon by its raw offset curve: every edge moves, corners get a mitre or a bevel, and where
// the curve crosses itself the loops are kept that run once around something on the right side of the source
// and far enough from it (the other loops are what the move turned inside out). Cf. Chen and McMains,
// "Polygon Offsetting by Computing Winding Numbers" (2005).
namespace klv {

namespace {

std::int32_t divided(std::int32_t v, std::int64_t divisor)
{
    const std::int64_t half = v < 0 ? -divisor / 2 : divisor / 2;
    return saturated((v + half) / divisor);
}

bool crosses_itself(std::span<const POINT> contour)
{
    const int count = static_cast<int>(contour.size());
    const edge_outline outline(contour, {&count, 1});
    const auto found = find_crossings(outline, outline_tree(outline), true);
    return !found.crossings.empty() || !found.overlaps.empty();
}

} // namespace

void RescalePolyPolygon(std::span<POINT> points, int shift) noexcept
{
    const std::int64_t factor = std::int64_t{1} << std::abs(shift);
    for (POINT& p : points) {
        if (shift >= 0)
            p = {saturated(p.x * factor), saturated(p.y * factor)};
        else
            p = {divided(p.x, factor), divided(p.y, factor)};
    }
}

void EliminateContourOverlaps(std::span<const POINT> source, const contour_move& move, double tolerance,
    std::span<POINT> moved, poly_polygon& kept)
{
    // A moved contour runs around what is left as often as the source, and less often or the other way round
    // around all that its edges swept over.
    const bool hole = move.direction != vWINDING_ANTICLOCKWISE;
    if (hole)
        ReverseContour(moved);
    const int count = static_cast<int>(moved.size());
    poly_polygon loops;
    if (!UnionPolyPolygon(moved, {&count, 1}, loops, self_crossings::yes))
        return;

    const contour_index outline(source);
    const double closest = std::abs(move.distance) - tolerance;
    for_each_contour(std::span<POINT>(loops.points), loops.counts, [&](std::span<POINT> loop) {
        const std::size_t half = loop.size() / 2;
        const bool inside = outline.ContourLiesInsideContour(loop, {}, half) < half;
        if (inside != move.inwards() || outline.ContourLiesNUnitsFromContour(loop, closest, half) >= half)
            return;
        if (hole)
            ReverseContour(loop);
        kept.append(loop);
    });
}

void offset_contours(
    poly_polygon& contours, double distance, double tolerance, bool bevel, poly_polygon& result)
{
    result = poly_polygon();
    geometry_list<POINT> source, moved;
    std::size_t sources = 0;
    for_each_contour(
        std::span<const POINT>(contours.points), contours.counts, [&](std::span<const POINT> contour) {
            const contour_move move{
                distance, sign_of(doubled_area(contour)) > 0 ? vWINDING_CLOCKWISE : vWINDING_ANTICLOCKWISE};
            source.assign(contour.begin(), contour.end());
            // A cut that runs across other parts of the contour would keep what they sweep over.
            if (EliminateVanishingSpikes(source, move) && crosses_itself(source))
                source.assign(contour.begin(), contour.end());
            if (source.size() <= 2)
                return;
            const offset_corners corners(source, move);
            moved.clear();
            for (std::size_t i = 0; i < source.size(); ++i)
                corners.FindNewContourPointsWithMitre(i, bevel, moved);
            EliminateContourOverlaps(source, move, tolerance, moved, result);
            ++sources;
        });
    // What is left of a single contour does not overlap.
    if (sources < 2 || result.counts.empty())
        return;
    contours = std::move(result);
    if (!UnionPolyPolygon(contours.points, contours.counts, result, self_crossings::no))
        result = poly_polygon();
}

} // namespace klv
