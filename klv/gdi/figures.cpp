#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"

#include <algorithm>

namespace klv {

using namespace gdi;

namespace {

BOOL draw(HDC handle, const figure& what)
{
    return with_context(handle, [&](drawing_context& dc) -> BOOL {
        dc.out->draw(dc.state, what);
        return TRUE;
    });
}

} // namespace

BOOL Polygon(HDC dc, const POINT* points, INT count) noexcept { return PolyPolygon(dc, points, &count, 1); }

BOOL PolyPolygon(HDC dc, const POINT* points, const INT* counts, INT count) noexcept
{
    if (points == nullptr || counts == nullptr || count <= 0
        || std::any_of(counts, counts + count, [](INT n) { return n < 0; }))
        return FALSE;
    return draw(dc, polygons{points, {counts, static_cast<std::size_t>(count)}});
}

BOOL Rectangle(HDC dc, INT left, INT top, INT right, INT bottom) noexcept
{
    return draw(dc, rectangle{{left, top, right, bottom}});
}

BOOL RoundRect(HDC dc, INT left, INT top, INT right, INT bottom, INT width, INT height) noexcept
{
    return draw(dc, rounded_rectangle{{left, top, right, bottom}, width, height});
}

BOOL Ellipse(HDC dc, INT left, INT top, INT right, INT bottom) noexcept
{
    return draw(dc, ellipse_in{{left, top, right, bottom}});
}

BOOL EllipseRing(HDC dc, const RECT& outer, const RECT& inner) noexcept
{
    return draw(dc, ellipse_ring{outer, inner});
}

BOOL Arc(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw(dc,
        elliptic_arc{
            elliptic_arc::closure::open, {left, top, right, bottom}, {x_start, y_start}, {x_end, y_end}});
}

BOOL Pie(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw(dc,
        elliptic_arc{
            elliptic_arc::closure::pie, {left, top, right, bottom}, {x_start, y_start}, {x_end, y_end}});
}

BOOL Chord(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw(dc,
        elliptic_arc{
            elliptic_arc::closure::chord, {left, top, right, bottom}, {x_start, y_start}, {x_end, y_end}});
}

} // namespace klv
