#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace klv {

using namespace gdi;

namespace {

/// Logical units per inch of the fixed mapping modes, 0 for the others.
LONG units_per_inch(INT mode)
{
    switch (mode) {
    case MM_LOMETRIC:
        return 254;
    case MM_HIMETRIC:
        return 2540;
    case MM_LOENGLISH:
        return 100;
    case MM_HIENGLISH:
        return 1000;
    case MM_TWIPS:
        return 1440;
    default:
        return 0;
    }
}

void set_inch_scale(drawing_context& dc, LONG units)
{
    auto& m = dc.state.map;
    m.window_extent = {units, units};
    m.viewport_extent = {dc.out->dots_per_inch(), -dc.out->dots_per_inch()};
}

/// Shrinks the viewport along one axis so that both scales are equal in size.
void keep_isotropic(mapping& m)
{
    const auto magnitude = [](LONG v) { return std::abs(double{1} * v); };
    const double x_scale = magnitude(m.viewport_extent.cx) / magnitude(m.window_extent.cx);
    const double y_scale = magnitude(m.viewport_extent.cy) / magnitude(m.window_extent.cy);
    const auto shrunk = [&](LONG window, LONG viewport, double by) {
        const auto size = std::max<std::int64_t>(1, static_cast<std::int64_t>(magnitude(window) * by + 0.5));
        return saturate(viewport < 0 ? -size : size);
    };
    if (x_scale > y_scale)
        m.viewport_extent.cx = shrunk(m.window_extent.cx, m.viewport_extent.cx, y_scale);
    else
        m.viewport_extent.cy = shrunk(m.window_extent.cy, m.viewport_extent.cy, x_scale);
}

template <class Value> void give(Value* out, const Value& value)
{
    if (out != nullptr)
        *out = value;
}

using origin_field = POINT mapping::*;
using extent_field = SIZE mapping::*;

BOOL set_origin(HDC handle, setting what, origin_field field, INT x, INT y, POINT* old)
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        give(old, dc.state.map.*field);
        dc.state.map.*field = {x, y};
        dc.tell(what, x, y);
        return TRUE;
    });
}

BOOL offset_origin(HDC handle, setting what, origin_field field, INT x, INT y, POINT* old)
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        POINT& at = dc.state.map.*field;
        give(old, at);
        at = {saturate(std::int64_t{at.x} + x), saturate(std::int64_t{at.y} + y)};
        dc.tell(what, x, y);
        return TRUE;
    });
}

bool extents_are_free(const mapping& m) { return m.mode == MM_ISOTROPIC || m.mode == MM_ANISOTROPIC; }

/// False for an extent of nothing. A fixed mapping mode keeps its own.
bool change_extent(mapping& m, extent_field field, INT cx, INT cy)
{
    if (!extents_are_free(m))
        return true;
    if (cx == 0 || cy == 0)
        return false;
    m.*field = {cx, cy};
    if (m.mode == MM_ISOTROPIC)
        keep_isotropic(m);
    return true;
}

BOOL set_extent(HDC handle, setting what, extent_field field, INT cx, INT cy, SIZE* old)
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        give(old, dc.state.map.*field);
        if (!change_extent(dc.state.map, field, cx, cy))
            return FALSE;
        dc.tell(what, cx, cy);
        return TRUE;
    });
}

BOOL scale_extent(
    HDC handle, setting what, extent_field field, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old)
{
    if (x_denom == 0 || y_denom == 0)
        return FALSE;
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        const SIZE now = dc.state.map.*field;
        give(old, now);
        const auto scaled
            = [](LONG v, INT num, INT denom) { return saturate(std::int64_t{v} * num / denom); };
        if (!change_extent(
                dc.state.map, field, scaled(now.cx, x_num, x_denom), scaled(now.cy, y_num, y_denom)))
            return FALSE;
        dc.tell(what, x_num, x_denom, y_num, y_denom);
        return TRUE;
    });
}

template <class Value> BOOL get(HDC handle, Value mapping::*field, Value* out)
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || out == nullptr)
        return FALSE;
    *out = dc->state.map.*field;
    return TRUE;
}

} // namespace

INT SetMapMode(HDC handle, INT mode) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        if (mode < MM_TEXT || mode > MM_ANISOTROPIC)
            return 0;
        auto& m = dc.state.map;
        const INT old = m.mode;
        m.mode = mode;
        if (mode == MM_TEXT) {
            m.window_extent = {1, 1};
            m.viewport_extent = {1, 1};
        } else if (mode == MM_ISOTROPIC) {
            set_inch_scale(dc, units_per_inch(MM_LOMETRIC));
        } else if (mode != MM_ANISOTROPIC) {
            set_inch_scale(dc, units_per_inch(mode));
        }
        dc.tell(setting::map_mode, mode);
        return old;
    });
}

INT GetMapMode(HDC handle) noexcept
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? 0 : dc->state.map.mode;
}

BOOL SetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return set_origin(dc, setting::window_origin, &mapping::window_origin, x, y, old);
}
BOOL SetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return set_origin(dc, setting::viewport_origin, &mapping::viewport_origin, x, y, old);
}
BOOL OffsetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return offset_origin(dc, setting::window_offset, &mapping::window_origin, x, y, old);
}
BOOL OffsetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return offset_origin(dc, setting::viewport_offset, &mapping::viewport_origin, x, y, old);
}
BOOL SetWindowExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept
{
    return set_extent(dc, setting::window_extent, &mapping::window_extent, cx, cy, old);
}
BOOL SetViewportExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept
{
    return set_extent(dc, setting::viewport_extent, &mapping::viewport_extent, cx, cy, old);
}
BOOL ScaleWindowExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept
{
    return scale_extent(
        dc, setting::window_scale, &mapping::window_extent, x_num, x_denom, y_num, y_denom, old);
}
BOOL ScaleViewportExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept
{
    return scale_extent(
        dc, setting::viewport_scale, &mapping::viewport_extent, x_num, x_denom, y_num, y_denom, old);
}
BOOL GetWindowExtEx(HDC dc, SIZE* extent) noexcept { return get(dc, &mapping::window_extent, extent); }
BOOL GetViewportExtEx(HDC dc, SIZE* extent) noexcept { return get(dc, &mapping::viewport_extent, extent); }

BOOL LPtoDP(HDC handle, POINT* points, INT count) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || points == nullptr)
        return FALSE;
    for (INT i = 0; i < count; ++i)
        points[i] = dc->state.map.to_device(points[i]);
    return TRUE;
}

BOOL DPtoLP(HDC handle, POINT* points, INT count) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || points == nullptr)
        return FALSE;
    for (INT i = 0; i < count; ++i)
        points[i] = dc->state.map.to_logical(points[i]);
    return TRUE;
}

} // namespace klv
