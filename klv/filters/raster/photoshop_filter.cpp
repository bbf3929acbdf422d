#include "klv/filters/raster/photoshop_filter.h"

#include "klv/core/resource_id.h"
#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33016;

} // namespace

PSDFILTER::PSDFILTER()
    : oBMFILTER(imaging::format_photoshop)
{
}

oFILTER_STATUS PSDFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

int PSDFILTER::ExportColourDepths(int depth) const
{
    return (depth == 8 || depth == 24) && oBMFILTER::ExportColourDepths(depth);
}

vSTRING PSDFILTER::GetID() const { return vSTRING("PSD"); }

vSTRING PSDFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

oFILTER_STATUS PSDFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_photoshop);
}

} // namespace klv
