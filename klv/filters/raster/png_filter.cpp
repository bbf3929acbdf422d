#include "klv/filters/raster/png_filter.h"

#include "klv/filters/raster/imaging_library.h"

namespace klv {

namespace {

using namespace std::string_view_literals;

constexpr format_identity identity{.id = "PNG",
    .description_resource = 33013,
    .description = "Bitmap PNG",
    .signature = {0, "\x89PNG\r\n\x1A\n"sv}};

} // namespace

PNGFILTER::PNGFILTER()
    : oBMFILTER(identity, imaging::format_png)
{
}

oFILTER_STATUS PNGFILTER::CheckStream(vARCHIVE&) { return LastStatus(); }

oFILTER_STATUS PNGFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_png);
}

} // namespace klv
