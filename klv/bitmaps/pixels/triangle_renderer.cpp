#include "klv/bitmaps/pixels/triangle_renderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

// Affine texture mapping by scanlines. A pixel belongs to a triangle when its centre does, with spans that
// are closed at the left and open at the right, so that two triangles with a common edge cover each pixel
// once.
namespace klv {

namespace {

/// The x of an edge at a height between its ends. Both triangles of a common edge get the same number,
/// because the ends are taken in the same order.
double edge_x(const texture_vertex& top, const texture_vertex& bottom, double y)
{
    return top.x + (bottom.x - top.x) * ((y - top.y) / (bottom.y - top.y));
}

/// First pixel whose centre is not left of x, held within the target.
std::int32_t first_pixel(double x, std::int32_t size)
{
    return static_cast<std::int32_t>(std::clamp(std::ceil(x - 0.5), 0.0, static_cast<double>(size)));
}

/// Position of a repeated source: from 0 to its size.
double source_position(double place, std::int32_t repeats, std::int32_t size)
{
    double at = place * repeats;
    if (repeats > 1)
        at -= std::floor(at);
    return std::clamp(at, 0.0, 1.0) * size;
}

std::int32_t index_within(double position, std::int32_t size)
{
    return static_cast<std::int32_t>(std::clamp(std::floor(position), 0.0, size - 1.0));
}

/// A pixel beside a position; past the ends of a repeated source stands its other end.
std::int32_t neighbour_index(double index, std::int32_t repeats, std::int32_t size)
{
    if (repeats > 1 && index < 0)
        return size - 1;
    if (repeats > 1 && index >= size)
        return 0;
    return index_within(index, size);
}

} // namespace

void triangle_renderer::RenderTriangle(texture_vertex a, texture_vertex b, texture_vertex c) const
{
    if (b.y < a.y)
        std::swap(a, b);
    if (c.y < a.y)
        std::swap(a, c);
    if (c.y < b.y)
        std::swap(b, c);
    const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (!std::isfinite(area) || area == 0)
        return;
    const auto slope_x = [&](double of_a, double of_b, double of_c) {
        return ((of_b - of_a) * (c.y - a.y) - (of_c - of_a) * (b.y - a.y)) / area;
    };
    const auto slope_y = [&](double of_a, double of_b, double of_c) {
        return ((of_c - of_a) * (b.x - a.x) - (of_b - of_a) * (c.x - a.x)) / area;
    };
    const double u_of_x = slope_x(a.u, b.u, c.u);
    const double v_of_x = slope_x(a.v, b.v, c.v);
    const double u_of_y = slope_y(a.u, b.u, c.u);
    const double v_of_y = slope_y(a.v, b.v, c.v);

    const std::int32_t end = first_pixel(c.y, target_.height);
    for (std::int32_t y = first_pixel(a.y, target_.height); y < end; ++y) {
        const double centre = y + 0.5;
        const double long_edge = edge_x(a, c, centre);
        const double short_edge = centre < b.y ? edge_x(a, b, centre) : edge_x(b, c, centre);
        fill_row(y, std::min(long_edge, short_edge), std::max(long_edge, short_edge), a, u_of_x, v_of_x,
            u_of_y, v_of_y);
    }
}

void triangle_renderer::fill_row(std::int32_t y, double left, double right, const texture_vertex& origin,
    double u_of_x, double v_of_x, double u_of_y, double v_of_y) const
{
    const double dy = y + 0.5 - origin.y;
    const std::int32_t end = first_pixel(right, target_.width);
    for (std::int32_t x = first_pixel(left, target_.width); x < end; ++x) {
        const double dx = x + 0.5 - origin.x;
        const double u = source_position(origin.u + u_of_x * dx + u_of_y * dy, across_, source_.width);
        const double v = source_position(origin.v + v_of_x * dx + v_of_y * dy, down_, source_.height);
        std::uint8_t* const pixel = target_.row(y) + std::ptrdiff_t{x} * target_.channels;
        if (how_ == sampling::nearest)
            put_nearest(u, v, pixel);
        else
            put_interpolated(u, v, pixel);
    }
}

void triangle_renderer::put_nearest(double u, double v, std::uint8_t* pixel) const
{
    const std::uint8_t* from = source_.row(index_within(v, source_.height))
        + std::ptrdiff_t{index_within(u, source_.width)} * source_.channels;
    std::copy_n(from, target_.channels, pixel);
}

void triangle_renderer::put_interpolated(double u, double v, std::uint8_t* pixel) const
{
    // Between pixel centres; beyond the outer ones their colour holds, or the next repetition begins.
    const double left = std::floor(u - 0.5);
    const double top = std::floor(v - 0.5);
    const double right_part = u - 0.5 - left;
    const double lower_part = v - 0.5 - top;
    const auto column = [&](double x) {
        return std::ptrdiff_t{neighbour_index(x, across_, source_.width)} * source_.channels;
    };
    const auto row = [&](double y) { return source_.row(neighbour_index(y, down_, source_.height)); };
    const std::uint8_t* const upper = row(top);
    const std::uint8_t* const lower = row(top + 1);
    const std::ptrdiff_t x0 = column(left);
    const std::ptrdiff_t x1 = column(left + 1);
    for (std::ptrdiff_t c = 0; c < target_.channels; ++c) {
        const double above = upper[x0 + c] + (upper[x1 + c] - upper[x0 + c]) * right_part;
        const double below = lower[x0 + c] + (lower[x1 + c] - lower[x0 + c]) * right_part;
        pixel[c] = static_cast<std::uint8_t>(above + (below - above) * lower_part + 0.5);
    }
}

} // namespace klv
