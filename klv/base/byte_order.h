#pragma once

#include <cstddef>
#include <cstdint>

/// Whole numbers as bytes at a known address: for fields of a fixed layout that are looked at or filled in
/// place. What comes from a file goes through byte_reader, what grows goes through byte_writer.
namespace klv {

/// The lowest Width bytes of value, the lowest first.
template <std::size_t Width> constexpr void store_le(std::uint8_t* at, std::uint32_t value) noexcept
{
    static_assert(Width <= 4);
    for (std::size_t i = 0; i < Width; ++i)
        at[i] = static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU);
}

/// The same, the lowest last.
template <std::size_t Width> constexpr void store_be(std::uint8_t* at, std::uint32_t value) noexcept
{
    static_assert(Width <= 4);
    for (std::size_t i = 0; i < Width; ++i)
        at[i] = static_cast<std::uint8_t>(value >> (8 * (Width - 1 - i)) & 0xFFU);
}

template <std::size_t Width> [[nodiscard]] constexpr std::uint32_t load_le(const std::uint8_t* at) noexcept
{
    static_assert(Width <= 4);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < Width; ++i)
        value |= std::uint32_t{at[i]} << (8 * i);
    return value;
}

template <std::size_t Width> [[nodiscard]] constexpr std::uint32_t load_be(const std::uint8_t* at) noexcept
{
    static_assert(Width <= 4);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < Width; ++i)
        value = value << 8 | at[i];
    return value;
}

} // namespace klv
