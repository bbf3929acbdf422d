#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// Portable Network Graphics. Known by its extension only.
class PNGFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    PNGFILTER();
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
