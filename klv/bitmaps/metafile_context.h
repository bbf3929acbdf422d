#pragma once

#include "klv/bitmaps/image_context.h"

namespace klv {

/// The context of a recorded picture; pixel sizes are its logical sizes.
class oMFCONTEXT : public oIMGCONTEXT {
public:
    /// override_colour null: the picture's own colours. transparent: its bitmaps are drawn transparent.
    oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, const vCOLOUR* override_colour, double angle, int flip_h, int flip_v,
        int transparent) noexcept;
    oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, const vCOLOUR* override_colour, IDistort* distort, int transparent) noexcept;
    oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept;
    oMFCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
        const vTILEINFO& tiles) noexcept;

    oMFCONTEXT* Duplicate() const noexcept override;

    /// Whether a colour override is in force (its colour is GetFgColour).
    [[nodiscard]] int GetColOveride() const noexcept;
    [[nodiscard]] int GetBitmapsTransparent() const noexcept;
};

} // namespace klv
