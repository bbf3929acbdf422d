#pragma once

#include "klv/geometry/planar/edge_outline.h"
#include "klv/geometry/planar/outline_tree.h"

#include <cstdint>

namespace klv {

/// Two edges that share points, by their numbers; a < b.
struct edge_pair {
    std::uint32_t a;
    std::uint32_t b;

    bool operator==(const edge_pair&) const = default;
};

/// What crosses what in an outline.
struct outline_crossings {
    /// Edges that cross or touch, in the order of a walk over all pairs of contours, the first contour's
    /// edges and the second's. Neighbours on a contour are no pair for that.
    geometry_list<edge_pair> crossings;
    /// Edges that lie on each other along a part of their lengths and do not start in the same point; in the
    /// same order.
    geometry_list<edge_pair> overlaps;
};

/// \param within_contours whether the crossings of a contour with itself count. May throw std::bad_alloc.
[[nodiscard]] outline_crossings find_crossings(
    const edge_outline& outline, const outline_tree& tree, bool within_contours);

/// The point at place t, from 0 to 1, of an edge, rounded to whole coordinates.
[[nodiscard]] POINT point_on_edge(const edge_outline& outline, std::uint32_t edge, double t);
/// Where two edges of a crossing meet, rounded as a place of the first.
[[nodiscard]] POINT crossing_point(const edge_outline& outline, const edge_pair& pair);

} // namespace klv
