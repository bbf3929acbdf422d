#pragma once

#include "klv/base/types.h"
#include "klv/base/vec2.h"
#include "klv/geometry/planar/edge_outline.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace klv {

/// An upright rectangle, its edges included.
struct edge_box {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;

    static edge_box of(const POINT& a, const POINT& b)
    {
        return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
    }
    [[nodiscard]] edge_box with(const edge_box& o) const
    {
        return {std::min(left, o.left), std::min(top, o.top), std::max(right, o.right),
            std::max(bottom, o.bottom)};
    }
    [[nodiscard]] bool meets(const edge_box& o) const
    {
        return left <= o.right && o.left <= right && top <= o.bottom && o.top <= bottom;
    }
};

/// The edges of an outline in runs of a few, and a bounding-volume tree over the runs, so that the edges near
/// others are found without looking at all.
///
/// The tree is implicit: runs in a row are the leaves, two neighbours of a level make one node of the next.
/// That works because what lies close on a contour mostly lies close in the plane; many small contours are
/// first sorted along a Z-order curve (Morton, 1966). Besides its upright box, a node of long edges that run
/// about the same way has an oriented box along them, tested by separating axes (Gottschalk, Lin and Manocha,
/// "OBBTree", 1996): thin rays of a fan overlap in their upright boxes, but hardly in these. And a node whose
/// edges all go right, or left, down or up, is a monotone chain, of which no edge meets another.
///
/// A node covers whatever its children cover; boxes err outwards only, so no pair is ever missed. May throw
/// std::bad_alloc.
class outline_tree {
public:
    static constexpr std::uint32_t edges_in_run = 16;

    /// Consecutive edges of one contour, at most edges_in_run.
    struct run {
        std::uint32_t first;
        std::uint32_t count;
    };

    explicit outline_tree(const edge_outline& outline);

    [[nodiscard]] const run& operator[](std::uint32_t i) const { return runs_[i]; }
    [[nodiscard]] const edge_box& box_of(std::uint32_t i) const { return boxes_[i]; }

    /// Calls visit(i, j) for all runs i <= j whose edges may share points, other than neighbours on a contour
    /// do, in no particular order.
    /// \param within_contours whether runs of the same contour count
    template <typename VISIT> void visit_pairs(bool within_contours, const VISIT& visit) const
    {
        if (!runs_.empty())
            visit_within(within_contours, static_cast<std::uint32_t>(levels_.size() - 1), 0, visit);
    }

    /// How often direction 2 runs around a point just above p, by the edges strictly to its left.
    [[nodiscard]] std::int32_t winding_left_of(const POINT& p) const
    {
        return runs_.empty() ? 0 : winding_of(static_cast<std::uint32_t>(levels_.size() - 1), 0, p);
    }

private:
    // A rectangle at any angle: its middle, a unit vector along it, half its extents.
    struct slab {
        vec2 middle;
        vec2 along;
        double half_length;
        double half_width;
        bool tilted; // and worth asking: much smaller than the upright box

        [[nodiscard]] bool apart_by_own_sides(const slab& o) const;
        [[nodiscard]] vec2 corner(std::size_t i) const;
    };
    // Sums over edge vectors; their main direction follows.
    struct spread {
        double xx = 0;
        double xy = 0;
        double yy = 0;
    };
    struct level {
        std::uint32_t first; // of its nodes
        std::uint32_t count;
    };

    void make_runs();
    void add_run_node(const run& r);
    void add_parent(std::uint32_t l, std::uint32_t i);
    void add_node(
        const edge_box& box, const spread& edges, std::uint8_t heading, std::span<const vec2> covered);

    [[nodiscard]] bool apart(std::uint32_t a, std::uint32_t b) const
    {
        if (!boxes_[a].meets(boxes_[b]))
            return true;
        const slab &s = slabs_[a], &t = slabs_[b];
        return (s.tilted && s.apart_by_own_sides(t)) || (t.tilted && t.apart_by_own_sides(s));
    }
    // Nodes are named by their level, from the runs up, and their place in it; node i is above the nodes 2 i
    // and 2 i + 1 of the level below.
    [[nodiscard]] bool has(std::uint32_t l, std::uint32_t i) const { return i < levels_[l].count; }
    [[nodiscard]] const run& first_run(std::uint32_t l, std::uint32_t i) const { return runs_[i << l]; }
    [[nodiscard]] const run& last_run(std::uint32_t l, std::uint32_t i) const
    {
        return runs_[std::min((i + 1) << l, levels_[0].count) - 1];
    }
    [[nodiscard]] bool in_one_contour(std::uint32_t l, std::uint32_t i, std::uint32_t j) const
    {
        return outline_.contour_of(first_run(l, i).first) == outline_.contour_of(last_run(l, j).first);
    }
    template <typename VISIT>
    void visit_within(bool within_contours, std::uint32_t l, std::uint32_t i, const VISIT& visit) const;
    template <typename VISIT>
    void visit_between(
        bool within_contours, std::uint32_t l, std::uint32_t i, std::uint32_t j, const VISIT& visit) const;
    [[nodiscard]] std::int32_t winding_of(std::uint32_t l, std::uint32_t i, const POINT& p) const;
    [[nodiscard]] std::int32_t winding_of_run(const run& r, const POINT& p) const;
    [[nodiscard]] std::int32_t winding_of_left(std::uint32_t l, std::uint32_t i, const POINT& p) const;

    const edge_outline& outline_;
    geometry_list<run> runs_;
    geometry_list<level> levels_;
    geometry_list<edge_box> boxes_; // of all nodes, level after level
    geometry_list<slab> slabs_;
    geometry_list<std::uint8_t> headings_; // where all edges of the node go, on one contour
    geometry_list<spread> spreads_;
};

template <typename VISIT>
void outline_tree::visit_within(
    bool within_contours, std::uint32_t l, std::uint32_t i, const VISIT& visit) const
{
    if (headings_[levels_[l].first + i] != 0 || (!within_contours && in_one_contour(l, i, i)))
        return;
    if (l == 0)
        return visit(i, i);
    visit_within(within_contours, l - 1, 2 * i, visit);
    if (!has(l - 1, 2 * i + 1))
        return;
    visit_within(within_contours, l - 1, 2 * i + 1, visit);
    visit_between(within_contours, l - 1, 2 * i, 2 * i + 1, visit);
}

template <typename VISIT>
void outline_tree::visit_between(
    bool within_contours, std::uint32_t l, std::uint32_t i, std::uint32_t j, const VISIT& visit) const
{
    const std::uint32_t a = levels_[l].first + i, b = levels_[l].first + j;
    if (apart(a, b))
        return;
    const bool on_one_way = i + 1 == j && (headings_[a] & headings_[b]) != 0;
    if ((on_one_way || !within_contours) && in_one_contour(l, i, j))
        return;
    if (l == 0)
        return visit(i, j);
    for (std::uint32_t m = 2 * i; m < 2 * i + 2; ++m) {
        for (std::uint32_t n = 2 * j; n < 2 * j + 2; ++n) {
            if (has(l - 1, m) && has(l - 1, n))
                visit_between(within_contours, l - 1, m, n, visit);
        }
    }
}

} // namespace klv
