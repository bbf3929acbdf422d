#pragma once

#include "klv/bitmaps/colour_model.h"
#include "klv/bitmaps/detail/dib_convert.h"
#include "klv/core/rect.h"

namespace klv {

class IDistort;
class oDIB;
class vTILEINFO;

/// A part of a bitmap on its way through a distortion.
struct distorted_copy {
    const oDIB& source;
    vRECT source_rect; ///< pixels, y from the top; inverted edges flip
    vRECT destination; ///< where the part lies before the distortion; inverted edges flip
    const vRECT* clip; ///< cuts the result, after the distortion; null: nothing is cut
    const IDistort* distort; ///< null: none
    oCOLOUR_MODEL model;
    const vTILEINFO* tiles; ///< null: no tiling
    int limit; ///< longer side of the result in pixels, at most; 0: no limit
};

/// Renders the copy: one pixel for each unit of the distorted destination, as the limit allows. 24-bit
/// pictures are averaged where they shrink and interpolated between pixels, others take the nearest pixel.
/// What the picture does not cover is white, or what is nearest to it in the colour table.
/// False when nothing is left to draw or memory is out.
[[nodiscard]] bool render_distorted(const distorted_copy& what, dib_pixels& result) noexcept;

} // namespace klv
