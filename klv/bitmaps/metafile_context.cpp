#include "klv/bitmaps/metafile_context.h"

namespace klv {

namespace {

vIMAGECOLOUR picture_colour(const vCOLOUR* override_colour, int transparent)
{
    return image_colour_of(
        override_colour, nullptr, transparent, nullptr, vIMAGECOLOUR().GetTransparencyThreshold());
}

} // namespace

oMFCONTEXT::oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, const vCOLOUR* override_colour, double angle, int flip_h, int flip_v,
    int transparent) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, angle, flip_h, flip_v,
        picture_colour(override_colour, transparent), vTILEINFO())
{
}

oMFCONTEXT::oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, const vCOLOUR* override_colour, IDistort* distort, int transparent) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, distort,
        picture_colour(override_colour, transparent), vTILEINFO())
{
}

oMFCONTEXT::oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, distort, colour, tiles)
{
}

oMFCONTEXT::oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
    const vTILEINFO& tiles) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, angle, flip_h, flip_v, colour, tiles)
{
}

oMFCONTEXT* oMFCONTEXT::Duplicate() const noexcept { return new oMFCONTEXT(*this); }
int oMFCONTEXT::GetColOveride() const noexcept { return GetColourOverride() != vOVERRIDE_NONE; }
int oMFCONTEXT::GetBitmapsTransparent() const noexcept { return GetImageColour().IsTransparent(); }

} // namespace klv
