#pragma once

#include "klv/base/types.h"
#include "klv/bitmaps/colour_model.h"
#include "klv/filters/filter.h"

#include <array>
#include <cstdint>
#include <span>

/// Reading GIF files: the first image that has a colour table.
namespace klv {

class oDIB;
class oPROGRESS;
class vSTREAM;

/// What a file says of its image.
struct gif_picture {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t colour_bits = 1; ///< 1 to 8
    bool interlaced = false;
    std::int32_t horizontal_resolution = 0; ///< pixels per metre
    std::int32_t vertical_resolution = 0;
    std::array<RGBQUAD, 256> table{};

    [[nodiscard]] std::uint16_t colour_count() const { return static_cast<std::uint16_t>(1U << colour_bits); }
    [[nodiscard]] std::span<const RGBQUAD> colours() const { return std::span(table).first(colour_count()); }
    /// Bits per pixel of a bitmap that takes it: 1, 4 or 8.
    [[nodiscard]] std::uint16_t bitmap_bits() const
    {
        return colour_bits == 1 ? std::uint16_t{1} : colour_bits <= 4 ? std::uint16_t{4} : std::uint16_t{8};
    }
    [[nodiscard]] oCOLOUR_MODEL model() const { return model_of_bits(bitmap_bits()); }
};

/// Reads up to the code data of the image. oFILTER_BAD_DATA when the stream is no GIF file or has no image
/// with a colour table, oFILTER_READ_ERROR when it ends before.
oFILTER_STATUS read_gif_picture(vSTREAM& in, gif_picture& picture) noexcept;

/// Reads the code data into the bitmap, which gets the picture's size and colours. What was decoded before
/// a failure stays in it; the other pixels are 0. A picture out of proportion to what the stream holds is
/// oFILTER_BAD_DATA and leaves the bitmap as it is.
oFILTER_STATUS read_gif_pixels(
    vSTREAM& in, const gif_picture& picture, oDIB& bitmap, oPROGRESS* progress) noexcept;

} // namespace klv
