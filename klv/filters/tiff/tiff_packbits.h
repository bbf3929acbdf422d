#pragma once

#include "klv/filters/filter.h"
#include "klv/filters/tiff/tiff_source.h"

#include <cstdint>
#include <span>

namespace klv {

/// Decodes one row packed with PackBits (TIFF 6.0, section 9). A run that passes the end of the row gives
/// UNSUPPORTED, the end of the file READ_ERROR. Throws std::bad_alloc.
[[nodiscard]] oFILTER_STATUS read_packbits_row(tiff_cursor& in, std::span<std::uint8_t> row);

} // namespace klv
