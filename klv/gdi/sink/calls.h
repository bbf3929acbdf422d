#pragma once

#include "klv/gdi/raster/dib_source.h"
#include "klv/gdi/state/drawing_state.h"
#include "klv/gdi/state/region_object.h"

#include <cstdint>
#include <string_view>
#include <variant>

/// The calls that are no figures, as a sink hears them. What they point to holds for the call only. Units
/// are logical unless it says otherwise.
namespace klv::gdi {

/// State that is set by numbers: what was called, with these arguments.
enum class setting : std::uint8_t {
    background_mode, ///< mode
    background_colour, ///< COLORREF
    text_colour, ///< COLORREF
    mix_mode, ///< R2_
    fill_mode, ///< mode
    stretch_mode, ///< mode
    text_align, ///< TA_
    character_extra, ///< width
    justification, ///< extra, count
    position, ///< x, y
    map_mode, ///< MM_
    window_origin, ///< x, y
    window_extent, ///< width, height
    viewport_origin, ///< x, y; device units
    viewport_extent, ///< width, height; device units
    window_offset, ///< x, y
    viewport_offset, ///< x, y; device units
    window_scale, ///< x numerator, x denominator, y numerator, y denominator
    viewport_scale, ///< the same
};

/// IntersectClipRect.
struct clip_to_box {
    RECT box;
};
/// ExcludeClipRect.
struct clip_out_box {
    RECT box;
};
/// OffsetClipRgn.
struct clip_offset {
    INT x;
    INT y;
};
/// SelectClipRgn; no region is no clipping.
struct clip_to_region {
    const region_object* area; ///< device units
};
using clip_change = std::variant<clip_to_box, clip_out_box, clip_offset, clip_to_region>;

/// FillRgn, PaintRgn and InvertRgn.
struct region_fill {
    enum class how : std::uint8_t { fill, paint, invert };

    how by;
    const region_object& area;
    const brush_object& brush; ///< the selected one for paint, any for invert
};

/// FrameRgn.
struct region_frame {
    const region_object& area;
    const brush_object& brush;
    INT width; ///< of the frame, along x
    INT height;
};

/// FillRect.
struct box_fill {
    RECT box;
    const brush_object& brush; ///< may have no handle
};

class text_line;

/// TextOutA and ExtTextOutA.
struct text_call {
    POINT at; ///< does not matter where the state's alignment has TA_UPDATECP
    std::uint32_t options; ///< ETO_OPAQUE and ETO_CLIPPED where there is a box, else 0
    RECT box;
    std::string_view text; ///< bytes of the font's character set
    const LONG* advances; ///< one for each byte; null for the font's own
    /// The text as it is set, device units; null where there is none, or no font to show it.
    const text_line* line;
};

/// PatBlt: by an operation without source.
struct pattern_block {
    block to;
    DWORD operation; ///< raster operation code
};

/// BitBlt and StretchBlt from a context whose sink has pixels.
struct context_block {
    block to;
    const surface& source;
    block from; ///< pixels of the source
    rgb source_background; ///< becomes 1 on a monochrome destination
    DWORD operation;
};

/// Bitmap data of the caller, as given and opened for reading.
struct dib_data {
    const dib_source& source;
    const BITMAPINFO* info;
    const void* bits;
    UINT usage; ///< DIB_RGB_COLORS or DIB_PAL_COLORS
};

/// StretchDIBits.
struct dib_block {
    block to;
    block from; ///< bitmap pixels, from the lower left corner of a bottom-up bitmap
    dib_data data;
    DWORD operation;
};

/// SetDIBitsToDevice: a pixel of the bitmap is one of the device.
struct dib_band {
    POINT to;
    DWORD width; ///< pixels
    DWORD height;
    INT x; ///< bitmap pixels, as in dib_block
    INT y;
    UINT start_line;
    UINT lines; ///< that the data holds
    dib_data data;
};

} // namespace klv::gdi
