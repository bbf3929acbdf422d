#pragma once

#include <cstdint>

namespace klv {

/// Square root, to the nearest whole number. \param square not negative
[[nodiscard]] std::int32_t integer_root(std::int64_t square) noexcept;

/// Length of a vector to the nearest whole number. The sum of the squares must fit 64 bits.
[[nodiscard]] inline std::int32_t length(std::int64_t dx, std::int64_t dy) noexcept
{
    return integer_root(dx * dx + dy * dy);
}

} // namespace klv
