#include "klv/gdi/raster/curves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv::gdi {

namespace {

// Flattened curves stay within an eighth of a pixel.
constexpr double tolerance = fixed_one / 8.0;
constexpr int fewest_segments = 4;
constexpr int most_segments = 2048;

fixed round_fixed(double v)
{
    constexpr double limit = 1 << 30;
    return static_cast<fixed>(std::lround(std::clamp(v, -limit, limit)));
}

int segments_of(double radius, double sweep)
{
    if (radius <= tolerance)
        return fewest_segments;
    const double step = 2 * std::acos(1 - tolerance / radius);
    return static_cast<int>(
        std::clamp(std::ceil(std::abs(sweep) / step), double{fewest_segments}, double{most_segments}));
}

/// The rows of a box with elliptic corners.
class rounded_rows {
public:
    rounded_rows(const box& area, std::int32_t width, std::int32_t height)
        : area_(area)
        , height_(double{1} * area.y2 - area.y1)
        , radius_x_(std::clamp(double{1} * width, 0.0, double{1} * area.x2 - area.x1) / 2)
        , radius_y_(std::clamp(double{1} * height, 0.0, height_) / 2)
    {
    }

    /// Pixels that row y leaves out at each side: the first one inside has its centre inside, and the right
    /// side mirrors the left.
    [[nodiscard]] std::int32_t inset(std::int32_t y) const
    {
        const double from_top = double{1} * y - area_.y1 + 0.5;
        const double down = std::min(from_top, height_ - from_top);
        if (down >= radius_y_)
            return 0;
        const double v = (radius_y_ - down) / radius_y_;
        const double cut = radius_x_ * (1 - std::sqrt(std::max(0.0, 1 - v * v))) - 0.5;
        const auto whole = static_cast<std::int32_t>(cut);
        return whole + (whole < cut);
    }

private:
    box area_;
    double height_;
    double radius_x_;
    double radius_y_;
};

} // namespace

void fill_rounded_box(
    const box& area, std::int32_t width, std::int32_t height, const box& clip, span_sink& sink)
{
    const box visible = intersection(area, clip);
    if (is_empty(visible))
        return;
    const rounded_rows rows(area, width, height);
    span_batch out(sink);
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        const std::int32_t cut = rows.inset(y);
        const std::int32_t x0 = std::max(area.x1 + cut, visible.x1);
        const std::int32_t x1 = std::min(area.x2 - cut, visible.x2);
        if (x0 < x1)
            out.add(y, x0, x1);
    }
    out.flush();
}

namespace {

/// Adds what of a span lies between the sides of a box.
void add_visible(span_batch& out, const box& visible, std::int32_t y, std::int32_t x0, std::int32_t x1)
{
    x0 = std::max(x0, visible.x1);
    x1 = std::min(x1, visible.x2);
    if (x0 < x1)
        out.add(y, x0, x1);
}

} // namespace

void fill_ellipse_ring(const box& outer, const box& inner, const box& clip, span_sink& sink)
{
    const box visible = intersection(outer, clip);
    if (is_empty(visible))
        return;
    const rounded_rows outer_rows(outer, INT32_MAX, INT32_MAX);
    const rounded_rows inner_rows(inner, INT32_MAX, INT32_MAX);
    span_batch out(sink);
    const auto add
        = [&](std::int32_t y, std::int32_t x0, std::int32_t x1) { add_visible(out, visible, y, x0, x1); };
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        const std::int32_t cut = outer_rows.inset(y);
        const std::int32_t left = outer.x1 + cut;
        const std::int32_t right = outer.x2 - cut;
        const bool has_hole = y >= inner.y1 && y < inner.y2;
        const std::int32_t hole_cut = has_hole ? inner_rows.inset(y) : 0;
        if (has_hole && inner.x1 + hole_cut < inner.x2 - hole_cut) {
            add(y, left, inner.x1 + hole_cut);
            add(y, inner.x2 - hole_cut, right);
        } else {
            add(y, left, right);
        }
    }
    out.flush();
}

void outline_rounded_box(
    const box& area, std::int32_t width, std::int32_t height, const box& clip, span_sink& sink)
{
    const box visible = intersection(area, clip);
    if (is_empty(visible))
        return;
    const rounded_rows rows(area, width, height);
    span_batch out(sink);
    const auto add
        = [&](std::int32_t y, std::int32_t x0, std::int32_t x1) { add_visible(out, visible, y, x0, x1); };
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        const std::int32_t left = area.x1 + rows.inset(y);
        const std::int32_t right = area.x2 - rows.inset(y);
        // A border run reaches to where the next row outwards begins.
        const bool upper = y - area.y1 < area.y2 - y;
        const std::int32_t outer = upper ? y - 1 : y + 1;
        const bool has_outer = outer >= area.y1 && outer < area.y2;
        const std::int32_t reach
            = has_outer ? std::max(rows.inset(outer) - rows.inset(y), 1) : area.x2 - area.x1;
        if (left + reach >= right - reach) {
            add(y, left, right);
        } else {
            add(y, left, left + reach);
            add(y, right - reach, right);
        }
    }
    out.flush();
}

double ellipse::angle_of(double x, double y) const
{
    const double dx = radius_x > 0 ? (x - centre_x) / radius_x : 0;
    const double dy = radius_y > 0 ? (y - centre_y) / radius_y : 0;
    return dx == 0 && dy == 0 ? 0 : std::atan2(dy, dx);
}

fixed_point ellipse::at(double angle) const
{
    return {round_fixed(centre_x + radius_x * std::cos(angle)),
        round_fixed(centre_y + radius_y * std::sin(angle))};
}

void ellipse::append_arc(double from, double sweep, std::vector<fixed_point>& out) const
{
    const int segments = segments_of(std::max(radius_x, radius_y), sweep);
    for (int i = 0; i <= segments; ++i)
        out.push_back(at(from + sweep * i / segments));
}

void append_bezier(const fixed_point (&control)[4], std::vector<fixed_point>& out)
{
    // The second differences bound how far a curve of n segments strays from its chords: |d| / (8 n^2) times
    // six for a cubic.
    const auto bend = [&](int i) {
        const double x = double{1} * control[i].x - 2.0 * control[i + 1].x + control[i + 2].x;
        const double y = double{1} * control[i].y - 2.0 * control[i + 1].y + control[i + 2].y;
        return std::hypot(x, y);
    };
    const double deviation = 6.0 / 8.0 * std::max(bend(0), bend(1));
    const int segments = static_cast<int>(
        std::clamp(std::ceil(std::sqrt(deviation / tolerance)), 1.0, double{most_segments}));
    for (int i = 1; i <= segments; ++i) {
        const double t = double{1} * i / segments;
        const double u = 1 - t;
        const double weights[4] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
        double x = 0;
        double y = 0;
        for (int k = 0; k < 4; ++k) {
            x += weights[k] * control[k].x;
            y += weights[k] * control[k].y;
        }
        out.push_back({round_fixed(x), round_fixed(y)});
    }
}

} // namespace klv::gdi
