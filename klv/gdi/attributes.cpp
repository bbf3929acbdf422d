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

} // namespace

INT SetBkMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::background_mode, &drawing_state::background_mode, mode, TRANSPARENT, OPAQUE);
}
COLORREF SetBkColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, setting::background_colour, &drawing_state::background_colour, colour);
}
COLORREF SetTextColor(HDC dc, COLORREF colour) noexcept
{
    return set_colour(dc, setting::text_colour, &drawing_state::text_colour, colour);
}
INT SetROP2(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::mix_mode, &drawing_state::rop2, mode, R2_BLACK, R2_WHITE);
}
INT GetROP2(HDC handle) noexcept
{
    const auto* dc = find_context(handle);
    return dc == nullptr ? 0 : dc->state.rop2;
}
INT SetPolyFillMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::fill_mode, &drawing_state::fill_mode, mode, ALTERNATE, WINDING);
}
INT SetStretchBltMode(HDC dc, INT mode) noexcept
{
    return set_mode(dc, setting::stretch_mode, &drawing_state::stretch_mode, mode, BLACKONWHITE, HALFTONE);
}
} // namespace klv
