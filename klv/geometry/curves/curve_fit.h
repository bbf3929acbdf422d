#pragma once

#include "klv/base/memory.h"
#include "klv/core/bezpoint.h"

#include <span>
#include <vector>

namespace klv {

/// How closely a curve follows its points, in squared units.
struct fit_tolerance {
    double mean; ///< of the squared distances of the points from their curve
    double greatest; ///< of these distances
};

/// Fits lines and cubic curves to a polyline: corners sharper than 60 degrees stay, what lies between them
/// becomes as few curves as halving finds. The points, with segment flags and control points but without the
/// flags of a contour's ends, are appended to out. The last one leaves no segment. May throw std::bad_alloc.
void fit_curves(std::span<const vPOINT> points, const fit_tolerance& tolerance,
    std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>>& out);

} // namespace klv
