#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/geometry/shape.h"

namespace klv {

// The primitive shapes are closed and run clockwise as seen.

class vRECTSHAPE : public vSHAPE {
public:
    explicit vRECTSHAPE(const vRECT& rect) noexcept;
};

/// \param corner width and height of the ellipse that rounds the corners
class vROUNDRECTSHAPE : public vSHAPE {
public:
    vROUNDRECTSHAPE(const vRECT& rect, const vSIZE& corner) noexcept;
};

class vELPSSHAPE : public vSHAPE {
public:
    explicit vELPSSHAPE(const vRECT& rect) noexcept;
};

/// A regular polygon stretched to fill rect.
class vPOLYGONSHAPE : public vSHAPE {
public:
    /// \param sides clamped to 3..20. \param rotated an edge is at the top instead of a vertex
    vPOLYGONSHAPE(const vRECT& rect, unsigned short sides, int rotated) noexcept;
};

/// A star stretched to fill rect.
class vSTARSHAPE : public vSHAPE {
public:
    /// \param points clamped to 3..20. \param rotated a notch is at the top instead of a point
    /// \param innerPercent,secondPercent radius of the notches, of the deeper ones with twoLevel, in per
    /// cent of the outer radius
    vSTARSHAPE(const vRECT& rect, unsigned short points, int rotated, unsigned short innerPercent,
        int twoLevel, unsigned short secondPercent) noexcept;
};

} // namespace klv
