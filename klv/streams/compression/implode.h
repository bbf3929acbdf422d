#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace klv {

/// The most bytes that implode makes of a block of size bytes.
constexpr std::size_t implode_bound(std::size_t size) { return 6 + size + size / 8; }

/// Compresses block by the implode method of the Data Compression Library (binary mode, 4096-byte
/// dictionary) into output.
/// \return bytes written; nothing when they do not fit in output or no memory is there for the search.
std::optional<std::size_t> implode(
    std::span<const std::uint8_t> block, std::span<std::uint8_t> output) noexcept;

} // namespace klv
