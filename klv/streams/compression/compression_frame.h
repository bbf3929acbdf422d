#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace klv {

/// A block that travels compressed:
///
///     0  4  marker
///     4  4  n, bytes of compressed data
///     8  n  the block, imploded (see implode.h)
///
/// Integers are little-endian. A reader tells a frame from a plain block by the marker alone.
struct compression_frame {
    static constexpr std::uint32_t marker = 0x0012AAB1;
    static constexpr std::uint32_t marker_size = 4;
    static constexpr std::uint32_t header_size = 8;

    std::uint32_t size; ///< n

    static bool begins(std::span<const std::uint8_t> bytes) noexcept;
    /// The header at the start of bytes; nothing when there is none.
    static std::optional<compression_frame> read(std::span<const std::uint8_t> bytes) noexcept;
    std::array<std::uint8_t, header_size> header() const noexcept;
};

} // namespace klv
