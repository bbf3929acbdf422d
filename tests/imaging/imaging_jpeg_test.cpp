#include "tests/imaging/imaging_module.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;
using test::image;
using ImagingJpeg = test::imaging_module_test;

constexpr int side = 8; ///< of the square that each colour fills

using sample = std::array<int, 4>;

/// A file of squares of samples as they are given to the encoder, side by side.
file_bytes jpeg_of(const std::vector<sample>& squares, int samples, J_COLOR_SPACE given, J_COLOR_SPACE stored,
    bool adobe_marker)
{
    jpeg_compress_struct session{};
    jpeg_error_mgr errors{};
    session.err = jpeg_std_error(&errors);
    jpeg_create_compress(&session);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&session, &bytes, &size);
    session.image_width = static_cast<JDIMENSION>(side * squares.size());
    session.image_height = side;
    session.input_components = samples;
    session.in_color_space = given;
    jpeg_set_defaults(&session);
    jpeg_set_colorspace(&session, stored);
    jpeg_set_quality(&session, 100, TRUE);
    for (int i = 0; i < session.num_components; ++i)
        session.comp_info[i].h_samp_factor = session.comp_info[i].v_samp_factor = 1;
    session.write_Adobe_marker = adobe_marker;
    session.write_JFIF_header = FALSE;
    jpeg_start_compress(&session, TRUE);
    file_bytes row;
    for (const sample& square : squares)
        for (int i = 0; i < side * samples; ++i)
            row.push_back(static_cast<std::uint8_t>(square[static_cast<std::size_t>(i % samples)]));
    for (int y = 0; y < side; ++y) {
        JSAMPROW line = row.data();
        jpeg_write_scanlines(&session, &line, 1);
    }
    jpeg_finish_compress(&session);
    jpeg_destroy_compress(&session);
    file_bytes file(bytes, bytes + size);
    std::free(bytes);
    return file;
}

TEST_F(ImagingJpeg, ColoursOfEveryMarkedAndUnmarkedKind)
{
    // Inks of 255 cover, and what they leave of white.
    const std::vector<sample> inks{
        {0, 0, 0, 0}, {255, 0, 0, 0}, {0, 255, 255, 0}, {0, 0, 0, 255}, {51, 102, 153, 0}, {0, 127, 255, 85}};
    const int seen[] = {0xFFFFFF, 0x00FFFF, 0xFF0000, 0x000000, 0xCC9966, 0xAA5500};
    std::vector<sample> light;
    for (const sample& ink : inks)
        light.push_back({255 - ink[0], 255 - ink[1], 255 - ink[2], 255 - ink[3]});
    std::vector<sample> colours;
    for (const int colour : seen)
        colours.push_back({colour >> 16, colour >> 8 & 0xFF, colour & 0xFF, 0});

    const struct {
        const char* what;
        file_bytes file;
    } cases[] = {
        {"inks, marked: stored as light", jpeg_of(light, 4, JCS_CMYK, JCS_CMYK, true)},
        {"turned inks, marked: stored as light", jpeg_of(light, 4, JCS_CMYK, JCS_YCCK, true)},
        {"inks, unmarked", jpeg_of(inks, 4, JCS_CMYK, JCS_CMYK, false)},
        {"red, green and blue, marked", jpeg_of(colours, 3, JCS_RGB, JCS_RGB, true)},
        {"turned colours, marked", jpeg_of(colours, 3, JCS_RGB, JCS_YCbCr, true)},
        {"turned colours, unmarked", jpeg_of(colours, 3, JCS_RGB, JCS_YCbCr, false)},
    };
    for (const auto& c : cases) {
        image loaded;
        file_info info{};
        ASSERT_EQ(read(c.file, loaded, &info), imaging_ok) << c.what;
        EXPECT_EQ(info.bits_per_pixel, 24) << c.what;
        for (std::size_t i = 0; i < std::size(seen); ++i)
            for (const int shift : {16, 8, 0}) {
                const int got = loaded.colour(static_cast<std::int32_t>(i) * side + 3, 4) >> shift & 0xFF;
                EXPECT_NEAR(got, seen[i] >> shift & 0xFF, 2) << c.what << ", square " << i;
            }
    }
}

} // namespace
} // namespace klv
