#include "tests/imaging/imaging_module.h"

#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;
using test::image;
using ImagingRoundTrip = test::imaging_module_test;

enum class palette { greys, colours };

/// A picture with runs, noise and every colour of its depth.
image made_picture(const test::imaging_module& module, std::int32_t bits, palette kind, std::int32_t width,
    std::int32_t height)
{
    image made;
    EXPECT_EQ(module.create(&made.handle, conventional_memory, width, height, bits, 1, nullptr, bottom_left),
        imaging_ok);
    std::mt19937 random(static_cast<unsigned>(width * 31 + bits));
    made.lines.resize(
        static_cast<std::size_t>(made.handle.bytes_per_line) * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < made.lines.size(); ++i) {
        const bool noise = i / 64 % 2 == 0;
        made.lines[i] = static_cast<std::uint8_t>(noise ? random() : i / 128);
    }
    std::vector<RGBQUAD> colours(bits <= 8 ? std::size_t{1} << bits : 0);
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const auto grey = static_cast<BYTE>(i * 255 / (colours.size() - 1));
        const auto any = [&] { return static_cast<BYTE>(random()); };
        colours[i] = kind == palette::greys ? RGBQUAD{grey, grey, grey, 0} : RGBQUAD{any(), any(), any(), 0};
    }
    if (!colours.empty())
        module.put_colours(&made.handle, 0, static_cast<std::uint32_t>(colours.size()), colours.data());
    return made;
}

TEST_F(ImagingRoundTrip, IsExactForEveryWriterAtEveryDepth)
{
    const struct {
        const char* what;
        imaging_format format;
        std::vector<std::int32_t> depths;
        bool by_magick;
        bool keeps_depth;
    } writers[] = {
        {"BMP", format_bmp, {1, 4, 8, 24}, false, true},
        {"PNG", format_png, {1, 4, 8}, false, true},
        {"PNG in colour", format_png, {24, 32}, false, false},
        {"TIFF", format_tiff, {1, 4, 8, 24}, false, true},
        {"Photoshop", format_photoshop, {8, 24}, false, true},
        {"PCX", format_pcx, {1, 4, 8, 24}, true, false},
        {"Targa", format_targa, {8, 24}, true, false},
    };
    const bool magick = magick_is_there();
    const std::pair<std::int32_t, std::int32_t> sizes[] = {{1, 1}, {7, 3}, {300, 41}, {1000, 40}};
    for (const auto& writer : writers) {
        if (writer.by_magick && !magick)
            continue;
        for (const std::int32_t bits : writer.depths)
            for (const palette kind : {palette::greys, palette::colours})
                for (const auto& [width, height] : sizes) {
                    SCOPED_TRACE(std::string(writer.what) + ", " + std::to_string(bits) + " bits, "
                        + std::to_string(width) + " x " + std::to_string(height)
                        + (kind == palette::greys ? ", greys" : ", colours"));
                    image made = made_picture(module_, bits, kind, width, height);
                    file_bytes file;
                    ASSERT_EQ(write(made, writer.format, file), imaging_ok);
                    image back;
                    file_info info{};
                    ASSERT_EQ(read(file, back, &info), imaging_ok);
                    EXPECT_EQ(info.format, writer.format);
                    if (writer.keeps_depth) {
                        EXPECT_EQ(back.handle.bits_per_pixel, bits);
                    }
                    ASSERT_EQ(back.colours(), made.colours());
                }
    }
    if (!magick)
        GTEST_SKIP() << "GraphicsMagick is not installed: PCX and Targa were left out";
}

TEST_F(ImagingRoundTrip, KeepsTheResolutionWhereTheFormatHasOne)
{
    std::vector<imaging_format> formats{format_bmp, format_png, format_jpeg, format_tiff, format_photoshop};
    const bool magick = magick_is_there();
    if (magick)
        formats.push_back(format_pcx);
    for (const imaging_format format : formats)
        for (const std::int32_t dpi : {72, 96, 150, 300, 600}) {
            image made = made_picture(module_, 24, palette::colours, 5, 5);
            made.handle.x_resolution = dpi;
            made.handle.y_resolution = dpi * 2;
            file_bytes file;
            image back;
            file_info info{};
            ASSERT_EQ(write(made, format, file), imaging_ok);
            ASSERT_EQ(read(file, back, &info), imaging_ok);
            EXPECT_EQ(info.x_resolution, dpi) << format;
            EXPECT_EQ(info.y_resolution, dpi * 2) << format;
        }
    if (!magick)
        GTEST_SKIP() << "GraphicsMagick is not installed: PCX was left out";
}

/// Mean difference of the channels of two pictures.
double mean_difference(const image& a, const image& b)
{
    const auto first = a.colours();
    const auto second = b.colours();
    double sum = 0;
    for (std::size_t i = 0; i < first.size() && i < second.size(); ++i)
        for (const int shift : {0, 8, 16})
            sum += std::abs((first[i] >> shift & 0xFF) - (second[i] >> shift & 0xFF));
    return first.size() == second.size() ? sum / (3.0 * static_cast<double>(first.size())) : 255;
}

TEST_F(ImagingRoundTrip, OfJpegIsCloseAndSmallerWithLessQuality)
{
    for (const bool grey : {false, true}) {
        image made = made_picture(module_, grey ? 8 : 24, palette::greys, 64, 48);
        for (std::int32_t y = 0; y < 48; ++y)
            for (std::int32_t i = 0; i < made.handle.bytes_per_line; ++i)
                made.lines[static_cast<std::size_t>(y * made.handle.bytes_per_line + i)]
                    = static_cast<std::uint8_t>(128 + 100 * std::sin(y / 9.0) * std::cos(i / 31.0));
        file_bytes best;
        file_bytes worse;
        ASSERT_EQ(write(made, format_jpeg, best), imaging_ok);
        ASSERT_EQ(write(made, format_jpeg, worse, 60), imaging_ok);
        EXPECT_LT(worse.size(), best.size());
        image back;
        ASSERT_EQ(read(best, back), imaging_ok);
        EXPECT_EQ(back.handle.bits_per_pixel, made.handle.bits_per_pixel);
        EXPECT_LT(mean_difference(back, made), 1.5);
    }
}

TEST_F(ImagingRoundTrip, StopsWhenACallbackSaysSo)
{
    // Seven bands.
    image made = made_picture(module_, 24, palette::colours, 2000, 300);
    for (const imaging_format format : {format_bmp, format_png, format_jpeg, format_tiff, format_photoshop}) {
        file_bytes file;
        made.most_bands = 3;
        EXPECT_EQ(write(made, format, file), imaging_aborted) << format;
        made.most_bands = INT32_MAX;
        ASSERT_EQ(write(made, format, file), imaging_ok) << format;
        image back;
        back.most_bands = 3;
        EXPECT_EQ(read(file, back), imaging_aborted) << format;
    }
}

} // namespace
} // namespace klv
