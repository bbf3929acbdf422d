#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/state/region_object.h"

namespace klv {

using namespace gdi;

namespace {

/// The clip region, or without one everything that can be drawn on.
region current_clip(drawing_context& dc)
{
    return dc.state.clipped ? dc.state.clip : dc.out->visible(dc.state);
}

INT set_clip(drawing_context& dc, region clip, const clip_change& as_called)
{
    dc.state.clip = std::move(clip);
    dc.state.clipped = true;
    dc.out->change_clip(dc.state, as_called);
    return complexity(dc.state.clip);
}

INT remove_clip(drawing_context& dc)
{
    dc.state.clipped = false;
    dc.state.clip = region();
    dc.out->change_clip(dc.state, clip_to_region{nullptr});
    return SIMPLEREGION;
}

region device_rectangle(const drawing_context& dc, const RECT& logical)
{
    const RECT r = dc.state.map.to_device(logical);
    const box b = ordered_box(r.left, r.top, r.right, r.bottom);
    return is_empty(b) ? region() : region(b);
}

} // namespace

INT SelectClipRgn(HDC handle, HRGN region_handle) noexcept
{
    return with_context(handle, ERROR_REGION, [=](drawing_context& dc) {
        if (region_handle == nullptr)
            return remove_clip(dc);
        const auto* r = find<region_object>(region_handle);
        return r == nullptr ? ERROR_REGION : set_clip(dc, r->area, clip_to_region{r});
    });
}

INT IntersectClipRect(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return with_context(handle, ERROR_REGION, [=](drawing_context& dc) {
        const RECT box{left, top, right, bottom};
        region clip = device_rectangle(dc, box);
        if (dc.state.clipped)
            clip.intersect(clip, dc.state.clip);
        return set_clip(dc, std::move(clip), clip_to_box{box});
    });
}

INT ExcludeClipRect(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return with_context(handle, ERROR_REGION, [=](drawing_context& dc) {
        const RECT box{left, top, right, bottom};
        region clip = current_clip(dc);
        clip.subtract(clip, device_rectangle(dc, box));
        return set_clip(dc, std::move(clip), clip_out_box{box});
    });
}

INT OffsetClipRgn(HDC handle, INT x, INT y) noexcept
{
    return with_context(handle, ERROR_REGION, [=](drawing_context& dc) {
        if (dc.state.clipped)
            dc.state.clip.move(dc.state.map.width_to_device(x), dc.state.map.height_to_device(y));
        dc.out->change_clip(dc.state, clip_offset{x, y});
        return dc.state.clipped ? complexity(dc.state.clip) : SIMPLEREGION;
    });
}

INT GetClipRgn(HDC handle, HRGN out) noexcept
{
    return with_context(handle, -1, [=](drawing_context& dc) {
        auto* r = find<region_object>(out);
        if (r == nullptr)
            return -1;
        if (dc.state.clipped)
            r->area = dc.state.clip;
        return dc.state.clipped ? 1 : 0;
    });
}

INT GetClipBox(HDC handle, RECT* out) noexcept
{
    return with_context(handle, ERROR_REGION, [=](drawing_context& dc) {
        if (out == nullptr)
            return ERROR_REGION;
        const region& clip = dc.out->visible(dc.state);
        const box b = clip.empty() ? box{0, 0, 0, 0} : clip.extents();
        const POINT a = dc.state.map.to_logical(POINT{b.x1, b.y1});
        const POINT z = dc.state.map.to_logical(POINT{b.x2, b.y2});
        *out = clip.empty() ? RECT{0, 0, 0, 0} : RECT{a.x, a.y, z.x, z.y};
        return complexity(clip);
    });
}

BOOL PtVisible(HDC handle, INT x, INT y) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        const POINT p = dc.state.map.to_device(POINT{x, y});
        return dc.out->visible(dc.state).contains(p.x, p.y);
    });
}

BOOL RectVisible(HDC handle, const RECT* rect) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (rect == nullptr)
            return FALSE;
        const RECT r = dc.state.map.to_device(*rect);
        return dc.out->visible(dc.state).touches(ordered_box(r.left, r.top, r.right, r.bottom));
    });
}

} // namespace klv
