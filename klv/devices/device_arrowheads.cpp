#include "klv/attributes/arrowhead.h"
#include "klv/attributes/fill_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"

/// What arrowheads do on a device; the line engine places them in device pixels.
namespace klv {
namespace {

// Makes a device's logical units its pixels, without an origin, for as long as the object lives.
class pixel_units {
public:
    explicit pixel_units(vDEVICE& device) noexcept
        : device_(device)
        , horizontal_(device.LogUnitsPerHorzInch())
        , vertical_(device.LogUnitsPerVertInch())
        , origin_(device.Origin())
    {
        device.LogUnitsPerHorzInch(device.DevUnitsPerHorzInch());
        device.LogUnitsPerVertInch(device.DevUnitsPerVertInch());
        device.Origin(vPOINT());
    }
    ~pixel_units()
    {
        device_.LogUnitsPerHorzInch(horizontal_);
        device_.LogUnitsPerVertInch(vertical_);
        device_.Origin(origin_);
    }
    pixel_units(const pixel_units&) = delete;
    pixel_units& operator=(const pixel_units&) = delete;

private:
    vDEVICE& device_;
    int horizontal_;
    int vertical_;
    vPOINT origin_;
};

} // namespace

void vARROWHEAD::Clip(vDEVICE& device, const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept
{
    const active_dc dc(device);
    const pixel_units pixels(device);
    RECT box{};
    GetClipBox(dc, &box);
    HRGN kept = CreateRectRgn(box.left, box.top, box.right, box.bottom);
    HRGN arrow = device.GetShapeAsRegion(PlacedClipOutline(end, from, lineWidth), vFILL_ALTERNATE);
    if (kept && arrow && CombineRgn(kept, kept, arrow, RGN_DIFF) != ERROR_REGION)
        device.ClipArea(kept, RGN_AND);
    if (kept)
        DeleteObject(kept);
    if (arrow)
        DeleteObject(arrow);
}

void vARROWHEAD::Draw(vDEVICE& device, const vPOINT& end, const vPOINT& from, int lineWidth,
    const vCOLOUR& colour) const noexcept
{
    device.PushState();
    {
        const pixel_units pixels(device);
        device.LineSpec(vLINESPEC(vLINE_SOLID, colour, PenWidth(lineWidth), vCORNER_BEVEL, vDASH_ROUND,
            nullptr, vLINESPEC::no_arrow, vLINESPEC::no_arrow));
        device.FillSpec(vFILLSPEC(
            Hollow() ? vFILL_NONE : vFILL_SOLID, colour, colour, vANGLE(), vFILL_ALTERNATE, vPOINT()));
        device.DrawShape(PlacedOutline(end, from, lineWidth));
    }
    device.PopState();
}

} // namespace klv
