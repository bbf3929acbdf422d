#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/metafile.h"
#include "klv/rendering/render_status.h"

#include <memory>

namespace klv {

/// Records a picture that holds the bitmap and nothing else: a logical unit is a pixel, and the page has the
/// bitmap's size by its resolution. A bitmap without a usable one gets 96 dots per inch.
render_status record_bitmap(oMEMDIB& bitmap, vSTREAM& out) noexcept;

/// The bitmap of a picture that holds one over its whole extent and nothing else, with the resolution that
/// its size on the page means. Null for any other picture, and when memory is out.
[[nodiscard]] std::unique_ptr<oMEMDIB> held_bitmap(vMETAFILE& picture) noexcept;

} // namespace klv
