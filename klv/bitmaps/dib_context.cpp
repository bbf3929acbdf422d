#include "klv/bitmaps/dib_context.h"

namespace klv {

oDIBCONTEXT::oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, const vCOLOUR* override_colour, const vCOLOUR* background,
    const vCOLOUR* transparent, double angle, int flip_h, int flip_v, int transparency,
    std::int32_t threshold) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, angle, flip_h, flip_v,
        image_colour_of(override_colour, background, transparency, transparent, threshold), vTILEINFO())
{
}

oDIBCONTEXT::oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, const vCOLOUR* override_colour, const vCOLOUR* background,
    const vCOLOUR* transparent, IDistort* distort, int transparency, std::int32_t threshold) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, distort,
        image_colour_of(override_colour, background, transparency, transparent, threshold), vTILEINFO())
{
}

oDIBCONTEXT::oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, distort, colour, tiles)
{
}

oDIBCONTEXT::oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
    const vTILEINFO& tiles) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, angle, flip_h, flip_v, colour, tiles)
{
}

oDIBCONTEXT* oDIBCONTEXT::Duplicate() const noexcept { return new oDIBCONTEXT(*this); }
int oDIBCONTEXT::GetColOveride() const noexcept { return GetColourOverride() != vOVERRIDE_NONE; }
int oDIBCONTEXT::GetBkOveride() const noexcept { return GetColourOverride() == vOVERRIDE_TRITONE; }
vCOLOUR oDIBCONTEXT::GetTransColour() const noexcept { return GetImageColour().GetTransparencyColour(); }
std::int32_t oDIBCONTEXT::GetTransThreshold() const noexcept
{
    return GetImageColour().GetTransparencyThreshold();
}

} // namespace klv
