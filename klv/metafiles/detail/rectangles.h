#pragma once

#include "klv/core/rect.h"

#include <algorithm>

namespace klv {

inline bool is_empty(const vRECT& r) { return r.Width() == 0 || r.Height() == 0; }

/// The same rectangle with left <= right and top <= bottom.
inline vRECT in_order(const vRECT& r)
{
    return vRECT(std::min(r.Left(), r.Right()), std::min(r.Top(), r.Bottom()), std::max(r.Left(), r.Right()),
        std::max(r.Top(), r.Bottom()));
}

} // namespace klv
