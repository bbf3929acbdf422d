#include "klv/filters/raster/photo_cd_filter.h"

#include "klv/core/resource_id.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33014;

} // namespace

PCDFILTER::PCDFILTER()
    : multi_resolution_filter(imaging::format_photo_cd)
{
}

vSTRING PCDFILTER::GetID() const { return vSTRING("PCD"); }

vSTRING PCDFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

} // namespace klv
