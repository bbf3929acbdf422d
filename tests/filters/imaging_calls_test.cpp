// What the bitmap filters ask of the imaging library, told by a library that only takes notes.
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/raster/flashpix_filter.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/filters/raster/jpeg_filter.h"
#include "klv/filters/raster/pcx_filter.h"
#include "klv/filters/raster/photo_cd_filter.h"
#include "klv/filters/raster/photoshop_filter.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/raster/targa_filter.h"
#include "klv/platform/module_table.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using namespace imaging;

constexpr std::int32_t width = 3;
constexpr std::int32_t height = 5;

struct {
    std::int32_t file_bits = 24;
    std::int32_t file_info_result = imaging_ok;
    std::int32_t perspective = top_left;
    std::uint32_t resolutions = 5;
    const vSTREAM* stream = nullptr; ///< whose state is noted

    std::vector<std::string> notes;
    bool redirected = false;
    int status_meanwhile = -1; ///< of the stream, while the file is described
    std::vector<std::uint8_t> saved;
} library;

template <class... Parts> void note(const Parts&... parts)
{
    std::string line;
    const auto text = [](const auto& part) {
        if constexpr (std::is_convertible_v<decltype(part), std::string>)
            return std::string(part);
        else
            return std::to_string(part);
    };
    ((line += (line.empty() ? "" : " ") + text(parts)), ...);
    library.notes.push_back(line);
}

std::int32_t redirect(open_callback open, read_callback, write_callback, seek_callback, close_callback, void*)
{
    library.redirected = open != nullptr;
    return imaging_ok;
}

std::int32_t init(bitmap_handle* bitmap, std::int32_t w, std::int32_t h, std::int32_t bits)
{
    *bitmap = {};
    bitmap->width = w;
    bitmap->height = h;
    bitmap->bits_per_pixel = bits;
    bitmap->bytes_per_line = (w * bits + 31) / 32 * 4;
    bitmap->perspective = library.perspective;
    return imaging_ok;
}

std::int32_t create(bitmap_handle* bitmap, std::int32_t memory, std::int32_t w, std::int32_t h,
    std::int32_t bits, std::int32_t order, const RGBQUAD*, std::int32_t perspective)
{
    note("create", memory, w, h, bits, order, perspective);
    return init(bitmap, w, h, bits);
}

std::int32_t handled(bitmap_handle*) { return imaging_ok; }
std::int32_t to_dib(const bitmap_handle*, BITMAPINFOHEADER*) { return imaging_ok; }

std::int32_t get_colours(const bitmap_handle*, std::uint32_t, std::uint32_t count, RGBQUAD* colours)
{
    for (std::uint32_t i = 0; i < count; ++i)
        colours[i] = {static_cast<BYTE>(i), 0, 0, 0};
    return imaging_ok;
}

std::int32_t put_colours(bitmap_handle*, std::uint32_t first, std::uint32_t count, const RGBQUAD*)
{
    note("colours", first, count);
    return imaging_ok;
}

std::int32_t describe(const char* name, file_info* info)
{
    note("describe", name, library.redirected ? "through the stream" : "by name");
    library.status_meanwhile = library.stream ? static_cast<int>(library.stream->Size()) : -1;
    *info = {format_unknown, width, height, library.file_bits, 72, 150, library.perspective};
    return library.file_info_result;
}

/// Line i of the file has the value i in all its bytes; bands are of two lines.
std::int32_t load(const char*, bitmap_handle* bitmap, std::int32_t bits, std::int32_t order,
    std::uint32_t flags, load_callback callback, void* user)
{
    note("load", bits, order, flags);
    file_info info{};
    for (std::int32_t row = 0; row < height; row += 2) {
        const std::int32_t lines = std::min(2, height - row);
        std::vector<std::uint8_t> band(static_cast<std::size_t>(bitmap->bytes_per_line) * 2);
        for (std::size_t i = 0; i < band.size(); ++i)
            band[i] = static_cast<std::uint8_t>(row + static_cast<std::int32_t>(i) / bitmap->bytes_per_line);
        if (!callback(info, *bitmap, band.data(), row, lines, user))
            return imaging_aborted;
    }
    return imaging_ok;
}

std::int32_t save(const char* name, bitmap_handle* bitmap, std::uint16_t format, std::int32_t bits,
    std::int32_t quality, std::uint32_t flags, save_callback callback, void* user)
{
    note("save", name, format, bits, quality, flags);
    library.saved.assign(static_cast<std::size_t>(bitmap->bytes_per_line * bitmap->height), 0);
    return callback(*bitmap, library.saved.data(), 0, bitmap->height, user) ? imaging_ok : imaging_aborted;
}

std::int32_t enumerate(const char* name, std::uint16_t format, dimension* table, std::uint32_t* count)
{
    note("resolutions", name, format, *count);
    const std::uint32_t stored = std::min(*count, library.resolutions);
    for (std::uint32_t i = 0; i < stored; ++i)
        table[i] = {192 << i, 128 << i};
    *count = library.resolutions;
    return imaging_ok;
}

std::int32_t choose(std::uint16_t format, std::int32_t w, std::int32_t h)
{
    note("choose", format, w, h);
    return imaging_ok;
}

template <class Function> FARPROC address(Function function) { return reinterpret_cast<FARPROC>(function); }

class ImagingCalls : public ::testing::Test {
protected:
    ImagingCalls()
        : kernel_{{{"L_RedirectIO", address(redirect)}, {"L_InitBitmap", address(init)},
            {"L_CreateBitmap", address(create)}, {"L_FreeBitmap", address(handled)},
            {"L_ConvertToDIB", address(to_dib)}, {"L_AccessBitmap", address(handled)},
            {"L_ReleaseBitmap", address(handled)}, {"L_GetBitmapColors", address(get_colours)},
            {"L_PutBitmapColors", address(put_colours)}}}
        , file_{{{"L_SaveFile", address(save)}, {"L_FileInfo", address(describe)},
              {"L_LoadFile", address(load)}, {"L_EnumDimensions", address(enumerate)},
              {"L_SetDimension", address(choose)}}}
    {
        library = {};
        EXPECT_TRUE(RegisterModule(kernel_module_name, kernel_));
        EXPECT_TRUE(RegisterModule(file_module_name, file_));
    }
    ~ImagingCalls() override
    {
        BMINTERFACE::discard();
        for (const char* name : {kernel_module_name, file_module_name}) {
            while (const HINSTANCE module = GetModuleHandleA(name))
                FreeLibrary(module);
            UnregisterModule(name);
        }
    }

    std::array<module_symbol, 9> kernel_;
    std::array<module_symbol, 5> file_;
};

using lines = std::vector<std::string>;

TEST_F(ImagingCalls, ReadingGoesThroughTheStreamInTheDepthOfTheModel)
{
    const struct {
        std::int32_t file_bits;
        int bits;
        int colours;
    } cases[] = {{1, 1, 2}, {2, 1, 2}, {4, 4, 16}, {8, 8, 256}, {16, 24, 0}, {24, 24, 0}, {32, 24, 0}};
    for (const auto& c : cases) {
        library = {};
        library.file_bits = c.file_bits;
        vMEMSTREAM in(vSTRING("a.png"));
        oMEMDIB out;
        PNGFILTER filter;
        EXPECT_EQ(filter.Convert(in, out), oFILTER_OK);
        EXPECT_EQ(library.notes,
            (lines{"describe a.png through the stream", "load " + std::to_string(c.bits) + " 0 9"}));
        EXPECT_EQ(out.ColourDepth(), c.bits);
        EXPECT_EQ(out.colours().size(), static_cast<std::size_t>(c.colours)) << c.file_bits;
        EXPECT_EQ(out.InfoHeader().biXPelsPerMeter, 72 * 40);
        EXPECT_EQ(out.InfoHeader().biYPelsPerMeter, 150 * 40);
        EXPECT_FALSE(library.redirected) << "the callbacks are taken back";
    }
    for (const std::int32_t bits : {0, 3, 5, 12, 48}) {
        library.file_bits = bits;
        vMEMSTREAM in(vSTRING("a.png"));
        oMEMDIB out;
        EXPECT_EQ(PNGFILTER().Convert(in, out), oFILTER_UNSUPPORTED) << bits;
    }
}

TEST_F(ImagingCalls, LinesLandBottomUpWhateverTheirOrder)
{
    for (const std::int32_t perspective : {std::int32_t{top_left}, std::int32_t{bottom_left}}) {
        library = {};
        library.perspective = perspective;
        vMEMSTREAM in(vSTRING("a.png"));
        oMEMDIB out;
        ASSERT_EQ(PNGFILTER().Convert(in, out), oFILTER_OK);
        for (std::int32_t y = 0; y < height; ++y)
            EXPECT_EQ(out.line(y)[0], perspective == bottom_left ? y : height - 1 - y) << perspective;
    }
}

TEST_F(ImagingCalls, PhotoshopDocumentsAreAskedForInTheOtherColourOrder)
{
    const struct {
        std::int32_t bits;
        const char* load;
    } cases[] = {{8, "load 8 0 9"}, {24, "load 24 1 9"}};
    for (const auto& c : cases) {
        library = {};
        library.file_bits = c.bits;
        vMEMSTREAM in(vSTRING("a.psd"));
        oMEMDIB out;
        EXPECT_EQ(PSDFILTER().Convert(in, out), oFILTER_OK);
        EXPECT_EQ(library.notes.back(), c.load);
    }
}

TEST_F(ImagingCalls, FilesOfSeveralResolutionsAreReadByName)
{
    const std::string name
        = (std::filesystem::path(::testing::TempDir()) / "klv_several_resolutions").string();
    vFILE(vSTRING(name), vFILE::truncate).WritePlain(reinterpret_cast<const std::uint8_t*>("content"), 7);
    const struct {
        bool closed;
        std::uint16_t format;
        std::uint32_t chosen;
        const char* size;
    } cases[] = {{false, 57, 3, "1536 1024"}, {true, 80, 3, "1536 1024"}, {false, 57, 0, "192 128"},
        {false, 57, 9, "0 0"}};
    for (const auto& c : cases) {
        library = {};
        vFILE in(vSTRING(name), vFILE::read_only);
        library.stream = &in;
        PCDFILTER photo_cd;
        FPXFILTER flashpix;
        oBMFILTER& filter = c.closed ? static_cast<oBMFILTER&>(flashpix) : photo_cd;
        if (c.chosen != 3)
            filter.SetResolution(c.chosen);
        oMEMDIB out;
        EXPECT_EQ(filter.Convert(in, out), oFILTER_OK);
        const std::string format = std::to_string(c.format);
        EXPECT_EQ(library.notes,
            (lines{"resolutions " + name + " " + format + " 29", "choose " + format + " " + c.size,
                "describe " + name + " by name", "load 24 0 9"}));
        EXPECT_EQ(library.status_meanwhile, c.closed ? 0 : 7);
        EXPECT_EQ(in.Size(), 7U) << "open again";
        EXPECT_EQ(filter.Convert(static_cast<oDIB&>(out), in), oFILTER_UNSUPPORTED);
    }
    std::filesystem::remove(name);

    library.resolutions = 40;
    PCDFILTER filter;
    EXPECT_EQ(filter.GetResolution(0), vSIZE()) << "before any file was counted";
    EXPECT_EQ(filter.GetResolutionCount(vSTRING("a.pcd")), 29U);
    EXPECT_EQ(filter.GetResolution(2), vSIZE(768, 512));
    EXPECT_EQ(filter.GetResolution(29), vSIZE());
    EXPECT_EQ(PNGFILTER().GetResolutionCount(vSTRING("a.png")), 0U);
}

TEST_F(ImagingCalls, WritingPassesTheFormatTheDepthAndTheColours)
{
    const auto written_by = [](oBMFILTER&& filter, int bits) {
        library.notes.clear();
        oMEMDIB in(width, height, bits, model_of_bits(static_cast<unsigned>(bits)), 0);
        const std::array<RGBQUAD, 5> colours{};
        if (bits <= 8)
            in.SetPalette(oDIBPALETTE(colours.data(), colours.size()));
        in.line(0)[0] = 7;
        vMEMSTREAM out;
        EXPECT_EQ(filter.Convert(in, out), oFILTER_OK);
        EXPECT_EQ(library.saved[0], 7) << "bottom line first";
        return library.notes;
    };
    EXPECT_EQ(written_by(PNGFILTER(), 24), (lines{"create 1 3 5 24 1 2", "save tmp 75 24 255 2"}));
    EXPECT_EQ(written_by(PCXFILTER(), 4), (lines{"create 1 3 5 4 1 2", "colours 0 5", "save tmp 1 4 255 2"}));
    EXPECT_EQ(written_by(JPEGFILTER(), 24).back(), "save tmp 10 24 255 2");
    EXPECT_EQ(written_by(TGAFILTER(), 8).back(), "save tmp 4 8 255 2");
    EXPECT_EQ(written_by(PSDFILTER(), 8).back(), "save tmp 76 8 255 2");
}

TEST_F(ImagingCalls, AMissingFormatLibraryIsAsGoodAsAMissingModule)
{
    library.file_info_result = imaging_library_missing;
    vMEMSTREAM in(vSTRING("a.tga"));
    oMEMDIB out;
    EXPECT_EQ(TGAFILTER().Convert(in, out), oFILTER_FAILED);
    EXPECT_EQ(oBMFILTER::MissingLibrary(), missing_library::format_library);
    EXPECT_FALSE(out.HasPixels());

    library.file_info_result = imaging_unsupported;
    EXPECT_EQ(TGAFILTER().Convert(in, out), oFILTER_UNSUPPORTED);
    EXPECT_EQ(oBMFILTER::MissingLibrary(), missing_library::none);
}

TEST_F(ImagingCalls, TheBaseRecogniserAsksTheLibrary)
{
    const auto check = [](vARCHIVE& in) {
        PNGFILTER filter;
        return filter.oBMFILTER::CheckStream(in);
    };
    vMEMSTREAM in(vSTRING("a.xyz"));
    EXPECT_EQ(check(in), oFILTER_OK);
    EXPECT_EQ(library.notes, (lines{"describe tmp through the stream"}));
    library.file_info_result = imaging_failed;
    EXPECT_EQ(check(in), oFILTER_UNSUPPORTED);
}

} // namespace
} // namespace klv
