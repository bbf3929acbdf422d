#pragma once

#include "klv/base/types.h"
#include "klv/base/wrapping.h"
#include "klv/core/object.h"
#include "klv/core/real.h"

#include <cstdint>

namespace klv {

class IDistort;
class vRECT;
class vSHAPE;

/// A position in logical units; y grows downwards. Arithmetic wraps modulo 2^32.
class vPOINT : public vOBJECT {
public:
    int x = 0;
    int y = 0;

    constexpr vPOINT() noexcept = default;
    constexpr vPOINT(const int& x_value, const int& y_value) noexcept
        : x(x_value)
        , y(y_value)
    {
    }
    constexpr vPOINT(const POINT& p) noexcept
        : x(p.x)
        , y(p.y)
    {
    }
    /// p turned about centre, counter-clockwise as seen, by angle degrees; aspect is the ratio of the
    /// horizontal to the vertical unit. Rounded half away from zero.
    vPOINT(const vPOINT& p, const vPOINT& centre, double angle, double aspect) noexcept;

    constexpr operator POINT() const noexcept { return {x, y}; }

    [[nodiscard]] constexpr vPOINT operator+(const vPOINT& b) const noexcept
    {
        return {wrap_add(x, b.x), wrap_add(y, b.y)};
    }
    [[nodiscard]] constexpr vPOINT operator-(const vPOINT& b) const noexcept
    {
        return {wrap_sub(x, b.x), wrap_sub(y, b.y)};
    }
    /// Both coordinates times the raw value of r.
    [[nodiscard]] constexpr vPOINT operator*(const vREAL& r) const noexcept
    {
        return {wrap_mul(x, r()), wrap_mul(y, r())};
    }
    /// Both coordinates divided by the raw value of r, toward zero. r must not be 0.
    [[nodiscard]] constexpr vPOINT operator/(const vREAL& r) const noexcept
    {
        return {wrap_div(x, r()), wrap_div(y, r())};
    }

    constexpr bool operator==(const vPOINT& b) const noexcept { return x == b.x && y == b.y; }
    /// The order holds only when it holds for both coordinates, so two points may have none.
    constexpr bool operator>=(const vPOINT& b) const noexcept { return x >= b.x && y >= b.y; }
    constexpr bool operator<=(const vPOINT& b) const noexcept { return x <= b.x && y <= b.y; }
    constexpr bool operator>(const vPOINT& b) const noexcept { return x > b.x && y > b.y; }
    constexpr bool operator<(const vPOINT& b) const noexcept { return x < b.x && y < b.y; }

    /// \return x + y
    [[nodiscard]] constexpr int ManDist() const noexcept { return wrap_add(x, y); }
    /// \return the integer root of x * x + y * y, from 32-bit products; see Sqrt
    [[nodiscard]] int DiagDist() const noexcept;

    /// \return 1 when the point lies in the rectangle, edges included
    int operator^(const vRECT& r) const noexcept;
    /// \return 1 when the point lies in the shape
    int operator^(const vSHAPE& shape) const noexcept;

    /// \return where the distortion puts the point
    vPOINT Distort(IDistort* distort) const noexcept;
};

/// A width and a height in logical units.
class vSIZE : public vPOINT {
public:
    constexpr vSIZE() noexcept = default;
    constexpr vSIZE(const int& width, const int& height) noexcept
        : vPOINT(width, height)
    {
    }

    [[nodiscard]] constexpr int& Width() noexcept { return x; }
    [[nodiscard]] constexpr int& Height() noexcept { return y; }
    [[nodiscard]] constexpr const int& Width() const noexcept { return x; }
    [[nodiscard]] constexpr const int& Height() const noexcept { return y; }
};

} // namespace klv
