#pragma once

#include "klv/gdi/raster/canvas.h"

#include <cstddef>
#include <cstdint>

namespace klv::gdi {

/// The shape of a glyph, or of any other mark, in device pixels: a bit a pixel, the top bit first.
struct glyph_mask {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from a row to the next below
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Draws a mask with its top left pixel at (x, y), device units, in a colour, inside the clip region and,
/// when given, inside box_clip (device units). The mix mode of the pen does not matter.
void draw_mask(const canvas& on, const glyph_mask& mask, std::int32_t x, std::int32_t y, rgb colour,
    const box* box_clip);

} // namespace klv::gdi
