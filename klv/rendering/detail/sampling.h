#pragma once

#include "klv/core/point.h"

namespace klv {

class vMETAFILE;

/// Samples along each axis of a pixel that a picture of a size is drawn with in about a second: 4, or fewer
/// where a trial shows that the page is painted over many times. 0 when memory is out.
int affordable_samples(vMETAFILE& picture, const vSIZE& size) noexcept;

} // namespace klv
