#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/filters/windows/canvas_mapping.h"
#include "klv/filters/windows/canvas_objects.h"
#include "klv/filters/windows/clip_area.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace klv {

/// What saving a drawing state saves: all that records can change, by value.
struct canvas_state {
    explicit canvas_state(const canvas_mapping& start)
        : mapping(start)
    {
    }

    canvas_mapping mapping;
    COLORREF text_colour = 0;
    COLORREF background = 0xFFFFFF;
    std::uint16_t text_align = 0; ///< TA_ values
    bool winding = false;
    clip_area clip;
    bool moves_points = false; ///< points are moved into moved_into, where clips are not recorded
    vRECT moved_into;

    canvas_pen pen;
    canvas_brush brush;
    std::optional<canvas_font> font;
    vPOINT current_point; ///< picture units
};

/// The states that a file saved.
class canvas_state_stack {
public:
    void save(const canvas_state& state);
    /// Takes a state off the stack with all that were saved after it. which is negative to count back from
    /// the last one saved (-1), positive to name it by its place from 1. Nothing when there is no such state.
    std::optional<canvas_state> take(int which);

private:
    std::vector<canvas_state, vALLOCATOR<canvas_state>> saved_;
};

} // namespace klv
