#pragma once

#include "klv/base/types.h"

#include <algorithm>
#include <cstdint>

/// Device coordinates. A file may hold any 32-bit coordinate, so what reaches a device is kept in a range in
/// which differences, products and widened outlines can't overflow.
namespace klv {

/// Largest device coordinate, in pixels either way. Products of two differences fit 64 bits with room.
inline constexpr std::int32_t max_device_coordinate = 1 << 27;

constexpr std::int32_t clamp_coordinate(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(value, -max_device_coordinate, max_device_coordinate));
}

/// Truncation toward zero, kept within device coordinates; not-a-number gives 0.
inline std::int32_t truncated(double value) noexcept
{
    if (!(value == value))
        return 0;
    return static_cast<std::int32_t>(
        std::clamp<double>(value, -max_device_coordinate, max_device_coordinate));
}

inline POINT operator+(const POINT& a, const POINT& b) noexcept { return {a.x + b.x, a.y + b.y}; }
inline POINT operator-(const POINT& a, const POINT& b) noexcept { return {a.x - b.x, a.y - b.y}; }

} // namespace klv
