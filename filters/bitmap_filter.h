#pragma once

#include <cstdint>

#include "core/point.h"
#include "filters/filter.h"

namespace klv {

class oDIB;

/// Base of the raster formats: read into a bitmap, by default through the imaging library.
class oBMFILTER : public oFILTER {
public:
    using oFILTER::Convert;

    ~oBMFILTER() override;
    oFILTER_TYPE Type() const override { return oFILTER_BITMAP; }
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// Stored conversion: reads `in` and writes the bitmap in the library's own stream form onto `out`.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;

    /// Reads an image.
    virtual oFILTER_STATUS Convert(vSTREAM& in, oDIB& out);
    /// Writes an image.
    virtual oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) = 0;
    /// Number of resolutions that the file offers; 0 for formats of one resolution.
    virtual std::uint32_t GetResolutionCount(vSTRING file_name);
    /// Size in pixels of a resolution; (0, 0) beyond the last.
    virtual vSIZE GetResolution(std::uint32_t index);
    virtual void SetResolution(std::uint32_t index) { resolution_ = index; }

    using oFILTER::SetProgressInd;
    void SetProgressInd(oPROGRESSBM* progress);

protected:
    /// Writes through the imaging library in one of its file formats.
    virtual oFILTER_STATUS ConvertBitmap(oDIB& in, vSTREAM& out, std::uint16_t format);
    std::uint32_t resolution() const { return resolution_; }
    oPROGRESSBM* bitmap_progress() const { return bitmap_progress_; }

private:
    oPROGRESSBM* bitmap_progress_ = nullptr;
    std::uint32_t resolution_ = 0;
};

} // namespace klv
