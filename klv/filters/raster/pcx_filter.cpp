#include "klv/filters/raster/pcx_filter.h"

#include "klv/base/byte_reader.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/streams/stream.h"

#include <array>
#include <span>

namespace klv {

namespace {

constexpr format_identity identity{.id = "PCX", .description_resource = 33010, .description = "PCX Bitmap"};

// The header of a PC Paintbrush file, as far as it tells the format.
constexpr std::size_t header_size = 128;
constexpr std::uint8_t manufacturer = 10;
constexpr std::uint8_t newest_version = 5;
constexpr std::uint8_t run_length_coding = 1;
constexpr std::size_t bytes_per_line_offset = 66;

bool is_pcx_header(std::span<const std::uint8_t> header)
{
    byte_reader fields(header);
    const bool known
        = fields.u8() == manufacturer && fields.u8() <= newest_version && fields.u8() == run_length_coding;
    fields.skip(1); // bits per pixel of a plane
    const int x_min = fields.u16le();
    const int y_min = fields.u16le();
    const int x_max = fields.u16le();
    const int y_max = fields.u16le();
    fields.seek(bytes_per_line_offset);
    return known && fields.u16le() != 0 && x_max - x_min >= 1 && y_max - y_min >= 1;
}

} // namespace

PCXFILTER::PCXFILTER()
    : oBMFILTER(identity, imaging::format_pcx)
{
}

oFILTER_STATUS PCXFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return Recognised(false);
    auto& stream = static_cast<vSTREAM&>(in);
    std::array<std::uint8_t, header_size> header{};
    const bool read = stream.ReadByteString(header.data(), header_size) == header_size;
    stream.MoveFromStart(0);
    return Recognised(read && is_pcx_header(header));
}

oFILTER_STATUS PCXFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_pcx);
}

} // namespace klv
