#include "klv/filters/raster/flashpix_filter.h"

#include "klv/core/resource_id.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33015;

} // namespace

FPXFILTER::FPXFILTER()
    : multi_resolution_filter(imaging::format_flashpix)
{
}

vSTRING FPXFILTER::GetID() const { return vSTRING("FPX"); }

vSTRING FPXFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

} // namespace klv
