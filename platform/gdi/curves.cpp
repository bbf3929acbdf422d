#include "platform/gdi/curves.h"

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

/// How far a corner of the given radii cuts into the row at down (from the corner's top, in pixels).
double corner_inset(double radius_x, double radius_y, double down)
{
    const double v = (radius_y - down) / radius_y;
    return v <= 0 ? 0 : radius_x * (1 - std::sqrt(std::max(0.0, 1 - v * v)));
}

} // namespace

void fill_rounded_box(
    const box& area, std::int32_t width, std::int32_t height, const box& clip, span_sink& sink)
{
    const box visible = intersection(area, clip);
    if (is_empty(visible))
        return;
    const double box_width = area.x2 - area.x1;
    const double box_height = area.y2 - area.y1;
    const double radius_x = std::clamp(double{1} * width, 0.0, box_width) / 2;
    const double radius_y = std::clamp(double{1} * height, 0.0, box_height) / 2;
    span_batch out(sink);
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        const double from_top = y - area.y1 + 0.5;
        const double down = std::min(from_top, box_height - from_top);
        const double inset = radius_y > 0 ? corner_inset(radius_x, radius_y, down) : 0;
        // The first pixel whose centre is inside; the right edge mirrors the left one.
        const auto cut = static_cast<std::int32_t>(std::ceil(inset - 0.5));
        const std::int32_t x0 = std::max(area.x1 + cut, visible.x1);
        const std::int32_t x1 = std::min(area.x2 - cut, visible.x2);
        if (x0 < x1)
            out.add(y, x0, x1);
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
