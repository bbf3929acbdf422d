#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/devices/bitmap/bitmap_sampler.h"
#include "klv/devices/bitmap/colour_match.h"
#include "klv/devices/bitmap/colour_override.h"
#include "klv/devices/bitmap/packed_dib.h"
#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

/// Bitmaps: an opaque one at right angles is a block copy, any other is drawn pixel by pixel.
namespace klv {
namespace {

constexpr int full_colour_bits = 24;
constexpr std::size_t bytes_per_pixel = 3;

// The colours in which a bitmap shows on a device: the override of its context, then the display mode.
class bitmap_colours {
public:
    bitmap_colours(const vDEVICE& device, const vIMAGECOLOUR& colour) noexcept
        : device_(device)
        , override_(colour_override::for_bitmap(colour))
    {
        int visible = 0;
        const vCOLOUR probe(255, 0, 0);
        converts_ = device.Convert(probe, visible) != probe;
    }

    bool change_anything() const noexcept { return converts_ || override_.changes_anything(); }

    void apply(oMEMDIB& bitmap) const noexcept
    {
        for (std::int32_t y = 0; y < bitmap.Height(); ++y) {
            const std::span<std::uint8_t> line = bitmap.line(y);
            std::uint8_t* pixel = line.data();
            // Neighbours are often equal, so the last answer is kept.
            rgb_channels last(-1, -1, -1);
            rgb_channels last_shown = last;
            for (std::int32_t x = 0; x < bitmap.Width(); ++x, pixel += bytes_per_pixel) {
                const rgb_channels colour(pixel[2], pixel[1], pixel[0]);
                if (colour.red != last.red || colour.green != last.green || colour.blue != last.blue) {
                    last = colour;
                    last_shown = shown(colour);
                }
                pixel[0] = static_cast<std::uint8_t>(last_shown.blue);
                pixel[1] = static_cast<std::uint8_t>(last_shown.green);
                pixel[2] = static_cast<std::uint8_t>(last_shown.red);
            }
        }
    }

private:
    rgb_channels shown(const rgb_channels& colour) const noexcept
    {
        const rgb_channels overridden = override_(colour);
        if (!converts_)
            return overridden;
        int visible = 0;
        return rgb_channels(device_.Convert(
            vCOLOUR(static_cast<unsigned char>(overridden.red), static_cast<unsigned char>(overridden.green),
                static_cast<unsigned char>(overridden.blue)),
            visible));
    }

    const vDEVICE& device_;
    colour_override override_;
    bool converts_ = false;
};

RGBQUAD key_of(const vIMAGECOLOUR& colour) noexcept
{
    if (colour.GetTransparency() == vTRANSPARENCY_WHITE)
        return {255, 255, 255, 0};
    const vCOLOUR& key = colour.GetTransparencyColour();
    return {key.Blue(), key.Green(), key.Red(), 0};
}

bool at_right_angles(const affine_map& map) noexcept
{
    constexpr double tiny = 1e-9;
    return std::abs(map.b) < tiny && std::abs(map.d) < tiny;
}

// The device rectangle that the context's destination becomes, edges as they come.
vRECT target_rect(const vDEVICE& device, const oDIBCONTEXT& context) noexcept
{
    vPOINT corners[] = {context.GetDstRect().TopLeft(), context.GetDstRect().BottomRight()};
    if (const IDistort* const distort = context.GetDistort())
        distort->Transform(corners, 2);
    vRECT target(corners[0], corners[1]);
    device.LPtoDP(target);
    return target;
}

int at_least_one_pixel(int size) noexcept { return size == 0 ? 1 : size; }

bool is_block(const oDIBCONTEXT& context, const bitmap_placement& placement) noexcept
{
    return at_right_angles(placement.to_device) && !context.GetImageColour().IsTransparent()
        && context.GetTileInfo().GetType() == vTILE_NONE;
}

void copy_block(const vDEVICE& device, HDC dc, const oDIB& bitmap, const bitmap_placement& placement,
    const oDIBCONTEXT& context) noexcept
{
    constexpr int palette_colours = 256;
    const packed_dib packed(bitmap);
    if (packed.empty())
        return;
    const RECT& source = placement.source;
    const vRECT target = target_rect(device, context);
    const int mode = SetStretchBltMode(dc, device.GetNoColours() > palette_colours ? HALFTONE : COLORONCOLOR);
    StretchDIBits(dc, target.Left(), target.Top(), at_least_one_pixel(target.Width()),
        at_least_one_pixel(target.Height()), source.left, bitmap.Height() - source.bottom,
        source.right - source.left, source.bottom - source.top, packed.bits(), packed.info(), DIB_RGB_COLORS,
        SRCCOPY);
    SetStretchBltMode(dc, mode);
}

void sample(HDC dc, const oMEMDIB& original, const oMEMDIB& shown, const bitmap_placement& placement,
    const vIMAGECOLOUR& colour) noexcept
{
    const colour_match match(key_of(colour), colour.GetTransparencyThreshold());
    transparency_key key;
    if (colour.IsTransparent())
        key = {&match, colour.GetTransparency() != vTRANSPARENCY_ALL_BUT_COLOUR};
    bitmap_sampler(shown, original, placement, key).draw(dc);
}

} // namespace

void vDEVICE::DrawDIB(const oDIB& bitmap, oDIBCONTEXT& context, vRECT* clip, int) noexcept
{
    const active_dc dc(*this);
    bitmap_placement placement{};
    if (!dc || !place_bitmap(Mapping(), context, bitmap.Width(), bitmap.Height(), placement))
        return;
    if (clip) {
        PushClipArea();
        ClipArea(*clip, RGN_AND);
    }

    const bitmap_colours colours(*this, context.GetImageColour());
    if (!colours.change_anything() && is_block(context, placement)) {
        copy_block(*this, dc, bitmap, placement, context);
    } else {
        const oMEMDIB original(bitmap, 0, 0, full_colour_bits, 0, 0);
        oMEMDIB shown(original, 0);
        if (original.HasPixels() && shown.HasPixels() && shown.ColourDepth() == full_colour_bits) {
            if (colours.change_anything())
                colours.apply(shown);
            if (is_block(context, placement))
                copy_block(*this, dc, shown, placement, context);
            else
                sample(dc, original, shown, placement, context.GetImageColour());
        }
    }

    if (clip)
        PopClipArea();
}

void vDEVICE::DrawDIB(const oDIB& bitmap, const vRECT& rect, const vCOLOUR* override_colour, double angle,
    int flip_horizontally, int flip_vertically, const vCOLOUR* background, int flag) noexcept
{
    oDIBCONTEXT context(bitmap.Width(), bitmap.Height(), &rect, nullptr, override_colour, background, nullptr,
        angle, flip_horizontally, flip_vertically, 0, 0);
    DrawDIB(bitmap, context, nullptr, flag);
}

} // namespace klv
