#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/bitmaps/dib_header.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// The stream form of a bitmap: an optional file header (reading only), the 40-byte info header, the colour
/// table and the pixels. Reading answers one of the depths 1, 4, 8 and 24 whatever was stored.
namespace klv {

class vSTREAM;

/// A bitmap as it was read.
struct read_bitmap {
    oDIBHEADER header;
    vBUFFER<RGBQUAD> colours; ///< empty above 8 bits
    vBUFFER<std::uint8_t> pixels;
    std::uint32_t bytes_read = 0; ///< of the pixels; the others are 0
};

/// Reads the stream form. False, and an unspecified bitmap, when the header is no bitmap header, its size is
/// out of proportion to what the stream holds, the colour table is cut short, or memory is out. Rows that
/// are missing at the end read as 0.
[[nodiscard]] bool read_dib(vSTREAM& stream, read_bitmap& bitmap) noexcept;

/// Reads a packed bitmap in memory, whose size its header tells.
[[nodiscard]] bool read_packed_dib(const BITMAPINFO& packed, read_bitmap& bitmap) noexcept;

/// Writes info header and colour table, padded or cut to the number of entries that the depth makes readers
/// expect.
void write_dib_header(vSTREAM& stream, const oDIBHEADER& header, std::span<const RGBQUAD> colours) noexcept;

/// Writes pixels: as differences from pixel to pixel in a compressed block when the stream compresses, the
/// depth is 24 bits and that is shorter, else as they are.
void write_dib_pixels(
    vSTREAM& stream, const oDIBHEADER& header, std::span<const std::uint8_t> pixels) noexcept;

/// Difference coding of 24-bit pixels, in blocks of 4000 pixels of which each but the first begins with the
/// last pixel of the one before. source and target have the same size; the last 3 bytes for each whole block
/// of 12000 bytes are not carried and decoding leaves them as they are.
void encode_differences(std::span<const std::uint8_t> pixels, std::span<std::uint8_t> coded) noexcept;
void decode_differences(std::span<const std::uint8_t> coded, std::span<std::uint8_t> pixels) noexcept;

} // namespace klv
