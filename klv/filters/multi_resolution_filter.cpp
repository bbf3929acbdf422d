#include "klv/filters/multi_resolution_filter.h"

#include "klv/filters/raster/imaging_library.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::uint32_t first_resolution = 3;

} // namespace

multi_resolution_filter::multi_resolution_filter(const format_identity& format, std::uint16_t library_format)
    : oBMFILTER(format, library_format, first_resolution)
    , format_(library_format)
{
}

oFILTER_STATUS multi_resolution_filter::CheckStream(vARCHIVE&) { return LastStatus(); }

std::uint32_t multi_resolution_filter::GetResolutionCount(vSTRING file_name)
{
    count_ = 0;
    const BMINTERFACE* const module = BMINTERFACE::get();
    std::uint32_t found = most_resolutions;
    if (module && module->EnumDimensions(file_name(), format_, sizes_.data(), &found) == imaging::imaging_ok)
        count_ = std::min(found, most_resolutions);
    return count_;
}

vSIZE multi_resolution_filter::GetResolution(std::uint32_t index)
{
    return index < count_ ? vSIZE(sizes_[index].width, sizes_[index].height) : vSIZE();
}

oFILTER_STATUS multi_resolution_filter::Convert(oDIB&, vSTREAM&) { return SetStatus(oFILTER_UNSUPPORTED); }

} // namespace klv
