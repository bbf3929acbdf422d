#include "klv/bitmaps/dib_header.h"
#include "klv/bitmaps/dib_palette.h"
#include "klv/colour/colour.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

TEST(DibHeader, LaysRowsOutInFourByteSteps)
{
    const struct {
        int width, height, bits;
        std::uint32_t stride, size;
    } cases[] = {
        {3, 2, 24, 12, 24},
        {1, 1, 24, 4, 4},
        {33, 2, 1, 8, 16},
        {32, 1, 1, 4, 4},
        {9, 3, 4, 8, 24},
        {5, 4, 8, 8, 32},
        {0, 5, 24, 0, 0},
        {-3, 5, 24, 0, 0},
        {5, 0, 24, 0, 0},
        {65536, 65536, 8, 0, 0}, // 2^32 bytes: no image size says that
        {2147483647, 1, 24, 0, 0},
    };
    for (const auto& c : cases) {
        const auto header
            = oDIBHEADER::of_depth(c.width, c.height, static_cast<std::uint16_t>(c.bits), oMODEL_RGB24);
        EXPECT_EQ(header.BytesPerLine(), c.stride) << c.width << 'x' << c.height << 'x' << c.bits;
        EXPECT_EQ(header.Size(), c.size) << c.width << 'x' << c.height << 'x' << c.bits;
    }
}

TEST(DibHeader, TakesDepthAndColoursFromItsModel)
{
    const struct {
        int model;
        int bits;
        std::uint32_t colours;
    } cases[] = {{0, 24, 0}, {1, 24, 0}, {2, 32, 0}, {3, 1, 2}, {4, 4, 16}, {5, 8, 256}, {6, 8, 256},
        {7, 8, 256}, {8, 24, 0}, {-1, 24, 0}};
    for (const auto& c : cases) {
        const oDIBHEADER header(10, 10, 96, 72, static_cast<oCOLOUR_MODEL>(c.model));
        EXPECT_EQ(header.ColourDepth(), c.bits) << c.model;
        EXPECT_EQ(header.ColoursUsed(), c.colours) << c.model;
        EXPECT_EQ(header.info().biXPelsPerMeter, 3840);
        EXPECT_EQ(header.HorzDPI(), 96);
        EXPECT_EQ(header.VertDPI(), 72);
    }
}

TEST(DibPalette, RefusesWhatLiesBeyondItsColours)
{
    const RGBQUAD given[] = {{1, 2, 3, 99}, {4, 5, 6, 0}};
    oDIBPALETTE palette(given, 2);
    EXPECT_EQ(palette.GetRgbQuad()[0], (RGBQUAD{1, 2, 3, 0}));
    EXPECT_TRUE(palette.SetColour(1, vCOLOUR(10, 20, 30)));
    EXPECT_FALSE(palette.SetColour(2, vCOLOUR()));
    vCOLOUR colour;
    EXPECT_TRUE(palette.GetColour(1, colour));
    EXPECT_EQ(colour, vCOLOUR(10, 20, 30));
    EXPECT_FALSE(palette.GetColour(2, colour));
    EXPECT_FALSE(palette.GetNearestColour(vCOLOUR(), colour));
    EXPECT_EQ(colour, vCOLOUR(10, 20, 30));
    EXPECT_EQ(oDIBPALETTE().GetRgbQuad(), nullptr);
}

} // namespace
} // namespace klv
