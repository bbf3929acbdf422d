#include "klv/geometry/planar/contour.h"

#include "klv/base/angles.h"
#include "klv/base/vec2.h"
#include "klv/base/wrapping.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

// Areas are the sum of a fan of triangles (the shoelace formula); a point is inside by the crossing number of
// the ray to its left.
namespace klv {

std::int32_t TriangleArea(const POINT& a, const POINT& b, const POINT& c) noexcept
{
    const auto u = [](std::int32_t value) { return static_cast<std::uint32_t>(value); };
    const std::uint32_t twice = u(a.x) * u(b.y) - u(a.y) * u(b.x) + u(a.y) * u(c.x) - u(a.x) * u(c.y)
        + u(b.x) * u(c.y) - u(c.x) * u(b.y);
    return static_cast<std::int32_t>(twice) / 2;
}

std::int32_t ContourArea(std::span<const POINT> contour, bool absolute_terms) noexcept
{
    std::int32_t sum = 0;
    for (std::size_t k = 1; k + 1 < contour.size(); ++k) {
        const std::int32_t term = TriangleArea(contour[0], contour[k], contour[k + 1]);
        sum = wrap_add(sum, absolute_terms ? wrap_abs(term) : term);
    }
    return sum;
}

int EdgeAngle(const POINT& from, const POINT& to) noexcept
{
    const double radians = std::atan2(static_cast<double>(to.y) - from.y, static_cast<double>(to.x) - from.x);
    const double hundredths = std::round(to_degrees(radians) * 100.0);
    return static_cast<int>(std::round(hundredths / 100.0));
}

namespace {

vWINDING_DIRECTION direction_of(std::int32_t area)
{
    return area > 0 ? vWINDING_CLOCKWISE : area < 0 ? vWINDING_ANTICLOCKWISE : vWINDING_NONE;
}

int angle_between_edges(const POINT& a, const POINT& b, const POINT& c)
{
    const int angle = std::abs(EdgeAngle(a, b) - EdgeAngle(b, c));
    return angle > 180 ? 360 - angle : angle;
}

bool near(const POINT& a, const POINT& b)
{
    constexpr std::int64_t distance = 5;
    return std::abs(std::int64_t{a.x} - b.x) <= distance && std::abs(std::int64_t{a.y} - b.y) <= distance;
}

// A corner whose triangle lies inside the contour and is neither too sharp, too flat nor too small to be
// trusted.
bool is_sound_corner(const POINT& prev, const POINT& p, const POINT& next, vWINDING_DIRECTION direction)
{
    if (TriangleDirection(prev, p, next) != direction)
        return false;
    const int angle = angle_between_edges(prev, p, next);
    return angle >= 10 && angle < 171 && !near(prev, p) && !near(next, p);
}

// From the corner a little way toward the middle of its triangle: inside the contour, and not yet inside
// another contour that may lie close by.
vec2 inner_side(const POINT& prev, const POINT& p, const POINT& next)
{
    constexpr double little = 1.0 / 1024;
    const double x = (static_cast<double>(prev.x) + p.x + next.x) / 3;
    const double y = (static_cast<double>(prev.y) + p.y + next.y) / 3;
    return {p.x + (x - p.x) * little, p.y + (y - p.y) * little};
}

// A point just inside the contour: at its first sound corner, else, on smooth or tiny contours, at the one
// with the largest triangle.
vec2 inner_point(std::span<const POINT> contour)
{
    const auto turns = ContourDirection(contour);
    const auto direction = turns == vWINDING_NONE ? vWINDING_ANTICLOCKWISE : turns;
    const std::size_t n = contour.size();
    std::size_t best = 0;
    std::int32_t largest = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const POINT& prev = contour[(i == 0 ? n : i) - 1];
        const POINT& next = contour[i + 1 == n ? 0 : i + 1];
        if (is_sound_corner(prev, contour[i], next, direction))
            return inner_side(prev, contour[i], next);
        const std::int32_t area = TriangleArea(prev, contour[i], next);
        if (TriangleDirection(prev, contour[i], next) == direction && wrap_abs(area) > largest) {
            largest = wrap_abs(area);
            best = i;
        }
    }
    return inner_side(
        contour[(best == 0 ? n : best) - 1], contour[best], contour[best + 1 == n ? 0 : best + 1]);
}

bool crosses_left_of(const POINT& a, const POINT& b, const vec2& p)
{
    const bool spans = (a.y >= p.y && p.y > b.y) || (a.y < p.y && p.y <= b.y);
    if (!spans)
        return false;
    if (a.x < p.x && b.x < p.x)
        return true;
    const double slope = (static_cast<double>(b.x) - a.x) / (static_cast<double>(b.y) - a.y);
    return a.x + slope * (p.y - a.y) < p.x;
}

} // namespace

vWINDING_DIRECTION ContourDirection(std::span<const POINT> contour) noexcept
{
    return direction_of(ContourArea(contour, false));
}

vWINDING_DIRECTION TriangleDirection(const POINT& a, const POINT& b, const POINT& c) noexcept
{
    return direction_of(TriangleArea(a, b, c));
}

void ReverseContour(std::span<POINT> contour) noexcept { std::ranges::reverse(contour); }

namespace {

bool is_inside(std::span<const POINT> points, std::span<const int> counts, const vec2& p)
{
    bool inside = false;
    std::size_t at = 0;
    for (const int count : counts) {
        const auto contour = points.subspan(at, static_cast<std::size_t>(count));
        at += contour.size();
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const POINT& next = contour[i + 1 == contour.size() ? 0 : i + 1];
            inside ^= crosses_left_of(contour[i], next, p);
        }
    }
    return inside;
}

} // namespace

bool PointInPolyPolygon(std::span<const POINT> points, std::span<const int> counts, const POINT& p) noexcept
{
    return is_inside(points, counts, {static_cast<double>(p.x), static_cast<double>(p.y)});
}

bool ContourIsHole(
    std::span<const POINT> points, std::span<const int> counts, std::span<const POINT> contour) noexcept
{
    return !contour.empty() && !is_inside(points, counts, inner_point(contour));
}

} // namespace klv
