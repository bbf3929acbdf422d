#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/geometry/planar/edge_outline.h"
#include "klv/geometry/planar/outline_tree.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

/// A contour ready for many questions about points: its edges in runs of a few and a bounding-volume tree
/// over the runs, so that a question looks at the edges near its point only. The answers are the ones that
/// looking at all edges would give.
class contour_index {
public:
    /// \param contour closes whether or not it repeats its first point, and must live as long as the index.
    /// May throw std::bad_alloc.
    explicit contour_index(std::span<const POINT> contour);

    /// Whether no point of the outline is closer to p than d.
    [[nodiscard]] bool PointLiesNUnitsFromContour(const POINT& p, double d) const;
    /// Whether the point is inside: the contour runs exactly once around it, in either direction. Of the
    /// outline itself the points toward smaller coordinates are outside.
    [[nodiscard]] bool contains(const POINT& p) const;

    /// How many of the points are closer to the outline than d; counting ends at limit.
    [[nodiscard]] std::size_t ContourLiesNUnitsFromContour(
        std::span<const POINT> points, double d, std::size_t limit) const;
    /// How many of the points are not inside; counting ends above limit.
    /// \param flags empty, or a byte for each point, which becomes 1 where the point is counted
    [[nodiscard]] std::size_t ContourLiesInsideContour(
        std::span<const POINT> points, std::span<std::uint8_t> flags, std::size_t limit) const;

private:
    static constexpr std::uint32_t edges_in_run = 4;

    struct level {
        std::uint32_t first; // of its nodes in boxes_
        std::uint32_t count;
    };
    struct edge_range {
        std::uint32_t first;
        std::uint32_t end;
    };

    [[nodiscard]] const POINT& after(std::uint32_t i) const
    {
        return contour_[i + 1 == contour_.size() ? 0 : i + 1];
    }
    [[nodiscard]] edge_range edges_of(std::uint32_t l, std::uint32_t i) const;
    [[nodiscard]] bool comes_closer(std::uint32_t l, std::uint32_t i, const POINT& p, double square) const;
    [[nodiscard]] int turns_right_of(std::uint32_t l, std::uint32_t i, const POINT& p) const;

    std::span<const POINT> contour_;
    geometry_list<level> levels_; // from the runs up; node i lies above nodes 2 i and 2 i + 1
    geometry_list<edge_box> boxes_;
};

} // namespace klv
