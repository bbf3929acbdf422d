#include "klv/geometry/planar/outline_tree.h"

#include <array>
#include <cmath>

// Built once, from the runs up, and never changed: contours (Z-order curve, if there are many) to runs, runs
// to levels of nodes. The main direction of a node's edges is the larger eigenvector of their second moments.
namespace klv {

namespace {

// The Morton code of the middle of a box: its bits interleaved, so that near boxes mostly have near numbers.
std::uint64_t place_on_curve(const edge_box& b)
{
    const auto spread_bits = [](std::uint64_t v) {
        v = (v | v << 16) & 0x0000FFFF0000FFFF;
        v = (v | v << 8) & 0x00FF00FF00FF00FF;
        v = (v | v << 4) & 0x0F0F0F0F0F0F0F0F;
        v = (v | v << 2) & 0x3333333333333333;
        return (v | v << 1) & 0x5555555555555555;
    };
    constexpr std::int64_t lift = std::int64_t{1} << 31;
    const auto middle = [](std::int32_t a, std::int32_t b2) {
        return static_cast<std::uint64_t>((std::int64_t{a} + b2) / 2 + lift);
    };
    return spread_bits(middle(b.left, b.right)) | spread_bits(middle(b.top, b.bottom)) << 1;
}

} // namespace

outline_tree::outline_tree(const edge_outline& outline)
    : outline_(outline)
{
    make_runs();
    const auto count = runs_.size();
    boxes_.reserve(2 * count + 32);
    slabs_.reserve(2 * count + 32);
    spreads_.reserve(2 * count + 32);
    headings_.reserve(2 * count + 32);
    for (const run& r : runs_)
        add_run_node(r);
    levels_.push_back({0, static_cast<std::uint32_t>(count)});
    while (levels_.back().count > 1) {
        const level below = levels_.back();
        levels_.push_back({static_cast<std::uint32_t>(boxes_.size()), (below.count + 1) / 2});
        const auto l = static_cast<std::uint32_t>(levels_.size() - 1);
        for (std::uint32_t i = 0; i < levels_[l].count; ++i)
            add_parent(l, i);
    }
}

void outline_tree::make_runs()
{
    const auto contours = outline_.contours();
    struct place {
        std::uint64_t on_curve;
        std::uint32_t contour;
        bool operator<(const place& o) const { return on_curve < o.on_curve; }
    };
    geometry_list<place> order;
    for (std::uint32_t c = 0; c < contours.size(); ++c) {
        edge_box box = edge_box::of(outline_[contours[c].first], outline_[contours[c].first]);
        for (const POINT& p : outline_.points().subspan(contours[c].first, contours[c].count))
            box = box.with(edge_box::of(p, p));
        order.push_back({place_on_curve(box), c});
    }
    std::stable_sort(order.begin(), order.end());

    runs_.reserve(outline_.size() / edges_in_run + contours.size());
    for (const place& at : order) {
        const auto& c = contours[at.contour];
        for (std::uint32_t i = 0; i < c.count; i += edges_in_run)
            runs_.push_back({c.first + i, std::min(edges_in_run, c.count - i)});
    }
}

namespace {

std::uint8_t heading_of(const offset& edge)
{
    constexpr unsigned right = 1, left = 2, down = 4, up = 8;
    return static_cast<std::uint8_t>((edge.x > 0          ? right
                                             : edge.x < 0 ? left
                                                          : 0)
        | (edge.y > 0        ? down
                : edge.y < 0 ? up
                             : 0));
}

} // namespace

void outline_tree::add_run_node(const run& r)
{
    std::array<vec2, edges_in_run + 1> covered;
    spread edges;
    std::uint8_t heading = 0xFF;
    edge_box box = edge_box::of(outline_[r.first], outline_[r.first]);
    const auto cover = [&](std::uint32_t i, const POINT& p) {
        covered[i] = {static_cast<double>(p.x), static_cast<double>(p.y)};
        box = box.with(edge_box::of(p, p));
    };
    cover(0, outline_[r.first]);
    for (std::uint32_t i = 0; i < r.count; ++i) {
        cover(i + 1, outline_.end(r.first + i));
        heading &= heading_of(outline_.direction(r.first + i));
        const double dx = covered[i + 1].x - covered[i].x, dy = covered[i + 1].y - covered[i].y;
        edges.xx += dx * dx;
        edges.xy += dx * dy;
        edges.yy += dy * dy;
    }
    add_node(box, edges, heading, {covered.data(), r.count + 1});
}

void outline_tree::add_parent(std::uint32_t l, std::uint32_t i)
{
    const level& below = levels_[l - 1];
    const std::uint32_t left = below.first + 2 * i,
                        right = below.first + std::min(2 * i + 1, below.count - 1);
    std::array<vec2, 8> covered;
    for (std::size_t c = 0; c < 4; ++c) {
        covered[c] = slabs_[left].corner(c);
        covered[c + 4] = slabs_[right].corner(c);
    }
    const spread &a = spreads_[left], &b = spreads_[right];
    const std::uint8_t heading = in_one_contour(l, i, i) ? headings_[left] & headings_[right] : 0;
    add_node(boxes_[left].with(boxes_[right]), {a.xx + b.xx, a.xy + b.xy, a.yy + b.yy}, heading, covered);
}

void outline_tree::add_node(
    const edge_box& box, const spread& edges, std::uint8_t heading, std::span<const vec2> covered)
{
    // Numbers here have rounding errors of less than a thousandth of a unit.
    constexpr double slack = 0.01;
    constexpr double worth_a_tilt = 0.7; // least share of the main direction in the edges

    const double width = static_cast<double>(box.right) - box.left;
    const double height = static_cast<double>(box.bottom) - box.top;
    slab s{
        {box.left + width / 2, box.top + height / 2}, {1, 0}, width / 2 + slack, height / 2 + slack, false};

    // The main direction is at half the angle of the vector (xx - yy, 2 xy).
    const double p = edges.xx - edges.yy, q = 2 * edges.xy;
    const double r = std::sqrt(p * p + q * q);
    if (r > worth_a_tilt * (edges.xx + edges.yy)) {
        const double larger = std::sqrt((1 + std::abs(p) / r) / 2);
        const double smaller = q / (2 * r * larger);
        const vec2 u = p >= 0 ? vec2{larger, smaller} : vec2{smaller, larger};
        double from = 1e300, to = -1e300, low = 1e300, high = -1e300;
        for (const vec2& c : covered) {
            const double length = (c.x - s.middle.x) * u.x + (c.y - s.middle.y) * u.y;
            const double across = (c.y - s.middle.y) * u.x - (c.x - s.middle.x) * u.y;
            from = std::min(from, length);
            to = std::max(to, length);
            low = std::min(low, across);
            high = std::max(high, across);
        }
        if ((to - from) * (high - low) < width * height / 2) {
            const double l = (from + to) / 2, a = (low + high) / 2;
            s = {{s.middle.x + l * u.x - a * u.y, s.middle.y + l * u.y + a * u.x}, u, (to - from) / 2 + slack,
                (high - low) / 2 + slack, true};
        }
    }
    boxes_.push_back(box);
    headings_.push_back(heading);
    slabs_.push_back(s);
    spreads_.push_back(edges);
}

vec2 outline_tree::slab::corner(std::size_t i) const
{
    const double l = i & 1 ? half_length : -half_length, w = i & 2 ? half_width : -half_width;
    return {middle.x + l * along.x - w * along.y, middle.y + l * along.y + w * along.x};
}

bool outline_tree::slab::apart_by_own_sides(const slab& o) const
{
    const double dx = o.middle.x - middle.x, dy = o.middle.y - middle.y;
    const double cosine = std::abs(along.x * o.along.x + along.y * o.along.y);
    const double sine = std::abs(along.x * o.along.y - along.y * o.along.x);
    return std::abs(dy * along.x - dx * along.y) > half_width + o.half_length * sine + o.half_width * cosine
        || std::abs(dx * along.x + dy * along.y) > half_length + o.half_length * cosine + o.half_width * sine;
}

std::int32_t outline_tree::winding_of(std::uint32_t l, std::uint32_t i, const POINT& p) const
{
    const edge_box& box = boxes_[levels_[l].first + i];
    if (box.top >= p.y || box.bottom < p.y || box.left >= p.x)
        return 0;
    if (box.right < p.x)
        return winding_of_left(l, i, p);
    if (l == 0)
        return winding_of_run(runs_[i], p);
    return winding_of(l - 1, 2 * i, p) + (has(l - 1, 2 * i + 1) ? winding_of(l - 1, 2 * i + 1, p) : 0);
}

namespace {

// Edges count where they pass from above p to its height or below.
bool above(const POINT& a, const POINT& p) { return a.y < p.y; }

std::int32_t passes_down(const POINT& from, const POINT& to, const POINT& p)
{
    return static_cast<std::int32_t>(above(from, p)) - static_cast<std::int32_t>(above(to, p));
}

} // namespace

std::int32_t outline_tree::winding_of_run(const run& r, const POINT& p) const
{
    std::int32_t winding = 0;
    for (std::uint32_t i = r.first; i < r.first + r.count; ++i) {
        const POINT &a = outline_[i], &b = outline_.end(i);
        const std::int32_t passes = passes_down(a, b, p);
        if (passes == 0)
            continue;
        const auto side = cross(offset::between(a, b), offset::between(a, p));
        if (passes > 0 ? side < 0 : side > 0)
            winding += passes;
    }
    return winding;
}

// All edges of the node are left of p. It holds the end of a contour, whole contours and the beginning of
// another, or a part of one; of each, what counts is where it starts and ends.
std::int32_t outline_tree::winding_of_left(std::uint32_t l, std::uint32_t i, const POINT& p) const
{
    const run &first = first_run(l, i), &last = last_run(l, i);
    const std::uint32_t contour_a = outline_.contour_of(first.first);
    const std::uint32_t contour_b = outline_.contour_of(last.first);
    const POINT &from = outline_[first.first], &to = outline_.end(last.first + last.count - 1);
    if (contour_a == contour_b)
        return passes_down(from, to, p);
    const auto start_of
        = [&](std::uint32_t c) -> const POINT& { return outline_[outline_.contours()[c].first]; };
    return passes_down(from, start_of(contour_a), p) + passes_down(start_of(contour_b), to, p);
}

} // namespace klv
