#pragma once

#include "klv/base/muldiv.h"
#include "klv/core/point.h"

#include <cstdint>

/// Integer functions for the inner loops of the engines: table look-ups and short loops that allocate
/// nothing, and the conversions between polar and cartesian coordinates.
namespace klv {

/// What the integer sines and cosines are scaled by.
inline constexpr int trigonometric_scale = 25600;

/// Sine and cosine of whole degrees, trigonometric_scale for 1.0.
[[nodiscard]] short Sin(short degrees) noexcept;
[[nodiscard]] short Cos(short degrees) noexcept;

/// The logarithmic grading curve: 0 to 64 for v from 0 to 256. v is limited to 0..263.
[[nodiscard]] short Log(short v) noexcept;
/// The same curve from 0.0 to 1.0, interpolated between the entries of its tables.
[[nodiscard]] double RealLog(short v) noexcept;

/// The integer square root of |n|, near the true root within one; 16 bits, so that roots above 32767 come
/// out negative.
[[nodiscard]] short Sqrt(int n) noexcept;

/// a * b / c rounded half away from zero, with a 64-bit intermediate; -1 when c is 0 or the result does not
/// fit 32 bits.
[[nodiscard]] constexpr std::int32_t MulDiv(std::int32_t a, std::int32_t b, std::int32_t c) noexcept
{
    if (c == 0)
        return -1;
    const std::int64_t quotient = mul_div(a, b, c);
    return quotient < -INT32_MAX || quotient > INT32_MAX ? -1 : static_cast<std::int32_t>(quotient);
}

/// Angles in degrees. Each output pointer may be null.
void PolarToCartesian(
    const vPOINT& centre, const double& radius, const double& angle, double* x, double* y) noexcept;
/// The angle lies in [0, 360).
void CartesianToPolar(
    const vPOINT& centre, const double& x, const double& y, double* radius, double* angle) noexcept;

} // namespace klv
