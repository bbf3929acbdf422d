#include "klv/geometry/planar/shape_boolean.h"

#include "klv/geometry/planar/arrangement.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/flat_outline.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <new>

// Boolean operations by winding numbers: both outlines go into one planar arrangement, and the operation is
// the choice of the levels whose boundaries stay. Nothing but those boundaries' points is rounded.
namespace klv {

bool UnionPolyPolygon(std::span<const POINT> points, std::span<const int> counts, poly_polygon& result,
    self_crossings crossings, int frames)
{
    result = poly_polygon();
    arrangement graph(points, counts, crossings == self_crossings::yes, frames);
    // Loops between the outside and what is enclosed at least once.
    graph.visit_loops([](std::int32_t level) { return level == 0; },
        [&](std::int32_t, std::span<const POINT> loop) {
            if (doubled_area(loop) != 0)
                result.append(loop);
        });
    return !result.counts.empty();
}

namespace {

// Adds the outline of what a shape encloses, by the even-odd rule.
void add_area(const vSHAPE& shape, poly_polygon& all)
{
    const flat_outline outline(shape);
    if (outline.counts().empty() && shape.IsValid())
        throw std::bad_alloc();
    poly_polygon area;
    if (!DecomposeEvenOdd(outline.points(), outline.counts(), area))
        return;
    all.points.insert(all.points.end(), area.points.begin(), area.points.end());
    all.counts.insert(all.counts.end(), area.counts.begin(), area.counts.end());
}

// Adds what the shape takes out of its frame: the loops of the shape that was negated, turned. They come from
// that very shape, so that they have the same points.
void add_complement(const vSHAPE& shape, poly_polygon& all)
{
    vSHAPE enclosed(shape);
    enclosed.Negate();
    if (enclosed.NoPoint() != shape.NoPoint() || enclosed.negated())
        throw std::bad_alloc();
    const std::size_t points = all.points.size(), contours = all.counts.size();
    add_area(enclosed, all);
    for_each_contour(std::span<POINT>(all.points).subspan(points),
        std::span<const int>(all.counts).subspan(contours), ReverseContour);
}

} // namespace

int vSHAPE::Union(const vSHAPE& other) noexcept
try {
    if (closed_ == 0 || other.closed_ == 0)
        return 0;
    poly_polygon both, outline;
    for (const vSHAPE* shape : {static_cast<const vSHAPE*>(this), &other})
        (shape->framed_ ? add_complement : add_area)(*shape, both);
    const int frames = framed_ + other.framed_;
    if (!UnionPolyPolygon(both.points, both.counts, outline, self_crossings::yes, frames))
        outline = poly_polygon();
    both = poly_polygon();

    if (outline.points.size() > max_points)
        return 0;
    vSHAPE result(outline.points.data(), outline.counts.data(), static_cast<int>(outline.counts.size()), 1);
    if (result.count_ != outline.points.size())
        return 0;
    result.framed_ = frames > 0;
    *this = std::move(result);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

// What both have in common is the complement of what either lacks.
int vSHAPE::Intersection(const vSHAPE& other) noexcept
{
    if (closed_ == 0 || other.closed_ == 0)
        return 0;
    vSHAPE common(*this), rest(other);
    if (common.count_ != count_ || rest.count_ != other.count_)
        return 0;
    common.Negate();
    rest.Negate();
    if (!common.Union(rest))
        return 0;
    common.Negate();
    *this = std::move(common);
    return 1;
}

namespace {

// Lets a closed contour run the other way.
void turn_contour(std::span<point_record> contour)
{
    const bool closes_by_curve = contour.back().has(point_flags::control);
    std::reverse(contour.begin(), contour.end());
    if (closes_by_curve)
        std::rotate(contour.begin(), contour.begin() + 2, contour.end());
    // The segment that leaves a point is the one that came to it before.
    for (std::size_t i = 0; i < contour.size(); ++i) {
        if (contour[i].has(point_flags::control))
            continue;
        const bool curve = i + 1 < contour.size() && contour[i + 1].has(point_flags::control);
        contour[i].set_flags(curve ? point_flags::curve_to : point_flags::line_to);
    }
    const auto last = std::find_if(
        contour.rbegin(), contour.rend(), [](const point_record& r) { return !r.has(point_flags::control); });
    const auto add
        = [](point_record& r, std::uint8_t bit) { r.set_flags(static_cast<std::uint8_t>(r.flags() | bit)); };
    add(contour.front(), point_flags::first);
    add(*last, point_flags::last);
}

} // namespace

void vSHAPE::Negate() noexcept
{
    if (closed_ == 0 || !own(count_))
        return;
    if (IsValid()) {
        const auto points = own_records();
        for (auto at = points.begin(); at != points.end();) {
            const auto next = std::find_if(
                at + 1, points.end(), [](const point_record& r) { return r.has(point_flags::first); });
            turn_contour({at, next});
            at = next;
        }
        forget_walk();
        CalculateBoundingBox();
    }
    framed_ = !framed_;
}

} // namespace klv
