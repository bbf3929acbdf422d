#pragma once

#include <algorithm>
#include <cstdint>

/// Conversions to 32 bits that answer the nearest number when the value is out of range. Those that keep the
/// low bits instead are in wrapping.h.
namespace klv {

[[nodiscard]] constexpr std::int32_t saturated(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Truncates toward zero; NaN gives 0.
[[nodiscard]] constexpr std::int32_t truncate_saturated(double value) noexcept
{
    if (value != value)
        return 0;
    if (value <= -2147483648.0)
        return INT32_MIN;
    if (value >= 2147483647.0)
        return INT32_MAX;
    return static_cast<std::int32_t>(value);
}

/// Rounds half away from zero; NaN gives 0.
[[nodiscard]] constexpr std::int32_t round_saturated(double value) noexcept
{
    return truncate_saturated(value > 0 ? value + 0.5 : value - 0.5);
}

} // namespace klv
