#pragma once

#include "klv/base/types.h"

#include <algorithm>
#include <cstdint>

/// Guarded arithmetic of the rendering engines. A file may hold any 32-bit coordinate, so device
/// coordinates are kept in a range in which differences, products and widened outlines can't overflow.
namespace klv {

/// Largest device coordinate, in pixels either way. Products of two differences fit 64 bits with room.
inline constexpr std::int32_t max_device_coordinate = 1 << 27;

/// What the integer sines and cosines are scaled by.
inline constexpr int trigonometric_scale = 25600;

constexpr std::int32_t clamp_coordinate(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(value, -max_device_coordinate, max_device_coordinate));
}

/// A value as a 32-bit integer, the nearest when it is out of range.
constexpr std::int32_t saturated(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Truncation toward zero, kept within device coordinates; not-a-number gives 0.
inline std::int32_t truncated(double value) noexcept
{
    if (!(value == value))
        return 0;
    return static_cast<std::int32_t>(
        std::clamp<double>(value, -max_device_coordinate, max_device_coordinate));
}

/// value * multiplier / divisor, rounded half away from zero. \param divisor not 0
constexpr std::int64_t mul_div(std::int64_t value, std::int64_t multiplier, std::int64_t divisor) noexcept
{
    const std::int64_t product = value * multiplier;
    const std::int64_t size = divisor < 0 ? -divisor : divisor;
    const std::int64_t half = size / 2;
    const std::int64_t quotient = (product < 0 ? product - half : product + half) / size;
    return divisor < 0 ? -quotient : quotient;
}

/// Square root, to the nearest whole number. \param square not negative
std::int32_t integer_root(std::int64_t square) noexcept;

inline std::int32_t length(std::int64_t dx, std::int64_t dy) noexcept
{
    return integer_root(dx * dx + dy * dy);
}

inline POINT operator+(const POINT& a, const POINT& b) noexcept { return {a.x + b.x, a.y + b.y}; }
inline POINT operator-(const POINT& a, const POINT& b) noexcept { return {a.x - b.x, a.y - b.y}; }

} // namespace klv
