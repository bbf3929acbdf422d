#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// Windows bitmap files.
class DIBFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    DIBFILTER();
    /// Accepts "BM" at the start of a stream of more than 40 bytes.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// A bitmap file is a stored bitmap already: copies the file.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
};

} // namespace klv
