#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/inks.h"
#include "klv/gdi/raster/raster_sink.h"

#include <algorithm>
#include <vector>

/// Regions and boxes that are filled.
namespace klv::gdi {

namespace {

/// A region given in logical units, in device units.
region to_device_region(const mapping& map, const region& logical)
{
    if (map.is_identity())
        return logical;
    std::vector<box> boxes;
    for (const box& b : logical.boxes()) {
        const RECT r = map.to_device(RECT{b.x1, b.y1, b.x2, b.y2});
        boxes.push_back(ordered_box(r.left, r.top, r.right, r.bottom));
    }
    return region(boxes);
}

/// Paints what of a device region lies in the clip region.
void paint_region(const canvas& on, const region& area, const brush_ink& brush, INT rop2)
{
    brush_painter painter(on, brush, rop2);
    if (!painter.visible())
        return;
    region visible;
    visible.intersect(area, on.clip);
    draw_region(visible, painter.sink());
}

constexpr LONG widest_frame = 1 << 16;

/// Takes pixels away that have one outside of the region within steps, along one axis.
void erode(region& area, std::int32_t steps, std::int32_t dx, std::int32_t dy)
{
    for (std::int32_t i = 0; i < steps && !area.empty(); ++i) {
        region before = area;
        region after = area;
        before.move(-dx, -dy);
        after.move(dx, dy);
        area.intersect(area, before);
        area.intersect(area, after);
    }
}

} // namespace

void raster_sink::fill(const drawing_state& state, const region_fill& what)
{
    const region area = to_device_region(state.map, what.area.area);
    switch (what.by) {
    case region_fill::how::fill:
        return paint_region(open(state), area, brush_of(state, what.brush), R2_COPYPEN);
    case region_fill::how::paint:
        return paint_region(open(state), area, brush_of(state, what.brush), state.rop2);
    case region_fill::how::invert:
        return paint_region(open(state), area, brush_ink::solid(0), R2_NOT);
    }
}

void raster_sink::fill(const drawing_state& state, const region_frame& what)
{
    const region whole = to_device_region(state.map, what.area.area);
    const auto size_of
        = [](LONG v) { return std::clamp(v < 0 ? -std::max(v, -widest_frame) : v, 1, widest_frame); };
    region inner = whole;
    erode(inner, size_of(state.map.width_to_device(what.width)), 1, 0);
    erode(inner, size_of(state.map.height_to_device(what.height)), 0, 1);
    region frame;
    frame.subtract(whole, inner);
    paint_region(open(state), frame, brush_of(state, what.brush), R2_COPYPEN);
}

void raster_sink::fill(const drawing_state& state, const box_fill& what)
{
    const RECT r = state.map.to_device(what.box);
    const canvas on = open(state);
    brush_painter painter(on, brush_of(state, what.brush), R2_COPYPEN);
    if (painter.visible())
        clipped_output(on.clip, painter.sink()).fill(ordered_box(r.left, r.top, r.right, r.bottom));
}

} // namespace klv::gdi
