#pragma once

#include "klv/imaging/codec.h"

#include <cstdint>

/// Windows and OS/2 bitmap files:
///
///      0  2  "BM"
///      2  4  size of the file
///      6  4  reserved
///     10  4  offset of the pixels
///     14     info header, whose first field is its own size; channel masks; colour table
///
/// Info headers have 12 bytes (OS/2 1: 16-bit sizes, colours of 3 bytes), 16 to 64 (OS/2 2, fields that are
/// missing are 0), 40 (Windows 3), or 52, 56, 108 and 124, which go on with the channel masks.
namespace klv::imaging::bmp {

inline constexpr std::uint32_t file_header_size = 14;
inline constexpr std::uint32_t core_header_size = 12;
inline constexpr std::uint32_t smallest_os2_header_size = 16;
inline constexpr std::uint32_t os2_header_size = 64;
inline constexpr std::uint32_t info_header_size = 40;
inline constexpr std::uint32_t header_size_with_masks = 52;
// Compressions beside those of the graphics interface.
inline constexpr std::uint32_t embedded_jpeg = 4; ///< the pixels are a JPEG file
inline constexpr std::uint32_t os2_rle24 = 4; ///< in OS/2 files: runs of 24-bit pixels
inline constexpr std::uint32_t embedded_png = 5; ///< the pixels are a PNG file
inline constexpr std::uint32_t alpha_bitfields = 6; ///< four masks follow

imaging_result info(image_io& in, file_info& info);
imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging::bmp
