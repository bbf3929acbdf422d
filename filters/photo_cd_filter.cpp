#include "filters/photo_cd_filter.h"

#include "core/resource_id.h"
#include "filters/imaging_library.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33014;
constexpr std::uint32_t first_resolution = 3;

} // namespace

PCDFILTER::PCDFILTER()
    : oBMFILTER(imaging::format_photo_cd, first_resolution)
{
}

oFILTER_STATUS PCDFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

vSTRING PCDFILTER::GetID() const { return vSTRING("PCD"); }

vSTRING PCDFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

std::uint32_t PCDFILTER::GetResolutionCount(vSTRING file_name)
{
    return resolutions_.read(file_name, imaging::format_photo_cd);
}

oFILTER_STATUS PCDFILTER::Convert(oDIB&, vSTREAM&) { return SetStatus(oFILTER_UNSUPPORTED); }

} // namespace klv
