#include "klv/base/memory.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/devices/display_bitmap.h"
#include "klv/geometry/matrix.h"
#include "klv/metafiles/detail/playback.h"
#include "klv/metafiles/detail/rectangles.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace klv {

namespace {

// Longest side of the bitmap in which a tile is drawn, pixels.
constexpr int tile_limit = 2048;

struct extent_sizes {
    double width;
    double height;
};

// A picture without a size along an axis is only moved along it.
double factor(int destination, double size) { return size == 0 ? 1.0 : destination / size; }

oMATRIX extents_to(const vRECT& destination, int x0, int y0, const extent_sizes& sizes)
{
    oMATRIX m;
    m.Translate(-static_cast<double>(x0), -static_cast<double>(y0));
    m.Scale(factor(destination.Width(), sizes.width), factor(destination.Height(), sizes.height));
    m.Translate(destination.Left(), destination.Top());
    return m;
}

double line_scale_of(const vRECT& destination, const extent_sizes& sizes)
{
    double scale = std::numeric_limits<double>::infinity();
    if (sizes.width != 0)
        scale = std::abs(destination.Width() / sizes.width);
    if (sizes.height != 0)
        scale = std::min(scale, std::abs(destination.Height() / sizes.height));
    return std::isinf(scale) ? 1.0 : scale;
}

vREAL ratio(int numerator, int denominator)
{
    if (denominator == 0)
        return vREAL();
    return vREAL::FromRaw(numerator) / vREAL::FromRaw(denominator);
}

vCOLOUR colour_of(COLORREF packed) { return vCOLOUR(static_cast<std::int32_t>(packed), 0); }

} // namespace

void vMETAFILE::Draw(vDEVICE& device, const vRECT& rect, vCOLOUR* colour, const vPOINT&, const double& angle,
    int flag, vRECT* source, const vRECT* clip) noexcept
{
    const int flip_h = rect.Width() < 0;
    const int flip_v = rect.Height() < 0;
    const vRECT destination = in_order(rect);
    oMFCONTEXT context(
        LogicalWidth(), LogicalHeight(), &destination, source, colour, angle, flip_h, flip_v, flag);
    Draw(device, context, clip);
}

void vMETAFILE::Draw(vDEVICE& device, oMFCONTEXT& context, const vRECT* clip) noexcept
{
    const vRECT destination = context.GetDstRect();
    if (is_empty(destination))
        return;
    if (context.GetTileInfo().GetType() != vTILE_NONE && draw_tiled(device, context, clip))
        return;
    draw_once(device, context, destination, clip ? *clip : destination, context.GetDistort());
}

void vMETAFILE::draw_once(vDEVICE& device, const oMFCONTEXT& context, const vRECT& destination,
    const vRECT& clip, const IDistort* distort) noexcept
{
    if (native_)
        return;
    const extent_sizes sizes{static_cast<double>(x1_) - x0_, static_cast<double>(y1_) - y0_};
    oMATRIX matrix = extents_to(destination, x0_, y0_, sizes);
    oMATRIX bitmap_matrix = extents_to(clip, x0_, y0_, sizes);
    if (distort) {
        matrix.Combine(*distort);
        bitmap_matrix.Combine(*distort);
    }

    playback_mapping mapping;
    mapping.distort = &matrix;
    mapping.bitmap_distort = &bitmap_matrix;
    mapping.line_scale = line_scale_of(destination, sizes);
    mapping.source = context.GetSrcRect();
    mapping.colour = context.GetImageColour();

    device.PushState();
    const vREAL font_ratio = device.GetFontRatio();
    {
        const active_dc dc(device);
        device.SetFontRatio(ratio(destination.Height(), wrap_sub(y1_, y0_)));
        record_player(*this, device, mapping).play();
        device.SetFontRatio(font_ratio);
    }
    device.PopState();
}

// Draws the picture once, off screen, and tiles the bitmap of it.
bool vMETAFILE::draw_tiled(vDEVICE& device, const oMFCONTEXT& context, const vRECT* clip) noexcept
{
    const std::unique_ptr<oMFCONTEXT> once(context.Duplicate());
    if (!once)
        return false;
    once->SetTileInfo(vTILEINFO(vTILE_NONE, 1, 1));
    vDISPLAYBMP surface(*once, nullptr, 1, tile_limit);
    const vRECT size = surface.Size();
    const vRECT bounds = context.GetBoundingRect();
    if (is_empty(size) || is_empty(bounds))
        return false;

    constexpr int percent_scale = 10'000;
    const vRECT destination = context.GetDstRect();
    const vRECT place
        = size.PercentToRect(bounds.RectToPercent(destination, percent_scale), 1, percent_scale);
    const vRECT clip_place = clip
        ? place.PercentToRect(destination.RectToPercent(*clip, percent_scale), 1, percent_scale)
        : place;
    draw_once(surface, *once, place, clip_place, nullptr);

    BITMAPINFO* const packed = surface.CopyIntoDIB();
    if (!packed)
        return false;
    const oMEMDIB tile(packed, 0);
    vMemFree(packed);
    vIMAGECOLOUR colour;
    colour.SetTransparency(vTRANSPARENCY_COLOUR);
    colour.SetTransparencyColour(colour_of(surface.GetTransparencyColour()));
    colour.SetTransparencyThreshold(0);
    oDIBCONTEXT tiled(tile.Width(), tile.Height(), &destination, nullptr, context.GetDistort(), colour,
        context.GetTileInfo());
    device.DrawDIB(tile, tiled, nullptr, 0);
    return true;
}

} // namespace klv
