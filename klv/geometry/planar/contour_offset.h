#pragma once

#include "klv/base/types.h"
#include "klv/geometry/planar/edge_outline.h"
#include "klv/geometry/planar/offset_corners.h"
#include "klv/geometry/planar/poly_polygon.h"

#include <cstdint>
#include <span>

namespace klv {

/// Multiplies the coordinates by 2^shift; for a negative shift divides by 2^-shift and rounds to nearest,
/// halves away from zero. Products outside 32 bits are limited to them.
void RescalePolyPolygon(std::span<POINT> points, int shift) noexcept;

/// Keeps the parts of a moved contour that bound what is left of it: those that run once around something,
/// lie on the right side of the source contour and not too close to it. May throw std::bad_alloc. \param
/// source the contour before the move, without repeated points \param tolerance how much closer than the
/// distance a point may be \param moved its points are used up \param kept the parts are appended, in the
/// source's direction, and holes in them in the other
void EliminateContourOverlaps(std::span<const POINT> source, const contour_move& move, double tolerance,
    std::span<POINT> moved, poly_polygon& kept);

/// Moves contours by a distance and unites what is left of them.
/// \param contours outlines in direction 2 and holes in direction 1, simple; their points are used up
/// \param distance what to take away; negative to add
/// \param bevel whether mitres longer than one and a half distances are cut
/// \param result without contours when nothing is left. May throw std::bad_alloc.
void offset_contours(
    poly_polygon& contours, double distance, double tolerance, bool bevel, poly_polygon& result);

} // namespace klv
