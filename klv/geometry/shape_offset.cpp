#include "klv/geometry/planar/contour_offset.h"
#include "klv/geometry/planar/decompose.h"
#include "klv/geometry/planar/flat_outline.h"
#include "klv/geometry/planar/shape_boolean.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <new>
#include <tuple>

namespace klv {

namespace {

constexpr int finest_shift = 2; // quarters of a unit

// Offsetting works on fractions of a unit, as fine as the coordinates leave room for in 32 bits.
int working_shift(const vRECT& box, int distance)
{
    constexpr std::int64_t room = 1 << 30;
    std::int64_t farthest = 0;
    for (const std::int64_t edge : {box.Left(), box.Top(), box.Right(), box.Bottom()})
        farthest = std::max(farthest, std::abs(edge));
    farthest += 2 * std::abs(std::int64_t{distance});
    int shift = finest_shift;
    while (shift > 0 && farthest << shift > room)
        --shift;
    return shift;
}

bool has_equal_edges(std::span<const POINT> points, std::span<const int> counts)
{
    using edge = std::array<std::int32_t, 4>;
    geometry_list<edge> edges;
    edges.reserve(points.size());
    for_each_contour(points, counts, [&](std::span<const POINT> contour) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const POINT &a = contour[i], &b = contour[i + 1 == contour.size() ? 0 : i + 1];
            const bool forward = std::tie(a.x, a.y) < std::tie(b.x, b.y);
            if (!(a == b))
                edges.push_back(forward ? edge{a.x, a.y, b.x, b.y} : edge{b.x, b.y, a.x, a.y});
        }
    });
    std::sort(edges.begin(), edges.end());
    return std::adjacent_find(edges.begin(), edges.end()) != edges.end();
}

// The contours that have area on one side only: outlines in direction 2, holes in direction 1.
bool bounding_contours(std::span<const POINT> points, std::span<const int> counts, poly_polygon& contours)
{
    if (!DecomposeEvenOdd(points, counts, contours))
        return false;
    if (contours.counts.size() == 1 || !has_equal_edges(points, counts))
        return true;
    // Where an outline and a hole lie on each other there is no side, but not where they are only so close
    // that rounding joins them.
    const poly_polygon loops = std::move(contours);
    return UnionPolyPolygon(loops.points, loops.counts, contours, self_crossings::no);
}

} // namespace

int vSHAPE::Shrink(int distance, int bevel) noexcept
try {
    if (distance == 0 || closed_ == 0)
        return 1;
    const flat_outline outline(*this);
    if (outline.counts().empty() && IsValid())
        return 0;

    const int shift = working_shift(box_, distance);
    const double unit = 1 << shift;
    geometry_list<POINT> points(outline.points().begin(), outline.points().end());
    RescalePolyPolygon(points, shift);
    poly_polygon contours, moved;
    // What lies around a complement's contours shrinks when they grow.
    const double inwards = framed_ ? -static_cast<double>(distance) : distance;
    if (bounding_contours(points, outline.counts(), contours))
        offset_contours(contours, inwards * unit, unit, bevel != 0, moved);
    RescalePolyPolygon(moved.points, -shift);

    const edge_outline cleaned(moved.points, moved.counts);
    moved.counts.clear();
    for (const auto& contour : cleaned.contours())
        moved.counts.push_back(static_cast<int>(contour.count));
    if (cleaned.size() > max_points)
        return 0;
    vSHAPE result(
        cleaned.points().data(), moved.counts.data(), static_cast<int>(moved.counts.size()), closed_);
    if (result.count_ != cleaned.size())
        return 0;
    if (framed_)
        result.Negate();
    *this = std::move(result);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

} // namespace klv
