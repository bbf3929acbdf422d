#pragma once

#include "klv/base/types.h"

namespace klv {

/// The part of a segment, as fractions of it; first > last when there is none.
struct segment_part {
    double first = 0;
    double last = 1;
    bool empty() const noexcept { return first > last; }
};

/// The part of a segment that lies in a rectangle (Liang and Barsky, 1984).
segment_part visible_part(const POINT& from, const POINT& to, const RECT& rect) noexcept;

} // namespace klv
