#include "klv/devices/fill/fill_engine.h"

#include "klv/bitmaps/dib.h"
#include "klv/devices/bitmap/packed_dib.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/gem_patterns.h"
#include "klv/gdi/gdi.h"

#include <span>

namespace klv {
namespace {

HBRUSH bitmap_brush(const oDIB& bitmap) noexcept
{
    const packed_dib packed(bitmap);
    return packed.empty() ? nullptr : CreateDIBPatternBrushPt(packed.info(), DIB_RGB_COLORS);
}

HBRUSH gem_brush(vDEVICE& device, int type) noexcept
{
    const int number = type - vFILL_BITMAP; // the types follow the bitmap fill
    if (number <= gem_patterns_of_pattern_style)
        return device.CreateGEMBrush(gem_pattern_style, number);
    return device.CreateGEMBrush(gem_hatch_style, number - gem_patterns_of_pattern_style);
}

HBRUSH fill_brush(vDEVICE& device) noexcept
{
    const vFILLSPEC& fill = device.FillSpec();
    oDIB* bitmap = nullptr;
    if (fill.Hatched())
        return CreateHatchBrush(fill.Type() - vFILL_HATCH_FIRST, device.NearestColour(fill.Colour()));
    if (fill.GemBrush())
        return gem_brush(device, fill.Type());
    if (fill.Bitmap(&bitmap))
        return bitmap_brush(*bitmap);
    return device.CreateBrush(fill.Colour());
}

} // namespace

void FillPolygons(vDEVICE& device, const vSHAPE& shape) noexcept
{
    const active_dc dc(device);
    HBRUSH brush = fill_brush(device);
    if (!brush)
        return;
    HGDIOBJ old_pen = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ old_brush = SelectObject(dc, brush);
    const int old_mode
        = SetPolyFillMode(dc, device.FillSpec().Mode() == vFILL_ALTERNATE ? ALTERNATE : WINDING);

    std::span<const POINT> points;
    std::span<const int> counts;
    const int contours = device.ConvertShapeToPoints(shape, points, counts);
    if (contours == 1)
        Polygon(dc, points.data(), counts[0]);
    else if (contours > 1)
        PolyPolygon(dc, points.data(), counts.data(), contours);

    SetPolyFillMode(dc, old_mode);
    SelectObject(dc, old_brush);
    SelectObject(dc, old_pen);
    DeleteObject(brush);
}

} // namespace klv
