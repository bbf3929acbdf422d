#include "klv/gdi/raster/stroker.h"

#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv::gdi {

namespace {

fixed_point centre_of(const POINT& p)
{
    constexpr LONG limit = 1 << 26;
    return {std::clamp(p.x, -limit, limit) * fixed_one + fixed_half,
        std::clamp(p.y, -limit, limit) * fixed_one + fixed_half};
}

POINT pixel_at(const fixed_point& p)
{
    const auto floor_of = [](fixed v) { return v >= 0 ? v / fixed_one : -((fixed_one - 1 - v) / fixed_one); };
    return {floor_of(p.x), floor_of(p.y)};
}

} // namespace

const stroker::dash_pattern* stroker::dashes_of(UINT style)
{
    static constexpr dash_pattern patterns[]
        = {{{18, 6}, 2}, {{3, 3}, 2}, {{9, 6, 3, 6}, 4}, {{9, 3, 3, 3, 3, 3}, 6}};
    return style >= PS_DASH && style <= PS_DASHDOTDOT ? &patterns[style - PS_DASH] : nullptr;
}

stroker::stroker(const canvas& on, const pen_ink& pen)
    : scratch_(on.scratch)
{
    const surface& s = on.pixels;
    if (pen.style == PS_NULL || s.top == nullptr || pen.rop2 == R2_NOP)
        return;
    dashes_ = pen.width <= 1 ? dashes_of(pen.style) : nullptr;
    width_ = dashes_ ? 1 : std::clamp(pen.width, on.common_pixel, widest_pen);
    const auto painter_of = [&](rgb colour) {
        return solid_painter(s, make_pixel_op(pen.rop2, pixel_of(s, colour), used_bits(s)), on.meter);
    };
    solid_.emplace(painter_of(pen.colour));
    output_.emplace(on.clip, *solid_);
    if (wide()) {
        scratch_.converter.begin(output_->bounds());
        make_disc();
        return;
    }
    spans_.emplace(output_->sink());
    if (dashed() && pen.gaps) {
        gaps_.emplace(painter_of(*pen.gaps));
        gap_output_.emplace(on.clip, *gaps_);
        gap_spans_.emplace(gap_output_->sink());
    }
}

void stroker::lines(std::span<const POINT> points, bool closed)
{
    if (!visible() || points.empty())
        return;
    if (wide()) {
        auto& path = scratch_.stroke.path;
        path.resize(points.size());
        std::transform(points.begin(), points.end(), path.begin(), centre_of);
        wide_lines(path, closed);
        return;
    }
    const auto draw = [this](POINT a, POINT b) { dashed() ? dashed_line(a, b) : thin_line(a, b); };
    for (std::size_t i = 1; i < points.size(); ++i)
        draw(points[i - 1], points[i]);
    if (closed)
        draw(points.back(), points.front());
}

void stroker::lines(std::span<const fixed_point> points, bool closed)
{
    if (!visible() || points.empty())
        return;
    if (wide()) {
        wide_lines(points, closed);
        return;
    }
    auto& pixels = scratch_.stroke.pixels;
    pixels.resize(points.size());
    std::transform(points.begin(), points.end(), pixels.begin(), pixel_at);
    lines(std::span<const POINT>(pixels), closed);
}

void stroker::rounded_box(const box& area, std::int32_t corner_width, std::int32_t corner_height)
{
    if (visible())
        outline_rounded_box(area, corner_width, corner_height, output_->bounds(), output_->sink());
}

void stroker::finish()
{
    if (!visible())
        return;
    if (wide())
        scratch_.converter.run(fill_rule::non_zero, output_->sink());
    else
        spans_->flush();
    if (gap_spans_)
        gap_spans_->flush();
}

void stroker::thin_line(POINT from, POINT to)
{
    line_walker walker(from, to, output_->bounds());
    walker.runs([this](std::int32_t y, std::int32_t x0, std::int32_t x1) { spans_->add(y, x0, x1); });
}

bool stroker::dash_at(std::int64_t distance) const
{
    std::int64_t period = 0;
    for (std::size_t i = 0; i < dashes_->count; ++i)
        period += dashes_->lengths[i];
    std::int64_t at = distance % period;
    std::size_t i = 0;
    for (; at >= dashes_->lengths[i]; ++i)
        at -= dashes_->lengths[i];
    return i % 2 == 0;
}

void stroker::dashed_line(POINT from, POINT to)
{
    line_walker walker(from, to, output_->bounds());
    std::int64_t distance = dash_start_ + walker.first_step();
    walker.pixels([&](std::int32_t x, std::int32_t y) {
        if (dash_at(distance++))
            spans_->add(y, x, x + 1);
        else if (gap_spans_)
            gap_spans_->add(y, x, x + 1);
    });
    dash_start_ += walker.length();
}

// The disc turns the way the bars of add_bar do, so that windings only add up.
void stroker::make_disc()
{
    auto& s = scratch_.stroke;
    if (s.disc_width == width_)
        return;
    s.disc_width = width_;
    s.disc.clear();
    const double radius = width_ * (fixed_one / 2.0);
    ellipse{0, 0, radius, radius}.append_arc(0, -2 * std::numbers::pi, s.disc);
    s.disc.pop_back();
}

void stroker::add_disc(fixed_point centre)
{
    auto& moved = scratch_.stroke.moved_disc;
    const auto& disc = scratch_.stroke.disc;
    moved.resize(disc.size());
    std::transform(disc.begin(), disc.end(), moved.begin(), [&](const fixed_point& p) {
        return fixed_point{centre.x + p.x, centre.y + p.y};
    });
    scratch_.converter.add_polygon(std::span<const fixed_point>(moved));
}

/// Half the pen's width to one side of a line; zero for a line without length.
fixed_point stroker::side_of(fixed_point from, fixed_point to) const
{
    const double dx = double{1} * to.x - from.x;
    const double dy = double{1} * to.y - from.y;
    const double length = std::hypot(dx, dy);
    if (length == 0)
        return {0, 0};
    const double half = width_ * (fixed_one / 2.0) / length;
    return {static_cast<fixed>(std::lround(-dy * half)), static_cast<fixed>(std::lround(dx * half))};
}

void stroker::add_bar(fixed_point from, fixed_point to, fixed_point side)
{
    const fixed_point corners[] = {{from.x + side.x, from.y + side.y}, {to.x + side.x, to.y + side.y},
        {to.x - side.x, to.y - side.y}, {from.x - side.x, from.y - side.y}};
    scratch_.converter.add_polygon(std::span<const fixed_point>(corners));
}

// Where the direction hardly changes, as along a flattened curve, the wedge between the two bars is a
// triangle; elsewhere a disc covers it.
void stroker::add_join(fixed_point at, fixed_point in, fixed_point out)
{
    constexpr double slight_turn = 0.97; // cosine
    const double half = width_ * (fixed_one / 2.0);
    const double dot = double{1} * in.x * out.x + double{1} * in.y * out.y;
    const double cross = double{1} * in.x * out.y - double{1} * in.y * out.x;
    if (dot < slight_turn * half * half) {
        add_disc(at);
    } else if (cross != 0) {
        // The outside of the turn, in the order that winds like the bars.
        const fixed sign = cross > 0 ? -1 : 1;
        const fixed_point first = cross > 0 ? out : in;
        const fixed_point second = cross > 0 ? in : out;
        const fixed_point wedge[] = {at, {at.x + sign * first.x, at.y + sign * first.y},
            {at.x + sign * second.x, at.y + sign * second.y}};
        scratch_.converter.add_polygon(std::span<const fixed_point>(wedge));
    }
}

void stroker::wide_lines(std::span<const fixed_point> points, bool closed)
{
    const auto is_point = [](fixed_point side) { return side.x == 0 && side.y == 0; };
    fixed_point first_side{0, 0};
    fixed_point last_side{0, 0};
    const auto add = [&](fixed_point from, fixed_point to) {
        const fixed_point side = side_of(from, to);
        if (is_point(side))
            return;
        if (is_point(first_side))
            first_side = side;
        else
            add_join(from, last_side, side);
        add_bar(from, to, side);
        last_side = side;
    };
    for (std::size_t i = 1; i < points.size(); ++i)
        add(points[i - 1], points[i]);
    if (closed)
        add(points.back(), points.front());
    if (closed && !is_point(first_side)) {
        add_join(points.front(), last_side, first_side);
    } else {
        add_disc(points.front());
        add_disc(points.back());
    }
}

} // namespace klv::gdi
