#pragma once

#include "klv/base/types.h"

namespace klv {

class vDEVICE;
class vSHAPE;

/// Fills a shape in the device's current fill, as one polygon operation: solid, hatched, a bitmap or a
/// pattern of the GEM set. Graduated fills are in graduated_fill.h.
void FillPolygons(vDEVICE& device, const vSHAPE& shape) noexcept;

} // namespace klv
