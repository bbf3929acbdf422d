#pragma once

#include "klv/imaging/codec.h"

#include <cstdint>

/// Photoshop files, of which the flattened picture is read and written. Numbers are big-endian.
///
///      0  4  "8BPS"
///      4  2  version: 1, or 2 for large documents, where some lengths are wider
///      6  6  reserved
///     12  2  channels
///     14  4  height
///     18  4  width
///     22  2  bits of a channel: 1, 8, 16, 32
///     24  2  colour mode
///     26     colour mode data: a length and the palette of indexed pictures, red, green and blue apart
///            image resources: a length and records, among them the resolution
///            layers: a length (64 bits in large documents) and what we pass over
///            the picture: its compression and channel after channel, each from the top
namespace klv::imaging::photoshop {

inline constexpr std::uint32_t header_size = 26;
inline constexpr std::uint16_t plain_version = 1;
inline constexpr std::uint16_t large_version = 2;
inline constexpr std::size_t palette_bytes = 768;

enum colour_mode : std::uint16_t {
    mode_bitmap = 0,
    mode_grey = 1,
    mode_indexed = 2,
    mode_rgb = 3,
    mode_cmyk = 4,
    mode_duotone = 8,
    mode_lab = 9,
};

enum compression : std::uint16_t { compression_none = 0, compression_runs = 1 };

/// "8BIM", a number, an even-sized Pascal string, a length and an even number of bytes.
inline constexpr std::uint16_t resolution_resource = 1005;
inline constexpr std::uint16_t pixels_per_inch
    = 1; ///< the display unit; the numbers themselves are always so

imaging_result info(image_io& in, file_info& info);
imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging::photoshop
