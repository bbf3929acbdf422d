#pragma once

#include "klv/base/types.h"
#include "klv/devices/outline/point_list.h"

#include <span>
#include <vector>

/// Cutting straight and ring-shaped bands out of flattened outlines, for pictures that can't rely on
/// clipping. Contours end with their first point repeated; the edge to a repeated point has no length and
/// plays no part.
namespace klv {

/// A flattened outline and what of it every band needs.
struct cut_outline {
    std::span<const POINT> points;
    std::span<const int> counts;
    bool alternate; ///< even-odd; else winding
};

template <class T> using cut_array = std::vector<T, vALLOCATOR<T>>;

/// The point where two segments cross. \param include_ends whether meeting at an end counts
/// \return 1 when they cross
int LinesIntersect(const POINT& a1, const POINT& a2, const POINT& b1, const POINT& b2, POINT& out,
    bool include_ends) noexcept;

/// Appends every point at which two edges of the outline cross, their ends excluded. Edges are compared
/// only where their x ranges overlap. The order is that of the first edge, then of the second.
/// \return number of crossings \throws std::bad_alloc
int GetLineIntersections(const cut_outline& outline, cut_array<POINT>& out);

/// Whether a point lies inside: non-zero inside, for winding the number of turns.
int PointInPoly(const cut_outline& outline, const POINT& point) noexcept;

/// Cuts the strip between x0 and x1 out of the outline.
/// \return number of polygons appended to out \throws std::bad_alloc
int GetLinearFillPolygons(
    int x0, int x1, const cut_outline& outline, std::span<const POINT> crossings, LISTINFO& out);

/// Appends the distance from the centre to the foot of the perpendicular on every edge that the foot falls
/// inside. \throws std::bad_alloc
void GetTangents(const POINT& centre, const cut_outline& outline, cut_array<double>& out);

/// An edge's angle at the inner and at the outer radius of a ring, in degrees.
struct angle_pair {
    double inner;
    double outer;
    int direction; ///< +1 or -1, which way the edge runs outwards
};

/// Cuts the ring between two radii out of the outline, as sectors with arcs in steps of 5 degrees.
/// \return number of sectors appended to out \throws std::bad_alloc
int GetRadialFillPolygons(const POINT& centre, double inner, double outer, const cut_outline& outline,
    std::span<const POINT> crossings, std::span<const double> tangents, LISTINFO& out);

/// Appends the ring sector between two pairs of angles. \return 1; 0 and nothing for equal radii
int AppendArcPoly(const POINT& centre, double inner, double outer, const angle_pair& a, const angle_pair& b,
    LISTINFO& out) noexcept;

} // namespace klv
