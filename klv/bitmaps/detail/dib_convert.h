#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/bitmaps/dib.h"

#include <cstdint>
#include <span>

/// Bitmaps in another size or depth.
namespace klv {

/// Pixels of a bitmap in the layout of a DIB.
struct dib_pixels {
    oDIBHEADER header;
    vBUFFER<RGBQUAD> colours;
    vBUFFER<std::uint8_t> pixels;
};

/// The bitmap (or the part of it that area names, lines counted from the bottom) as width x height pixels of
/// the given depth: 1, 4, 8 or 24 bits. The resolution follows the scale.
/// A picture that goes from more to fewer bits keeps its colours exactly where they are few enough;
/// otherwise it is dithered to black and white, the 16 standard colours or a colour cube, whichever the depth
/// takes.
/// smooth: area averages and linear interpolation instead of the nearest pixel, for sources and targets of
/// 24 bits. False when the depth is none of these, the area is empty or memory is out.
[[nodiscard]] bool convert_dib(const oDIB& source, const RECT& area, std::int32_t width, std::int32_t height,
    std::uint16_t bits, bool smooth, dib_pixels& result) noexcept;

/// The area as 24-bit pixels, bottom line first, rows padded to 4 bytes.
[[nodiscard]] bool read_area_as_24(
    const oDIB& source, const RECT& area, vBUFFER<std::uint8_t>& pixels) noexcept;

/// 24-bit lines (padded to 4 bytes) of width pixels into indices of a colour table that it chooses. The
/// result's header gives depth and height; its pixels have their size already.
[[nodiscard]] bool quantise_24(
    std::span<const std::uint8_t> pixels, std::int32_t width, dib_pixels& result) noexcept;

/// Reduces a bitmap to fewer bits in the memory that it has: `from` and `colours` say what the pixels are,
/// bitmap.header what they shall be. False, and nothing changed, when the depth does not shrink, the size
/// differs or memory is out.
[[nodiscard]] bool reduce_in_place(
    const oDIBHEADER& from, std::span<const RGBQUAD> colours, dib_pixels& bitmap) noexcept;

} // namespace klv
