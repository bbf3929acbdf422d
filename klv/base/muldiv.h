#pragma once

#include <cstdint>

namespace klv {

/// value * multiplier / divisor, rounded half away from zero. \param divisor not 0; the product must fit 64
/// bits with half of the divisor to spare
[[nodiscard]] constexpr std::int64_t mul_div(
    std::int64_t value, std::int64_t multiplier, std::int64_t divisor) noexcept
{
    const std::int64_t product = value * multiplier;
    const std::int64_t size = divisor < 0 ? -divisor : divisor;
    const std::int64_t half = size / 2;
    const std::int64_t quotient = (product < 0 ? product - half : product + half) / size;
    return divisor < 0 ? -quotient : quotient;
}

} // namespace klv
