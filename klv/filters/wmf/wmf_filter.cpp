#include "klv/filters/wmf/wmf_filter.h"

#include "klv/filters/wmf/wmf_decoder.h"
#include "klv/formats/wmf_records.h"
#include "klv/streams/stream.h"

#include <array>
#include <new>

namespace klv {
namespace {

constexpr format_identity identity{
    .id = "WMF", .description_resource = 33002, .description = "Windows Metafile"};

std::uint32_t read_u32(vSTREAM& stream)
{
    std::array<std::uint8_t, 4> bytes{};
    stream.ReadPlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return byte_reader(bytes).u32le();
}

} // namespace

WMFFILTER::WMFFILTER()
    : oLAFILTER(identity)
{
}

oFILTER_STATUS WMFFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return SetStatus(oFILTER_FAILED);
    auto& stream = static_cast<vSTREAM&>(in);
    const bool placeable = read_u32(stream) == wmf_placeable_key;
    stream.MoveFromStart(placeable ? wmf_placeable_header_size : 0);

    std::array<std::uint8_t, wmf_header_size> bytes{};
    const auto got = stream.ReadPlain(bytes.data(), wmf_header_size);
    wmf_header header;
    byte_reader reader(bytes);
    wmf_read(reader, header);
    const bool accepted = got == wmf_header_size && header.valid();
    stream.MoveFromStart(0);
    return SetStatus(accepted ? oFILTER_OK : oFILTER_FAILED);
}

oFILTER_STATUS WMFFILTER::Convert(vARCHIVE& in, vMETAFILE* picture)
{
    SetStatus(oFILTER_FAILED);
    if (!in.IsStream() || !picture)
        return oFILTER_FAILED;
    try {
        wmf_decoder decoder(*picture, faithful() ? faithful_reading : documented_reading, progress());
        return SetStatus(decoder.read(static_cast<vSTREAM&>(in)));
    } catch (const std::bad_alloc&) {
        return SetStatus(oFILTER_NO_MEMORY);
    }
}

} // namespace klv
