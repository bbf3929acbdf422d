#pragma once

#include <cstdint>

/// Arithmetic on coordinates that come from files: 32-bit results that wrap modulo 2^32 instead of
/// overflowing, and conversions of any double to such a number. Those that stop at the ends of the range
/// instead are in saturating.h.
namespace klv {

[[nodiscard]] constexpr std::int32_t wrap_add(std::int32_t a, std::int32_t b) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

[[nodiscard]] constexpr std::int32_t wrap_sub(std::int32_t a, std::int32_t b) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

[[nodiscard]] constexpr std::int32_t wrap_mul(std::int32_t a, std::int32_t b) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

[[nodiscard]] constexpr std::int32_t wrap_neg(std::int32_t a) noexcept { return wrap_sub(0, a); }

/// Magnitude; the most negative number stays as it is.
[[nodiscard]] constexpr std::int32_t wrap_abs(std::int32_t a) noexcept { return a < 0 ? wrap_neg(a) : a; }

/// a / b truncated toward zero; the one quotient that does not fit wraps. b must not be 0.
[[nodiscard]] constexpr std::int32_t wrap_div(std::int32_t a, std::int32_t b) noexcept
{
    return b == -1 ? wrap_neg(a) : a / b;
}

/// The low 32 bits of a 64-bit number.
[[nodiscard]] constexpr std::int32_t wrap_narrow(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

/// Truncates toward zero and keeps the low 32 bits. Values that no 64-bit integer holds, and NaN, give 0.
[[nodiscard]] constexpr std::int32_t truncate_wrapped(double value) noexcept
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(value > -limit && value < limit))
        return 0;
    return wrap_narrow(static_cast<std::int64_t>(value));
}

/// Rounds half away from zero and keeps the low 32 bits, as truncate_wrapped does.
[[nodiscard]] constexpr std::int32_t round_wrapped(double value) noexcept
{
    return truncate_wrapped(value > 0 ? value + 0.5 : value - 0.5);
}

} // namespace klv
