#include "klv/base/byte_writer.h"
#include "klv/base/memory.h"
#include "klv/bitmaps/detail/dib_stream.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/streams/memory_stream.h"

#include "tests/bitmaps/dib_text.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::dib_of;
using test::picture;
using test::text_of;

/// A stored bitmap, field by field.
struct stored_dib {
    std::uint32_t header_size = 40;
    std::int32_t width = 2;
    std::int32_t height = 2;
    int bits = 24;
    std::uint32_t compression = BI_RGB;
    std::uint32_t image_size = 0;
    std::int32_t pixels_per_metre = 3840;
    std::uint32_t colours = 0;
    std::vector<std::uint8_t> rest{}; ///< masks, colour table, pixels
};

void put(vSTREAM& stream, const stored_dib& dib, bool file_header = false)
{
    byte_writer out;
    if (file_header) {
        out.text("BM");
        out.fill(12, 0x55);
    }
    out.u32le(dib.header_size);
    out.i32le(dib.width);
    out.i32le(dib.height);
    out.u16le(1);
    out.u16le(static_cast<std::uint16_t>(dib.bits));
    out.u32le(dib.compression);
    out.u32le(dib.image_size);
    out.i32le(dib.pixels_per_metre);
    out.i32le(dib.pixels_per_metre);
    out.u32le(dib.colours);
    out.u32le(0);
    out.bytes(dib.rest);
    stream.WritePlain(out.data(), static_cast<std::uint32_t>(out.size()));
    stream.MoveFromStart(0);
}

picture read(const stored_dib& dib, bool file_header = false)
{
    vMEMSTREAM stream;
    put(stream, dib, file_header);
    return text_of(oMEMDIB(stream, 0));
}

constexpr std::uint8_t two_colours[] = {0, 0, 0, 0, 255, 255, 255, 0};

std::vector<std::uint8_t> after_two_colours(std::initializer_list<int> pixels)
{
    std::vector<std::uint8_t> bytes(std::begin(two_colours), std::end(two_colours));
    for (const int byte : pixels)
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

TEST(DibStream, ReadsEveryKindOfPixels)
{
    const struct {
        const char* what;
        stored_dib dib;
        picture expected;
    } cases[] = {
        {"1 bit", {.bits = 1, .rest = after_two_colours({0x80, 0, 0, 0, 0x40, 0, 0, 0})}, {"#.", ".#"}},
        {"top-down", {.height = -2, .bits = 1, .rest = after_two_colours({0x80, 0, 0, 0, 0x40, 0, 0, 0})},
            {".#", "#."}},
        {"height 0 counts as 1", {.height = 0, .bits = 1, .rest = after_two_colours({0x80, 0, 0, 0})},
            {".#"}},
        {"4 bits with a short table",
            {.bits = 4, .colours = 2, .rest = after_two_colours({0x01, 0, 0, 0, 0x10, 0, 0, 0})},
            {".#", "#."}},
        {"indices past the table are black",
            {.width = 3, .height = 1, .bits = 8, .colours = 2, .rest = after_two_colours({1, 2, 255, 0})},
            {".##"}},
        {"run lengths of 8 bits: a run, pixels, a jump, a new row",
            {.width = 4,
                .bits = 8,
                .compression = BI_RLE8,
                .colours = 2,
                .rest = after_two_colours({2, 1, 0, 0, 0, 3, 1, 0, 1, 0, 0, 1})},
            {".#.#", "..##"}},
        {"run lengths of 4 bits: pixels, a new row, a jump, a run",
            {.width = 4,
                .bits = 4,
                .compression = BI_RLE4,
                .colours = 2,
                .rest = after_two_colours({0, 4, 0x10, 0x10, 0, 0, 0, 2, 1, 0, 2, 0x11, 0, 1})},
            {"#..#", ".#.#"}},
        {"16 bits, 5-5-5",
            {.width = 3, .height = 1, .bits = 16, .rest = {0x00, 0x7C, 0xE0, 0x03, 0x1F, 0x00, 0, 0}},
            {"rgb"}},
        {"16 bits, masks 5-6-5",
            {.width = 2,
                .height = 1,
                .bits = 16,
                .compression = BI_BITFIELDS,
                .rest = {0, 0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0, 0, 0, 0x00, 0xF8, 0xE0, 0x07}},
            {"rg"}},
        {"32 bits", {.width = 2, .height = 1, .bits = 32, .rest = {255, 0, 0, 77, 0, 0, 255, 77}}, {"br"}},
        {"32 bits, red lowest",
            {.width = 1,
                .height = 1,
                .bits = 32,
                .compression = BI_BITFIELDS,
                .rest = {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0}},
            {"r"}},
        {"a number of colours left over above 8 bits",
            {.width = 1, .height = 1, .colours = 0xFFFFFFFF, .rest = {0, 255, 0, 0}}, {"g"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(read(c.dib), c.expected) << c.what;
        EXPECT_EQ(read(c.dib, true), c.expected) << c.what << " with a file header";
    }
}

TEST(DibStream, RefusesHeadersWithoutABitmap)
{
    const struct {
        const char* what;
        stored_dib dib;
    } cases[] = {
        {"other header size", {.header_size = 12}},
        {"no width", {.width = 0}},
        {"negative width", {.width = -5}},
        {"height without magnitude", {.height = INT32_MIN}},
        {"table cut short", {.bits = 8, .rest = {1, 2, 3}}},
        {"table beyond 64 KiB", {.bits = 8, .colours = 20000, .rest = std::vector<std::uint8_t>(80000)}},
        {"a gigabyte from nothing", {.width = 20000, .height = 20000, .bits = 24}},
        {"runs that cannot fill it",
            {.width = 60000,
                .height = 60000,
                .bits = 8,
                .compression = BI_RLE8,
                .colours = 2,
                .rest = after_two_colours({255, 1, 0, 1})}},
        {"more bytes than 32 bits count", {.width = INT32_MAX, .height = INT32_MAX, .bits = 32}},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream;
        put(stream, c.dib);
        const oMEMDIB dib(stream, 0);
        EXPECT_EQ(dib.Width(), 0) << c.what;
        EXPECT_FALSE(dib.HasPixels()) << c.what;
    }
}

TEST(DibStream, KeepsTheRowsOfACutOffBitmap)
{
    vMEMSTREAM stream;
    put(stream, {.width = 1, .height = 3, .rest = {255, 255, 255, 0}});
    const oMEMDIB dib(stream, 0);
    EXPECT_EQ(text_of(dib), (picture{"#", "#", "."}));
    EXPECT_EQ(dib.BytesRead(), 4U);
}

TEST(DibStream, RebuildsTheHeader)
{
    const struct {
        std::int32_t stored, dpi;
    } resolutions[] = {{3840, 96}, {0, 150}, {39, 150}, {-4000, 150}, {1280040, 150}, {1280000, 32000}};
    for (const auto& r : resolutions) {
        vMEMSTREAM stream;
        put(stream,
            {.bits = 4,
                .pixels_per_metre = r.stored,
                .colours = 2,
                .rest = after_two_colours({0, 0, 0, 0, 0, 0, 0, 0})});
        const oMEMDIB dib(stream, 0);
        oDIBHEADER header;
        dib.GetHeader(header);
        EXPECT_EQ(header.HorzDPI(), r.dpi) << r.stored;
        EXPECT_EQ(header.ColoursUsed(), 16U);
        EXPECT_EQ(header.ColourModel(), oMODEL_PALETTE4);
        EXPECT_EQ(dib.GetPalette(nullptr), 2);
    }
}

TEST(DibStream, WritesTheTableThatItsHeaderPromises)
{
    // A palette of two colours in a bitmap of 8 bits: readers expect 256.
    oMEMDIB dib(2, 1, 8, oMODEL_PALETTE8, 0);
    const RGBQUAD colours[] = {{0, 0, 255, 0}, {255, 0, 0, 0}};
    dib.SetPalette(oDIBPALETTE(colours, 2));
    dib.line(0)[1] = 1;
    vMEMSTREAM stream;
    dib >> stream;
    EXPECT_EQ(stream.Size(), 40U + 256 * 4 + 4);
    stream.MoveFromStart(0);
    EXPECT_EQ(text_of(oMEMDIB(stream, 0)), (picture{"rb"}));
}

TEST(DibStream, EveryDepthReadsBackFromEitherClass)
{
    std::mt19937 random(7);
    for (const int bits : {1, 4, 8, 24}) {
        for (const int compress : {0, 1}) {
            oMEMDIB dib(61, 23, bits, model_of_bits(static_cast<unsigned>(bits)), 0);
            std::vector<RGBQUAD> colours(bits <= 8 ? std::size_t{1} << bits : 0);
            for (auto& c : colours)
                c = {
                    static_cast<BYTE>(random()), static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0};
            if (!colours.empty())
                dib.SetPalette(oDIBPALETTE(colours.data(), static_cast<std::uint16_t>(colours.size())));
            for (int y = 0; y < dib.Height(); ++y)
                for (auto& byte : dib.line(y).first(static_cast<std::size_t>(61 * bits / 8)))
                    byte = static_cast<std::uint8_t>(y / 3); // regular, so that compression pays
            const oSTREAMDIB streamed(dib, 0);
            for (const oDIB* source : {static_cast<const oDIB*>(&dib), static_cast<const oDIB*>(&streamed)}) {
                vMEMSTREAM stream;
                stream.Compress(compress);
                *source >> stream;
                stream.MoveFromStart(0);
                const oMEMDIB in_memory(stream, 0);
                EXPECT_EQ(stream.CurrentPos(), stream.Size()) << bits << " bits, compress " << compress;
                stream.MoveFromStart(0);
                const oSTREAMDIB in_stream(stream, 0);
                EXPECT_EQ(text_of(in_memory), text_of(dib)) << bits << " bits, compress " << compress;
                EXPECT_EQ(text_of(in_stream), text_of(dib)) << bits << " bits, compress " << compress;
                for (int y = 0; y < dib.Height(); ++y)
                    EXPECT_TRUE(std::ranges::equal(in_memory.line(y), std::as_const(dib).line(y)));
            }
        }
    }
}

TEST(DibStream, PixelsThatDoNotCompressComeBackToo)
{
    std::mt19937 random(11);
    oMEMDIB dib(50, 20, 24, oMODEL_RGB24, 0);
    for (int y = 0; y < dib.Height(); ++y)
        for (auto& byte : dib.line(y))
            byte = static_cast<std::uint8_t>(random());
    vMEMSTREAM stream;
    stream.Compress(1);
    dib >> stream;
    stream.MoveFromStart(0);
    const oMEMDIB back(stream, 0);
    for (int y = 0; y < dib.Height(); ++y)
        EXPECT_TRUE(std::ranges::equal(back.line(y), std::as_const(dib).line(y))) << y;
}

TEST(DibStream, DifferencesCarryAllButThreeBytesABlock)
{
    for (const std::size_t size : {0U, 3U, 300U, 11997U, 12000U, 12003U, 24000U, 30000U}) {
        std::vector<std::uint8_t> pixels(size);
        std::mt19937 random(5);
        for (auto& byte : pixels)
            byte = static_cast<std::uint8_t>(random());
        std::vector<std::uint8_t> coded(size, 1);
        std::vector<std::uint8_t> decoded(size, 0xEE);
        encode_differences(pixels, coded);
        decode_differences(coded, decoded);
        const std::size_t carried = size - size / 12000 * 3;
        EXPECT_TRUE(std::equal(
            pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(carried), decoded.begin()))
            << size;
        for (std::size_t i = carried; i < size; ++i)
            EXPECT_EQ(decoded[i], 0xEE) << size << " at " << i;
    }
}

TEST(DibStream, DifferencesBeginABlockWithTheLastPixelOfTheOneBefore)
{
    std::vector<std::uint8_t> pixels(12003);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i / 3 % 100);
    std::vector<std::uint8_t> coded(pixels.size());
    encode_differences(pixels, coded);
    EXPECT_EQ(coded[0], pixels[0]);
    EXPECT_EQ(coded[3], 1);
    EXPECT_EQ(coded[12000], pixels[11997]); // pixel 3999 again
}

TEST(DibStream, RunningOutOfMemoryLeavesAnEmptyBitmap)
{
    vMEMSTREAM stream;
    put(stream, {.width = 8, .height = 8, .bits = 8, .rest = std::vector<std::uint8_t>(1024 + 64, 1)});
    int failures = 0;
    for (std::uint64_t n = 0; n < 12; ++n) {
        stream.MoveFromStart(0);
        vMemFailAfter(n);
        const oMEMDIB dib(stream, 0);
        vMemNeverFail();
        EXPECT_TRUE(dib.Width() == 8 || dib.Width() == 0);
        if (dib.Width() == 0) {
            ++failures;
            EXPECT_FALSE(dib.HasPixels());
        }
    }
    EXPECT_GE(failures, 2);
}

} // namespace
} // namespace klv
