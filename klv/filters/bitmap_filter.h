#pragma once

#include "klv/core/point.h"
#include "klv/filters/filter.h"

#include <cstdint>

namespace klv {

class oDIB;
enum class missing_library : int;

/// Base of the raster formats: read into a bitmap, by default through the imaging library.
class oBMFILTER : public oFILTER {
public:
    using oFILTER::Convert;

    oBMFILTER() = default;
    oBMFILTER(const oBMFILTER&) = default;
    oBMFILTER& operator=(const oBMFILTER&) = default;
    ~oBMFILTER() override;
    oFILTER_TYPE Type() const override { return oFILTER_BITMAP; }
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// Stored conversion: reads `in` and writes what could be read of the image, in the library's own stream
    /// form, onto `out`. FAILED, and nothing written, without the imaging library.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;

    /// Reads an image.
    virtual oFILTER_STATUS Convert(vSTREAM& in, oDIB& out);
    /// Writes an image.
    virtual oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) = 0;
    /// Number of resolutions that a file of the file system offers; 0 for formats of one resolution.
    virtual std::uint32_t GetResolutionCount(vSTRING file_name);
    /// Size in pixels of a resolution of the file last counted; (0, 0) beyond the last.
    virtual vSIZE GetResolution(std::uint32_t index);
    /// The resolution that Convert reads.
    virtual void SetResolution(std::uint32_t index) { resolution_ = index; }

    /// Why the last reading or writing of any bitmap filter of this thread through the imaging library could
    /// not even begin.
    static missing_library MissingLibrary() noexcept;

    using oFILTER::SetProgressInd;
    void SetProgressInd(oPROGRESSBM* progress);

protected:
    /// A format that the imaging library reads under this number, at first in this resolution.
    oBMFILTER(const format_identity& format, std::uint16_t library_format, std::uint32_t resolution = 0)
        : oFILTER(format)
        , library_format_(library_format)
        , resolution_(resolution)
    {
    }

    /// Writes through the imaging library in one of its file formats.
    virtual oFILTER_STATUS ConvertBitmap(oDIB& in, vSTREAM& out, std::uint16_t format);
    /// Reads an image and puts what could be read of it onto `out` in the library's own stream form.
    oFILTER_STATUS StoreBitmap(vSTREAM& in, vSTREAM& out);
    std::uint32_t resolution() const { return resolution_; }

private:
    std::uint16_t library_format_ = 0;
    std::uint32_t resolution_ = 0;
};

} // namespace klv
