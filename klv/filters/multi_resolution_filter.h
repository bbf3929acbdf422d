#pragma once

#include "klv/core/point.h"
#include "klv/core/string.h"
#include "klv/filters/bitmap_filter.h"
#include "klv/imaging/imaging_api.h"

#include <array>
#include <cstdint>

namespace klv {

/// Base of the formats whose files hold an image in several sizes. They are known by their extension only,
/// and only read.
class multi_resolution_filter : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    /// Resolutions that are told of one file.
    static constexpr std::uint32_t most_resolutions = 29;

    /// LastStatus, whatever the stream holds.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    int DoesExport() const override { return 0; }
    /// Asks the imaging library; 0 when the library or the file can't be had.
    std::uint32_t GetResolutionCount(vSTRING file_name) override;
    vSIZE GetResolution(std::uint32_t index) override;
    /// UNSUPPORTED: the formats are only read.
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;

protected:
    multi_resolution_filter(const format_identity& format, std::uint16_t library_format);

private:
    std::uint16_t format_;
    std::array<imaging::dimension, most_resolutions> sizes_{}; ///< in the imaging library's order
    std::uint32_t count_ = 0;
};

} // namespace klv
