#pragma once

#include "klv/gdi/raster/surface.h"

#include <array>
#include <cstdint>

namespace klv::gdi {

inline constexpr int dither_size = 8;
/// Colour table indices, row by row.
using dither_pattern = std::array<std::uint8_t, dither_size * dither_size>;

/// An 8 x 8 pattern of the table's colours whose average is as near to colour as they allow. Kept for later
/// calls; valid until the next one.
const dither_pattern& dither(const colour_table& table, rgb colour);

} // namespace klv::gdi
