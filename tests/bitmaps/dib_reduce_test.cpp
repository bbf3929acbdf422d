#include "klv/bitmaps/dib_widen.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/pixels/dib_dither.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using bytes = std::vector<std::uint8_t>;

bytes random_pixels(std::size_t count)
{
    std::mt19937 random(5);
    bytes pixels(3 * count);
    for (auto& p : pixels)
        p = static_cast<std::uint8_t>(random());
    return pixels;
}

/// The filter of Floyd and Steinberg onto the 6 x 6 x 6 cube as it is written down: whole images of errors,
/// to which every pixel adds its shares.
bytes slow_cube_dither(const bytes& pixels, int width, int height)
{
    const auto stride = static_cast<std::size_t>(width) + 2;
    std::vector<std::array<int, 3>> errors(stride * static_cast<std::size_t>(height + 1));
    bytes indices;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t at = stride * static_cast<std::size_t>(y) + static_cast<std::size_t>(x) + 1;
            int index = 0;
            for (const std::size_t c : {2U, 1U, 0U}) { // red, green, blue
                const std::size_t pixel = static_cast<std::size_t>(y * width + x);
                const int value = std::clamp(pixels[3 * pixel + c] + errors[at][c], 0, 255);
                const int level = (value + 25) / 51;
                const int e = value - 51 * level;
                const int right = (7 * e) >> 4;
                const int left = (3 * e) >> 4;
                const int middle = (5 * e) >> 4;
                errors[at + 1][c] += right;
                errors[at + stride - 1][c] += left;
                errors[at + stride][c] += middle;
                errors[at + stride + 1][c] += e - right - left - middle;
                index = 6 * index + level;
            }
            indices.push_back(static_cast<std::uint8_t>(index));
        }
    }
    return indices;
}

TEST(DibDitherer, SpreadsErrorsAsFloydAndSteinbergDo)
{
    for (const int width : {1, 2, 3, 50}) {
        constexpr int height = 40;
        const bytes pixels = random_pixels(static_cast<std::size_t>(width * height));
        dib_ditherer ditherer;
        ASSERT_TRUE(ditherer.start(width, 8));
        bytes indices(static_cast<std::size_t>(width * height));
        for (int y = 0; y < height; ++y)
            ditherer.dither_line(pixels.data() + 3 * width * y, indices.data() + width * y);
        EXPECT_EQ(indices, slow_cube_dither(pixels, width, height)) << width;
    }
}

TEST(DibDitherer, KeepsTheMeanColourOfAnArea)
{
    constexpr int side = 128;
    const struct {
        std::uint16_t bits;
        std::array<std::uint8_t, 3> colour;
    } cases[] = {{8, {10, 100, 200}}, {8, {255, 0, 26}}, {4, {60, 60, 60}}, {4, {100, 60, 180}},
        {4, {220, 220, 220}}, {1, {90, 90, 90}}, {1, {255, 255, 255}}, {1, {1, 1, 1}}};
    for (const auto& c : cases) {
        bytes line;
        for (int x = 0; x < side; ++x)
            line.insert(line.end(), c.colour.begin(), c.colour.end());
        dib_ditherer ditherer;
        ASSERT_TRUE(ditherer.start(side, c.bits));
        std::array<int, 3> sum{};
        for (int y = 0; y < side; ++y) {
            bytes indices(side);
            ditherer.dither_line(line.data(), indices.data());
            for (const std::uint8_t index : indices) {
                const RGBQUAD& colour = ditherer.colours()[index];
                sum[0] += colour.rgbBlue;
                sum[1] += colour.rgbGreen;
                sum[2] += colour.rgbRed;
            }
        }
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(sum[i] / (side * side), c.colour[i], 3) << c.bits << " bits, channel " << i;
    }
}

oMEMDIB noise(int width, int height, int bits, int colours)
{
    std::mt19937 random(static_cast<unsigned>(bits + colours));
    oMEMDIB dib(0);
    dib.SetHeader(oDIBHEADER(width, height, 72, 96, model_of_bits(static_cast<unsigned>(bits))));
    std::vector<RGBQUAD> table(static_cast<std::size_t>(colours));
    for (RGBQUAD& c : table)
        c = {static_cast<BYTE>(random()), static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0};
    if (bits <= 8)
        dib.SetPalette(oDIBPALETTE(table.data(), static_cast<std::uint16_t>(colours)));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::size_t colour = random() % table.size();
            if (bits == 24)
                std::copy_n(&table[colour].rgbBlue, 3, dib.line(y).data() + 3 * x);
            else
                dib.line(y)[static_cast<std::size_t>(x * bits / 8)]
                    |= static_cast<std::uint8_t>(colour << (8 - bits - x * bits % 8));
        }
    return dib;
}

bytes pixels_in_24(const oDIB& dib)
{
    const oMEMDIB deep(dib, 0, 0, 24, 0, 0);
    bytes all;
    for (int y = 0; y < deep.Height(); ++y)
        all.insert(all.end(), deep.line(y).begin(), deep.line(y).end());
    return all;
}

TEST(Dib, ReducesInPlaceAsInACopy)
{
    for (const int from : {4, 8, 24})
        for (const int colours : {2, 16, 256, 1000})
            for (const int to : {1, 4, 8}) {
                if (to >= from || (from <= 8 && colours > 1 << from))
                    continue;
                const oMEMDIB original = noise(37, 29, from, colours);
                const oMEMDIB copy(original, 0, 0, to, 0, 0);
                oMEMDIB reduced(original);
                ASSERT_TRUE(reduced.Reduce(to));
                EXPECT_EQ(reduced.ColourDepth(), to);
                EXPECT_EQ(reduced.InfoHeader().biXPelsPerMeter, 72 * 40);
                EXPECT_EQ(reduced.InfoHeader().biYPelsPerMeter, 96 * 40);
                EXPECT_EQ(pixels_in_24(reduced), pixels_in_24(copy)) << from << " to " << to;
                if (colours <= 1 << to) {
                    EXPECT_EQ(pixels_in_24(reduced), pixels_in_24(original)) << from << " to " << to;
                }
            }
    oMEMDIB dib = noise(5, 5, 8, 4);
    EXPECT_FALSE(dib.Reduce(8));
    EXPECT_FALSE(dib.Reduce(2));
    EXPECT_FALSE(oMEMDIB().Reduce(1));
}

TEST(WidenedDib, ShowsTheSamePixelsInMoreBits)
{
    for (const int from : {1, 4, 8})
        for (const std::uint16_t to : {std::uint16_t{4}, std::uint16_t{8}, std::uint16_t{24}}) {
            if (to <= from)
                continue;
            const oMEMDIB original = noise(37, 29, from, 1 << from);
            const widened_dib wide(original, to);
            EXPECT_EQ(wide.ColourDepth(), to);
            EXPECT_EQ(wide.InfoHeader().biYPelsPerMeter, 96 * 40);
            EXPECT_EQ(pixels_in_24(wide), pixels_in_24(original)) << from << " to " << to;

            vMEMSTREAM stored;
            wide >> stored;
            stored.MoveFromStart(0);
            EXPECT_EQ(pixels_in_24(oMEMDIB(stored, 0)), pixels_in_24(original)) << from << " to " << to;
        }
}

} // namespace
} // namespace klv
