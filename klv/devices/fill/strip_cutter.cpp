#include "klv/base/muldiv.h"
#include "klv/devices/fill/band_cutter.h"
#include "klv/devices/fill/outline_edges.h"

#include <algorithm>

/// Vertical strips: the strip is divided at every corner and crossing of the outline, so that inside each
/// part the edges that pass through it keep their order and bound trapeziums.
namespace klv {
namespace {

// An edge inside a part of the strip.
struct passing_edge {
    int y_left;
    int y_right;
    int direction; // +1 when the outline runs to the right, -1 to the left
};

int y_at(const POINT& left, const POINT& right, int x) noexcept
{
    return static_cast<int>(left.y
        + mul_div(std::int64_t{x} - left.x, std::int64_t{right.y} - left.y, std::int64_t{right.x} - left.x));
}

cut_array<int> strip_breaks(int x0, int x1, const cut_outline& outline, std::span<const POINT> crossings)
{
    cut_array<int> breaks{x0, x1};
    const auto add = [&](const POINT& point) {
        if (x0 < point.x && point.x < x1)
            breaks.push_back(point.x);
    };
    for (const POINT& point : outline.points)
        add(point);
    for (const POINT& point : crossings)
        add(point);
    std::sort(breaks.begin(), breaks.end());
    breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
    return breaks;
}

// The edges that reach into the strip, left end first.
struct strip_edge {
    POINT left;
    POINT right;
    int direction;
};

cut_array<strip_edge> strip_edges(int x0, int x1, const cut_outline& outline)
{
    cut_array<strip_edge> edges;
    for_each_edge(outline, [&](const POINT& from, const POINT& to) {
        if (from.x == to.x)
            return;
        const strip_edge edge = from.x < to.x ? strip_edge{from, to, 1} : strip_edge{to, from, -1};
        if (edge.left.x < x1 && edge.right.x > x0)
            edges.push_back(edge);
    });
    std::sort(edges.begin(), edges.end(),
        [](const strip_edge& a, const strip_edge& b) { return a.left.x < b.left.x; });
    return edges;
}

void append_trapezium(
    LISTINFO& out, int a, int b, const passing_edge& upper, const passing_edge& lower) noexcept
{
    int count = out.AppendPoint({a, upper.y_left});
    count += out.AppendPoint({b, upper.y_right});
    count += out.AppendPoint({b, lower.y_right});
    count += out.AppendPoint({a, lower.y_left});
    out.AppendCount(count);
}

// Emits the inside runs of one part, whose edges are ordered from top to bottom.
int append_runs(LISTINFO& out, int a, int b, std::span<const passing_edge> edges, bool alternate) noexcept
{
    int polygons = 0;
    int winding = 0;
    const passing_edge* top = nullptr;
    for (const passing_edge& edge : edges) {
        const bool was_inside = winding != 0;
        winding = alternate ? !winding : winding + edge.direction;
        const bool is_inside = winding != 0;
        if (!was_inside && is_inside) {
            top = &edge;
        } else if (was_inside && !is_inside) {
            append_trapezium(out, a, b, *top, edge);
            ++polygons;
        }
    }
    return polygons;
}

} // namespace

int GetLinearFillPolygons(
    int x0, int x1, const cut_outline& outline, std::span<const POINT> crossings, LISTINFO& out)
{
    const cut_array<int> breaks = strip_breaks(x0, x1, outline, crossings);
    const cut_array<strip_edge> edges = strip_edges(x0, x1, outline);
    cut_array<strip_edge> active;
    cut_array<passing_edge> passing;
    std::size_t next = 0;
    int polygons = 0;
    for (std::size_t part = 0; part + 1 < breaks.size(); ++part) {
        const int a = breaks[part];
        const int b = breaks[part + 1];
        std::erase_if(active, [a](const strip_edge& edge) { return edge.right.x <= a; });
        for (; next < edges.size() && edges[next].left.x <= a; ++next)
            if (edges[next].right.x > a)
                active.push_back(edges[next]);

        passing.clear();
        for (const strip_edge& edge : active)
            passing.push_back(
                {y_at(edge.left, edge.right, a), y_at(edge.left, edge.right, b), edge.direction});
        std::sort(passing.begin(), passing.end(), [](const passing_edge& e, const passing_edge& f) {
            return std::int64_t{e.y_left} + e.y_right < std::int64_t{f.y_left} + f.y_right;
        });
        polygons += append_runs(out, a, b, passing, outline.alternate);
    }
    return polygons;
}

} // namespace klv
