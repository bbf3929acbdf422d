#pragma once

#include <cstdint>

/// LZW (Welch, "A Technique for High-Performance Data Compression", 1984) as GIF89a varies it: codes grow
/// from one bit more than a literal to 12 bits as the table fills, the least significant bit first; a clear
/// code empties the table. What the decoder and the encoder share.
namespace klv {

inline constexpr unsigned gif_most_code_bits = 12;
inline constexpr std::uint32_t gif_code_count = 1U << gif_most_code_bits;
inline constexpr std::uint32_t gif_most_literals = 256;

/// The codes that are fixed by the minimum code size.
struct gif_code_layout {
    unsigned literal_bits = 8; ///< the minimum code size

    [[nodiscard]] std::uint32_t clear() const { return 1U << literal_bits; }
    [[nodiscard]] std::uint32_t end() const { return clear() + 1; }
    [[nodiscard]] std::uint32_t first_free() const { return clear() + 2; }
    /// Bits of the codes that follow a clear code.
    [[nodiscard]] unsigned first_code_bits() const { return literal_bits + 1; }
};

} // namespace klv
