// Any bytes as a GIF file: both ways of reading agree, and what was read comes back as it was after writing.
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/gif/gif_filter.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace klv;

namespace {

/// Larger images are read, but not converted and written, so that a run stays short.
constexpr std::uint32_t handled_bytes = 1 << 14;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void require_same_pixels(const oMEMDIB& one, const oMEMDIB& other)
{
    require(one.Width() == other.Width() && one.Height() == other.Height());
    require(one.ColourDepth() == other.ColourDepth());
    for (std::int32_t y = 0; y < one.Height(); ++y)
        require(std::ranges::equal(one.line(y), other.line(y)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto* bytes = const_cast<std::uint8_t*>(data); // the stream is only read
    vMEMSTREAM stream(&bytes, static_cast<std::uint32_t>(size), vSTRING("fuzz.gif"), 0);
    GIFFILTER filter;
    filter.CheckStream(stream);
    oMEMDIB dib;
    const oFILTER_STATUS status = filter.Convert(stream, dib);

    if (dib.InfoHeader().biSizeImage > handled_bytes)
        return 0;

    vMEMSTREAM stored;
    require(filter.Convert(&stream, &stored) == status);
    stored.MoveFromStart(0);
    const oMEMDIB from_store(stored, 0);
    require(from_store.HasPixels() == dib.HasPixels());
    if (!dib.HasPixels())
        return 0;
    require_same_pixels(from_store, dib);

    vMEMSTREAM written;
    require(filter.PrivateConvert(dib, written) == oFILTER_OK);
    oMEMDIB back;
    require(filter.Convert(written, back) == oFILTER_OK);
    require_same_pixels(back, dib);
    return 0;
}
