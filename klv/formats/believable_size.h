#pragma once

#include <cstdint>

namespace klv {

/// Pixels or bytes that any file may promise.
inline constexpr std::uint64_t always_believed = 1 << 20;

/// Whether an image that a header promises can come from so many stored bytes: a picture that was cut off
/// still shows what is there, but a few bytes can't claim a gigabyte. Ask before allocating for it.
/// \param promised pixels or bytes \param most_for_one how many of these one stored byte can become at most;
/// more where a file may lack a part
[[nodiscard]] constexpr bool believable_size(
    std::uint64_t promised, std::uint64_t stored_bytes, std::uint64_t most_for_one) noexcept
{
    return promised <= always_believed || promised / most_for_one <= stored_bytes;
}

} // namespace klv
