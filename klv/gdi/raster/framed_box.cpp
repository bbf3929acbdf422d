#include "klv/gdi/raster/framed_box.h"

#include <algorithm>
#include <numbers>

namespace klv::gdi {

framed_box::framed_box(const drawing_state& state, const RECT& logical)
{
    const RECT r = state.map.to_device(logical);
    outer = ordered_box(r.left, r.top, r.right, r.bottom);
    has_pen = state.pen->log.lopnStyle != PS_NULL;
    inside_frame = state.pen->log.lopnStyle == PS_INSIDEFRAME;
}

ellipse framed_box::path_ellipse(std::int32_t pen_width) const
{
    const double inset = inside_frame ? (pen_width - 1) / 2.0 : 0;
    const auto middle = [](std::int32_t a, std::int32_t b) { return (double{1} * a + b) * fixed_one / 2; };
    const auto radius = [&](std::int32_t a, std::int32_t b) {
        return std::max(0.0, ((double{1} * b - a - 1) / 2 - inset) * fixed_one);
    };
    return {middle(outer.x1, outer.x2), middle(outer.y1, outer.y2), radius(outer.x1, outer.x2),
        radius(outer.y1, outer.y2)};
}

arc_sweep::arc_sweep(const drawing_state& state, const elliptic_arc& arc, const ellipse& on)
{
    constexpr double full_turn = 2 * std::numbers::pi;
    const auto angle_to = [&](POINT ray) {
        const POINT p = state.map.to_device(ray);
        return on.angle_of(
            double{1} * p.x * fixed_one + fixed_half, double{1} * p.y * fixed_one + fixed_half);
    };
    start = angle_to(arc.start);
    sweep = angle_to(arc.end) - start;
    // Angles grow downwards, so counter-clockwise as seen is towards smaller ones.
    if (sweep >= 0)
        sweep -= full_turn;
}

} // namespace klv::gdi
