#include "klv/bitmaps/stream_dib.h"
#include "klv/filters/progress.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/build_folder.h"
#include "tests/filters/imaging.h"

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

namespace klv {
namespace {

using test::colours_of;
using PngFilter = test::imaging_test;

/// A PNG file, chunk by chunk.
class png_builder {
public:
    png_builder(
        std::uint32_t width, std::uint32_t height, int depth, int colour_type, bool interlaced = false)
    {
        bytes_ = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        std::string header;
        for (const std::uint32_t size : {width, height})
            for (int shift = 24; shift >= 0; shift -= 8)
                header += static_cast<char>(size >> shift & 0xFF);
        header += {
            static_cast<char>(depth), static_cast<char>(colour_type), 0, 0, static_cast<char>(interlaced)};
        chunk("IHDR", header);
    }
    png_builder& chunk(const std::string& name, const std::string& body)
    {
        put32(static_cast<std::uint32_t>(body.size()));
        const std::string named = name + body;
        const auto* const start = reinterpret_cast<const std::uint8_t*>(named.data());
        bytes_.insert(bytes_.end(), start, start + named.size());
        put32(static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(named.data()), static_cast<uInt>(named.size()))));
        return *this;
    }
    /// Rows with their filter bytes.
    png_builder& image(const std::vector<std::uint8_t>& rows)
    {
        uLongf size = compressBound(rows.size());
        std::string packed(size, '\0');
        compress(reinterpret_cast<Bytef*>(packed.data()), &size, rows.data(), rows.size());
        packed.resize(size);
        return chunk("IDAT", packed);
    }
    std::vector<std::uint8_t> end()
    {
        chunk("IEND", "");
        return bytes_;
    }

private:
    void put32(std::uint32_t value)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes_.push_back(static_cast<std::uint8_t>(value >> shift & 0xFF));
    }
    std::vector<std::uint8_t> bytes_;
};

oFILTER_STATUS read(const std::vector<std::uint8_t>& file, oDIB& dib, oPROGRESSBM* progress = nullptr)
{
    vMEMSTREAM stream(vSTRING("picture.png"));
    stream.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    PNGFILTER filter;
    filter.SetProgressInd(progress);
    return filter.Convert(stream, dib);
}

TEST_F(PngFilter, ReadsEveryColourType)
{
    const std::string palette("\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF", 12);
    const struct {
        const char* what;
        std::vector<std::uint8_t> file;
        int bits;
        std::vector<int> row;
    } cases[] = {
        {"grey 1", png_builder(3, 1, 1, 0).image({0, 0xA0}).end(), 1, {0xFFFFFF, 0, 0xFFFFFF}},
        {"grey 2", png_builder(3, 1, 2, 0).image({0, 0x6C}).end(), 4, {0x555555, 0xAAAAAA, 0xFFFFFF}},
        {"grey 4", png_builder(2, 1, 4, 0).image({0, 0x1F}).end(), 4, {0x111111, 0xFFFFFF}},
        {"grey 8", png_builder(2, 1, 8, 0).image({0, 7, 200}).end(), 8, {0x070707, 0xC8C8C8}},
        {"grey 16", png_builder(1, 1, 16, 0).image({0, 0x80, 0}).end(), 8, {0x808080}},
        {"grey with a transparent shade",
            png_builder(2, 1, 4, 0).chunk("tRNS", std::string("\0\1", 2)).image({0, 0x1F}).end(), 4,
            {0x111111, 0xFFFFFF}},
        {"palette 2", png_builder(4, 1, 2, 3).chunk("PLTE", palette).image({0, 0x1B}).end(), 4,
            {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF}},
        {"palette with transparent entries",
            png_builder(2, 1, 8, 3)
                .chunk("PLTE", palette)
                .chunk("tRNS", std::string("\0\x80", 2))
                .image({0, 0, 1})
                .end(),
            8, {0xFF0000, 0x00FF00}},
        {"colour 8", png_builder(2, 1, 8, 2).image({0, 1, 2, 3, 4, 5, 6}).end(), 24, {0x010203, 0x040506}},
        {"colour 8, filtered by the left pixel", png_builder(2, 1, 8, 2).image({1, 1, 2, 3, 4, 5, 6}).end(),
            24, {0x010203, 0x050709}},
        {"colour without its alpha", png_builder(2, 1, 8, 6).image({0, 1, 2, 3, 255, 4, 5, 6, 0}).end(), 24,
            {0x010203, 0x040506}},
        {"grey without its alpha", png_builder(2, 1, 8, 4).image({0, 10, 255, 20, 0}).end(), 8,
            {0x0A0A0A, 0x141414}},
        {"interlaced", png_builder(2, 1, 8, 0, true).image({0, 30, 0, 40}).end(), 8, {0x1E1E1E, 0x282828}},
    };
    for (const auto& c : cases) {
        for (const bool in_stream : {false, true}) {
            oMEMDIB memory;
            oSTREAMDIB streamed;
            oDIB& dib = in_stream ? static_cast<oDIB&>(streamed) : memory;
            EXPECT_EQ(read(c.file, dib), oFILTER_OK) << c.what;
            EXPECT_EQ(dib.ColourDepth(), c.bits) << c.what;
            EXPECT_EQ(colours_of(dib), std::vector<std::vector<int>>{c.row}) << c.what;
        }
    }
}

TEST_F(PngFilter, KeepsTheResolution)
{
    const std::string metres(
        "\0\0\x0B\x13\0\0\x17\x12\1", 9); // 2835 and 5906 pixels per metre: 72 and 150 dpi
    oMEMDIB dib;
    ASSERT_EQ(read(png_builder(1, 1, 8, 0).chunk("pHYs", metres).image({0, 0}).end(), dib), oFILTER_OK);
    oDIBHEADER header;
    dib.GetHeader(header);
    EXPECT_EQ(header.HorzDPI(), 72);
    EXPECT_EQ(header.VertDPI(), 150);
    vMEMSTREAM out;
    PNGFILTER filter;
    ASSERT_EQ(filter.Convert(dib, out), oFILTER_OK);
    oMEMDIB back;
    ASSERT_EQ(filter.Convert(out, back), oFILTER_OK);
    back.GetHeader(header);
    EXPECT_EQ(header.HorzDPI(), 72);
    EXPECT_EQ(header.VertDPI(), 150);
}

TEST_F(PngFilter, WhatItWritesReadsBackAtEveryDepthAndNumberOfColours)
{
    std::mt19937 random(3);
    for (const int bits : {1, 4, 8, 24, 32}) {
        for (const int colours : {2, 4, 16, 256, 257}) {
            // Taller than one band of lines, so that bands are asked for from the top down.
            oMEMDIB dib(300, 400, bits, model_of_bits(static_cast<unsigned>(bits)), 0);
            std::vector<RGBQUAD> table(
                bits <= 8 ? std::size_t{1} << bits : static_cast<std::size_t>(colours));
            for (auto& c : table)
                c = {
                    static_cast<BYTE>(random()), static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0};
            if (bits <= 8)
                dib.SetPalette(oDIBPALETTE(table.data(), static_cast<std::uint16_t>(table.size())));
            for (int y = 0; y < dib.Height(); ++y) {
                const auto line = dib.line(y);
                for (std::size_t x = 0; x < 300; ++x) {
                    // Runs of pixels; the last colours come late in the picture.
                    const std::size_t i = (x / 7 + static_cast<std::size_t>(y) * 43) % table.size();
                    if (bits <= 8)
                        line[x * static_cast<std::size_t>(bits) / 8] = static_cast<std::uint8_t>(i);
                    else
                        std::copy_n(
                            &table[i].rgbBlue, 3, line.data() + x * static_cast<std::size_t>(bits / 8));
                }
            }
            vMEMSTREAM out(vSTRING("out.png"));
            PNGFILTER filter;
            ASSERT_EQ(filter.Convert(dib, out), oFILTER_OK);
            oMEMDIB back;
            ASSERT_EQ(filter.Convert(out, back), oFILTER_OK);
            EXPECT_EQ(colours_of(back), colours_of(dib)) << bits << " bits, " << colours << " colours";
            if (bits <= 8)
                break;
        }
    }
}

TEST_F(PngFilter, DamagedFilesFail)
{
    const auto good = png_builder(8, 8, 8, 0).image(std::vector<std::uint8_t>(72)).end();
    oMEMDIB dib;
    for (std::size_t size = 0; size + 12 < good.size(); ++size)
        EXPECT_NE(
            read(std::vector<std::uint8_t>(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)),
                dib),
            oFILTER_OK)
            << size;
    // 60000 x 60000 pixels out of a few bytes.
    EXPECT_EQ(read(png_builder(60000, 60000, 8, 2).image({0, 1, 2, 3}).end(), dib), oFILTER_UNSUPPORTED);
    // The rows before the damage stay.
    EXPECT_EQ(read(png_builder(2, 3, 8, 0).image({0, 9, 9, 0, 9, 9}).end(), dib), oFILTER_FAILED);
    EXPECT_EQ(
        colours_of(dib), (std::vector<std::vector<int>>{{0x090909, 0x090909}, {0x090909, 0x090909}, {0, 0}}));
}

/// Stops after so many questions.
class impatient : public oPROGRESSBM {
public:
    explicit impatient(int patience)
        : patience_(patience)
    {
    }
    int Stop() override { return patience_-- == 0; }
    void oTerminate() override { ++terminated; }
    int terminated = 0;

private:
    int patience_;
};

TEST_F(PngFilter, StopsWhenTheProgressSaysSo)
{
    const auto file = png_builder(1000, 1000, 8, 0).image(std::vector<std::uint8_t>(1001 * 1000)).end();
    oMEMDIB dib;
    impatient at_once(0);
    EXPECT_EQ(read(file, dib, &at_once), oFILTER_CANCELLED);
    impatient later(2);
    EXPECT_EQ(read(file, dib, &later), oFILTER_CANCELLED);
    impatient never(1000000);
    EXPECT_EQ(read(file, dib, &never), oFILTER_OK);
    EXPECT_EQ(never.terminated, 1);
    impatient writer(1);
    PNGFILTER filter;
    filter.SetProgressInd(&writer);
    vMEMSTREAM out;
    EXPECT_EQ(filter.Convert(dib, out), oFILTER_FAILED);
}

TEST_F(PngFilter, IsKnownByItsExtension)
{
    PNGFILTER filter;
    vMEMSTREAM named(vSTRING("a.b.PnG"));
    vMEMSTREAM other(vSTRING("a.gif"));
    EXPECT_TRUE(filter.CheckExtension(&named));
    EXPECT_TRUE(filter.CanTranslate(&named));
    EXPECT_FALSE(filter.CheckExtension(&other));
    EXPECT_FALSE(filter.CanTranslate(&other));
    EXPECT_EQ(filter.GetDescription(), vSTRING("Bitmap PNG"));
    EXPECT_TRUE(filter.ExportColourDepths(24) && !filter.ExportColourDepths(32));
}

void unload_imaging_module()
{
    {
        const PNGFILTER last;
    } // its end discards the entry points
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
        while (HINSTANCE module = GetModuleHandleA(name))
            FreeLibrary(module);
}

TEST(ImagingLibrary, MayBeMissingAndIsLookedForEachTime)
{
    unload_imaging_module();
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
        MapModule(name, "/nowhere/no_such_module.so");
    const auto file = png_builder(1, 1, 8, 0).image({0, 0}).end();
    oMEMDIB dib(1, 1, 24, oMODEL_RGB24, 0);
    EXPECT_NE(read(file, dib), oFILTER_OK);
    vMEMSTREAM out;
    PNGFILTER filter;
    EXPECT_EQ(filter.Convert(dib, out), oFILTER_FAILED);
    EXPECT_EQ(out.Size(), 0U);
    unload_imaging_module();
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
        MapModule(name, klv::test::imaging_module_path().c_str());
    EXPECT_EQ(read(file, dib), oFILTER_OK);
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
        UnregisterModule(name);
}

TEST_F(PngFilter, FormatsThatTheModuleLacksAreUnsupported)
{
    oMEMDIB dib;
    EXPECT_EQ(read({'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0}, dib), oFILTER_UNSUPPORTED);
    EXPECT_EQ(read({}, dib), oFILTER_UNSUPPORTED);
}

} // namespace
} // namespace klv
