#pragma once

#include "klv/core/point.h"

namespace klv {

class vSHAPE;

/// How an arc is closed.
enum ARCCLOSURE : int {
    ARC_OPEN = 0,
    ARC_CHORD = 1, ///< a straight line from the arc's end back to its start
    ARC_PIE = 2, ///< straight lines through the centre
};

/// Direction of the vector (x, y) in whole degrees, 0 to 359, from the positive x axis towards positive y.
int iatan2(int y, int x);

/// Builds the bezier outline of an elliptical arc that runs from `start` to `end` in the direction of
/// increasing angle (x towards y; clockwise as seen where y grows downwards). Angles are whole degrees.
/// \param radius1, radius2 conjugate radii of the ellipse, as vectors from the centre.
/// \param start, end directions from the centre; equal directions give the full ellipse.
void ArcToBez(const vPOINT& centre, const vPOINT& radius1, const vPOINT& radius2, const vPOINT& start,
    const vPOINT& end, vSHAPE& out, ARCCLOSURE closure);

} // namespace klv
