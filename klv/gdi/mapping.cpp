#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"

#include <algorithm>
#include <cstdint>

namespace klv {

namespace gdi {

namespace {

LONG saturate(std::int64_t v) { return static_cast<LONG>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX)); }

/// value * numerator / denominator, rounded half away from zero. |value| is below 2^32, so that nothing
/// leaves 64 bits.
std::int64_t scale(std::int64_t value, LONG numerator, LONG denominator)
{
    const std::int64_t product = value * numerator;
    const std::int64_t divisor = denominator;
    const std::int64_t half = (divisor < 0 ? -divisor : divisor) / 2;
    return (product < 0 ? product - half : product + half) / divisor;
}

LONG map_coordinate(LONG v, LONG from_origin, LONG from_extent, LONG to_origin, LONG to_extent)
{
    const std::int64_t offset = std::int64_t{v} - from_origin;
    const std::int64_t scaled = from_extent == to_extent ? offset : scale(offset, to_extent, from_extent);
    return saturate(
        std::clamp<std::int64_t>(scaled, -(std::int64_t{1} << 33), std::int64_t{1} << 33) + to_origin);
}

} // namespace

POINT mapping::to_device(POINT p) const
{
    return {map_coordinate(p.x, window_origin.x, window_extent.cx, viewport_origin.x, viewport_extent.cx),
        map_coordinate(p.y, window_origin.y, window_extent.cy, viewport_origin.y, viewport_extent.cy)};
}

POINT mapping::to_logical(POINT p) const
{
    return {map_coordinate(p.x, viewport_origin.x, viewport_extent.cx, window_origin.x, window_extent.cx),
        map_coordinate(p.y, viewport_origin.y, viewport_extent.cy, window_origin.y, window_extent.cy)};
}

LONG mapping::width_to_device(LONG w) const
{
    return saturate(scale(w, viewport_extent.cx, window_extent.cx));
}
LONG mapping::height_to_device(LONG h) const
{
    return saturate(scale(h, viewport_extent.cy, window_extent.cy));
}
LONG mapping::width_to_logical(LONG w) const
{
    return saturate(scale(w, window_extent.cx, viewport_extent.cx));
}
LONG mapping::height_to_logical(LONG h) const
{
    return saturate(scale(h, window_extent.cy, viewport_extent.cy));
}

RECT mapping::to_device(const RECT& r) const
{
    const POINT a = to_device(POINT{r.left, r.top});
    const POINT b = to_device(POINT{r.right, r.bottom});
    return {a.x, a.y, b.x, b.y};
}

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
    m.viewport_extent = {dc.dots_per_inch_x, -dc.dots_per_inch_y};
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

BOOL set_origin(HDC handle, origin_field field, INT x, INT y, POINT* old)
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    give(old, dc->state.map.*field);
    dc->state.map.*field = {x, y};
    return TRUE;
}

BOOL offset_origin(HDC handle, origin_field field, INT x, INT y, POINT* old)
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    const POINT at = dc->state.map.*field;
    return set_origin(handle, field, saturate(std::int64_t{at.x} + x), saturate(std::int64_t{at.y} + y), old);
}

bool extents_are_free(const mapping& m) { return m.mode == MM_ISOTROPIC || m.mode == MM_ANISOTROPIC; }

BOOL set_extent(HDC handle, extent_field field, INT cx, INT cy, SIZE* old)
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    auto& m = dc->state.map;
    give(old, m.*field);
    if (!extents_are_free(m))
        return TRUE;
    if (cx == 0 || cy == 0)
        return FALSE;
    m.*field = {cx, cy};
    if (m.mode == MM_ISOTROPIC)
        keep_isotropic(m);
    return TRUE;
}

BOOL scale_extent(HDC handle, extent_field field, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old)
{
    auto* dc = find_context(handle);
    if (dc == nullptr || x_denom == 0 || y_denom == 0)
        return FALSE;
    const SIZE now = dc->state.map.*field;
    const auto scaled = [](LONG v, INT num, INT denom) { return saturate(std::int64_t{v} * num / denom); };
    return set_extent(handle, field, scaled(now.cx, x_num, x_denom), scaled(now.cy, y_num, y_denom), old);
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

} // namespace gdi

using namespace gdi;

INT SetMapMode(HDC handle, INT mode) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr || mode < MM_TEXT || mode > MM_ANISOTROPIC)
        return 0;
    auto& m = dc->state.map;
    const INT old = m.mode;
    m.mode = mode;
    if (mode == MM_TEXT) {
        m.window_extent = {1, 1};
        m.viewport_extent = {1, 1};
    } else if (mode == MM_ISOTROPIC) {
        set_inch_scale(*dc, units_per_inch(MM_LOMETRIC));
    } else if (mode != MM_ANISOTROPIC) {
        set_inch_scale(*dc, units_per_inch(mode));
    }
    return old;
}

INT GetMapMode(HDC handle) noexcept
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? 0 : dc->state.map.mode;
}

BOOL SetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return set_origin(dc, &mapping::window_origin, x, y, old);
}
BOOL SetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return set_origin(dc, &mapping::viewport_origin, x, y, old);
}
BOOL OffsetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return offset_origin(dc, &mapping::window_origin, x, y, old);
}
BOOL OffsetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept
{
    return offset_origin(dc, &mapping::viewport_origin, x, y, old);
}
BOOL SetWindowExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept
{
    return set_extent(dc, &mapping::window_extent, cx, cy, old);
}
BOOL SetViewportExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept
{
    return set_extent(dc, &mapping::viewport_extent, cx, cy, old);
}
BOOL ScaleWindowExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept
{
    return scale_extent(dc, &mapping::window_extent, x_num, x_denom, y_num, y_denom, old);
}
BOOL ScaleViewportExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept
{
    return scale_extent(dc, &mapping::viewport_extent, x_num, x_denom, y_num, y_denom, old);
}
BOOL GetWindowOrgEx(HDC dc, POINT* origin) noexcept { return get(dc, &mapping::window_origin, origin); }
BOOL GetViewportOrgEx(HDC dc, POINT* origin) noexcept { return get(dc, &mapping::viewport_origin, origin); }
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
