#pragma once

#include "klv/gdi/raster/curves.h"
#include "klv/gdi/raster/region.h"
#include "klv/gdi/sink/figure.h"
#include "klv/gdi/state/drawing_state.h"

namespace klv::gdi {

/// A logical box in device units, and what the pen makes of it.
struct framed_box {
    box outer;
    bool has_pen;
    bool inside_frame; ///< PS_INSIDEFRAME

    framed_box(const drawing_state& state, const RECT& logical);

    /// Figures without a pen end one pixel earlier at the right and at the bottom: the pixels that the pen
    /// would have covered there are not filled.
    [[nodiscard]] box fill_area() const { return {outer.x1, outer.y1, outer.x2 - 1, outer.y2 - 1}; }

    /// The path of the pen: through the centres of the border pixels, inside them for PS_INSIDEFRAME.
    [[nodiscard]] ellipse path_ellipse(std::int32_t pen_width) const;
};

/// Angles (radians, growing downwards) from which and over which an arc runs on its ellipse. Equal rays are
/// a whole turn.
struct arc_sweep {
    double start;
    double sweep;

    arc_sweep(const drawing_state& state, const elliptic_arc& arc, const ellipse& on);
};

} // namespace klv::gdi
