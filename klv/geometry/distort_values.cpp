// The members of the core values that need a distortion.
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/geometry/distort.h"

namespace klv {

vPOINT vPOINT::Distort(IDistort* distort) const noexcept
{
    vPOINT mapped = *this;
    if (distort)
        distort->Transform(&mapped, 1);
    return mapped;
}

void vRECT::DistortBbox(IDistort* distort, vRECT& out) const noexcept
{
    out = distort ? distort->MapBbox(Left(), Top(), Right(), Bottom()) : *this;
}

} // namespace klv
