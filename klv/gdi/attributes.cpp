#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"

#include <utility>

namespace klv {

using namespace gdi;

namespace {

/// Sets a field whose values run from first to last. \return the old value, 0 when refused.
INT set_mode(HDC handle, setting what, INT drawing_state::*field, INT value, INT first, INT last)
{
    return with_context(handle, [=](drawing_context& dc) {
        if (value < first || value > last)
            return 0;
        const INT old = std::exchange(dc.state.*field, value);
        dc.tell(what, value);
        return old;
    });
}

COLORREF set_colour(HDC handle, setting what, COLORREF drawing_state::*field, COLORREF value)
{
    return with_context(handle, CLR_INVALID, [=](drawing_context& dc) {
        const COLORREF old = std::exchange(dc.state.*field, value);
        dc.tell(what, value);
        return old;
    });
}

template <class Value> Value get(HDC handle, Value drawing_state::*field, Value failed)
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? failed : dc->state.*field;
}

} // namespace

INT SetBkMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::background_mode, &drawing_state::background_mode, mode, TRANSPARENT, OPAQUE);
}
INT GetBkMode(HDC dc) noexcept { return get(dc, &drawing_state::background_mode, 0); }
COLORREF SetBkColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, setting::background_colour, &drawing_state::background_colour, colour);
}
COLORREF GetBkColor(HDC dc) noexcept { return get(dc, &drawing_state::background_colour, CLR_INVALID); }
COLORREF SetTextColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, setting::text_colour, &drawing_state::text_colour, colour);
}
COLORREF GetTextColor(HDC dc) noexcept { return get(dc, &drawing_state::text_colour, CLR_INVALID); }
INT SetROP2(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::mix_mode, &drawing_state::rop2, mode, R2_BLACK, R2_WHITE);
}
INT GetROP2(HDC dc) noexcept { return get(dc, &drawing_state::rop2, 0); }
INT SetPolyFillMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::fill_mode, &drawing_state::fill_mode, mode, ALTERNATE, WINDING);
}
INT GetPolyFillMode(HDC dc) noexcept { return get(dc, &drawing_state::fill_mode, 0); }
INT SetStretchBltMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::stretch_mode, &drawing_state::stretch_mode, mode, BLACKONWHITE, HALFTONE);
}
INT GetStretchBltMode(HDC dc) noexcept { return get(dc, &drawing_state::stretch_mode, 0); }
INT SetArcDirection(HDC dc, INT direction) noexcept
{
    return set_mode(dc, setting::arc_direction, &drawing_state::arc_direction, direction, AD_COUNTERCLOCKWISE,
        AD_CLOCKWISE);
}
INT GetArcDirection(HDC dc) noexcept { return get(dc, &drawing_state::arc_direction, 0); }

BOOL SetBrushOrgEx(HDC handle, INT x, INT y, POINT* old) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (old != nullptr)
            *old = dc.state.brush_origin;
        dc.state.brush_origin = {x, y};
        dc.tell(setting::brush_origin, x, y);
        return TRUE;
    });
}

BOOL GetBrushOrgEx(HDC handle, POINT* origin) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || origin == nullptr)
        return FALSE;
    *origin = dc->state.brush_origin;
    return TRUE;
}

} // namespace klv
