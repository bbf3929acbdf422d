#pragma once

#include <span>
#include <vector>

#include "core/bezpoint.h"
#include "core/memory.h"

namespace klv {

/// How closely curves follow points.
struct fit_tolerance {
    double squared_distance; ///< of a point from its curve
    double extent; ///< of the box of one curve's points
};

/// Fits lines and cubic curves to a polyline: corners sharper than 60 degrees stay, what lies between them
/// becomes curves. The points, with segment flags and control points but without the flags of a contour's
/// ends, are appended to out. The last one leaves no segment. May throw std::bad_alloc.
void fit_curves(std::span<const vPOINT> points, const fit_tolerance& tolerance,
    std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>>& out);

} // namespace klv
