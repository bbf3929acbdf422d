#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/metafile.h"

#include <optional>
#include <string>

namespace klv::tool {

/// The extension of a file name in upper case, without the dot; empty when there is none.
std::string extension_of(const std::string& file);

/// Writes a recorded picture; "-" is standard output. A file that can't be written in full is removed.
/// Throws failure.
void write_picture(vMETAFILE& picture, const std::string& file);

/// Writes a recorded picture that holds a bitmap, at its size by its resolution (96 dpi when it has none).
/// Throws failure.
void write_picture_of(oMEMDIB& bitmap, const std::string& file);

/// Writes a bitmap in the format with that extension. Throws failure.
/// \param bitmap has its colours reduced where they are to be
/// \param depth the depth to reduce to; nothing for what the bitmap has. A format without that depth gets
/// the next greater one that it has, else its greatest.
void write_bitmap(
    oMEMDIB& bitmap, const std::string& format, const std::string& file, std::optional<int> depth = {});

} // namespace klv::tool
