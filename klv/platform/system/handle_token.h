#pragma once

#include <cstdint>

/// A pointer that must travel through a 4-byte field travels as a number of this process-wide table.
namespace klv {

/// The pointer's token, the same as long as it is not released; 0 for null and when memory is out.
[[nodiscard]] std::uint32_t token_of(const void* pointer) noexcept;
/// The pointer of a token; null for 0 and for numbers that are no token.
[[nodiscard]] void* pointer_of(std::uint32_t token) noexcept;
/// Forgets the pointer; its token may be used again for another.
void release_token(const void* pointer) noexcept;

} // namespace klv
