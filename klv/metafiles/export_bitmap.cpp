#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/dib_palette.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace klv {

namespace {

// Longer side of a bitmap that goes into a picture changed, and of a small one; pixels.
constexpr int longest_side = 1600;
constexpr int longest_small_side = 200;

// The shape of the source in its box on the device, `longer` pixels along the box's longer side.
vRECT pixel_place(const oDIBCONTEXT& context, int longer)
{
    const vRECT& place = context.GetDstRect();
    vRECT box = place;
    if (context.GetDistort())
        place.DistortBbox(context.GetDistort(), box);
    const auto length_of = [](int signed_length) { return std::abs(static_cast<double>(signed_length)); };
    const double box_longer = std::max(length_of(box.Width()), length_of(box.Height()));
    if (box_longer == 0)
        return vRECT(0, 0, longer, longer);
    const auto scaled = [&](int length) {
        return std::max(static_cast<int>(std::lround(length_of(length) / box_longer * longer)), 1);
    };
    return vRECT(0, 0, scaled(place.Width()), scaled(place.Height()));
}

std::unique_ptr<oMEMDIB> resampled(const oDIB& bitmap, const oDIBCONTEXT& context, int small)
{
    const vRECT& part = context.GetSrcRect();
    const int limit = small ? longest_small_side : longest_side;
    const int longer = std::clamp(std::max(wrap_abs(part.Width()), wrap_abs(part.Height())), 1, limit);
    return std::unique_ptr<oMEMDIB>(new oMEMDIB(bitmap, part, pixel_place(context, longer), nullptr,
        context.GetFlipH(), context.GetFlipV(), context.GetRotAngle(), model_of_bits(bitmap.ColourDepth())));
}

// Shows the bitmap in shades of a colour. One without a palette becomes a bitmap of 256 colours first.
std::unique_ptr<oMEMDIB> coloured(const oDIB& bitmap, const vCOLOUR& colour)
{
    constexpr int bits = 8;
    const bool has_palette = bitmap.ColourDepth() <= bits;
    std::unique_ptr<oMEMDIB> result(
        has_palette ? new oMEMDIB(bitmap, 0) : new oMEMDIB(bitmap, 0, 0, bits, 0, 0));
    if (!result)
        return nullptr;
    const std::unique_ptr<oDIBPALETTE> palette(result->CreateColourOverridePalette(&colour));
    if (palette)
        result->SetPalette(*palette);
    return result;
}

bool usable(const std::unique_ptr<oMEMDIB>& bitmap) { return bitmap && bitmap->HasPixels(); }

} // namespace

// Transparency needs no new bitmap: the record carries it, and a resampled key colour would no longer match.
const oDIB* vMETAFILE::CreateExportDIB(const oDIB& bitmap, const oDIBCONTEXT& context, int small) noexcept
{
    const bool cut = context.GetSrcRect() != vRECT(0, 0, bitmap.Width(), bitmap.Height());
    const bool turned = context.GetFlipH() || context.GetFlipV() || context.GetRotAngle() != 0;
    const bool recoloured = context.GetColourOverride() != vOVERRIDE_NONE;
    const bool reduced = recoloured && small;

    std::unique_ptr<oMEMDIB> result;
    if (cut || turned || reduced) {
        result = resampled(bitmap, context, small);
        if (!usable(result))
            return &bitmap;
    }
    if (recoloured) {
        std::unique_ptr<oMEMDIB> tinted = coloured(result ? *result : bitmap, context.GetFgColour());
        if (usable(tinted))
            result = std::move(tinted);
    }
    return result ? result.release() : &bitmap;
}

} // namespace klv
