#include "klv/devices/memory_device.h"
#include "klv/filters/wmf/wmf_filter.h"
#include "klv/metafiles/metafile.h"
#include "klv/streams/memory_stream.h"

#include <cstddef>
#include <cstdint>

// Any bytes as a Windows metafile, at both reading levels; what was read is drawn on a small device.

namespace {

void convert_and_draw(const std::uint8_t* data, std::size_t size, klv::oREADING_LEVEL level)
{
    auto* bytes = const_cast<std::uint8_t*>(data); // the stream is only read
    klv::vMEMSTREAM stream(&bytes, static_cast<std::uint32_t>(size), klv::vSTRING("fuzz.wmf"), 0);
    klv::vMETAFILE picture;
    klv::WMFFILTER filter;
    filter.ReadingLevel(level);
    filter.CheckStream(stream);
    filter.Convert(stream, &picture);

    picture.TextReplay(klv::vTEXTREPLAY::as_text);
    klv::vMEMDEVICE device(64, 48);
    device.DrawMetafile(picture, klv::vRECT(0, 0, 64, 48));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    convert_and_draw(data, size, klv::oREADING_LEVEL::documented);
    convert_and_draw(data, size, klv::oREADING_LEVEL::faithful);
    return 0;
}
