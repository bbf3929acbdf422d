#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// JPEG images. Written with 24 bits only.
class JPEGFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    JPEGFILTER();
    /// Accepts the start-of-image marker FF D8 at the current position, which it restores.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    int ExportColourDepths(int depth) const override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
