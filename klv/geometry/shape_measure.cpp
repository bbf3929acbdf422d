#include "klv/base/wrapping.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/decompose.h"
#include "klv/geometry/planar/flat_outline.h"
#include "klv/geometry/shape.h"

#include <cmath>

namespace klv {

int vSHAPE::Area() const noexcept
try {
    if (closed_ == 0)
        return 0;
    const flat_outline outline(*this);
    poly_polygon pieces;
    if (!DecomposePolyPolygon(outline.points(), outline.counts(), pieces, self_crossings::yes))
        return 0;
    std::int32_t area = 0;
    std::size_t at = 0;
    for (const int count : pieces.counts) {
        const auto piece = std::span<const POINT>(pieces.points).subspan(at, static_cast<std::size_t>(count));
        at += piece.size();
        const std::int32_t part = ContourArea(piece, true);
        area = ContourIsHole(outline.points(), outline.counts(), piece) ? wrap_sub(area, part)
                                                                        : wrap_add(area, part);
    }
    return area;
} catch (const std::bad_alloc&) {
    return 0;
}

int vSHAPE::Perimeter() const noexcept
{
    const flat_outline outline(*this);
    std::int32_t length = 0;
    const auto add_edge = [&](const POINT& a, const POINT& b) {
        length = wrap_add(length,
            round_wrapped(std::hypot(static_cast<double>(b.x) - a.x, static_cast<double>(b.y) - a.y)));
    };
    outline.any_contour([&](std::span<const POINT> contour) {
        for (std::size_t i = 0; i + 1 < contour.size(); ++i)
            add_edge(contour[i], contour[i + 1]);
        if (closed_ != 0 && !contour.empty())
            add_edge(contour.back(), contour.front());
        return false;
    });
    return length;
}

int vSHAPE::Direction(vWINDING_DIRECTION* out, int n) const noexcept
{
    const flat_outline outline(*this);
    return n >= 0 && outline.any_contour([&](std::span<const POINT> contour) {
        if (n-- != 0)
            return false;
        *out = ContourDirection(contour);
        return true;
    });
}

int vSHAPE::PointNearPath(const vPOINT& point, unsigned int tolerance) const noexcept
{
    const auto reach = std::int64_t{2} * tolerance;
    if (point.x < box_.Left() - reach || point.x > box_.Right() + reach || point.y < box_.Top() - reach
        || point.y > box_.Bottom() + reach)
        return 0;

    const auto limit = static_cast<std::int32_t>(tolerance * tolerance);
    const auto within_reach = [&](const vPOINT& p) {
        const vPOINT d = point - p;
        return wrap_add(wrap_mul(d.x, d.x), wrap_mul(d.y, d.y)) <= limit;
    };
    const auto foot_within_reach = [&](const vPOINT& a, const vPOINT& b) {
        const double ex = static_cast<double>(b.x) - a.x;
        const double ey = static_cast<double>(b.y) - a.y;
        const double square = ex * ex + ey * ey;
        const double t
            = (ex * (static_cast<double>(point.x) - a.x) + ey * (static_cast<double>(point.y) - a.y))
            / square;
        return square > 0 && t > 0 && t < 1
            && within_reach(a + vPOINT(truncate_wrapped(ex * t + 0.5), truncate_wrapped(ey * t + 0.5)));
    };

    const flat_outline outline(*this);
    const auto points = outline.points();
    if (std::any_of(points.begin(), points.end(), within_reach))
        return 1;
    return outline.any_contour([&](std::span<const POINT> contour) {
        for (std::size_t i = 0; i + 1 < contour.size(); ++i) {
            if (foot_within_reach(contour[i], contour[i + 1]))
                return true;
        }
        return false;
    });
}

namespace {

__extension__ using wide = __int128;

struct edge {
    std::int64_t x;
    std::int64_t y;

    static edge between(const point_record& a, const point_record& b)
    {
        return {std::int64_t{b.x()} - a.x(), std::int64_t{b.y()} - a.y()};
    }
};

int sign(auto value) { return (value > 0) - (value < 0); }
int turn_of(const edge& a, const edge& b) { return sign(wide{a.x} * b.y - wide{a.y} * b.x); }
bool at_right_angles(const edge& a, const edge& b) { return wide{a.x} * b.x + wide{a.y} * b.y == 0; }

// How often the sign of one coordinate changes along the edges of a polygon, the way round counted in.
class reversals {
public:
    void add(std::int64_t component)
    {
        const int now = sign(component);
        if (now == 0)
            return;
        if (first_ == 0)
            first_ = now;
        count_ += last_ != 0 && now != last_;
        last_ = now;
    }
    [[nodiscard]] int total() const { return count_ + (first_ != last_); }

private:
    int first_ = 0;
    int last_ = 0;
    int count_ = 0;
};

} // namespace

int vSHAPE::IsRectangular() const noexcept
{
    constexpr std::size_t corners = 4;
    if (count_ != corners)
        return 0;
    const auto at = [&](std::size_t i) { return records_[i % corners]; };
    for (std::size_t i = 0; i < corners; ++i) {
        if (!at(i).has(point_flags::line_to)
            || !at_right_angles(edge::between(at(i), at(i + 1)), edge::between(at(i + 1), at(i + 2))))
            return 0;
    }
    return 1;
}

vWINDING_DIRECTION vSHAPE::IsSingleClosedConvexPolygon() const noexcept
{
    const auto points = records();
    const auto ends_closed = [&] {
        // The records of a closing curve end with its control points.
        const auto last = std::find_if(points.rbegin(), points.rend(),
            [](const point_record& r) { return !r.has(point_flags::control); });
        return last != points.rend() && last->has(point_flags::last) && last->has(point_flags::segment);
    };
    if (closed_ == 0 || points.size() < 3 || !points[0].has(point_flags::first) || !ends_closed())
        return vWINDING_NONE;

    reversals across, down;
    int turns = 0;
    // A convex outline goes out and back once in each coordinate.
    constexpr int most_reversals = 2;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto& next = points[(i + 1) % points.size()];
        const edge in = edge::between(points[i], next);
        const int turn = turn_of(in, edge::between(next, points[(i + 2) % points.size()]));
        across.add(in.x);
        down.add(in.y);
        if ((i > 0 && points[i].has(point_flags::first)) || (turn != 0 && turns != 0 && turn != turns))
            return vWINDING_NONE;
        turns = turns == 0 ? turn : turns;
    }
    if (across.total() > most_reversals || down.total() > most_reversals)
        return vWINDING_NONE;
    return turns > 0 ? vWINDING_CLOCKWISE : turns < 0 ? vWINDING_ANTICLOCKWISE : vWINDING_NONE;
}

} // namespace klv
