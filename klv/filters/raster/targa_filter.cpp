#include "klv/filters/raster/targa_filter.h"

#include "klv/core/resource_id.h"
#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

constexpr std::uint16_t description_resource = 33009;

} // namespace

TGAFILTER::TGAFILTER()
    : oBMFILTER(imaging::format_targa)
{
}

oFILTER_STATUS TGAFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

int TGAFILTER::ExportColourDepths(int depth) const
{
    return (depth == 8 || depth == 24) && oBMFILTER::ExportColourDepths(depth);
}

vSTRING TGAFILTER::GetID() const { return vSTRING("TGA"); }

vSTRING TGAFILTER::GetDescription() const { return vSTRING(vRESID(description_resource)); }

oFILTER_STATUS TGAFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_targa);
}

} // namespace klv
