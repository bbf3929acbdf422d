#include "klv/gdi/raster/inks.h"

#include <algorithm>
#include <cstdlib>

namespace klv::gdi {

namespace {

std::optional<rgb> gaps_of(const drawing_state& state)
{
    if (state.background_mode != OPAQUE)
        return std::nullopt;
    return resolve_colour(state, state.background_colour);
}

} // namespace

brush_ink brush_of(const drawing_state& state, const brush_object& brush)
{
    brush_ink ink;
    if (brush.log.lbStyle == BS_SOLID) {
        ink.what = brush_ink::kind::solid;
        ink.colour = resolve_colour(state, brush.log.lbColor);
        ink.may_mix = brush.log.lbColor >> 24 == 0;
    } else if (brush.log.lbStyle == BS_HATCHED) {
        ink.what = brush_ink::kind::hatched;
        ink.colour = resolve_colour(state, brush.log.lbColor);
        ink.hatch = brush.log.lbHatch;
        ink.gaps = gaps_of(state);
    } else if (brush.tile) {
        ink.what = brush_ink::kind::tiled;
        ink.tile = &brush.tile->pixels;
        if (brush.palette_indices)
            ink.palette = state.palette->entries;
        ink.zero = resolve_colour(state, state.text_colour);
        ink.one = resolve_colour(state, state.background_colour);
    }
    return ink;
}

pen_ink pen_of(const drawing_state& state)
{
    const LOGPEN& pen = state.pen->log;
    pen_ink ink;
    ink.style = pen.lopnStyle;
    if (ink.style == PS_NULL)
        return ink;
    ink.width = std::abs(state.map.width_to_device(std::min(pen.lopnWidth.x, widest_pen)));
    ink.colour = resolve_colour(state, pen.lopnColor);
    ink.gaps = gaps_of(state);
    ink.rop2 = state.rop2;
    return ink;
}

} // namespace klv::gdi
