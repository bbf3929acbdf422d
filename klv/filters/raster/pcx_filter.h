#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// PC Paintbrush images.
class PCXFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    PCXFILTER();
    /// Accepts a header of 128 bytes with run-length coding and an image of at least 2 x 2 pixels.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
