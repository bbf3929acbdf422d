#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/colour/colour.h"
#include "klv/core/point.h"
#include "klv/metafiles/metafile.h"

#include <cstdint>
#include <memory>

namespace klv::tool {

struct render_options {
    int width = 0; ///< pixels; 0 to follow the height or the picture's own size
    int height = 0;
    int dpi = 96; ///< of the picture's own size
    /// Device pixels for each output pixel, along each axis; 1 for aliased pixels, 0 for as many as are
    /// affordable: 4, or fewer where a large page is painted over many times.
    int antialias = 0;
    vCOLOUR background{255, 255, 255};
};

/// Size in pixels that a picture is drawn at: its physical size at the wanted resolution (16 to 4096 pixels
/// on the longer side), or as the options say, in proportion.
vSIZE output_size(const vMETAFILE& picture, const render_options& options);

/// Draws a picture on a new 24-bit bitmap. Throws failure.
std::unique_ptr<oMEMDIB> render(vMETAFILE& picture, const render_options& options);

} // namespace klv::tool
