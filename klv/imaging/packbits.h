#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The byte run coding of Macintosh programs: a count n of 0 to 127 precedes n + 1 bytes that stand for
/// themselves, a count of -127 to -1 precedes one byte that stands 1 - n times, -128 is passed over.
namespace klv::imaging {

/// Fills row from packed; what is missing is left as it is, what is too much is ignored.
/// \return false when the row was not filled
[[nodiscard]] bool unpack_bits(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row);

/// Adds the packed row to the end of packed.
void pack_bits(std::span<const std::uint8_t> row, std::vector<std::uint8_t>& packed);

} // namespace klv::imaging
