// TIFF files, and EPS files with a preview: reading ends in an answer, costs no more than the file may claim,
// and gives the same bitmap from memory as from a file. Without the imaging module, so that only the own
// decoder runs.
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace klv;

namespace {

/// Bytes of a bitmap that a file may claim for nothing, and for each of its own.
constexpr std::uint64_t free_bytes = 16U << 20;
constexpr std::uint64_t bytes_for_one = 1024;

/// One input in so many is also read from a file, which is slow.
constexpr std::size_t read_from_files = 16;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void read_eps(vSTREAM& stream)
{
    EPSFILTER filter;
    const bool mine = filter.CheckStream(stream) == oFILTER_RECOGNISED;
    vMEMSTREAM text;
    oMEMDIB preview;
    const bool has_text = filter.Convert(stream, text) == oFILTER_OK;
    require(mine || !has_text);
    filter.Convert(stream, preview);
}

bool same_lines(const oMEMDIB& a, const oMEMDIB& b)
{
    if (a.Width() != b.Width() || a.Height() != b.Height() || a.ColourDepth() != b.ColourDepth())
        return false;
    for (std::int32_t y = 0; y < a.Height(); ++y)
        if (!std::ranges::equal(a.line(y), b.line(y)))
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::uint8_t> bytes(data, data + size);
    std::uint8_t* slot = bytes.data();
    vMEMSTREAM stream(&slot, static_cast<std::uint32_t>(size), vSTRING("fuzz"), 0);
    if (size > 0 && (data[0] == '%' || data[0] == 0xC5)) {
        read_eps(stream);
        return 0;
    }
    TIFFILTER filter;
    oMEMDIB dib;
    const auto status = filter.Convert(stream, dib);
    require(status != oFILTER_OK || dib.HasPixels());
    require(dib.InfoHeader().biSizeImage <= free_bytes + bytes_for_one * size);
    if (size % read_from_files != 0)
        return 0;
    vFILE file;
    file.WritePlain(data, static_cast<std::uint32_t>(size));
    file.MoveFromStart(0);
    oMEMDIB from_file;
    require(filter.Convert(file, from_file) == status);
    require(same_lines(dib, from_file));
    return 0;
}
