#include "klv/gdi/raster/figure_painter.h"

#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/curves.h"
#include "klv/gdi/raster/inks.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv::gdi {

namespace {

constexpr double full_turn = 2 * std::numbers::pi;

fixed_point centre_of(const POINT& p)
{
    constexpr LONG limit = 1 << 26;
    return {std::clamp(p.x, -limit, limit) * fixed_one + fixed_half,
        std::clamp(p.y, -limit, limit) * fixed_one + fixed_half};
}

} // namespace

/// Fills what produce(bounds, sink) hands out with the selected brush.
template <class Produce> void figure_painter::fill_selected(Produce produce)
{
    brush_painter painter(on_, brush_of(state_, *state_.brush), state_.rop2);
    if (!painter.visible())
        return;
    clipped_output out(on_.clip, painter.sink());
    produce(out.bounds(), out.sink());
}

stroker figure_painter::pen() const { return {on_, pen_of(state_)}; }

/// The points in device units: the given ones where the mapping changes nothing, else scratch memory that
/// stays good until the next call.
std::span<const POINT> figure_painter::to_device(std::span<const POINT> points)
{
    if (state_.map.is_identity())
        return points;
    auto& out = scratch_.points;
    out.clear();
    for (const POINT& p : points)
        out.push_back(state_.map.to_device(p));
    return out;
}

// ---- Lines ---------------------------------------------------------------------------------------------

void figure_painter::operator()(const line_to& what)
{
    const POINT ends[] = {state_.map.to_device(state_.position), state_.map.to_device(what.end)};
    stroker line = pen();
    line.lines(std::span<const POINT>(ends), false);
    line.finish();
}

void figure_painter::operator()(const polyline& what)
{
    stroker line = pen();
    line.lines(to_device(what.points), false);
    line.finish();
}

void figure_painter::operator()(const beziers& what)
{
    auto& curve = scratch_.path;
    curve.clear();
    const auto device = to_device(what.points);
    curve.push_back(centre_of(device[0]));
    for (std::size_t i = 3; i < device.size(); i += 3) {
        const fixed_point control[4]
            = {curve.back(), centre_of(device[i - 2]), centre_of(device[i - 1]), centre_of(device[i])};
        append_bezier(control, curve);
    }
    stroke_path(curve, false);
}

void figure_painter::stroke_path(std::span<const fixed_point> path, bool closed)
{
    stroker line = pen();
    line.lines(path, closed);
    line.finish();
}

// ---- Polygons ------------------------------------------------------------------------------------------

template <class Visit> void figure_painter::for_each(const polygons& what, Visit visit)
{
    const POINT* next = what.points;
    for (const INT n : what.counts) {
        const auto count = static_cast<std::size_t>(n);
        visit(to_device({next, count}));
        next += count;
    }
}

void figure_painter::operator()(const polygons& what)
{
    fill_selected([&](const box& bounds, span_sink& sink) {
        auto& converter = scratch_.converter;
        converter.begin(bounds);
        for_each(what, [&](std::span<const POINT> polygon) { converter.add_polygon(polygon); });
        converter.run(state_.fill_mode == WINDING ? fill_rule::non_zero : fill_rule::even_odd, sink);
    });
    stroker outline = pen();
    if (outline.visible())
        for_each(what, [&](std::span<const POINT> polygon) { outline.lines(polygon, true); });
    outline.finish();
}

// ---- Rectangles ----------------------------------------------------------------------------------------

void figure_painter::operator()(const rectangle& what)
{
    const framed_box frame(state_, what.box);
    if (is_empty(frame.outer))
        return;
    box area = frame.fill_area();
    // A one-pixel outline is drawn beside the inside, not over it, so that mix modes meet no pixel twice.
    if (const stroker outline = pen(); outline.visible() && !outline.wide() && !outline.dashed())
        area = {area.x1 + 1, area.y1 + 1, area.x2, area.y2};
    fill_selected([&](const box& bounds, span_sink& sink) { fill_rounded_box(area, 0, 0, bounds, sink); });
    if (!frame.has_pen)
        return;
    stroker outline = pen();
    outline_rectangle(frame, outline);
}

void figure_painter::outline_rectangle(const framed_box& frame, stroker& outline)
{
    const box& b = frame.outer;
    if (outline.wide() && frame.inside_frame) {
        draw_inside_frame(b, outline.width());
        return;
    }
    const POINT corners[] = {{b.x1, b.y1}, {b.x2 - 1, b.y1}, {b.x2 - 1, b.y2 - 1}, {b.x1, b.y2 - 1}};
    if (b.x2 - b.x1 == 1 && b.y2 - b.y1 == 1) {
        const POINT dot[] = {corners[0], {b.x2, b.y1}};
        outline.lines(std::span<const POINT>(dot), false);
    } else if (b.x2 - b.x1 == 1 || b.y2 - b.y1 == 1) {
        // A single row or column: there and back would meet its pixels twice.
        const POINT end = b.x2 - b.x1 == 1 ? POINT{b.x1, b.y2} : POINT{b.x2, b.y1};
        const POINT line[] = {corners[0], end};
        outline.lines(std::span<const POINT>(line), false);
    } else {
        outline.lines(std::span<const POINT>(corners), true);
    }
    outline.finish();
}

/// A frame of the pen's width inside a box, with square corners.
void figure_painter::draw_inside_frame(const box& outer, std::int32_t width)
{
    const std::int32_t x = std::min(width, (outer.x2 - outer.x1 + 1) / 2);
    const std::int32_t y = std::min(width, (outer.y2 - outer.y1 + 1) / 2);
    region frame{outer};
    const box inner{outer.x1 + x, outer.y1 + y, outer.x2 - x, outer.y2 - y};
    if (!is_empty(inner))
        frame.subtract(frame, region(inner));
    const brush_object ink(LOGBRUSH{BS_SOLID, state_.pen->log.lopnColor, 0});
    brush_painter painter(on_, brush_of(state_, ink), state_.rop2);
    if (!painter.visible())
        return;
    clipped_output out(on_.clip, painter.sink());
    frame.intersect(frame, region(out.bounds()));
    draw_region(frame, out.sink());
}

// ---- Round figures -------------------------------------------------------------------------------------

void figure_painter::operator()(const ellipse_in& what) { draw_rounded(what.box, INT32_MAX, INT32_MAX); }

void figure_painter::operator()(const rounded_rectangle& what)
{
    const auto positive = [](LONG v) { return v == INT32_MIN ? INT32_MAX : std::abs(v); };
    draw_rounded(what.box, positive(state_.map.width_to_device(what.width)),
        positive(state_.map.height_to_device(what.height)));
}

void figure_painter::draw_rounded(const RECT& logical, std::int32_t corner_width, std::int32_t corner_height)
{
    const framed_box frame(state_, logical);
    if (is_empty(frame.outer))
        return;
    const box area = frame.fill_area();
    fill_selected([&](const box& bounds, span_sink& sink) {
        fill_rounded_box(area, corner_width, corner_height, bounds, sink);
    });
    if (!frame.has_pen)
        return;
    if (stroker outline = pen(); !outline.wide() && !outline.dashed())
        outline.rounded_box(frame.outer, corner_width, corner_height);
    else
        outline_rounded(frame, corner_width, corner_height);
}

void figure_painter::outline_rounded(
    const framed_box& frame, std::int32_t corner_width, std::int32_t corner_height)
{
    const ellipse whole = frame.path_ellipse(pen().width());
    const auto radius
        = [](std::int32_t size, double most) { return std::min(size * (fixed_one / 2.0), most); };
    const double rx = radius(corner_width, whole.radius_x);
    const double ry = radius(corner_height, whole.radius_y);
    const double dx = whole.radius_x - rx;
    const double dy = whole.radius_y - ry;
    auto& path = scratch_.path;
    path.clear();
    const auto quarter = [&](double x_side, double y_side, double from) {
        ellipse{whole.centre_x + x_side * dx, whole.centre_y + y_side * dy, rx, ry}.append_arc(
            from, full_turn / 4, path);
    };
    quarter(1, 1, 0);
    quarter(-1, 1, full_turn / 4);
    quarter(-1, -1, full_turn / 2);
    quarter(1, -1, full_turn * 3 / 4);
    stroke_path(path, true);
}

void figure_painter::operator()(const ellipse_ring& what)
{
    const auto area_of = [&](const RECT& r) {
        const framed_box frame(state_, r);
        return is_empty(frame.outer) ? box{} : frame.fill_area();
    };
    fill_selected([&](const box& bounds, span_sink& sink) {
        fill_ellipse_ring(area_of(what.outer), area_of(what.inner), bounds, sink);
    });
}

void figure_painter::operator()(const elliptic_arc& what)
{
    const framed_box frame(state_, what.box);
    if (is_empty(frame.outer))
        return;
    const ellipse path = frame.path_ellipse(pen().width());
    const arc_sweep angles(state_, what, path);
    auto& points = scratch_.path;
    points.clear();
    path.append_arc(angles.start, angles.sweep, points);
    if (what.closed == elliptic_arc::closure::pie)
        points.push_back(
            {static_cast<fixed>(std::lround(path.centre_x)), static_cast<fixed>(std::lround(path.centre_y))});
    const bool closed = what.closed != elliptic_arc::closure::open;
    if (closed)
        fill_selected([&](const box& bounds, span_sink& sink) {
            auto& converter = scratch_.converter;
            converter.begin(bounds);
            converter.add_polygon(std::span<const fixed_point>(points));
            converter.run(fill_rule::non_zero, sink);
        });
    stroke_path(points, closed);
}

} // namespace klv::gdi
