#include "klv/filters/raster/jpeg_filter.h"

#include "klv/filters/raster/imaging_library.h"
#include "klv/streams/stream.h"

#include <array>

namespace klv {

namespace {

constexpr format_identity identity{.id = "JPG",
    .description_resource = 33008,
    .description = "JPEG Bitmap ",
    .other_extensions = {"JPEG", "JPE", "JFIF"}};
constexpr std::array<std::uint8_t, 2> start_of_image{0xFF, 0xD8};

} // namespace

JPEGFILTER::JPEGFILTER()
    : oBMFILTER(identity, imaging::format_jpeg)
{
}

oFILTER_STATUS JPEGFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return Recognised(false);
    auto& stream = static_cast<vSTREAM&>(in);
    const std::uint32_t position = stream.CurrentPos();
    std::array<std::uint8_t, start_of_image.size()> start{};
    stream.ReadByteString(start.data(), static_cast<std::uint32_t>(start.size()));
    stream.MoveFromStart(position);
    return Recognised(start == start_of_image);
}

int JPEGFILTER::ExportColourDepths(int depth) const
{
    return depth == 24 && oBMFILTER::ExportColourDepths(depth);
}

oFILTER_STATUS JPEGFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_jpeg);
}

} // namespace klv
