// Threads that convert at the same time, each with objects of its own, get what one thread gets.
#include "klv/base/memory.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/devices/display_bitmap.h"
#include "klv/devices/memory_device.h"
#include "klv/filters/bitmap_filter.h"
#include "klv/filters/filter_list.h"
#include "klv/filters/vector_filter.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/images/image.h"
#include "klv/images/image_cache.h"
#include "klv/metafiles/metafile.h"
#include "klv/rendering/render.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/wmf_drawing.h"
#include "tests/geometry/random_outlines.h"

#include <array>
#include <cstdlib>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using bytes = std::vector<std::uint8_t>;

constexpr int width = 120;
constexpr int height = 90;
const vRECT everything(0, 0, width, height);

constexpr std::array faces{"Arial", "Times New Roman", "Courier New", "Symbol", "No such face"};

void append(bytes& to, const bytes& more) { to.insert(to.end(), more.begin(), more.end()); }

bytes contents_of(vSTREAM& stream)
{
    bytes all(stream.Size());
    stream.MoveFromStart(0);
    stream.ReadPlain(all.data(), stream.Size());
    stream.MoveFromStart(0);
    return all;
}

bytes pixels_of(const oMEMDIB& bitmap)
{
    bytes all;
    for (int y = 0; y < bitmap.Height() && bitmap.HasPixels(); ++y) {
        const auto line = bitmap.line(y);
        all.insert(all.end(), line.begin(), line.end());
    }
    return all;
}

oMEMDIB drawn(vMETAFILE& picture)
{
    oMEMDIB bitmap(0);
    EXPECT_TRUE(render_bitmap(picture, {.width = width, .height = height, .samples = 2}, bitmap).ok());
    return bitmap;
}

// ---- Conversions; each is made from its number, and answers all that it came to

bytes windows_metafile(int n)
{
    if (n % 5 == 0)
        return test::drawing_of_everything();
    using enum wmf_function;
    auto file = test::wmf_builder().placeable(0, 0, 1000, 750, 1000).window(0, 0, 1000, 750);
    file.pen(n % 5, 5 + n, 0x2040FFU * static_cast<unsigned>(n)).brush(2, 0x00A000, n % 6);
    file.font(-80 - 7 * n, faces[static_cast<std::size_t>(n) % faces.size()], n * 100, n % 2 ? 400 : 700,
        n % 3 == 0);
    file.select(0).select(1).rectangle(100, 100, 400 + 10 * n, 400).add(ellipse, {700, 900, 300, 300});
    file.select(2).text_out("Number " + std::to_string(n), 200, 500);
    return file.build();
}

/// A Windows metafile, recognised by the list, as records and as pixels.
bytes metafile_to_pixels(int n)
{
    bytes file = windows_metafile(n);
    std::uint8_t* data = file.data();
    vMEMSTREAM in(&data, static_cast<std::uint32_t>(file.size()), vSTRING("picture.wmf"), 0);
    const oFILTERLIST filters;
    oFILTER* filter = nullptr;
    if (oFILTERLIST::GetFilter(&in, &filter) != oFILTER_METAFILE)
        return {};
    auto* const reader = static_cast<oLAFILTER*>(filter);
    reader->ReadingLevel(n % 2 ? oREADING_LEVEL::faithful : oREADING_LEVEL::documented);
    vMEMSTREAM records;
    vMETAFILE picture(records);
    if (reader->Convert(in, &picture) != oFILTER_OK)
        return {};
    bytes result = contents_of(records);
    append(result, pixels_of(drawn(picture)));
    return result;
}

vLINESPEC line(int n)
{
    return {static_cast<vLINETYPE>(1 + n % 5), vCOLOUR(200, static_cast<std::uint8_t>(10 * n), 0), 10 + 8 * n,
        vCORNER_ROUND, vDASH_ROUND, nullptr, n % 10, (n + 3) % 10};
}

vFILLSPEC fill(int n)
{
    constexpr std::array kinds{vFILL_SOLID, vFILL_LINEAR, vFILL_RADIAL};
    return {kinds[static_cast<std::size_t>(n) % kinds.size()],
        vCOLOUR(0, 90, static_cast<std::uint8_t>(12 * n)), vCOLOUR(255, 230, 0), vANGLE(9.0 * n),
        vFILL_WINDING, vPOINT()};
}

/// A drawing with arrows, dashes, graduations and text.
void record(vMETAFILE& picture, int n)
{
    picture.LineSpec(line(n));
    picture.FillSpec(fill(n));
    picture.DrawEllipse(vRECT(100, 100, 700, 500));
    picture.DrawRoundRect(vRECT(500, 300, 1100, 800), vSIZE(150, 100));
    picture.DrawLine(vPOINT(50, 50), vPOINT(1100, 600 + 10 * n));
    picture.DrawArc(vRECT(50, 400, 550, 780), vPOINT(550, 590), vPOINT(300, 400));
    picture.FontSpec(vFONTSPEC(faces[static_cast<std::size_t>(n) % faces.size()], vFONT_BOLD, 1000 + 100 * n,
        vREAL(1.0), 0, vFONT_CHARACTER_HEIGHT, vANGLE(5.0 * n)));
    picture.DrawTextOnLine(vSTRING("text " + std::to_string(n)), vPOINT(100, 700), nullptr);
    picture.LogicalExtents(0, 1200, 0, 900);
    picture.EndMetaFile();
}

/// A recorded picture, compressed, and what a surface of 256 colours shows of it.
bytes recording_to_palette(int n)
{
    vMEMSTREAM compressed;
    compressed.Compress(1);
    vMETAFILE picture(compressed);
    record(picture, n);
    bytes result = contents_of(compressed);
    vMEMDEVICE device(width, height);
    device.DrawMetafile(picture, everything);
    if (const BITMAPINFO* const dib = device.GetDIB()) {
        const auto* const start = reinterpret_cast<const std::uint8_t*>(dib);
        append(result,
            {start,
                start + sizeof(BITMAPINFOHEADER) + dib->bmiHeader.biClrUsed * sizeof(RGBQUAD)
                    + dib->bmiHeader.biSizeImage});
    }
    return result;
}

/// Booleans, outlines and smoothing, stored and drawn.
bytes shapes(int n)
{
    random_outlines outlines(static_cast<std::uint32_t>(n));
    vSHAPE united = outlines.shape(20, 1000);
    const vSHAPE other = outlines.shape(20, 1000);
    vSHAPE common = united;
    united.Union(other);
    common.Intersection(other);
    united.Expand(7, 5);
    common.Smooth();
    vMEMSTREAM stored;
    stored << united << common;
    bytes result = contents_of(stored);

    vMETAFILE picture;
    picture.FillSpec(fill(n));
    picture.LineSpec(line(n));
    picture.DrawShape(united);
    picture.FillSpec(fill(n + 1));
    picture.DrawShape(common);
    picture.LogicalExtents(0, 1000, 0, 1000);
    picture.EndMetaFile();
    append(result, pixels_of(drawn(picture)));
    return result;
}

struct raster_format {
    const char* name;
    int bits;
};
constexpr std::array<raster_format, 10> raster_formats{{{"a.bmp", 4}, {"a.gif", 8}, {"a.jpg", 24},
    {"a.png", 24}, {"a.tif", 1}, {"a.tif", 24}, {"a.png", 8}, {"a.pcx", 8}, {"a.tga", 24}, {"a.gif", 4}}};

/// A drawing in a raster format, written and read back by the filters of the list.
bytes pixels_to_file_and_back(int n)
{
    vMETAFILE picture;
    record(picture, n);
    const raster_format& format = raster_formats[static_cast<std::size_t>(n) % raster_formats.size()];
    oMEMDIB bitmap(drawn(picture), 0, 0, format.bits, 0, 1);
    vMEMSTREAM file{vSTRING(format.name)};
    const oFILTERLIST filters;
    vMEMSTREAM by_name{vSTRING(std::string(format.name).substr(1))};
    oFILTER* filter = nullptr;
    oFILTERLIST::GetFilter(&by_name, &filter);
    if (!filter || static_cast<oBMFILTER*>(filter)->Convert(static_cast<oDIB&>(bitmap), file) != oFILTER_OK)
        return {};
    bytes result = contents_of(file);
    oMEMDIB back(0);
    if (oFILTERLIST::GetFilter(&file, &filter) == oFILTER_BITMAP)
        static_cast<oBMFILTER*>(filter)->Convert(file, back);
    append(result, pixels_of(back));
    return result;
}

/// A bitmap and a picture as images, drawn through the cache, tiled, and drawn again.
bytes cached_images(int n)
{
    const vIMAGECACHE handle;
    vMETAFILE picture;
    record(picture, n);
    oMEMDIB bitmap = drawn(picture);
    oDIBIMAGE first(bitmap);
    oMFIMAGE second(picture);
    const vRECT place(n, 5, n + 60, 50);
    const vRECT elsewhere(5, 40, 100, 60 + n);
    oDIBCONTEXT reduced(width, height, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    oDIBCONTEXT moved(width, height, &elsewhere, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    vDISPLAYBMP target(width, height, 0, 24);
    for (int i = 0; i < 2; ++i) {
        first.Draw(target, reduced);
        second.Draw(target, moved);
    }
    const vRECT tile(0, 0, 15, 10);
    const oDIBCONTEXT small(width, height, &tile, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    first.Tile(target, small, vRECTSHAPE(vRECT(60, 10, 110, 40)), vPOINT(), vTILE_ROWS_SHIFTED);
    vIMAGECACHE::Clear(first.Id());
    BITMAPINFO* const packed = target.CopyIntoDIB();
    const oMEMDIB seen(packed, 0);
    vMemFree(packed);
    return pixels_of(seen);
}

constexpr std::array conversions{
    metafile_to_pixels, recording_to_palette, shapes, pixels_to_file_and_back, cached_images};
constexpr int variants = 20;
constexpr int distinct = variants * static_cast<int>(conversions.size());

bytes convert(int i)
{
    const auto kinds = static_cast<int>(conversions.size());
    return conversions[static_cast<std::size_t>(i % kinds)](i / kinds % variants);
}

class Threads : public test::imaging_test { };

TEST_F(Threads, ConvertAsOneThreadDoes)
{
    constexpr int threads = 8;
    const int count = std::getenv("KLV_LONG") ? 10 * distinct : distinct;
    std::vector<bytes> results(static_cast<std::size_t>(count));
    {
        // Nothing has been used before: what is made once is made here, by several at a time.
        std::latch start(threads);
        std::vector<std::jthread> pool;
        for (int t = 0; t < threads; ++t)
            pool.emplace_back([&, t] {
                start.arrive_and_wait();
                for (int i = t; i < count; i += threads)
                    results[static_cast<std::size_t>(i)] = convert(i);
            });
    }
    for (int i = 0; i < distinct; ++i) {
        const bytes expected = convert(i);
        EXPECT_FALSE(expected.empty()) << i;
        for (int same = i; same < count; same += distinct)
            EXPECT_TRUE(results[static_cast<std::size_t>(same)] == expected) << same;
    }
}

} // namespace
} // namespace klv
