#pragma once

#include <cmath>

namespace klv {

/// A place or a direction of the plane in doubles, which hold every 32-bit coordinate, their differences and
/// the sums of these exactly.
struct vec2 {
    double x = 0;
    double y = 0;

    /// From any point with coordinates x and y.
    template <class Point> [[nodiscard]] static constexpr vec2 of(const Point& p) noexcept
    {
        return {static_cast<double>(p.x), static_cast<double>(p.y)};
    }
    template <class Point>
    [[nodiscard]] static constexpr vec2 between(const Point& from, const Point& to) noexcept
    {
        return {static_cast<double>(to.x) - from.x, static_cast<double>(to.y) - from.y};
    }

    friend constexpr vec2 operator+(vec2 a, vec2 b) noexcept { return {a.x + b.x, a.y + b.y}; }
    friend constexpr vec2 operator-(vec2 a, vec2 b) noexcept { return {a.x - b.x, a.y - b.y}; }
    friend constexpr vec2 operator*(vec2 v, double factor) noexcept { return {v.x * factor, v.y * factor}; }
    friend constexpr bool operator==(vec2, vec2) noexcept = default;
};

[[nodiscard]] constexpr double dot(vec2 a, vec2 b) noexcept { return a.x * b.x + a.y * b.y; }
/// Twice the signed area of the triangle 0, a, b; positive when b lies a turn from x to y away from a.
[[nodiscard]] constexpr double cross(vec2 a, vec2 b) noexcept { return a.x * b.y - a.y * b.x; }
[[nodiscard]] inline double length(vec2 v) noexcept { return std::hypot(v.x, v.y); }

} // namespace klv
