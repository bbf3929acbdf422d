#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/core/rect.h"

#include <cstdint>
#include <memory>

namespace klv {

class vMETAFILE;

/// Raster operations, three operands, that metafiles use with bitmaps.
enum class wmf_rop : std::uint32_t {
    blackness = 0x00000042,
    not_source_copy = 0x00330008,
    invert = 0x00550009,
    pattern_invert = 0x005A0049,
    source_invert = 0x00660046,
    source_and = 0x008800C6,
    merge_paint = 0x00BB0226,
    source_copy = 0x00CC0020,
    source_paint = 0x00EE0086,
    pattern_copy = 0x00F00021,
    whiteness = 0x00FF0062,
};

/// Draws bitmaps under their raster operations. Programs draw a transparent bitmap as two or three blits on
/// the same place: a mask that is white where nothing is to change (AND), the image that is black there (OR,
/// or exclusive or, which may also come before the mask). Such blits become one transparent bitmap, since a
/// recorded picture draws on any device and can't ask what is below.
class wmf_blit_pairs {
public:
    void draw(vMETAFILE& picture, std::unique_ptr<oMEMDIB> bitmap, const vRECT& target, wmf_rop rop);
    /// Draws what still waits for a partner.
    void flush(vMETAFILE& picture);

private:
    bool draws_on_pending(const oMEMDIB& bitmap, const vRECT& target) const;
    void draw_through_mask(vMETAFILE& picture, const oMEMDIB& image);

    std::unique_ptr<oMEMDIB> mask_;
    std::unique_ptr<oMEMDIB> image_; ///< drawn by exclusive or before its mask
    vRECT target_;
};

} // namespace klv
