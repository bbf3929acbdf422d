// What holds for the filters of all raster formats.
#include "klv/filters/gif/gif_filter.h"
#include "klv/filters/raster/bmp_filter.h"
#include "klv/filters/raster/flashpix_filter.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/filters/raster/jpeg_filter.h"
#include "klv/filters/raster/pcx_filter.h"
#include "klv/filters/raster/photo_cd_filter.h"
#include "klv/filters/raster/photoshop_filter.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/raster/targa_filter.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::colours_of;

template <class Filter> std::unique_ptr<oBMFILTER> make() { return std::unique_ptr<oBMFILTER>(new Filter); }

struct raster_format {
    const char* id;
    const char* description;
    std::vector<int> depths; ///< that it writes
    std::unique_ptr<oBMFILTER> (*filter)();
    bool lossless = true;
    bool needs_module = true; ///< for its own files
};

const std::vector<raster_format>& raster_formats()
{
    static const std::vector<raster_format> all{
        {"BMP", "Windows Bitmap", {1, 4, 8, 24}, make<DIBFILTER>},
        {"GIF", "GIF Bitmap ", {1, 4, 8}, make<GIFFILTER>, true, false},
        {"JPG", "JPEG Bitmap ", {24}, make<JPEGFILTER>, false},
        {"PCX", "PCX Bitmap", {1, 4, 8, 24}, make<PCXFILTER>},
        {"TGA", "Targa Bitmap", {8, 24}, make<TGAFILTER>},
        {"PNG", "Bitmap PNG", {1, 4, 8, 24}, make<PNGFILTER>},
        {"TIF", "TIFF Bitmap", {1, 8, 24}, make<TIFFILTER>},
        {"PCD", "Photo CD Bitmap ", {}, make<PCDFILTER>},
        {"FPX", "Flash Pix Bitmap", {}, make<FPXFILTER>},
        {"PSD", "Photoshop Bitmap", {8, 24}, make<PSDFILTER>},
    };
    return all;
}

/// A bitmap of smooth colours with some noise, its palette full.
oMEMDIB sample(int width, int height, int bits)
{
    std::mt19937 random(static_cast<unsigned>(bits));
    oMEMDIB dib(0);
    dib.SetHeader(oDIBHEADER(width, height, 150, 150, model_of_bits(static_cast<unsigned>(bits))));
    if (bits <= 8) {
        std::vector<RGBQUAD> table(std::size_t{1} << bits);
        for (RGBQUAD& c : table)
            c = {static_cast<BYTE>(random()), static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0};
        table[0] = {10, 200, 30, 0};
        dib.SetPalette(oDIBPALETTE(table.data(), static_cast<std::uint16_t>(table.size())));
    }
    for (int y = 0; y < height; ++y) {
        const auto line = dib.line(y);
        for (int x = 0; x < width; ++x) {
            const auto at = static_cast<std::size_t>(x);
            if (bits == 24)
                for (int c = 0; c < 3; ++c)
                    line[3 * at + static_cast<std::size_t>(c)]
                        = static_cast<std::uint8_t>((x + y * (c + 1)) % 200 + static_cast<int>(random() % 8));
            else if (bits == 8)
                line[at] = static_cast<std::uint8_t>(x / 3 * y);
            else if (random() % 4 == 0)
                line[at * static_cast<std::size_t>(bits) / 8] = static_cast<std::uint8_t>(random());
        }
        // What lies behind the last pixel is 0 in every reader's bitmap.
        if (bits < 8 && width * bits % 8 != 0)
            line[static_cast<std::size_t>(width * bits / 8)]
                &= static_cast<std::uint8_t>(0xFF00 >> (width * bits % 8));
    }
    return dib;
}

vSTRING name_for(const raster_format& format) { return vSTRING(std::string("picture.") + format.id); }

/// Mean difference of the channels of two images.
double difference(const std::vector<std::vector<int>>& a, const std::vector<std::vector<int>>& b)
{
    if (a.size() != b.size())
        return 255;
    double sum = 0;
    double count = 0;
    for (std::size_t y = 0; y < a.size(); ++y)
        for (std::size_t x = 0; x < a[y].size() && x < b[y].size(); ++x)
            for (int shift = 0; shift <= 16; shift += 8, ++count)
                sum += std::abs((a[y][x] >> shift & 0xFF) - (b[y][x] >> shift & 0xFF));
    return sum / count;
}

void write_sample(const raster_format& format, oDIB& dib, vSTREAM& out)
{
    ASSERT_EQ(format.filter()->Convert(dib, out), oFILTER_OK) << format.id;
    out.MoveFromStart(0);
}

class RasterFilters : public test::imaging_test { };

TEST_F(RasterFilters, TellTheirNamesAndDepths)
{
    for (const raster_format& format : raster_formats()) {
        const auto filter = format.filter();
        EXPECT_EQ(filter->GetID(), vSTRING(format.id));
        EXPECT_EQ(filter->GetDescription(), vSTRING(format.description));
        EXPECT_EQ(filter->Type(), oFILTER_BITMAP);
        EXPECT_EQ(filter->DoesExport() != 0, !format.depths.empty()) << format.id;
        for (const int depth : {1, 2, 4, 8, 16, 24, 32})
            EXPECT_EQ(filter->ExportColourDepths(depth) != 0, std::ranges::count(format.depths, depth) != 0)
                << format.id << " " << depth;
        EXPECT_EQ(filter->ImportColourDepths(24) != 0, std::string(format.id) != "GIF") << format.id;
        EXPECT_EQ(filter->ImportColourDepths(32), 0);
        filter->SetMaxColourDepth(4);
        EXPECT_EQ(filter->ExportColourDepths(8), 0) << format.id;
    }
}

TEST_F(RasterFilters, WhatTheyWriteReadsBackAtEveryDepth)
{
    for (const raster_format& format : raster_formats()) {
        for (const int depth : format.depths) {
            for (const auto& [width, height] : {std::pair{37, 53}, {64, 4100}, {2, 2}}) {
                oMEMDIB dib = sample(width, height, depth);
                vMEMSTREAM file(name_for(format));
                write_sample(format, dib, file);
                oMEMDIB back;
                EXPECT_EQ(format.filter()->Convert(file, back), oFILTER_OK) << format.id << " " << depth;
                const double differs = difference(colours_of(back), colours_of(dib));
                EXPECT_LE(differs, format.lossless ? 0 : 3) << format.id << " " << depth << " " << width;
            }
        }
    }
}

TEST_F(RasterFilters, ConvertFromArchiveToArchive)
{
    class storage : public vARCHIVE { };
    for (const raster_format& format : raster_formats()) {
        storage other;
        vMEMSTREAM empty;
        const auto filter = format.filter();
        EXPECT_EQ(filter->Convert(nullptr, &empty), oFILTER_READ_ERROR) << format.id;
        EXPECT_EQ(filter->Convert(&empty, nullptr), oFILTER_READ_ERROR) << format.id;
        EXPECT_NE(filter->Convert(&other, &empty), oFILTER_OK) << format.id;
        if (format.depths.empty())
            continue;
        oMEMDIB dib = sample(21, 9, format.depths.back());
        vMEMSTREAM file(name_for(format));
        write_sample(format, dib, file);
        vMEMSTREAM stored;
        EXPECT_EQ(filter->Convert(&file, &stored), oFILTER_OK) << format.id;
        stored.MoveFromStart(0);
        const oMEMDIB back(stored, 0);
        EXPECT_LE(difference(colours_of(back), colours_of(dib)), format.lossless ? 0 : 3) << format.id;
    }
}

/// Asks to stop when it was asked so many times whether to.
class impatient : public oPROGRESSBM {
public:
    explicit impatient(int patience)
        : patience_(patience)
    {
    }
    int Stop() override { return patience_-- <= 0; }

private:
    int patience_;
};

TEST_F(RasterFilters, StopReadingWhenTheProgressSaysSo)
{
    for (const raster_format& format : raster_formats()) {
        if (format.depths.empty())
            continue;
        oMEMDIB dib = sample(600, 900, format.depths.back());
        vMEMSTREAM file(name_for(format));
        write_sample(format, dib, file);
        for (const int patience : {0, 1}) {
            impatient progress(patience);
            const auto filter = format.filter();
            filter->SetProgressInd(&progress);
            oMEMDIB back;
            EXPECT_EQ(filter->Convert(file, back), oFILTER_CANCELLED) << format.id << " " << patience;
            EXPECT_EQ(filter->LastStatus(), oFILTER_CANCELLED);
            file.MoveFromStart(0);
        }
    }
}

/// Keeps what it is told.
class noting : public oPROGRESSBM {
public:
    void oSet(std::uint32_t value) override { values.push_back(value); }
    std::vector<std::uint32_t> values;
};

void expect_steady(const noting& progress)
{
    const std::uint32_t full_scale = progress.FullScale();
    EXPECT_TRUE(std::ranges::is_sorted(progress.values)) << ::testing::PrintToString(progress.values);
    ASSERT_FALSE(progress.values.empty());
    EXPECT_GT(progress.values.back(), full_scale / 2);
    EXPECT_LE(progress.values.back(), full_scale);
}

TEST_F(RasterFilters, ProgressNeverGoesBackNorPastTheFullScale)
{
    for (const raster_format& format : raster_formats()) {
        if (format.depths.empty())
            continue;
        SCOPED_TRACE(format.id);
        oMEMDIB dib = sample(1500, 300, format.depths.back());
        vMEMSTREAM file(name_for(format));
        noting writing, reading;
        const auto filter = format.filter();
        filter->SetProgressInd(&writing);
        ASSERT_EQ(filter->Convert(dib, file), oFILTER_OK);
        expect_steady(writing);
        file.MoveFromStart(0);
        oMEMDIB back;
        filter->SetProgressInd(&reading);
        ASSERT_EQ(filter->Convert(file, back), oFILTER_OK);
        expect_steady(reading);
    }
}

TEST_F(RasterFilters, KeepTheResolutionWhereTheFormatHasOne)
{
    for (const char* id : {"BMP", "JPG", "PCX", "PNG", "TIF", "PSD"}) {
        const auto& format = *std::ranges::find_if(
            raster_formats(), [&](const raster_format& each) { return std::string(each.id) == id; });
        oMEMDIB dib = sample(8, 8, 24);
        vMEMSTREAM file(name_for(format));
        write_sample(format, dib, file);
        oMEMDIB back;
        ASSERT_EQ(format.filter()->Convert(file, back), oFILTER_OK) << id;
        oDIBHEADER header;
        back.GetHeader(header);
        EXPECT_EQ(header.HorzDPI(), 150) << id;
        EXPECT_EQ(header.VertDPI(), 150) << id;
    }
}

void unload_imaging_module()
{
    BMINTERFACE::discard();
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name}) {
        while (const HINSTANCE module = GetModuleHandleA(name))
            FreeLibrary(module);
        MapModule(name, "/nowhere/no_such_module.so");
    }
}

TEST_F(RasterFilters, AnswerAStatusWithoutTheModule)
{
    std::vector<std::unique_ptr<vMEMSTREAM>> files;
    for (const raster_format& format : raster_formats()) {
        files.emplace_back(new vMEMSTREAM(name_for(format)));
        oMEMDIB dib = sample(8, 8, 8);
        if (std::ranges::count(format.depths, 8) != 0)
            write_sample(format, dib, *files.back());
    }
    unload_imaging_module();
    for (std::size_t i = 0; i < files.size(); ++i) {
        const raster_format& format = raster_formats()[i];
        if (!format.needs_module)
            continue;
        const auto filter = format.filter();
        EXPECT_EQ(filter->GetResolutionCount(name_for(format)), 0U);
        oMEMDIB dib = sample(8, 8, 24);
        vMEMSTREAM out;
        EXPECT_EQ(filter->Convert(dib, out), format.depths.empty() ? oFILTER_UNSUPPORTED : oFILTER_FAILED)
            << format.id;
        EXPECT_EQ(out.Size(), 0U) << format.id;
        // TIFF has its own decoder, and a Windows bitmap is a stored bitmap already.
        if (std::string(format.id) == "TIF" || std::string(format.id) == "BMP")
            continue;
        oMEMDIB back;
        EXPECT_EQ(filter->Convert(*files[i], back), oFILTER_FAILED) << format.id;
        EXPECT_EQ(oBMFILTER::MissingLibrary(), missing_library::imaging_module);
        EXPECT_FALSE(back.HasPixels());
        EXPECT_EQ(filter->Convert(files[i].get(), &out), oFILTER_FAILED) << format.id;
        EXPECT_EQ(out.Size(), 0U) << format.id;
    }
}

TEST_F(RasterFilters, RecogniseTheirFilesByTheFirstBytes)
{
    const auto pcx = [](int x_max, int y_max, std::uint8_t version, std::uint8_t line_bytes) {
        std::string header(128, '\0');
        header[0] = 10;
        header[1] = static_cast<char>(version);
        header[2] = 1;
        header[4] = 5; // Xmin
        header[8] = static_cast<char>(x_max);
        header[10] = static_cast<char>(y_max);
        header[66] = static_cast<char>(line_bytes);
        return header;
    };
    const struct {
        const char* what;
        std::unique_ptr<oBMFILTER> (*filter)();
        std::string bytes;
        oFILTER_STATUS answer;
    } cases[] = {
        {"JPEG", make<JPEGFILTER>, "\xFF\xD8\xFF", oFILTER_RECOGNISED},
        {"half a marker", make<JPEGFILTER>, "\xFF", oFILTER_FAILED},
        {"another marker", make<JPEGFILTER>, "\xFF\xD9", oFILTER_FAILED},
        {"PCX", make<PCXFILTER>, pcx(6, 1, 5, 2), oFILTER_RECOGNISED},
        {"PCX of an early version", make<PCXFILTER>, pcx(6, 1, 0, 2), oFILTER_RECOGNISED},
        {"PCX of one column", make<PCXFILTER>, pcx(5, 1, 5, 2), oFILTER_FAILED},
        {"PCX with Xmax below Xmin", make<PCXFILTER>, pcx(4, 1, 5, 2), oFILTER_FAILED},
        {"PCX of one row", make<PCXFILTER>, pcx(6, 0, 5, 2), oFILTER_FAILED},
        {"PCX of a later version", make<PCXFILTER>, pcx(6, 1, 6, 2), oFILTER_FAILED},
        {"PCX without line bytes", make<PCXFILTER>, pcx(6, 1, 5, 0), oFILTER_FAILED},
        {"PCX cut in its header", make<PCXFILTER>, pcx(6, 1, 5, 2).substr(0, 127), oFILTER_FAILED},
        {"BMP", make<DIBFILTER>, "BM" + std::string(39, '\0'), oFILTER_OK},
        {"BMP of 40 bytes", make<DIBFILTER>, "BM" + std::string(38, '\0'), oFILTER_FAILED},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream;
        stream.WritePlain(reinterpret_cast<const std::uint8_t*>(c.bytes.data()),
            static_cast<std::uint32_t>(c.bytes.size()));
        stream.MoveFromStart(0);
        const auto filter = c.filter();
        EXPECT_EQ(filter->CheckStream(stream), c.answer) << c.what;
        EXPECT_EQ(filter->LastStatus(), c.answer == oFILTER_FAILED ? oFILTER_FAILED : oFILTER_OK) << c.what;
        stream.MoveFromStart(0);
        EXPECT_EQ(filter->CanTranslate(&stream) != 0, c.answer != oFILTER_FAILED) << c.what;
    }

    // The marker counts where the stream stands, and the stream stays there.
    vMEMSTREAM later;
    later.WritePlain(reinterpret_cast<const std::uint8_t*>("xx\xFF\xD8"), 4);
    later.MoveFromStart(2);
    EXPECT_EQ(JPEGFILTER().CheckStream(later), oFILTER_RECOGNISED);
    EXPECT_EQ(later.CurrentPos(), 2U);
}

} // namespace
} // namespace klv
