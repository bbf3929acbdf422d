#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// Photoshop documents: the composite image. Known by their extension only, written with 8 or 24 bits, and
/// not in the filter list: applications that want them make this filter themselves.
class PSDFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    PSDFILTER();
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    int ExportColourDepths(int depth) const override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
