#pragma once

#include "klv/imaging/imaging_api.h"

#include <cstddef>
#include <cstdint>

/// What the codecs do with lines of pixels on their way between a file and a DIB.
namespace klv::imaging {

/// a * b where 255 stands for 1, to the nearest.
[[nodiscard]] constexpr std::uint8_t multiplied(std::uint32_t a, std::uint32_t b)
{
    return static_cast<std::uint8_t>((a * b + 127) / 255);
}

/// Gives a bitmap of 1, 4 or 8 bits the greys from black (or white) on.
void set_grey_colours(bitmap_handle& bitmap, bool white_first = false);
/// Whether every colour of the palette is the grey of its number, as set_grey_colours has it.
[[nodiscard]] bool has_grey_colours(const bitmap_handle& bitmap);

/// A line of the bitmap, at any depth that L_CreateBitmap takes, as 24-bit pixels (blue, green, red).
void expand_to_24(const bitmap_handle& bitmap, const std::uint8_t* line, std::uint8_t* bgr);

/// Inks to 24-bit pixels. `light`: 255 stands for no ink, as Adobe's programs store it in JPEG files.
void inks_to_24(const std::uint8_t* cmyk, std::uint8_t* bgr, std::size_t width, bool light);

/// Linear light of a primary, 0 to 1, as a level of sRGB (IEC 61966-2-1).
[[nodiscard]] std::uint8_t srgb_level(double light);

/// Lightness and two colour axes, each 0 to 255 with the axes' zero at 128, under the light D50 of printers.
void lab_to_24(const std::uint8_t* lab, std::uint8_t* bgr, std::size_t width);

/// Reverses the order of pixels of whole bytes.
void mirror_pixels(std::uint8_t* pixels, std::size_t width, std::size_t pixel_bytes);

/// Packs indices, one a byte, at 1, 4 or 8 bits; indices that the depth does not hold lose their high bits.
void pack_indices(const std::uint8_t* indices, std::uint8_t* line, std::size_t width, std::int32_t bits);
/// The reverse of pack_indices.
void unpack_indices(const std::uint8_t* line, std::uint8_t* indices, std::size_t width, std::int32_t bits);

} // namespace klv::imaging
