#include "klv/geometry/arc.h"

#include "klv/base/angles.h"
#include "klv/base/saturating.h"
#include "klv/base/vec2.h"
#include "klv/core/bezpoint.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace klv {
namespace {

// Angles are held in tenths of a degree.
constexpr int full_turn = 3600;
constexpr int quarter_turn = 900;
constexpr int longest_segment = 450;

// Points are worked out in whole units of a circle of at most this radius, then taken to the ellipse.
constexpr double largest_radius = 2000;

// tan((k + 0.5) degrees) * 1024 for k = 0 to 44; 1024 ends the table.
constexpr std::array<int, 46> tangents{9, 27, 45, 63, 81, 99, 117, 135, 153, 171, 190, 208, 227, 246, 265,
    284, 303, 323, 343, 363, 383, 403, 424, 445, 467, 488, 511, 533, 556, 579, 603, 628, 652, 678, 704, 730,
    758, 786, 815, 844, 875, 906, 938, 972, 1006, 1024};

// Whole degrees of the direction (x, y) where 0 <= y <= x.
int q_atan(std::int64_t x, std::int64_t y)
{
    if (x == 0 || y == 0)
        return 0;
    const auto ratio = (y * 1024 + x / 2) / x;
    return static_cast<int>(std::lower_bound(tangents.begin(), tangents.end(), ratio) - tangents.begin());
}

// The map between an ellipse with two conjugate radii and a circle about the origin.
class circle_map {
public:
    circle_map(const vPOINT& centre, const vPOINT& radius1, const vPOINT& radius2)
        : centre_(vec2::of(centre))
        , u_(vec2::of(radius1))
        , v_(vec2::of(radius2))
    {
        const double r1 = std::floor(std::hypot(u_.x, u_.y));
        const double r2 = std::floor(std::hypot(v_.x, v_.y));
        if (cross(u_, v_) == 0) {
            u_ = {r1, 0};
            v_ = {0, r2};
        }
        radius_ = std::max(r1, r2);
        while (radius_ > largest_radius)
            radius_ = std::floor(radius_ / 2);
    }

    bool degenerate() const { return radius_ == 0; }
    double radius() const { return radius_; }

    // Angle on the circle, tenths of a degree, of a direction from the ellipse's centre.
    int angle_of(const vPOINT& direction) const
    {
        const auto d = vec2::of(direction);
        const double area = cross(u_, v_);
        if (area == 0)
            return iatan2(direction.y, direction.x) * 10;
        // The larger radius keeps its length, so nothing is lost when the two are equal.
        const double length = std::max(std::hypot(u_.x, u_.y), std::hypot(v_.x, v_.y));
        const double x = cross(d, v_) / area * length;
        const double y = cross(u_, d) / area * length;
        return iatan2(truncate_saturated(std::round(y)), truncate_saturated(std::round(x))) * 10;
    }

    vPOINT place(const vec2& p) const
    {
        const double fx = p.x / radius_;
        const double fy = p.y / radius_;
        return vPOINT(truncate_saturated(std::round(centre_.x + fx * u_.x + fy * v_.x)),
            truncate_saturated(std::round(centre_.y + fx * u_.y + fy * v_.y)));
    }

private:
    vec2 centre_;
    vec2 u_;
    vec2 v_;
    double radius_ = 0;
};

vec2 on_circle(double radius, int angle)
{
    return {std::floor(radius * std::cos(tenths_to_radians(angle))),
        std::floor(radius * std::sin(tenths_to_radians(angle)))};
}

// End of the segment that starts at `from`: 45 degrees on, or the quarter that lies strictly nearer to that
// than 45 degrees, but never past the arc's end.
int segment_end(int from, int arc_end)
{
    if (arc_end - from <= longest_segment)
        return arc_end;
    const int end = from + longest_segment;
    const int quarter = (end + quarter_turn / 2) / quarter_turn * quarter_turn;
    const bool snaps = std::abs(end - quarter) < longest_segment && quarter > from && quarter <= arc_end;
    return snaps ? quarter : end;
}

void append(vSHAPE& shape, const vPOINT& p, std::uint8_t flags) { shape.AppendPoint(vBEZPOINT(p, flags)); }

std::uint8_t final_flags(ARCCLOSURE closure)
{
    switch (closure) {
    case ARC_CHORD:
        return point_flags::last | point_flags::line_to;
    case ARC_PIE:
        return point_flags::line_to;
    default:
        return point_flags::last;
    }
}

void append_segment(vSHAPE& shape, const circle_map& map, int from, int to)
{
    const double half = tenths_to_radians(to - from) / 2;
    const double reach = 4 * map.radius() / 3 * (1 - std::cos(half)) / std::sin(half);
    const auto start = on_circle(map.radius(), from);
    const auto end = on_circle(map.radius(), to);
    const double a = tenths_to_radians(from);
    const double b = tenths_to_radians(to);
    append(shape, map.place({start.x - reach * std::sin(a), start.y + reach * std::cos(a)}),
        point_flags::control);
    append(
        shape, map.place({end.x + reach * std::sin(b), end.y - reach * std::cos(b)}), point_flags::control);
}

} // namespace

int iatan2(int y, int x)
{
    const std::int64_t a = std::abs(std::int64_t{y});
    const std::int64_t b = std::abs(std::int64_t{x});
    int degrees = b > a ? q_atan(b, a) : 90 - q_atan(a, b);
    if (x < 0)
        degrees = 180 - degrees;
    if (y < 0)
        degrees = 360 - degrees;
    return degrees % 360;
}

void ArcToBez(const vPOINT& centre, const vPOINT& radius1, const vPOINT& radius2, const vPOINT& start,
    const vPOINT& end, vSHAPE& out, ARCCLOSURE closure)
{
    const circle_map map(centre, radius1, radius2);
    const int from = map.degenerate() ? 0 : map.angle_of(start);
    int span = map.degenerate() ? 0 : map.angle_of(end) - from;
    if (span < 0)
        span += full_turn;
    if (span == 0) {
        const int rx = std::max(std::abs(radius1.x), std::abs(radius2.x));
        const int ry = std::max(std::abs(radius1.y), std::abs(radius2.y));
        out = vELPSSHAPE(vRECT(centre.x - rx, centre.y - ry, centre.x + rx, centre.y + ry));
        return;
    }

    vSHAPE arc;
    const int arc_end = from + span;
    append(arc, map.place(on_circle(map.radius(), from)), point_flags::first | point_flags::curve_to);
    for (int at = from; at < arc_end;) {
        const int next = segment_end(at, arc_end);
        append_segment(arc, map, at, next);
        const bool last = next == arc_end;
        append(arc, map.place(on_circle(map.radius(), next)),
            last ? final_flags(closure) : point_flags::curve_to);
        at = next;
    }
    if (closure == ARC_PIE)
        append(arc, centre, point_flags::last | point_flags::line_to);
    out = std::move(arc);
}

} // namespace klv
