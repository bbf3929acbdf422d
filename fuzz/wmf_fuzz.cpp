#include <cstddef>
#include <cstdint>

#include "filters/wmf_filter.h"
#include "metafiles/metafile.h"
#include "streams/memory_stream.h"

// Any bytes as a Windows metafile, at both reading levels.

namespace {

void convert(const std::uint8_t* data, std::size_t size, klv::oREADING_LEVEL level)
{
    auto* bytes = const_cast<std::uint8_t*>(data); // the stream is only read
    klv::vMEMSTREAM stream(&bytes, static_cast<std::uint32_t>(size), klv::vSTRING("fuzz.wmf"), 0);
    klv::vMETAFILE picture;
    klv::WMFFILTER filter;
    filter.ReadingLevel(level);
    filter.CheckStream(stream);
    filter.Convert(stream, &picture);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    convert(data, size, klv::oREADING_LEVEL::documented);
    convert(data, size, klv::oREADING_LEVEL::faithful);
    return 0;
}
