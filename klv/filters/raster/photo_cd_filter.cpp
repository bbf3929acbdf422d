#include "klv/filters/raster/photo_cd_filter.h"

namespace klv {

namespace {

using namespace std::string_view_literals;

constexpr format_identity identity{.id = "PCD",
    .description_resource = 33014,
    .description = "Photo CD Bitmap ",
    .signature = {2048, "PCD_IPI"sv}};

} // namespace

PCDFILTER::PCDFILTER()
    : multi_resolution_filter(identity, imaging::format_photo_cd)
{
}

} // namespace klv
