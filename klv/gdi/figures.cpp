#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/curves.h"
#include "klv/gdi/raster/scan_converter.h"
#include "klv/gdi/raster/stroker.h"
#include "klv/gdi/state/device_points.h"
#include "klv/gdi/state/region_object.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv {

using namespace gdi;

namespace {

constexpr double full_turn = 2 * std::numbers::pi;

std::vector<fixed_point>& shared_path()
{
    static std::vector<fixed_point> buffer;
    buffer.clear();
    return buffer;
}

fill_rule rule_of(const drawing_context& dc)
{
    return dc.state.fill_mode == WINDING ? fill_rule::non_zero : fill_rule::even_odd;
}

/// Fills what produce(bounds, sink) hands out with the selected brush.
template <class Produce> void fill_selected(drawing_context& dc, Produce produce)
{
    brush_painter painter(dc, *dc.state.brush, dc.state.rop2);
    if (!painter.visible())
        return;
    clipped_output out(dc, painter.sink());
    produce(out.bounds(), out.sink());
}

void fill_box(drawing_context& dc, const box& area, const brush_object& brush, INT rop2)
{
    brush_painter painter(dc, brush, rop2);
    if (!painter.visible())
        return;
    clipped_output out(dc, painter.sink());
    fill_rounded_box(area, 0, 0, out.bounds(), out.sink());
}

void stroke_path(drawing_context& dc, std::span<const fixed_point> path, bool closed)
{
    stroker pen(dc);
    pen.lines(path, closed);
    pen.finish();
}

/// A logical box in device units, and what the pen makes of it.
struct framed_box {
    box outer;
    bool has_pen;

    framed_box(const drawing_context& dc, INT left, INT top, INT right, INT bottom)
    {
        const RECT r = dc.state.map.to_device(RECT{left, top, right, bottom});
        outer = ordered_box(r.left, r.top, r.right, r.bottom);
        has_pen = dc.state.pen->log.lopnStyle != PS_NULL;
    }

    /// Figures without a pen end one pixel earlier at the right and at the bottom: the pixels that the pen
    /// would have covered there are not filled.
    [[nodiscard]] box fill_area() const { return {outer.x1, outer.y1, outer.x2 - 1, outer.y2 - 1}; }

    /// The path of the pen: through the centres of the border pixels, inside them for PS_INSIDEFRAME.
    [[nodiscard]] ellipse path_ellipse(const drawing_context& dc, std::int32_t pen_width) const
    {
        const double inset = dc.state.pen->log.lopnStyle == PS_INSIDEFRAME ? (pen_width - 1) / 2.0 : 0;
        const auto middle
            = [](std::int32_t a, std::int32_t b) { return (double{1} * a + b) * fixed_one / 2; };
        const auto radius = [&](std::int32_t a, std::int32_t b) {
            return std::max(0.0, ((double{1} * b - a - 1) / 2 - inset) * fixed_one);
        };
        return {middle(outer.x1, outer.x2), middle(outer.y1, outer.y2), radius(outer.x1, outer.x2),
            radius(outer.y1, outer.y2)};
    }
};

/// A frame of the pen's width inside a box, with square corners.
void draw_inside_frame(drawing_context& dc, const box& outer, std::int32_t width)
{
    const brush_object ink(LOGBRUSH{BS_SOLID, dc.state.pen->log.lopnColor, 0});
    const std::int32_t x = std::min(width, (outer.x2 - outer.x1 + 1) / 2);
    const std::int32_t y = std::min(width, (outer.y2 - outer.y1 + 1) / 2);
    region frame{outer};
    const box inner{outer.x1 + x, outer.y1 + y, outer.x2 - x, outer.y2 - y};
    if (!is_empty(inner))
        frame.subtract(frame, region(inner));
    brush_painter painter(dc, ink, dc.state.rop2);
    if (!painter.visible())
        return;
    clipped_output out(dc, painter.sink());
    frame.intersect(frame, region(out.bounds()));
    draw_region(frame, out.sink());
}

void outline_rectangle(drawing_context& dc, const framed_box& frame)
{
    stroker pen(dc);
    const box& b = frame.outer;
    if (pen.wide() && dc.state.pen->log.lopnStyle == PS_INSIDEFRAME) {
        draw_inside_frame(dc, b, pen.width());
        return;
    }
    const POINT corners[] = {{b.x1, b.y1}, {b.x2 - 1, b.y1}, {b.x2 - 1, b.y2 - 1}, {b.x1, b.y2 - 1}};
    if (b.x2 - b.x1 == 1 && b.y2 - b.y1 == 1) {
        const POINT dot[] = {corners[0], {b.x2, b.y1}};
        pen.lines(std::span<const POINT>(dot), false);
    } else if (b.x2 - b.x1 == 1 || b.y2 - b.y1 == 1) {
        // A single row or column: there and back would meet its pixels twice.
        const POINT end = b.x2 - b.x1 == 1 ? POINT{b.x1, b.y2} : POINT{b.x2, b.y1};
        const POINT line[] = {corners[0], end};
        pen.lines(std::span<const POINT>(line), false);
    } else {
        pen.lines(std::span<const POINT>(corners), true);
    }
    pen.finish();
}

enum class arc_closure { open, chord, pie };

struct arc_figure {
    INT left, top, right, bottom, x_start, y_start, x_end, y_end;
};

BOOL draw_arc(HDC handle, const arc_figure& a, arc_closure closure)
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return FALSE;
        const framed_box frame(*dc, a.left, a.top, a.right, a.bottom);
        if (is_empty(frame.outer))
            return TRUE;
        const std::int32_t width = stroker(*dc).width();
        const ellipse path = frame.path_ellipse(*dc, width);
        const auto angle_to = [&](INT x, INT y) {
            const POINT p = dc->state.map.to_device(POINT{x, y});
            return path.angle_of(
                double{1} * p.x * fixed_one + fixed_half, double{1} * p.y * fixed_one + fixed_half);
        };
        const double start = angle_to(a.x_start, a.y_start);
        double sweep = angle_to(a.x_end, a.y_end) - start;
        // Angles grow downwards, so counter-clockwise as seen is towards smaller ones. Equal rays are a
        // whole turn.
        const bool counter_clockwise = dc->state.arc_direction == AD_COUNTERCLOCKWISE;
        if (counter_clockwise && sweep >= 0)
            sweep -= full_turn;
        else if (!counter_clockwise && sweep <= 0)
            sweep += full_turn;

        auto& points = shared_path();
        path.append_arc(start, sweep, points);
        if (closure == arc_closure::pie)
            points.push_back({static_cast<fixed>(std::lround(path.centre_x)),
                static_cast<fixed>(std::lround(path.centre_y))});
        if (closure != arc_closure::open)
            fill_selected(*dc, [&](const box& bounds, span_sink& sink) {
                auto& converter = shared_scan_converter();
                converter.begin(bounds);
                converter.add_polygon(std::span<const fixed_point>(points));
                converter.run(fill_rule::non_zero, sink);
            });
        stroke_path(*dc, points, closure != arc_closure::open);
        return TRUE;
    });
}

} // namespace

BOOL Polygon(HDC handle, const POINT* points, INT count) noexcept
{
    return PolyPolygon(handle, points, &count, 1);
}

BOOL PolyPolygon(HDC handle, const POINT* points, const INT* counts, INT polygons) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr || points == nullptr || counts == nullptr || polygons <= 0)
            return FALSE;
        if (std::any_of(counts, counts + polygons, [](INT n) { return n < 0; }))
            return FALSE;
        const auto for_each = [&](auto&& visit) {
            const POINT* next = points;
            for (INT i = 0; i < polygons; ++i) {
                const auto count = static_cast<std::size_t>(counts[i]);
                visit(to_device_points(*dc, {next, count}));
                next += count;
            }
        };
        fill_selected(*dc, [&](const box& bounds, span_sink& sink) {
            auto& converter = shared_scan_converter();
            converter.begin(bounds);
            for_each([&](std::span<const POINT> polygon) { converter.add_polygon(polygon); });
            converter.run(rule_of(*dc), sink);
        });
        stroker pen(*dc);
        if (pen.visible())
            for_each([&](std::span<const POINT> polygon) { pen.lines(polygon, true); });
        pen.finish();
        return TRUE;
    });
}

BOOL Rectangle(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return FALSE;
        const framed_box frame(*dc, left, top, right, bottom);
        if (is_empty(frame.outer))
            return TRUE;
        box area = frame.fill_area();
        // A one-pixel outline is drawn beside the inside, not over it, so that mix modes meet no pixel twice.
        if (const stroker pen(*dc); pen.visible() && !pen.wide() && !pen.dashed())
            area = {area.x1 + 1, area.y1 + 1, area.x2, area.y2};
        fill_box(*dc, area, *dc->state.brush, dc->state.rop2);
        if (frame.has_pen)
            outline_rectangle(*dc, frame);
        return TRUE;
    });
}

BOOL Ellipse(HDC handle, INT left, INT top, INT right, INT bottom) noexcept
{
    return RoundRect(handle, left, top, right, bottom, INT32_MAX, INT32_MAX);
}

BOOL EllipseRing(HDC handle, const RECT& outer, const RECT& inner) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return FALSE;
        const auto area_of = [&](const RECT& r) {
            const framed_box frame(*dc, r.left, r.top, r.right, r.bottom);
            return is_empty(frame.outer) ? box{} : frame.fill_area();
        };
        fill_selected(*dc, [&](const box& bounds, span_sink& sink) {
            fill_ellipse_ring(area_of(outer), area_of(inner), bounds, sink);
        });
        return TRUE;
    });
}

BOOL RoundRect(HDC handle, INT left, INT top, INT right, INT bottom, INT width, INT height) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return FALSE;
        const framed_box frame(*dc, left, top, right, bottom);
        if (is_empty(frame.outer))
            return TRUE;
        const auto positive = [](LONG v) { return v == INT32_MIN ? INT32_MAX : std::abs(v); };
        const auto corner
            = [&](INT size, LONG mapped) { return size == INT32_MAX ? INT32_MAX : positive(mapped); };
        const std::int32_t corner_width = corner(width, dc->state.map.width_to_device(width));
        const std::int32_t corner_height = corner(height, dc->state.map.height_to_device(height));
        const box area = frame.fill_area();
        fill_selected(*dc, [&](const box& bounds, span_sink& sink) {
            fill_rounded_box(area, corner_width, corner_height, bounds, sink);
        });
        if (!frame.has_pen)
            return TRUE;
        if (stroker pen(*dc); !pen.wide() && !pen.dashed()) {
            pen.rounded_box(frame.outer, corner_width, corner_height);
            return TRUE;
        }

        const ellipse whole = frame.path_ellipse(*dc, stroker(*dc).width());
        const auto radius
            = [](std::int32_t size, double most) { return std::min(size * (fixed_one / 2.0), most); };
        const double rx = radius(corner_width, whole.radius_x);
        const double ry = radius(corner_height, whole.radius_y);
        const double dx = whole.radius_x - rx;
        const double dy = whole.radius_y - ry;
        auto& path = shared_path();
        const auto quarter = [&](double x_side, double y_side, double from) {
            ellipse{whole.centre_x + x_side * dx, whole.centre_y + y_side * dy, rx, ry}.append_arc(
                from, full_turn / 4, path);
        };
        quarter(1, 1, 0);
        quarter(-1, 1, full_turn / 4);
        quarter(-1, -1, full_turn / 2);
        quarter(1, -1, full_turn * 3 / 4);
        stroke_path(*dc, path, true);
        return TRUE;
    });
}

BOOL Arc(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw_arc(dc, {left, top, right, bottom, x_start, y_start, x_end, y_end}, arc_closure::open);
}

BOOL Pie(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw_arc(dc, {left, top, right, bottom, x_start, y_start, x_end, y_end}, arc_closure::pie);
}

BOOL Chord(
    HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end, INT y_end) noexcept
{
    return draw_arc(dc, {left, top, right, bottom, x_start, y_start, x_end, y_end}, arc_closure::chord);
}

} // namespace klv
