#pragma once

#include "klv/base/types.h"
#include "klv/core/rect.h"
#include "klv/filters/windows/canvas_core.h"

namespace klv {

/// The clip area of a canvas. Rectangles and distances are in the file's units.
class canvas_clip {
public:
    explicit canvas_clip(canvas_core& core)
        : core_(core)
    {
    }

    void intersect(const RECT& rect);
    void exclude(const RECT& rect);
    void move(int x, int y);
    /// Everything may be drawn on again.
    void remove();

private:
    [[nodiscard]] vRECT unmoved(const RECT& rect) const;

    canvas_core& core_;
};

} // namespace klv
