#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// PackBits, the byte run coding of Macintosh programs (TIFF 6.0, section 9; also in Photoshop files): a
/// count n of 0 to 127 precedes n + 1 bytes that stand for themselves, a count of -127 to -1 precedes one
/// byte that stands 1 - n times, -128 is passed over.
namespace klv {

/// What a count byte announces.
struct packbits_packet {
    std::size_t length = 0; ///< bytes it stands for; 0: it is passed over
    bool repeats = false; ///< one stored byte, so many times

    [[nodiscard]] constexpr std::size_t stored() const noexcept { return repeats ? 1 : length; }

    [[nodiscard]] static constexpr packbits_packet of(std::uint8_t count) noexcept
    {
        if (count == 128)
            return {};
        return count < 128 ? packbits_packet{count + 1U, false} : packbits_packet{257U - count, true};
    }
};

/// Fills row from packed; what is missing is left as it is, what is too much is ignored.
/// \return false when the row was not filled
[[nodiscard]] bool unpack_bits(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row);

/// Adds the packed row to the end of packed.
void pack_bits(std::span<const std::uint8_t> row, std::vector<std::uint8_t>& packed);

} // namespace klv
