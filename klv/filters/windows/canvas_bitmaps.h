#pragma once

#include "klv/base/types.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/windows/blit_pairs.h"
#include "klv/filters/windows/canvas_core.h"

#include <memory>

namespace klv {

/// A place and a size, in the file's units; negative sizes mirror.
struct blit_area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Where a bitmap goes and which part of it.
struct blit {
    ternary_operation operation = ternary_operation::source_copy;
    blit_area source; ///< in pixels
    blit_area target;
    bool source_from_top = false; ///< source.y counts from the top row, as bit blits have it
};

/// The bitmaps of a canvas.
class canvas_bitmaps {
public:
    explicit canvas_bitmaps(canvas_core& core)
        : core_(core)
    {
    }

    /// Null draws nothing.
    void draw(std::unique_ptr<oMEMDIB> bitmap, const blit& where);
    /// Draws what still waits for the other half of a pair.
    void finish_pairs();

private:
    void draw_whole(const oMEMDIB& bitmap, const vRECT& target);

    canvas_core& core_;
    blit_pairs pairs_;
};

} // namespace klv
