#include "klv/devices/fill/band_cutter.h"
#include "klv/devices/fill/outline_edges.h"
#include "klv/devices/outline/coordinates.h"

#include <algorithm>
#include <cstdint>

/// Where the edges of an outline cross each other.
namespace klv {
namespace {

struct edge {
    POINT from;
    POINT to;
    std::size_t index; // in the order of the outline
    LONG left() const noexcept { return std::min(from.x, to.x); }
    LONG right() const noexcept { return std::max(from.x, to.x); }
    LONG top() const noexcept { return std::min(from.y, to.y); }
    LONG bottom() const noexcept { return std::max(from.y, to.y); }
};

struct crossing {
    std::size_t first;
    std::size_t second;
    POINT at;
};

// Whether numerator / denominator lies in 0 to 1, and strictly so without the ends.
bool in_segment(std::int64_t numerator, std::int64_t denominator, bool include_ends) noexcept
{
    if (denominator < 0) {
        numerator = -numerator;
        denominator = -denominator;
    }
    return include_ends ? numerator >= 0 && numerator <= denominator
                        : numerator > 0 && numerator < denominator;
}

// In floating point: the product of a numerator and a coordinate difference can have 90 bits.
LONG along(LONG from, std::int64_t difference, std::int64_t numerator, std::int64_t denominator) noexcept
{
    const double fraction = static_cast<double>(numerator) / static_cast<double>(denominator);
    const double offset = static_cast<double>(difference) * fraction;
    return clamp_coordinate(from + static_cast<std::int64_t>(offset < 0 ? offset - 0.5 : offset + 0.5));
}

} // namespace

int LinesIntersect(const POINT& a1, const POINT& a2, const POINT& b1, const POINT& b2, POINT& out,
    bool include_ends) noexcept
{
    const std::int64_t dx = std::int64_t{a2.x} - a1.x, dy = std::int64_t{a2.y} - a1.y;
    const std::int64_t ex = std::int64_t{b1.x} - b2.x, ey = std::int64_t{b1.y} - b2.y;
    const std::int64_t fx = std::int64_t{a1.x} - b1.x, fy = std::int64_t{a1.y} - b1.y;
    const std::int64_t denominator = dy * ex - dx * ey;
    if (denominator == 0)
        return 0;
    const std::int64_t on_a = ey * fx - ex * fy;
    const std::int64_t on_b = dx * fy - dy * fx;
    if (!in_segment(on_a, denominator, include_ends) || !in_segment(on_b, denominator, include_ends))
        return 0;
    out = {along(a1.x, dx, on_a, denominator), along(a1.y, dy, on_a, denominator)};
    return 1;
}

int GetLineIntersections(const cut_outline& outline, cut_array<POINT>& out)
{
    cut_array<edge> edges;
    for_each_edge(outline, [&](const POINT& from, const POINT& to) {
        edges.push_back({from, to, edges.size()});
    });
    std::sort(edges.begin(), edges.end(), [](const edge& a, const edge& b) { return a.left() < b.left(); });

    // The edges that reach the sweep line; those that ended before it are dropped.
    cut_array<const edge*> reaching;
    cut_array<crossing> found;
    for (const edge& current : edges) {
        std::erase_if(reaching, [&](const edge* other) { return other->right() < current.left(); });
        for (const edge* other : reaching) {
            POINT at{};
            if (other->bottom() >= current.top() && other->top() <= current.bottom()
                && LinesIntersect(other->from, other->to, current.from, current.to, at, false))
                found.push_back(
                    {std::min(other->index, current.index), std::max(other->index, current.index), at});
        }
        reaching.push_back(&current);
    }

    std::sort(found.begin(), found.end(), [](const crossing& a, const crossing& b) {
        return a.first != b.first ? a.first < b.first : a.second < b.second;
    });
    for (const crossing& c : found)
        out.push_back(c.at);
    return static_cast<int>(found.size());
}

int PointInPoly(const cut_outline& outline, const POINT& point) noexcept
{
    int inside = 0;
    for_each_edge(outline, [&](const POINT& a, const POINT& b) {
        const bool rises = a.y >= point.y && point.y > b.y;
        const bool falls = a.y < point.y && point.y <= b.y;
        if (!rises && !falls)
            return;
        const double crossing = a.x
            + (static_cast<double>(b.x) - a.x) * (static_cast<double>(point.y) - a.y)
                / (static_cast<double>(b.y) - a.y);
        if (crossing >= point.x && !(a.x < point.x && b.x < point.x))
            return;
        if (outline.alternate)
            inside = !inside;
        else
            inside += rises ? 1 : -1;
    });
    return inside;
}

} // namespace klv
