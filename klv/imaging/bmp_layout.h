#pragma once

#include "klv/imaging/codec.h"

#include <cstdint>

/// Windows and OS/2 bitmap files, whose headers formats/dib_header.h describes.
namespace klv::imaging::bmp {

imaging_result info(image_io& in, file_info& info);
imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging::bmp
