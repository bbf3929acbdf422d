#include "klv/filters/raster/photoshop_filter.h"

#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

using namespace std::string_view_literals;

constexpr format_identity identity{.id = "PSD",
    .description_resource = 33016,
    .description = "Photoshop Bitmap",
    .signature = {0, "8BPS\0\1"sv}};

} // namespace

PSDFILTER::PSDFILTER()
    : oBMFILTER(identity, imaging::format_photoshop)
{
}

oFILTER_STATUS PSDFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

int PSDFILTER::ExportColourDepths(int depth) const
{
    return (depth == 8 || depth == 24) && oBMFILTER::ExportColourDepths(depth);
}

oFILTER_STATUS PSDFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_photoshop);
}

} // namespace klv
