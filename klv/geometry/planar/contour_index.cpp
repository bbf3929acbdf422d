#include "klv/geometry/planar/contour_index.h"

#include "klv/base/vec2.h"

#include <algorithm>

namespace klv {

namespace {

bool edge_is_closer(const POINT& a, const POINT& b, const POINT& p, double square)
{
    const vec2 edge = vec2::between(a, b), from_a = vec2::between(a, p);
    const double along = dot(edge, from_a);
    if (along <= 0)
        return dot(from_a, from_a) < square;
    const double length = dot(edge, edge);
    if (along >= length) {
        const vec2 from_b = vec2::between(b, p);
        return dot(from_b, from_b) < square;
    }
    const double area = cross(edge, from_a);
    return area * area < square * length;
}

bool box_is_closer(const edge_box& box, const POINT& p, double square)
{
    const auto beyond = [](int low, int high, int v) {
        return std::max({static_cast<double>(low) - v, static_cast<double>(v) - high, 0.0});
    };
    const double dx = beyond(box.left, box.right, p.x), dy = beyond(box.top, box.bottom, p.y);
    return dx * dx + dy * dy < square;
}

// Whether an edge that passes the height of p, does so to the right of p. Both ends on the left, their x the
// same as that of p included, are never to the right.
bool passes_right_of(const POINT& from, const POINT& to, const POINT& p)
{
    if ((from.x > p.x) == (to.x > p.x))
        return to.x > p.x;
    const double slope
        = (static_cast<double>(from.x) - to.x) / (static_cast<double>(from.y) - static_cast<double>(to.y));
    const double shift = (static_cast<double>(to.y) - p.y) * slope;
    return to.x - static_cast<std::int64_t>(shift) > p.x;
}

std::span<const POINT> without_repeated_end(std::span<const POINT> contour)
{
    return contour.size() > 1 && contour.front() == contour.back() ? contour.first(contour.size() - 1)
                                                                   : contour;
}

} // namespace

contour_index::contour_index(std::span<const POINT> contour)
    : contour_(without_repeated_end(contour))
{
    if (contour_.empty())
        return;
    const auto size = static_cast<std::uint32_t>(contour_.size());
    levels_.push_back({0, (size + edges_in_run - 1) / edges_in_run});
    for (std::uint32_t run = 0; run < levels_[0].count; ++run) {
        const auto [first, end] = edges_of(0, run);
        edge_box box = edge_box::of(contour_[first], after(first));
        for (std::uint32_t i = first + 1; i < end; ++i)
            box = box.with(edge_box::of(after(i), after(i)));
        boxes_.push_back(box);
    }
    while (levels_.back().count > 1) {
        const level below = levels_.back();
        levels_.push_back({below.first + below.count, (below.count + 1) / 2});
        for (std::uint32_t i = 0; i < below.count; i += 2) {
            const edge_box& left = boxes_[below.first + i];
            boxes_.push_back(i + 1 < below.count ? left.with(boxes_[below.first + i + 1]) : edge_box(left));
        }
    }
}

contour_index::edge_range contour_index::edges_of(std::uint32_t l, std::uint32_t i) const
{
    const auto size = static_cast<std::uint32_t>(contour_.size());
    return {edges_in_run * (i << l), std::min(edges_in_run * ((i + 1) << l), size)};
}

bool contour_index::comes_closer(std::uint32_t l, std::uint32_t i, const POINT& p, double square) const
{
    if (!box_is_closer(boxes_[levels_[l].first + i], p, square))
        return false;
    if (l == 0) {
        const auto [first, end] = edges_of(0, i);
        for (std::uint32_t e = first; e < end; ++e) {
            if (edge_is_closer(contour_[e], after(e), p, square))
                return true;
        }
        return false;
    }
    return comes_closer(l - 1, 2 * i, p, square)
        || (2 * i + 1 < levels_[l - 1].count && comes_closer(l - 1, 2 * i + 1, p, square));
}

bool contour_index::PointLiesNUnitsFromContour(const POINT& p, double d) const
{
    return levels_.empty() || d <= 0
        || !comes_closer(static_cast<std::uint32_t>(levels_.size() - 1), 0, p, d * d);
}

// How often the edges under node i pass the height of p to its right, those that go to greater y less those
// that come back.
int contour_index::turns_right_of(std::uint32_t l, std::uint32_t i, const POINT& p) const
{
    const edge_box& box = boxes_[levels_[l].first + i];
    if (box.top > p.y || box.bottom <= p.y || box.right <= p.x)
        return 0;
    const auto [first, end] = edges_of(l, i);
    const auto below = [&p](const POINT& v) { return v.y > p.y ? 1 : 0; };
    if (box.left > p.x)
        return below(after(end - 1)) - below(contour_[first]);
    if (l > 0) {
        return turns_right_of(l - 1, 2 * i, p)
            + (2 * i + 1 < levels_[l - 1].count ? turns_right_of(l - 1, 2 * i + 1, p) : 0);
    }
    int turns = 0;
    for (std::uint32_t e = first; e < end; ++e) {
        const int passed = below(after(e)) - below(contour_[e]);
        if (passed != 0 && passes_right_of(contour_[e], after(e), p))
            turns += passed;
    }
    return turns;
}

bool contour_index::contains(const POINT& p) const
{
    if (levels_.empty())
        return false;
    const int turns = turns_right_of(static_cast<std::uint32_t>(levels_.size() - 1), 0, p);
    return turns == 1 || turns == -1;
}

std::size_t contour_index::ContourLiesNUnitsFromContour(
    std::span<const POINT> points, double d, std::size_t limit) const
{
    std::size_t closer = 0;
    for (const POINT& p : points) {
        if (closer >= limit)
            break;
        closer += !PointLiesNUnitsFromContour(p, d);
    }
    return closer;
}

std::size_t contour_index::ContourLiesInsideContour(
    std::span<const POINT> points, std::span<std::uint8_t> flags, std::size_t limit) const
{
    const auto inside_box = [this](const POINT& p) {
        if (boxes_.empty())
            return false;
        const edge_box& whole = boxes_.back();
        return p.x > whole.left && p.x < whole.right && p.y > whole.top && p.y < whole.bottom;
    };
    std::size_t outside = 0;
    for (std::size_t i = 0; i < points.size() && outside <= limit; ++i) {
        if (inside_box(points[i]) && contains(points[i]))
            continue;
        ++outside;
        if (!flags.empty())
            flags[i] = 1;
    }
    return outside;
}

} // namespace klv
