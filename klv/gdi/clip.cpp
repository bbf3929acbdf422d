#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"
#include "klv/gdi/state/region_object.h"

#include <algorithm>

namespace klv {

using namespace gdi;

namespace {

INT clip_complexity(const drawing_context& dc)
{
    return dc.state.clipped ? complexity(dc.state.clip) : SIMPLEREGION;
}

/// The clip region, or without one everything that can be drawn on.
region current_clip(drawing_context& dc)
{
    return dc.state.clipped ? dc.state.clip : region(dc.target().bounds());
}

INT set_clip(drawing_context& dc, region clip)
{
    dc.state.clip = std::move(clip);
    dc.state.clipped = true;
    dc.clip_changed();
    return complexity(dc.state.clip);
}

region device_rectangle(const drawing_context& dc, INT left, INT top, INT right, INT bottom)
{
    const RECT r = dc.state.map.to_device(RECT{left, top, right, bottom});
    const box b = ordered_box(r.left, r.top, r.right, r.bottom);
    return is_empty(b) ? region() : region(b);
}

} // namespace

INT ExtSelectClipRgn(HDC handle, HRGN other, INT mode) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        const auto* r = find<region_object>(other);
        if (dc == nullptr || (r == nullptr && (other != nullptr || mode != RGN_COPY)))
            return ERROR_REGION;
        if (r == nullptr) {
            dc->state.clipped = false;
            dc->state.clip = region();
            dc->clip_changed();
            return SIMPLEREGION;
        }
        if (mode == RGN_COPY)
            return set_clip(*dc, r->area);
        region clip = current_clip(*dc);
        switch (mode) {
        case RGN_AND:
            clip.intersect(clip, r->area);
            break;
        case RGN_OR:
            clip.unite(clip, r->area);
            break;
        case RGN_XOR:
            clip.exclusive_or(clip, r->area);
            break;
        case RGN_DIFF:
            clip.subtract(clip, r->area);
            break;
        default:
            return ERROR_REGION;
        }
        return set_clip(*dc, std::move(clip));
    });
}

INT SelectClipRgn(HDC handle, HRGN region_handle) noexcept
{
    return ExtSelectClipRgn(handle, region_handle, RGN_COPY);
}

INT IntersectClipRect(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return ERROR_REGION;
        region clip = device_rectangle(*dc, left, top, right, bottom);
        if (dc->state.clipped)
            clip.intersect(clip, dc->state.clip);
        return set_clip(*dc, std::move(clip));
    });
}

INT ExcludeClipRect(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return ERROR_REGION;
        region clip = current_clip(*dc);
        clip.subtract(clip, device_rectangle(*dc, left, top, right, bottom));
        return set_clip(*dc, std::move(clip));
    });
}

INT OffsetClipRgn(HDC handle, INT x, INT y) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return ERROR_REGION;
    if (dc->state.clipped)
        dc->state.clip.move(dc->state.map.width_to_device(x), dc->state.map.height_to_device(y));
    dc->clip_changed();
    return clip_complexity(*dc);
}

INT GetClipRgn(HDC handle, HRGN out) noexcept
{
    return guarded([&]() -> INT {
        const auto* dc = find_context(handle);
        auto* r = find<region_object>(out);
        if (dc == nullptr || r == nullptr)
            return -1;
        if (dc->state.clipped)
            r->area = dc->state.clip;
        return dc->state.clipped ? 1 : 0;
    });
}

INT GetClipBox(HDC handle, RECT* out) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        if (dc == nullptr || out == nullptr)
            return ERROR_REGION;
        const region& clip = dc->effective_clip();
        const box b = clip.empty() ? box{0, 0, 0, 0} : clip.extents();
        const POINT a = dc->state.map.to_logical(POINT{b.x1, b.y1});
        const POINT z = dc->state.map.to_logical(POINT{b.x2, b.y2});
        *out = clip.empty() ? RECT{0, 0, 0, 0} : RECT{a.x, a.y, z.x, z.y};
        return complexity(clip);
    });
}

BOOL PtVisible(HDC handle, INT x, INT y) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return FALSE;
        const POINT p = dc->state.map.to_device(POINT{x, y});
        return dc->effective_clip().contains(p.x, p.y);
    });
}

BOOL RectVisible(HDC handle, const RECT* rect) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || rect == nullptr)
            return FALSE;
        const RECT r = dc->state.map.to_device(*rect);
        return dc->effective_clip().touches(ordered_box(r.left, r.top, r.right, r.bottom));
    });
}

} // namespace klv
