#include "klv/filters/raster/png_filter.h"

#include "klv/core/resource_id.h"
#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33013;

} // namespace

PNGFILTER::PNGFILTER()
    : oBMFILTER(imaging::format_png)
{
}

oFILTER_STATUS PNGFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

vSTRING PNGFILTER::GetID() const { return vSTRING("PNG"); }

vSTRING PNGFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

oFILTER_STATUS PNGFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_png);
}

} // namespace klv
