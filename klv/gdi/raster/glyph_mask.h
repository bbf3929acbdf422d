#pragma once

#include "klv/gdi/state/dc.h"

namespace klv::gdi {

/// The shape of a glyph, or of any other mark, in device pixels.
struct glyph_mask {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from a row to the next below
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool coverage = false; ///< 8 bits a pixel, 0 to 255; otherwise 1 bit a pixel, the top bit first
};

/// Draws a mask with its top left pixel at (x, y), device units, in the text colour, inside the clip region
/// and, when given, inside box_clip (device units). Coverage is blended on surfaces of 16 and more bits and
/// cut at one half on the others. The raster operation of the pen does not matter.
void draw_mask(
    drawing_context& dc, const glyph_mask& mask, std::int32_t x, std::int32_t y, const box* box_clip);

/// Fills a device rectangle with the background colour, inside the clip region (opaque text cells).
void fill_background(drawing_context& dc, const box& area);

} // namespace klv::gdi
