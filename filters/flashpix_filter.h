#pragma once

#include "filters/bitmap_filter.h"
#include "filters/resolution_table.h"

namespace klv {

/// FlashPix images, of several resolutions. Known by their extension only and only read.
class FPXFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    FPXFILTER();
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    int DoesExport() const override { return 0; }
    vSTRING GetID() const override;
    vSTRING GetDescription() const override;
    std::uint32_t GetResolutionCount(vSTRING file_name) override;
    vSIZE GetResolution(std::uint32_t index) override { return resolutions_[index]; }
    /// UNSUPPORTED: the format is only read.
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;

private:
    resolution_table resolutions_;
};

} // namespace klv
