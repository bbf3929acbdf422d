#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/state/region_object.h"

#include <memory>

namespace klv {

using namespace gdi;

namespace {

/// FillRect also takes the number of an interface colour plus one in the place of a brush.
std::shared_ptr<brush_object> brush_or_colour(HBRUSH brush)
{
    constexpr std::uint32_t colours = 25;
    const std::uint32_t token = token_of(brush);
    if (token >= 1 && token <= colours)
        return std::make_shared<brush_object>(
            LOGBRUSH{BS_SOLID, GetSysColor(static_cast<INT>(token - 1)), 0});
    return find_shared<brush_object>(brush);
}

template <class Fill> BOOL fill(drawing_context& dc, const Fill& what)
{
    dc.out->fill(dc.state, what);
    return TRUE;
}

} // namespace

INT FillRect(HDC handle, const RECT* rect, HBRUSH brush_handle) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        const auto brush = brush_or_colour(brush_handle);
        if (rect == nullptr || !brush)
            return FALSE;
        return fill(dc, box_fill{*rect, *brush});
    });
}

BOOL FillRgn(HDC handle, HRGN region_handle, HBRUSH brush_handle) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        const auto* area = find<region_object>(region_handle);
        const auto* brush = find<brush_object>(brush_handle);
        return area != nullptr && brush != nullptr
            && fill(dc, region_fill{region_fill::how::fill, *area, *brush});
    });
}

BOOL PaintRgn(HDC handle, HRGN region_handle) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        const auto* area = find<region_object>(region_handle);
        return area != nullptr && fill(dc, region_fill{region_fill::how::paint, *area, *dc.state.brush});
    });
}

BOOL InvertRgn(HDC handle, HRGN region_handle) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        const auto* area = find<region_object>(region_handle);
        return area != nullptr && fill(dc, region_fill{region_fill::how::invert, *area, *dc.state.brush});
    });
}

BOOL FrameRgn(HDC handle, HRGN region_handle, HBRUSH brush_handle, INT width, INT height) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        const auto* area = find<region_object>(region_handle);
        const auto* brush = find<brush_object>(brush_handle);
        return area != nullptr && brush != nullptr && width > 0 && height > 0
            && fill(dc, region_frame{*area, *brush, width, height});
    });
}

BOOL ExtFloodFill(HDC handle, INT x, INT y, COLORREF colour, UINT type) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        return type <= FLOODFILLSURFACE && dc.out->flood(dc.state, {x, y}, colour, type);
    });
}

} // namespace klv
