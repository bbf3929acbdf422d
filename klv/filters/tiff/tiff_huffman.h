#pragma once

#include "klv/filters/filter.h"
#include "klv/filters/tiff/tiff_source.h"

#include <cstdint>
#include <span>

namespace klv {

/// Decodes one row of CCITT modified Huffman code (TIFF 6.0, section 10) into width bits, black 1; the bits
/// that fill up the last byte are white. The next row starts on a byte. Runs that miss the width and unknown
/// codes give BAD_DATA, the end of the file READ_ERROR. Throws std::bad_alloc.
[[nodiscard]] oFILTER_STATUS read_huffman_row(
    tiff_bits& in, std::uint32_t width, std::span<std::uint8_t> row);

} // namespace klv
