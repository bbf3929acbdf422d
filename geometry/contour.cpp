#include "geometry/contour.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "platform/wrapping.h"

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

namespace {

vWINDING_DIRECTION direction_of(std::int32_t area)
{
    return area > 0 ? vWINDING_CLOCKWISE : area < 0 ? vWINDING_ANTICLOCKWISE : vWINDING_NONE;
}

// Whole degrees, rounded from hundredths.
int edge_angle(const POINT& from, const POINT& to)
{
    const double radians = std::atan2(double{1} * to.y - from.y, double{1} * to.x - from.x);
    const double hundredths = std::round(radians * 180.0 / std::numbers::pi * 100.0);
    return static_cast<int>(std::round(hundredths / 100.0));
}

int angle_between_edges(const POINT& a, const POINT& b, const POINT& c)
{
    const int angle = std::abs(edge_angle(a, b) - edge_angle(b, c));
    return angle > 180 ? 360 - angle : angle;
}

bool near(const POINT& a, const POINT& b)
{
    constexpr std::int64_t distance = 5;
    return std::abs(std::int64_t{a.x} - b.x) <= distance && std::abs(std::int64_t{a.y} - b.y) <= distance;
}

POINT centroid(const POINT& a, const POINT& b, const POINT& c)
{
    return {static_cast<std::int32_t>((std::int64_t{a.x} + b.x + c.x) / 3),
        static_cast<std::int32_t>((std::int64_t{a.y} + b.y + c.y) / 3)};
}

// A corner whose triangle lies inside the contour and is neither too sharp, too flat nor too small for
// its centroid to be a trustworthy inner point.
bool is_sound_corner(const POINT& prev, const POINT& p, const POINT& next, vWINDING_DIRECTION direction)
{
    if (TriangleDirection(prev, p, next) != direction)
        return false;
    const int angle = angle_between_edges(prev, p, next);
    return angle >= 10 && angle < 171 && !near(prev, p) && !near(next, p);
}

POINT inner_point(std::span<const POINT> contour)
{
    if (contour.size() == 3)
        return centroid(contour[0], contour[1], contour[2]);
    const auto turns = ContourDirection(contour);
    const auto direction = turns == vWINDING_NONE ? vWINDING_ANTICLOCKWISE : turns;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const POINT& prev = contour[(i == 0 ? contour.size() : i) - 1];
        const POINT& next = contour[i + 1 == contour.size() ? 0 : i + 1];
        if (is_sound_corner(prev, contour[i], next, direction))
            return centroid(prev, contour[i], next);
    }
    return contour[0];
}

bool crosses_left_of(const POINT& a, const POINT& b, const POINT& p)
{
    const bool spans = (a.y >= p.y && p.y > b.y) || (a.y < p.y && p.y <= b.y);
    if (!spans)
        return false;
    if (a.x < p.x && b.x < p.x)
        return true;
    const double slope = (double{1} * b.x - a.x) / (double{1} * b.y - a.y);
    return a.x + slope * (double{1} * p.y - a.y) < p.x;
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

bool PointInPolyPolygon(std::span<const POINT> points, std::span<const int> counts, const POINT& p) noexcept
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

bool ContourIsHole(
    std::span<const POINT> points, std::span<const int> counts, std::span<const POINT> contour) noexcept
{
    return !contour.empty() && !PointInPolyPolygon(points, counts, inner_point(contour));
}

} // namespace klv
