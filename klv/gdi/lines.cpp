#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/line_walker.h"
#include "klv/gdi/state/context.h"

#include <algorithm>

namespace klv {

using namespace gdi;

namespace {

constexpr box everything{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

} // namespace

BOOL MoveToEx(HDC handle, INT x, INT y, POINT* old) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (old != nullptr)
            *old = dc.state.position;
        dc.state.position = {x, y};
        dc.tell(setting::position, x, y);
        return TRUE;
    });
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
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (points == nullptr || count <= 0)
            return FALSE;
        dc.out->draw(dc.state, lines_to{{points, static_cast<std::size_t>(count)}});
        dc.state.position = points[count - 1];
        return TRUE;
    });
}

BOOL PolyPolyline(HDC handle, const POINT* points, const DWORD* counts, DWORD lines) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (points == nullptr || counts == nullptr)
            return FALSE;
        dc.out->draw(dc.state, polylines{points, {counts, lines}});
        return TRUE;
    });
}

BOOL PolyBezier(HDC handle, const POINT* points, DWORD count) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (points == nullptr || count % 3 != 1)
            return FALSE;
        dc.out->draw(dc.state, beziers{{points, count}});
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
    return with_context(handle, CLR_INVALID, [=](drawing_context& dc) {
        return dc.out->set_pixel(dc.state, {x, y}, colour);
    });
}

BOOL SetPixelV(HDC dc, INT x, INT y, COLORREF colour) noexcept
{
    return SetPixel(dc, x, y, colour) != CLR_INVALID;
}

COLORREF GetPixel(HDC handle, INT x, INT y) noexcept
{
    return with_context(handle, CLR_INVALID, [=](drawing_context& dc) {
        return dc.out->get_pixel(dc.state, {x, y});
    });
}

} // namespace klv
