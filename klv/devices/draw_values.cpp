#include "klv/core/rect.h"
#include "klv/core/string.h"
#include "klv/devices/device.h"
#include "klv/devices/screen.h"
#include "klv/geometry/shape.h"

/// What the values below this floor ask of devices: to be drawn, and to be flattened through the screen.
namespace klv {

void vRECT::Draw(vDEVICE& device) const { device.DrawRect(*this); }

void vSTRING::Draw(vDEVICE& device, const vRECT& box, vTEXTALIGN align) const
{
    device.DrawTextA(*this, box, align, 0, vPOINT(), 0.0);
}

void vSHAPE::Draw(vDEVICE& device) const noexcept { device.DrawShape(*this); }

int vSHAPE::GetShapeAsPoints(POINT** points, int** counts) const noexcept
{
    return vDEVICE::GetScreen().GetShapeAsPoints(*this, points, counts);
}

HRGN vSHAPE::GetShapeAsRegion() const noexcept
{
    return vDEVICE::GetScreen().GetShapeAsRegion(*this, vFILL_ALTERNATE);
}

} // namespace klv
