#pragma once

#include "klv/base/types.h"
#include "klv/geometry/planar/edge_outline.h"
#include "klv/geometry/shape.h"

#include <cstdint>
#include <span>

namespace klv {

/// How far a contour moves, and which way. The contour is an outline that runs in direction 2 or a hole that
/// runs in direction 1, so that a positive distance always takes area away.
struct contour_move {
    double distance;
    vWINDING_DIRECTION direction;

    /// Whether the contour becomes smaller itself.
    [[nodiscard]] bool inwards() const { return (direction == vWINDING_ANTICLOCKWISE) == (distance > 0); }
};

/// Cuts the tip of the spike prev, v, next off where a move by d would leave little of it.
/// \param d the distance; -1 to cut whatever the lengths
/// \param angle_limit degrees; wider corners are no spikes
/// \param out where v goes, halfway between equal neighbours or on the longer edge at the length of the
/// shorter \return whether the tip is to be cut
bool CutoffSpike(
    const POINT& prev, const POINT& v, const POINT& next, std::int32_t d, POINT& out, int angle_limit);

/// Cuts the sharp spikes that moving the contour would turn inside out, and drops repeated points.
/// \return whether there was one, so that the contour may cross itself now
bool EliminateVanishingSpikes(geometry_list<POINT>& contour, const contour_move& move);

/// Removes the points whose byte in flags, one for each point, is not 0.
void RemoveSpecifiedSpikes(geometry_list<POINT>& contour, std::span<const std::uint8_t> flags);

/// The corners of a contour, each ready to be moved. The contour has no repeated points and must live as
/// long. May throw std::bad_alloc.
class offset_corners {
public:
    offset_corners(std::span<const POINT> contour, const contour_move& move);

    /// Appends the points that corner i gives in the moved contour: the mitre, which lies on both moved
    /// edges. Where the corner opens and bevel is asked, the corner all but turns back or the mitre lies
    /// beyond the coordinates there are, two points cut the mitre (MitreCorner). Where an edge is too short
    /// for the mitres at its ends, so that moved it would run backward, the corner gives the ends of the two
    /// moved edges with the corner itself between them: all that the edges sweep over is taken away then,
    /// whatever the edges around them do.
    void FindNewContourPointsWithMitre(std::size_t i, bool bevel, geometry_list<POINT>& out) const;

private:
    struct edge {
        double x; // unit vector along it
        double y;
        double length;
    };
    struct turn { // from the edge that arrives at a corner to the one that leaves
        double sine;
        double cosine;
        bool opens; // the moved edges part from each other
    };

    [[nodiscard]] std::size_t before(std::size_t i) const { return (i == 0 ? contour_.size() : i) - 1; }
    [[nodiscard]] std::size_t after(std::size_t i) const { return i + 1 == contour_.size() ? 0 : i + 1; }
    [[nodiscard]] turn turn_at(std::size_t i) const;
    [[nodiscard]] double shortening_at(std::size_t i) const;
    [[nodiscard]] POINT moved(std::size_t i, const edge& e, double along) const;
    void MitreCorner(std::size_t i, const turn& t, geometry_list<POINT>& out) const;

    std::span<const POINT> contour_;
    contour_move move_;
    geometry_list<edge> edges_; // edge i leaves point i
    geometry_list<double> shortenings_; // of the moved edges by each corner; 0 where they open
};

} // namespace klv
