#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"

namespace klv {

using namespace gdi;

namespace {

/// Sets a field whose values run from first to last. \return the old value, 0 when refused.
INT set_mode(HDC handle, INT dc_state::*field, INT value, INT first, INT last)
{
    auto* dc = find_context(handle);
    if (dc == nullptr || value < first || value > last)
        return 0;
    const INT old = dc->state.*field;
    dc->state.*field = value;
    return old;
}

INT get_mode(HDC handle, INT dc_state::*field)
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? 0 : dc->state.*field;
}

COLORREF set_colour(HDC handle, COLORREF dc_state::*field, COLORREF value)
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return CLR_INVALID;
    const COLORREF old = dc->state.*field;
    dc->state.*field = value;
    return old;
}

COLORREF get_colour(HDC handle, COLORREF dc_state::*field)
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? CLR_INVALID : dc->state.*field;
}

} // namespace

INT SetBkMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, &dc_state::background_mode, mode, TRANSPARENT, OPAQUE);
}
INT GetBkMode(HDC dc) noexcept { return get_mode(dc, &dc_state::background_mode); }
COLORREF SetBkColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, &dc_state::background_colour, colour);
}
COLORREF GetBkColor(HDC dc) noexcept { return get_colour(dc, &dc_state::background_colour); }
COLORREF SetTextColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, &dc_state::text_colour, colour);
}
COLORREF GetTextColor(HDC dc) noexcept { return get_colour(dc, &dc_state::text_colour); }
INT SetROP2(HDC dc, INT mode) noexcept { return set_mode(dc, &dc_state::rop2, mode, R2_BLACK, R2_WHITE); }
INT GetROP2(HDC dc) noexcept { return get_mode(dc, &dc_state::rop2); }
INT SetPolyFillMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, &dc_state::fill_mode, mode, ALTERNATE, WINDING);
}
INT GetPolyFillMode(HDC dc) noexcept { return get_mode(dc, &dc_state::fill_mode); }
INT SetStretchBltMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, &dc_state::stretch_mode, mode, BLACKONWHITE, HALFTONE);
}
INT GetStretchBltMode(HDC dc) noexcept { return get_mode(dc, &dc_state::stretch_mode); }
INT SetArcDirection(HDC dc, INT direction) noexcept
{
    return set_mode(dc, &dc_state::arc_direction, direction, AD_COUNTERCLOCKWISE, AD_CLOCKWISE);
}
INT GetArcDirection(HDC dc) noexcept { return get_mode(dc, &dc_state::arc_direction); }

BOOL SetBrushOrgEx(HDC handle, INT x, INT y, POINT* old) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    if (old != nullptr)
        *old = dc->state.brush_origin;
    dc->state.brush_origin = {x, y};
    return TRUE;
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
