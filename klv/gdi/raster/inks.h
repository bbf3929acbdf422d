#pragma once

#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/stroker.h"
#include "klv/gdi/state/drawing_state.h"

namespace klv::gdi {

/// A brush in the colours of a state.
[[nodiscard]] brush_ink brush_of(const drawing_state& state, const brush_object& brush);
/// The selected pen.
[[nodiscard]] pen_ink pen_of(const drawing_state& state);

} // namespace klv::gdi
