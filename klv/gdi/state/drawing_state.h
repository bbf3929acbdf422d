#pragma once

#include "klv/gdi/raster/region.h"
#include "klv/gdi/state/bitmap_object.h"
#include "klv/gdi/state/brush.h"
#include "klv/gdi/state/mapping.h"
#include "klv/gdi/state/palette.h"
#include "klv/gdi/state/pen.h"

#include <cstdint>
#include <memory>

namespace klv::gdi {

struct font_object;

/// What SaveDC saves: all that says how a call draws.
struct drawing_state {
    std::shared_ptr<pen_object> pen;
    std::shared_ptr<brush_object> brush;
    std::shared_ptr<font_object> font;
    std::shared_ptr<bitmap_object> bitmap; ///< memory contexts only
    std::shared_ptr<palette_object> palette;

    mapping map;
    POINT position{0, 0}; ///< logical

    COLORREF text_colour = RGB(0, 0, 0);
    COLORREF background_colour = RGB(255, 255, 255);
    INT background_mode = OPAQUE;
    INT rop2 = R2_COPYPEN;
    INT fill_mode = ALTERNATE;
    INT stretch_mode = BLACKONWHITE;

    std::uint32_t text_align = TA_LEFT | TA_TOP | TA_NOUPDATECP;
    INT character_extra = 0;
    INT justify_extra = 0;
    INT justify_count = 0;

    bool clipped = false;
    region clip; ///< device units; holds when clipped is set
};

/// A colour argument as the state sees it: palette indices and palette-relative colours are looked up in
/// the selected palette.
[[nodiscard]] rgb resolve_colour(const drawing_state& state, COLORREF colour);

} // namespace klv::gdi
