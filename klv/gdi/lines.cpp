#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/pixel_rows.h"
#include "klv/gdi/raster/stroker.h"
#include "klv/gdi/state/device_points.h"

#include <algorithm>

namespace klv {

using namespace gdi;

namespace {

std::vector<fixed_point>& shared_curve()
{
    static std::vector<fixed_point> buffer;
    buffer.clear();
    return buffer;
}

constexpr box everything{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

/// The pixel of a logical point when it can be drawn on.
const surface* visible_pixel(drawing_context& dc, INT x, INT y, POINT& at)
{
    const surface& s = dc.target();
    at = dc.state.map.to_device(POINT{x, y});
    return s.top != nullptr && dc.effective_clip().contains(at.x, at.y) ? &s : nullptr;
}

} // namespace

BOOL MoveToEx(HDC handle, INT x, INT y, POINT* old) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    if (old != nullptr)
        *old = dc->state.position;
    dc->state.position = {x, y};
    return TRUE;
}

BOOL GetCurrentPositionEx(HDC handle, POINT* position) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || position == nullptr)
        return FALSE;
    *position = dc->state.position;
    return TRUE;
}

BOOL LineTo(HDC handle, INT x, INT y) noexcept
{
    const POINT end{x, y};
    return PolylineTo(handle, &end, 1);
}

BOOL Polyline(HDC handle, const POINT* points, INT count) noexcept
{
    const auto n = static_cast<DWORD>(std::max(count, 0));
    return PolyPolyline(handle, points, &n, 1);
}

BOOL PolylineTo(HDC handle, const POINT* points, INT count) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || points == nullptr || count <= 0)
            return FALSE;
        stroker pen(*dc);
        const auto device
            = to_device_points(*dc, dc->state.position, {points, static_cast<std::size_t>(count)});
        pen.lines(device, false);
        pen.finish();
        dc->state.position = points[count - 1];
        return TRUE;
    });
}

BOOL PolyPolyline(HDC handle, const POINT* points, const DWORD* counts, DWORD polylines) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || points == nullptr || counts == nullptr)
            return FALSE;
        stroker pen(*dc);
        for (DWORD i = 0; i < polylines; ++i) {
            pen.lines(to_device_points(*dc, {points, counts[i]}), false);
            points += counts[i];
        }
        pen.finish();
        return TRUE;
    });
}

BOOL PolyBezier(HDC handle, const POINT* points, DWORD count) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || points == nullptr || count % 3 != 1)
            return FALSE;
        stroker pen(*dc);
        auto& curve = shared_curve();
        const auto device = to_device_points(*dc, {points, count});
        const auto fixed_of = [](const POINT& p) {
            constexpr LONG limit = 1 << 26;
            return fixed_point{std::clamp(p.x, -limit, limit) * fixed_one + fixed_half,
                std::clamp(p.y, -limit, limit) * fixed_one + fixed_half};
        };
        curve.push_back(fixed_of(device[0]));
        for (std::size_t i = 3; i < device.size(); i += 3) {
            const fixed_point control[4]
                = {curve.back(), fixed_of(device[i - 2]), fixed_of(device[i - 1]), fixed_of(device[i])};
            append_bezier(control, curve);
        }
        pen.lines(std::span<const fixed_point>(curve), false);
        pen.finish();
        return TRUE;
    });
}

BOOL LineDDA(INT x1, INT y1, INT x2, INT y2, LINEDDAPROC proc, LPARAM data) noexcept
{
    if (proc == nullptr)
        return FALSE;
    line_walker walker({x1, y1}, {x2, y2}, everything);
    walker.pixels([&](std::int32_t x, std::int32_t y) { proc(x, y, data); });
    return TRUE;
}

COLORREF SetPixel(HDC handle, INT x, INT y, COLORREF colour) noexcept
{
    return guarded([&]() -> COLORREF {
        auto* dc = find_context(handle);
        POINT at{};
        const surface* s = dc == nullptr ? nullptr : visible_pixel(*dc, x, y, at);
        if (s == nullptr)
            return CLR_INVALID;
        const std::uint32_t pixel = pixel_of(*s, resolve_colour(*dc, colour));
        store_pixels(*s, at.x, at.y, {&pixel, 1});
        return to_colorref(colour_of(*s, pixel));
    });
}

BOOL SetPixelV(HDC dc, INT x, INT y, COLORREF colour) noexcept
{
    return SetPixel(dc, x, y, colour) != CLR_INVALID;
}

COLORREF GetPixel(HDC handle, INT x, INT y) noexcept
{
    return guarded([&]() -> COLORREF {
        auto* dc = find_context(handle);
        POINT at{};
        const surface* s = dc == nullptr ? nullptr : visible_pixel(*dc, x, y, at);
        return s == nullptr ? CLR_INVALID : to_colorref(colour_of(*s, read_pixel(*s, at.x, at.y)));
    });
}

} // namespace klv
