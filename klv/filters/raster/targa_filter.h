#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// Truevision Targa images. Known by their extension only; written with 8 or 24 bits.
class TGAFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    TGAFILTER();
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    int ExportColourDepths(int depth) const override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
