#include "klv/base/byte_writer.h"
#include "klv/filters/progress.h"
#include "klv/filters/raster/bmp_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::colours_of;
using BmpFilter = test::imaging_test;
using rows = std::vector<std::vector<int>>;

constexpr int red = 0xFF0000;
constexpr int white = 0xFFFFFF;

/// A bitmap file; what the header does not fix lies in `rest`.
struct bmp_file {
    std::uint32_t header_size = 40;
    int width = 2;
    int height = 2;
    int bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t colours = 0;
    std::int32_t pixels_per_metre = 0;
    std::vector<std::uint8_t> rest{}; ///< masks outside the header, colour table, pixels
    std::optional<std::uint32_t> pixel_offset{};
    std::vector<std::uint32_t> masks{}; ///< inside the header

    std::vector<std::uint8_t> bytes() const
    {
        byte_writer out;
        out.text("BM");
        out.fill(8);
        out.u32le(pixel_offset.value_or(0));
        out.u32le(header_size);
        if (header_size == 12) {
            out.u16le(static_cast<std::uint16_t>(width));
            out.u16le(static_cast<std::uint16_t>(height));
            out.u16le(1);
            out.u16le(static_cast<std::uint16_t>(bits));
        } else {
            byte_writer fields;
            fields.i32le(width);
            fields.i32le(height);
            fields.u16le(1);
            fields.u16le(static_cast<std::uint16_t>(bits));
            fields.u32le(compression);
            fields.u32le(0);
            fields.i32le(pixels_per_metre);
            fields.i32le(pixels_per_metre);
            fields.u32le(colours);
            fields.u32le(0);
            for (const std::uint32_t mask : masks)
                fields.u32le(mask);
            fields.fill(200);
            out.bytes(fields.span().first(std::min<std::size_t>(header_size - 4, fields.size())));
        }
        out.bytes(rest);
        return {out.span().begin(), out.span().end()};
    }
};

oFILTER_STATUS read(const std::vector<std::uint8_t>& file, oMEMDIB& dib)
{
    vMEMSTREAM stream(vSTRING("picture.bmp"));
    stream.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    DIBFILTER filter;
    return filter.Convert(stream, dib);
}

std::vector<std::uint8_t> black_white_then(std::initializer_list<int> pixels)
{
    std::vector<std::uint8_t> bytes{0, 0, 0, 0, 255, 255, 255, 0};
    for (const int byte : pixels)
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

TEST_F(BmpFilter, ReadsEveryVariant)
{
    const struct {
        const char* what;
        bmp_file file;
        int bits;
        rows expected;
    } cases[] = {
        {"24 bits", {.rest = {0, 0, 255, 255, 255, 255, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0}}, 24,
            {{0, red}, {red, white}}},
        {"top-down", {.height = -2, .rest = {0, 0, 255, 255, 255, 255, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0}}, 24,
            {{red, white}, {0, red}}},
        {"1 bit", {.bits = 1, .rest = black_white_then({0x80, 0, 0, 0, 0x40, 0, 0, 0})}, 1,
            {{0, white}, {white, 0}}},
        {"2 bits", {.height = 1, .bits = 2, .colours = 2, .rest = black_white_then({0x10, 0, 0, 0})}, 4,
            {{0, white}}},
        {"4 bits, fewer colours than the pixels' place allows",
            {.height = 1,
                .bits = 4,
                .colours = 2,
                .rest = black_white_then({9, 9, 9, 9, 0x01, 0, 0, 0}),
                .pixel_offset = 66},
            4, {{0, white}}},
        {"8 bits with a longer table than it has room for",
            {.height = 1,
                .bits = 8,
                .colours = 256,
                .rest = black_white_then({1, 0, 0, 0}),
                .pixel_offset = 62},
            8, {{white, 0}}},
        {"OS/2 1, colours of three bytes",
            {.header_size = 12, .height = 1, .bits = 1, .rest = {0, 0, 255, 255, 255, 255, 0x40, 0, 0, 0}}, 1,
            {{red, white}}},
        {"OS/2 2, short header",
            {.header_size = 16,
                .height = 1,
                .bits = 8,
                .rest =
                    [] {
                        std::vector<std::uint8_t> rest(1024 + 4, 255);
                        rest[1024] = 0;
                        rest[0] = rest[1] = 0;
                        return rest;
                    }()},
            8, {{red, white}}},
        {"OS/2 2, whole header", {.header_size = 64, .height = 1, .rest = {0, 0, 255, 0, 0, 0, 0, 0}}, 24,
            {{red, 0}}},
        {"run lengths",
            {.width = 4,
                .bits = 8,
                .compression = 1,
                .colours = 2,
                .rest = black_white_then({2, 1, 0, 0, 0, 3, 1, 0, 1, 0, 0, 1})},
            8, {{white, 0, white, 0}, {white, white, 0, 0}}},
        {"run lengths past the right edge",
            {.bits = 8,
                .compression = 1,
                .colours = 2,
                .rest = black_white_then({200, 1, 0, 0, 0, 5, 1, 1, 1, 1, 1, 0, 0, 1})},
            8, {{white, white}, {white, white}}},
        {"run lengths of 4 bits",
            {.bits = 4,
                .compression = 2,
                .colours = 2,
                .rest = black_white_then({2, 0x10, 0, 0, 1, 0x10, 0, 1})},
            4, {{white, 0}, {white, 0}}},
        {"16 bits", {.height = 1, .bits = 16, .rest = {0x00, 0x7C, 0xFF, 0x7F}}, 24, {{red, white}}},
        {"16 bits, masks after the header",
            {.height = 1,
                .bits = 16,
                .compression = 3,
                .rest = {0, 0xF8, 0, 0, 0xE0, 7, 0, 0, 0x1F, 0, 0, 0, 0x00, 0xF8, 0xFF, 0xFF}},
            24, {{red, white}}},
        {"32 bits, masks in the header",
            {.header_size = 108,
                .width = 1,
                .height = 1,
                .bits = 32,
                .compression = 3,
                .rest = {255, 0, 0, 9},
                .masks = {0xFF, 0xFF00, 0xFF0000}},
            24, {{red}}},
        {"32 bits, ten-bit channels",
            {.header_size = 56,
                .width = 1,
                .height = 1,
                .bits = 32,
                .compression = 3,
                .rest = {0, 0, 0xF0, 0x3F},
                .masks = {0x3FF00000, 0xFFC00, 0x3FF}},
            24, {{red}}},
        {"32 bits, newest header",
            {.header_size = 124, .width = 1, .height = 1, .bits = 32, .rest = {0, 0, 255, 0}}, 24, {{red}}},
    };
    for (const auto& c : cases) {
        oMEMDIB dib;
        EXPECT_EQ(read(c.file.bytes(), dib), oFILTER_OK) << c.what;
        EXPECT_EQ(dib.ColourDepth(), c.bits) << c.what;
        EXPECT_EQ(colours_of(dib), c.expected) << c.what;
    }
}

TEST_F(BmpFilter, RefusesWhatIsNoBitmap)
{
    const struct {
        const char* what;
        bmp_file file;
    } cases[] = {
        {"no width", {.width = 0}},
        {"height without magnitude", {.height = INT32_MIN}},
        {"header longer than the file", {.header_size = 20000}},
        {"facsimile code of OS/2", {.header_size = 64, .bits = 1, .compression = 3}},
        {"JPEG inside", {.compression = 4}},
        {"odd depth", {.bits = 7}},
        {"run lengths of 24 bits", {.compression = 1}},
        {"masks cut off", {.bits = 16, .compression = 3, .rest = {0, 0, 0, 0}}},
        {"a gigabyte from nothing", {.width = 30000, .height = 30000}},
        {"runs that cannot fill it", {.width = 60000, .height = 60000, .bits = 8, .compression = 1}},
    };
    for (const auto& c : cases) {
        oMEMDIB dib;
        EXPECT_EQ(read(c.file.bytes(), dib), oFILTER_UNSUPPORTED) << c.what;
        EXPECT_FALSE(dib.HasPixels()) << c.what;
    }
}

TEST_F(BmpFilter, KeepsTheRowsOfACutOffFileAndFails)
{
    oMEMDIB dib;
    EXPECT_EQ(read(bmp_file{.width = 1, .rest = {0, 0, 255, 0, 1}}.bytes(), dib), oFILTER_FAILED);
    EXPECT_EQ(colours_of(dib), (rows{{0}, {red}}));
}

TEST_F(BmpFilter, WritesTheSimplestForm)
{
    oMEMDIB dib(2, 2, 1, oMODEL_PALETTE1, 0);
    ASSERT_TRUE(dib.SetHeader(oDIBHEADER(2, 2, 96, 96, oMODEL_PALETTE1)));
    const RGBQUAD colours[] = {{0, 0, 0, 0}, {0, 0, 255, 0}};
    dib.SetPalette(oDIBPALETTE(colours, 2));
    dib.line(0)[0] = 0x40;
    vMEMSTREAM out;
    DIBFILTER filter;
    ASSERT_EQ(filter.Convert(dib, out), oFILTER_OK);
    const std::vector<std::uint8_t> expected{'B', 'M', 70, 0, 0, 0, 0, 0, 0, 0, 62, 0, 0, 0, 40, 0, 0, 0, 2,
        0, 0, 0, 2, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0xC4, 0x0E, 0, 0, 0xC4, 0x0E, 0, 0, 2, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0x40, 0, 0, 0, 0, 0, 0, 0};
    std::vector<std::uint8_t> written(out.Size());
    out.MoveFromStart(0);
    out.ReadPlain(written.data(), out.Size());
    EXPECT_EQ(written, expected);
    for (const int bits : {4, 8, 24}) {
        const oMEMDIB deeper(dib, 0, 0, bits, 0, 0);
        oMEMDIB source(deeper);
        vMEMSTREAM stream;
        ASSERT_EQ(filter.Convert(source, stream), oFILTER_OK);
        oMEMDIB back;
        ASSERT_EQ(filter.Convert(stream, back), oFILTER_OK);
        EXPECT_EQ(back.ColourDepth(), bits);
        EXPECT_EQ(colours_of(back), colours_of(dib)) << bits;
    }
}

TEST_F(BmpFilter, RecognisesAndCopiesFiles)
{
    DIBFILTER filter;
    const auto file = bmp_file{.width = 1, .height = 1, .rest = {1, 2, 3, 0}}.bytes();
    vMEMSTREAM in;
    in.WritePlain(file.data(), 41);
    EXPECT_EQ(filter.CheckStream(in), oFILTER_OK);
    vMEMSTREAM too_short;
    too_short.WritePlain(file.data(), 40);
    EXPECT_EQ(filter.CheckStream(too_short), oFILTER_FAILED);

    vMEMSTREAM out;
    EXPECT_EQ(filter.Convert(&in, &out), oFILTER_OK);
    EXPECT_EQ(out.Size(), 41U);
    EXPECT_EQ(filter.Convert(&too_short, &out), oFILTER_FAILED);
    EXPECT_EQ(filter.Convert(nullptr, &out), oFILTER_READ_ERROR);
}

} // namespace
} // namespace klv
