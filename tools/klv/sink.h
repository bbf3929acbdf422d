#pragma once

#include <string>

#include "images/dib.h"
#include "metafiles/metafile.h"

namespace klv::tool {

/// The extension of a file name in upper case, without the dot; empty when there is none.
std::string extension_of(const std::string& file);

/// Writes a recorded picture; "-" is standard output. A file that can't be written in full is removed.
/// Throws failure.
void write_picture(vMETAFILE& picture, const std::string& file);

/// Writes a bitmap in the format with that extension. Throws failure.
void write_bitmap(oDIB& bitmap, const std::string& format, const std::string& file);

} // namespace klv::tool
