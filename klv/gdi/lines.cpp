#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"

#include <algorithm>

namespace klv {

using namespace gdi;

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
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        dc.out->draw(dc.state, line_to{{x, y}});
        dc.state.position = {x, y};
        return TRUE;
    });
}

BOOL Polyline(HDC handle, const POINT* points, INT count) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (points == nullptr)
            return FALSE;
        dc.out->draw(dc.state, polyline{{points, static_cast<std::size_t>(std::max(count, 0))}});
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
