#include "filters/flashpix_filter.h"

#include "core/resource_id.h"
#include "filters/imaging_library.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33015;
constexpr std::uint32_t first_resolution = 3;

} // namespace

FPXFILTER::FPXFILTER()
    : oBMFILTER(imaging::format_flashpix, first_resolution)
{
}

oFILTER_STATUS FPXFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

vSTRING FPXFILTER::GetID() const { return vSTRING("FPX"); }

vSTRING FPXFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

std::uint32_t FPXFILTER::GetResolutionCount(vSTRING file_name)
{
    return resolutions_.read(file_name, imaging::format_flashpix);
}

oFILTER_STATUS FPXFILTER::Convert(oDIB&, vSTREAM&) { return SetStatus(oFILTER_UNSUPPORTED); }

} // namespace klv
