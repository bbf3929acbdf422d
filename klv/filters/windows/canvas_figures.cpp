#include "klv/filters/windows/canvas_figures.h"

#include "klv/filters/windows/ternary_operation.h"
#include "klv/filters/windows/windows_attributes.h"
#include "klv/metafiles/metafile.h"

#include <cstdlib>
#include <span>

namespace klv {

void canvas_figures::move_to(int x, int y)
{
    core_.state.current_point = core_.map(x, y);
    lines_.clear();
}

void canvas_figures::line_to(int x, int y)
{
    if (lines_.empty())
        lines_.push_back(core_.state.current_point);
    core_.state.current_point = core_.map(x, y);
    lines_.push_back(core_.state.current_point);
    if (lines_.size() == most_points)
        finish_lines();
}

void canvas_figures::finish_lines()
{
    core_.record_clip();
    if (lines_.size() >= 2 && !core_.graduation.silent())
        core_.picture.DrawLine(std::span<const vPOINT>(lines_));
    lines_.clear();
}

// Draws a figure in the fill that it was meant to have.
template <class Draw> void canvas_figures::draw_figure(Draw draw)
{
    auto& graduation = core_.graduation;
    if (graduation.silent())
        return;
    core_.record_clip();
    auto& picture = core_.picture;
    switch (graduation.judge(picture.FillSpec())) {
    case strip_graduation::verdict::skip:
        return;
    case strip_graduation::verdict::draw:
        draw();
        return;
    case strip_graduation::verdict::draw_in_fill:
        picture.PushFillSpec();
        picture.FillSpec(graduation.fill());
        draw();
        picture.PopFillSpec();
        return;
    }
}

void canvas_figures::draw_polygon()
{
    if (core_.graduation.silent()) {
        if (!points_.empty())
            core_.graduation.strip(points_.front());
        return;
    }
    if (points_.size() > 2 && points_.front() == points_.back())
        points_.pop_back();
    draw_points(true);
}

void canvas_figures::draw_polyline()
{
    if (!core_.graduation.silent())
        draw_points(false);
}

void canvas_figures::draw_points(bool closed)
{
    if (points_.size() >= 2 && shape_.assign_polyline(points_, closed))
        draw_figure([this] { core_.picture.DrawShape(shape_); });
}

void canvas_figures::begin_polygons()
{
    points_.clear();
    counts_.clear();
}

// A closing point is taken away again, and so is a polygon that is none.
void canvas_figures::end_of_one_polygon(std::size_t first)
{
    if (points_.size() - first > 2 && points_[first] == points_.back())
        points_.pop_back();
    if (points_.size() - first < 2)
        points_.resize(first);
    else
        counts_.push_back(static_cast<std::int32_t>(points_.size() - first));
}

void canvas_figures::draw_polygons()
{
    if (!counts_.empty() && shape_.assign_polypolygon(points_, counts_, 1))
        draw_figure([this] { core_.picture.DrawShape(shape_); });
    begin_polygons();
}

void canvas_figures::rectangle(const RECT& box)
{
    draw_figure([&] { core_.picture.DrawRect(core_.map(box)); });
}

void canvas_figures::ellipse(const RECT& box)
{
    draw_figure([&] { core_.picture.DrawEllipse(core_.map(box)); });
}

void canvas_figures::round_rectangle(const RECT& box, int corner_width, int corner_height)
{
    const auto& mapping = core_.state.mapping;
    const vSIZE corner(
        std::abs(mapping.map_width(corner_width)), std::abs(mapping.map_height(corner_height)));
    draw_figure([&] { core_.picture.DrawRoundRect(core_.map(box), corner); });
}

// The arc routine goes clockwise: start and end change places.
void canvas_figures::arc(const RECT& box, const POINT& start, const POINT& end, ARCCLOSURE closure)
{
    const vRECT mapped = core_.map(box);
    const vPOINT centre = mapped.Centre();
    const vPOINT radius1(std::abs(mapped.Width()) / 2, 0);
    const vPOINT radius2(0, std::abs(mapped.Height()) / 2);
    const auto from_centre = [&](const POINT& p) { return core_.state.mapping.map(p.x, p.y) - centre; };
    vSHAPE shape;
    ArcToBez(centre, radius1, radius2, from_centre(end), from_centre(start), shape, closure);
    draw_figure([&] { core_.picture.DrawShape(shape); });
}

void canvas_figures::pattern_fill(const RECT& area, std::uint32_t operation)
{
    const vRECT rect = core_.map(area);
    if (!core_.policy.honours_raster_operations) {
        draw_figure([&] { core_.picture.DrawRect(rect); });
        return;
    }
    const auto wanted = static_cast<ternary_operation>(operation);
    const vFILLSPEC& current = core_.picture.FillSpec();
    if (wanted == ternary_operation::pattern_copy || current.Type() != vFILL_SOLID) {
        if (wanted != ternary_operation::no_operation)
            draw_figure([&] { core_.fill_plainly(rect, vFILLSPEC(core_.picture.FillSpec())); });
        return;
    }
    // What depends on the pixels below can't be recorded for a device not yet known; mostly it leaves them.
    const COLORREF pattern = current.Colour().PackedRGB();
    const COLORREF on_black = result_without_source(wanted, pattern, 0x000000);
    const COLORREF on_white = result_without_source(wanted, pattern, 0xFFFFFF);
    if (on_black == on_white)
        core_.fill_plainly(rect, solid_fill(colour_of(on_black)));
}

void canvas_figures::fill(const RECT& area, COLORREF colour)
{
    core_.fill_plainly(core_.map(area), solid_fill(colour_of(colour)));
}

} // namespace klv
