#pragma once

#include "klv/geometry/planar/crossings.h"
#include "klv/geometry/planar/edge_outline.h"
#include "klv/geometry/planar/outline_tree.h"

#include <cstdint>
#include <span>

namespace klv {

/// The planar graph of an outline.
///
/// A *place* is an exact point where edges meet: a point of the outline or the crossing of two edges. Places
/// that turn out to be the same point are joined, and a *node* is what is left. A *stop* is one passage of a
/// contour through a node; a *strand* is the way of a contour from one stop to the next, and has the number
/// of the stop that it leaves.
///
/// The *winding* of a face is how often contours of direction 2 run around it, those of direction 1 taken
/// off. It is one more on an edge's right (as seen with y growing upwards) than on its left; the winding on
/// its left is the edge's *level*. Around each node, strands that come in are paired with strands of the same
/// level that go out, such that pairs don't cross; following the pairs gives loops of one level all along.
/// Where two edges cross that means to change to the other one.
///
/// All this is decided with exact arithmetic on the points as given. Only the loops' points are rounded.
/// May throw std::bad_alloc.
class arrangement {
public:
    /// \param frames winding around everything
    arrangement(
        std::span<const POINT> points, std::span<const int> counts, bool within_contours, int frames = 0);
    arrangement(const arrangement&) = delete;
    arrangement& operator=(const arrangement&) = delete;

    /// Calls visit(level, points) for each loop, node by node in the order in which a walk over all pairs of
    /// edges finds the nodes, then for each contour that meets none. To be called once.
    /// \param wanted answers for a level whether its loops are of interest
    template <typename WANTED, typename VISIT> void visit_loops(const WANTED& wanted, const VISIT& visit);

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    // A pair of edges that meet: where, and the same rounded.
    struct meeting {
        std::uint32_t place;
        POINT at;
    };
    struct stop {
        std::uint32_t edge;
        std::uint32_t place;
        double t; // on the edge; 0 at its start
    };
    struct node {
        std::uint32_t first; // of those that leave it, in node_strands_
        std::uint32_t count;
        POINT at;
        std::int32_t base; // winding just before the direction (1, 0), turning from x to y
        bool crossing; // of two edges, and nothing else
        bool reached;
    };
    struct strand {
        std::uint32_t edge; // where it begins
        std::uint32_t node; // where it begins
        std::uint32_t onward; // the strand that goes on with its loop
        std::int32_t level_at_start; // above the base of the node; of a cancelled one the winding there
        std::int32_t level_at_end;
        bool at_point; // whether it begins where its edge does
        bool cancelled; // by a strand that runs the other way on the same line
        bool walked;
    };
    // A strand as seen from a node.
    struct spoke {
        offset direction;
        std::uint32_t strand;
        bool leaves;

        [[nodiscard]] bool same_direction(const spoke& o) const;
        bool operator<(const spoke& o) const;
    };

    // arrangement_nodes.cpp: where the contours meet
    void find_places();
    void add_crossing(std::uint32_t number);
    void add_overlap(const edge_pair& pair);
    void add_contact(std::uint32_t point, std::uint32_t other);
    void add_touch(std::uint32_t point, std::uint32_t edge);
    void add_passage(std::uint32_t point);
    void join(std::uint32_t place, std::uint32_t other);
    [[nodiscard]] std::uint32_t joined(std::uint32_t place) const;
    [[nodiscard]] bool is_point(std::uint32_t place) const { return place < outline_.size(); }
    [[nodiscard]] fraction position(std::uint32_t edge, std::uint32_t place) const;
    [[nodiscard]] bool same_position(const stop& a, const stop& b) const;
    [[nodiscard]] bool before(const stop& a, const stop& b) const;
    void sort_stops();
    void join_stops();
    void make_nodes();
    void number_strands();
    void report_shared_points() const;

    // arrangement_levels.cpp: what belongs together around the nodes, and across them
    void gather_spokes(const node& n);
    void cancel_strands(const node& n);
    void cancel_on_line(std::span<const spoke> line);
    [[nodiscard]] bool straight(std::uint32_t s) const;
    void pair_strands(const node& n);
    void pair_crossing(const node& n);
    void find_levels();
    [[nodiscard]] std::uint32_t reach_from(std::uint32_t first);
    void reach(std::uint32_t s, std::int32_t base);
    [[nodiscard]] std::int32_t error_of_base(std::uint32_t top) const;
    [[nodiscard]] std::int32_t winding_outside(std::uint32_t top) const;
    [[nodiscard]] bool interior_on_left(std::uint32_t top) const;

    [[nodiscard]] std::span<const std::uint32_t> strands_of(const node& n) const
    {
        return std::span<const std::uint32_t>(node_strands_).subspan(n.first, n.count);
    }
    // The strands of a contour follow each other, and their numbers do.
    [[nodiscard]] std::uint32_t next(std::uint32_t s) const
    {
        const std::uint32_t contour = outline_.contour_of(strands_[s].edge);
        return s + 1 == contour_strands_[contour + 1] ? contour_strands_[contour] : s + 1;
    }
    [[nodiscard]] std::uint32_t previous(std::uint32_t s) const
    {
        const std::uint32_t contour = outline_.contour_of(strands_[s].edge);
        return (s == contour_strands_[contour] ? contour_strands_[contour + 1] : s) - 1;
    }
    [[nodiscard]] std::uint32_t end_of(std::uint32_t s) const { return strands_[next(s)].node; }
    [[nodiscard]] std::int32_t level_of(std::uint32_t s) const
    {
        return nodes_[strands_[s].node].base + strands_[s].level_at_start;
    }
    [[nodiscard]] bool is_lone(std::uint32_t contour) const
    {
        return contour_strands_[contour] == contour_strands_[contour + 1];
    }
    [[nodiscard]] std::int32_t level_of_lone(std::uint32_t contour) const
    {
        const auto top = outline_.contours()[contour].top;
        return winding_outside(top) - interior_on_left(top);
    }
    [[nodiscard]] std::span<const POINT> trace(std::uint32_t first);
    void add_to_loop(const POINT& p);

    const edge_outline outline_;
    const outline_tree tree_;
    const int frames_;

    // What is known of the places until there are nodes.
    outline_crossings found_;
    geometry_list<meeting> meetings_; // of the crossings, then of overlaps
    geometry_list<std::uint32_t> parents_; // of joined places, toward the one with the least number
    geometry_list<bool> passed_; // points of the outline that are stops
    geometry_list<stop> stops_; // along the contours

    geometry_list<node> nodes_;
    geometry_list<std::uint32_t> node_strands_;
    geometry_list<strand> strands_; // along the contours
    geometry_list<std::uint32_t> contour_strands_; // where the strands of each contour begin
    geometry_list<spoke> spokes_; // around the node in question
    geometry_list<std::uint32_t> open_; // strands that came in and are not paired yet
    std::size_t unreached_nodes_ = 0;
    std::size_t unreached_contours_ = 0; // of those that meet nodes
    geometry_list<std::uint32_t> reached_; // nodes
    geometry_list<std::uint32_t> entries_; // a strand of each contour that was reached
    geometry_list<bool> contour_reached_;
    geometry_list<POINT> loop_;
};

template <typename WANTED, typename VISIT>
void arrangement::visit_loops(const WANTED& wanted, const VISIT& visit)
{
    constexpr std::size_t fewest_points = 3;
    for (const node& n : nodes_) {
        for (const auto s : strands_of(n)) {
            if (strands_[s].walked || strands_[s].cancelled || !wanted(level_of(s)))
                continue;
            const auto loop = trace(s);
            if (loop.size() >= fewest_points)
                visit(level_of(s), loop);
        }
    }
    for (std::uint32_t c = 0; c < outline_.contours().size(); ++c) {
        if (!is_lone(c))
            continue;
        const std::int32_t level = level_of_lone(c);
        if (wanted(level))
            visit(
                level, outline_.points().subspan(outline_.contours()[c].first, outline_.contours()[c].count));
    }
}

} // namespace klv
