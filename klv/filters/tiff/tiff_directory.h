#pragma once

#include "klv/filters/filter.h"
#include "klv/filters/tiff/tiff_image.h"
#include "klv/filters/tiff/tiff_source.h"

namespace klv {

/// Reads the header and the first directory; tags that tiff_image has no field for are passed over.
/// READ_ERROR when the file ends within them, BAD_DATA for a directory without entries. Throws
/// std::bad_alloc.
[[nodiscard]] oFILTER_STATUS read_directory(tiff_source& source, tiff_image& image);

} // namespace klv
