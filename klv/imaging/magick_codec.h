#pragma once

#include "klv/imaging/codec.h"

#include <cstdint>
#include <span>

/// What the formats that GraphicsMagick serves have in common: each reads its own header, so that a file can
/// be described, and refused, before the library sees it.
namespace klv::imaging {

/// Bytes of start that the headers need.
inline constexpr std::size_t magick_header_bytes = 128;

/// \return imaging_library_missing without the library
[[nodiscard]] imaging_result magick_available();

/// What of a file is wanted.
struct magick_source {
    const char* format; ///< as GraphicsMagick names it
    bool mirrored = false; ///< lines are stored from right to left
};

/// Delivers the file's pixels as info describes them.
imaging_result magick_load(const magick_source& source, image_io& in, const file_info& info,
    bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result magick_save(
    const char* format, image_io& out, const bitmap_handle& bitmap, line_source& lines);

/// Whether a header promises more pixels than its file can hold when a byte stands for `expansion` at most.
[[nodiscard]] bool promises_too_much(image_io& in, const file_info& info, std::uint64_t expansion);

} // namespace klv::imaging
