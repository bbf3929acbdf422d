#pragma once

#include "klv/bitmaps/pixels/resample.h"

namespace klv {

/// Finds the alpha of samples from two drawings of them that differ in their ground alone. Each sample of
/// on_black becomes premultiplied and gets its alpha in the fourth byte:
///  - both the same: opaque;
///  - brighter on white by the same in each channel: that much shows through, all of it where nothing was
///  drawn,
///    a part where a drawing was blended in;
///  - anything else is made from the ground by a drawing mode (inverted, or some colours of it let through):
///  it
///    counts as opaque and is as on white, the paper that pictures are made for.
/// Both have 4 channels and the same size.
void solve_alpha(const mutable_pixel_rows& on_black, const pixel_rows& on_white) noexcept;

} // namespace klv
