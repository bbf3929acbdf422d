#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/metafile.h"

#include <memory>

namespace klv::tool {

/// Records a picture that holds the bitmap and nothing else: a logical unit is a pixel, and the page has the
/// bitmap's size by its resolution, 96 dots per inch when it has none. Throws failure.
void record_bitmap(oMEMDIB& bitmap, vSTREAM& out);

/// The bitmap of a picture that holds one over its whole extent and nothing else, with the resolution that
/// its size on the page means; null for any other picture.
std::unique_ptr<oMEMDIB> held_bitmap(vMETAFILE& picture);

} // namespace klv::tool
