#pragma once

#include "klv/bitmaps/image_context.h"

namespace klv {

/// The context of a bitmap.
class oDIBCONTEXT : public oIMGCONTEXT {
public:
    /// Null colours: no override, no background override, white as the transparent colour. The transparent
    /// colour counts only with `transparency`; threshold is 0 to 100.
    oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, const vCOLOUR* override_colour, const vCOLOUR* background,
        const vCOLOUR* transparent, double angle, int flip_h, int flip_v, int transparency,
        std::int32_t threshold) noexcept;
    oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, const vCOLOUR* override_colour, const vCOLOUR* background,
        const vCOLOUR* transparent, IDistort* distort, int transparency, std::int32_t threshold) noexcept;
    oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept;
    oDIBCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
        const vTILEINFO& tiles) noexcept;
    /// What another kind of context says about a bitmap.
    explicit oDIBCONTEXT(const oIMGCONTEXT& context) noexcept
        : oIMGCONTEXT(context)
    {
    }

    oDIBCONTEXT* Duplicate() const noexcept override;

    /// Whether a colour override is in force (its colour is GetFgColour).
    [[nodiscard]] int GetColOveride() const noexcept;
    /// Whether the background has a colour of its own (GetBkColour).
    [[nodiscard]] int GetBkOveride() const noexcept;
    [[nodiscard]] vCOLOUR GetTransColour() const noexcept;
    [[nodiscard]] std::int32_t GetTransThreshold() const noexcept;
};

} // namespace klv
