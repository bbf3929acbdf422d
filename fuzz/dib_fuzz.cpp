// Stored bitmaps: whatever is read has rows that can be reached, and is read back as it was written.
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/bitmaps/tile_info.h"
#include "klv/core/rect.h"
#include "klv/geometry/matrix.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace klv;

namespace {

/// Bitmaps beyond this are read, but not turned and converted, so that a run stays short.
constexpr std::uint32_t handled_bytes = 1 << 20;
constexpr int longest_turned_side = 200;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void write_and_read_back(const oMEMDIB& dib)
{
    vMEMSTREAM stream;
    dib >> stream;
    stream.MoveFromStart(0);
    const oMEMDIB back(stream, 0);
    require(back.Width() == dib.Width() && back.Height() == dib.Height());
    require(back.ColourDepth() == dib.ColourDepth());
    for (std::int32_t y = 0; y < dib.Height(); ++y)
        require(std::ranges::equal(back.line(y), dib.line(y)));
}

void use(const oMEMDIB& dib)
{
    const vRECT whole(0, 0, dib.Width(), dib.Height());
    oMATRIX matrix;
    matrix.Rotate(0.5, 0, 0);
    const oMEMDIB turned(dib, whole, whole, nullptr, &matrix, oMODEL_RGB24, vTILEINFO(), longest_turned_side);
    for (const int bits : {1, 4, 8, 24})
        require(oMEMDIB(dib, 0, 0, bits, 1, 0).HasPixels() == dib.HasPixels());
    const oSTREAMDIB streamed(dib, 0);
    require(streamed.Width() == dib.Width());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::uint8_t> bytes(data, data + size);
    std::uint8_t* slot = bytes.data();
    vMEMSTREAM stream(&slot, static_cast<std::uint32_t>(size), vSTRING("fuzz"), 0);
    const oMEMDIB dib(stream, 0);
    require(dib.HasPixels() == (dib.Width() > 0));
    if (!dib.HasPixels() || dib.InfoHeader().biSizeImage > handled_bytes)
        return 0;
    write_and_read_back(dib);
    use(dib);
    return 0;
}
