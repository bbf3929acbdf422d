#include "klv/filters/raster/targa_filter.h"

#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

using namespace std::string_view_literals;

constexpr format_identity identity{.id = "TGA",
    .description_resource = 33009,
    .description = "Targa Bitmap",
    .other_extensions = {"ICB", "VDA", "VST"},
    .signature = {-18, "TRUEVISION-XFILE.\0"sv}};

} // namespace

TGAFILTER::TGAFILTER()
    : oBMFILTER(identity, imaging::format_targa)
{
}

oFILTER_STATUS TGAFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

int TGAFILTER::ExportColourDepths(int depth) const
{
    return (depth == 8 || depth == 24) && oBMFILTER::ExportColourDepths(depth);
}

oFILTER_STATUS TGAFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_targa);
}

} // namespace klv
