#include "klv/filters/raster/bmp_filter.h"

#include "klv/filters/raster/imaging_library.h"
#include "klv/streams/stream.h"

#include <array>

namespace klv {

namespace {

constexpr format_identity identity{
    .id = "BMP", .description_resource = 33006, .description = "Windows Bitmap", .other_extensions = {"DIB"}};
constexpr std::uint32_t greatest_size_without_image = 40;

/// A copied file counts as two steps of this progress.
constexpr std::uint32_t copy_scale = 1000;
constexpr std::uint32_t copy_step = 500;

} // namespace

DIBFILTER::DIBFILTER()
    : oBMFILTER(identity, imaging::format_bmp)
{
}

oFILTER_STATUS DIBFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return SetStatus(oFILTER_FAILED);
    auto& stream = static_cast<vSTREAM&>(in);
    std::array<std::uint8_t, 2> start{};
    stream.MoveFromStart(0);
    const bool read
        = stream.ReadByteString(start.data(), start.size()) == static_cast<std::int32_t>(start.size());
    const bool mine
        = read && start[0] == 'B' && start[1] == 'M' && stream.Size() > greatest_size_without_image;
    return SetStatus(mine ? oFILTER_OK : oFILTER_FAILED);
}

oFILTER_STATUS DIBFILTER::Convert(vARCHIVE* in, vARCHIVE* out)
{
    if (!in || !out)
        return SetStatus(oFILTER_READ_ERROR);
    if (CheckStream(*in) == oFILTER_FAILED || !out->IsStream())
        return SetStatus(oFILTER_FAILED);
    auto& source = static_cast<vSTREAM&>(*in);
    auto& target = static_cast<vSTREAM&>(*out);
    source.MoveFromStart(0);
    if (progress()) {
        progress()->oFullScale(copy_scale);
        progress()->oStart();
        progress()->oIncrement(copy_step);
    }
    target = source;
    if (progress())
        progress()->oIncrement(copy_step);
    return SetStatus(source.Size() == target.Size() ? oFILTER_OK : oFILTER_WRITE_ERROR);
}

oFILTER_STATUS DIBFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_bmp);
}

} // namespace klv
