#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/state/region_object.h"

#include <algorithm>
#include <vector>

namespace klv {

using namespace gdi;

namespace {

/// A region given in logical units, in device units.
region to_device_region(const drawing_context& dc, const region& logical)
{
    const mapping& map = dc.state.map;
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
void paint_region(drawing_context& dc, const region& area, const brush_object& brush, INT rop2)
{
    brush_painter painter(dc, brush, rop2);
    if (!painter.visible())
        return;
    region visible;
    visible.intersect(area, dc.effective_clip());
    draw_region(visible, painter.sink());
}

void paint_box(drawing_context& dc, const box& area, const brush_object& brush, INT rop2)
{
    if (is_empty(area))
        return;
    const region& clip = dc.effective_clip();
    if (!clip.is_rectangle()) {
        paint_region(dc, region(area), brush, rop2);
        return;
    }
    brush_painter painter(dc, brush, rop2);
    const box visible = intersection(area, clip.extents());
    if (!painter.visible() || is_empty(visible))
        return;
    span_batch out(painter.sink());
    for (std::int32_t y = visible.y1; y < visible.y2; ++y)
        out.add(y, visible.x1, visible.x2);
    out.flush();
}

box device_box(const drawing_context& dc, const RECT& rect)
{
    const RECT r = dc.state.map.to_device(rect);
    return ordered_box(r.left, r.top, r.right, r.bottom);
}

BOOL fill_region(HDC handle, HRGN region_handle, const brush_object* brush, INT rop2)
{
    auto* dc = find_context(handle);
    const auto* r = find<region_object>(region_handle);
    if (dc == nullptr || r == nullptr || brush == nullptr)
        return FALSE;
    paint_region(*dc, to_device_region(*dc, r->area), *brush, rop2);
    return TRUE;
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

/// FillRect also takes the number of an interface colour plus one in the place of a brush.
std::shared_ptr<brush_object> brush_or_colour(HBRUSH brush)
{
    constexpr std::uint32_t colours = 25;
    const std::uint32_t token = token_of(brush);
    if (token >= 1 && token <= colours)
        return std::make_shared<brush_object>(
            LOGBRUSH{BS_SOLID, GetSysColor(static_cast<INT>(token - 1)), 0});
    return find_shared<brush_object>(brush);
}

} // namespace

INT FillRect(HDC handle, const RECT* rect, HBRUSH brush_handle) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        const auto brush = brush_or_colour(brush_handle);
        if (dc == nullptr || rect == nullptr || !brush)
            return 0;
        paint_box(*dc, device_box(*dc, *rect), *brush, R2_COPYPEN);
        return 1;
    });
}

INT FrameRect(HDC handle, const RECT* rect, HBRUSH brush_handle) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        const auto* brush = find<brush_object>(brush_handle);
        if (dc == nullptr || rect == nullptr || brush == nullptr)
            return 0;
        const box b = device_box(*dc, *rect);
        if (is_empty(b))
            return 0;
        region frame{b};
        const box inner{b.x1 + 1, b.y1 + 1, b.x2 - 1, b.y2 - 1};
        if (!is_empty(inner))
            frame.subtract(frame, region(inner));
        paint_region(*dc, frame, *brush, R2_COPYPEN);
        return 1;
    });
}

BOOL InvertRect(HDC handle, const RECT* rect) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || rect == nullptr)
            return FALSE;
        paint_box(*dc, device_box(*dc, *rect), brush_object(LOGBRUSH{BS_SOLID, 0, 0}), R2_NOT);
        return TRUE;
    });
}

BOOL FillRgn(HDC dc, HRGN region_handle, HBRUSH brush) noexcept
{
    return guarded([&] { return fill_region(dc, region_handle, find<brush_object>(brush), R2_COPYPEN); });
}

BOOL PaintRgn(HDC handle, HRGN region_handle) noexcept
{
    return guarded([&]() -> BOOL {
        const auto* dc = find_context(handle);
        return dc != nullptr && fill_region(handle, region_handle, dc->state.brush.get(), dc->state.rop2);
    });
}

BOOL InvertRgn(HDC dc, HRGN region_handle) noexcept
{
    return guarded([&] {
        const brush_object any(LOGBRUSH{BS_SOLID, 0, 0});
        return fill_region(dc, region_handle, &any, R2_NOT);
    });
}

BOOL FrameRgn(HDC handle, HRGN region_handle, HBRUSH brush_handle, INT width, INT height) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        const auto* r = find<region_object>(region_handle);
        const auto* brush = find<brush_object>(brush_handle);
        if (dc == nullptr || r == nullptr || brush == nullptr || width <= 0 || height <= 0)
            return FALSE;
        const region whole = to_device_region(*dc, r->area);
        const auto size_of
            = [](LONG v) { return std::clamp(v < 0 ? -std::max(v, -widest_frame) : v, 1, widest_frame); };
        region inner = whole;
        erode(inner, size_of(dc->state.map.width_to_device(width)), 1, 0);
        erode(inner, size_of(dc->state.map.height_to_device(height)), 0, 1);
        region frame;
        frame.subtract(whole, inner);
        paint_region(*dc, frame, *brush, R2_COPYPEN);
        return TRUE;
    });
}

} // namespace klv
