#include "klv/filters/raster/flashpix_filter.h"

namespace klv {

namespace {

using namespace std::string_view_literals;

constexpr format_identity identity{.id = "FPX",
    .description_resource = 33015,
    .description = "Flash Pix Bitmap",
    .signature = {0, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv}};

} // namespace

FPXFILTER::FPXFILTER()
    : multi_resolution_filter(identity, imaging::format_flashpix)
{
}

} // namespace klv
