#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/core/rect.h"
#include "klv/filters/windows/ternary_operation.h"

#include <memory>

namespace klv {

class vMETAFILE;

/// Draws bitmaps under their raster operations. Programs draw a transparent bitmap as two or three blits on
/// the same place: a mask that is white where nothing is to change (AND), the image that is black there (OR,
/// or exclusive or, which may also come before the mask). Such blits become one transparent bitmap, since a
/// recorded picture draws on any device and can't ask what is below.
class blit_pairs {
public:
    void draw(
        vMETAFILE& picture, std::unique_ptr<oMEMDIB> bitmap, const vRECT& target, ternary_operation rop);
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
