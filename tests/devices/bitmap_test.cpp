#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/tile_info.h"
#include "klv/colour/image_colour.h"
#include "klv/devices/bitmap/colour_match.h"
#include "klv/devices/bitmap/colour_override.h"

#include "test_surface.h"

#include <gtest/gtest.h>

namespace klv::test {
namespace {

// A 24-bit bitmap from rows of letters: R, G, B, '#', '.'.
oMEMDIB picture(std::initializer_list<std::string_view> rows)
{
    const auto height = static_cast<int>(rows.size());
    const auto width = static_cast<int>(rows.begin()->size());
    oMEMDIB dib(width, height, 24, oMODEL_RGB24, 0);
    int y = height - 1;
    for (const std::string_view row : rows) {
        std::uint8_t* pixel = dib.line(y--).data();
        for (const char c : row) {
            *pixel++ = c == 'B' || c == '.' ? 255 : 0;
            *pixel++ = c == 'G' || c == '.' ? 255 : 0;
            *pixel++ = c == 'R' || c == '.' ? 255 : 0;
        }
    }
    return dib;
}

oDIBCONTEXT context_of(const oDIB& dib, const vRECT& target, double angle = 0, int flip_h = 0, int flip_v = 0,
    const vIMAGECOLOUR& colour = vIMAGECOLOUR(), const vTILEINFO& tiles = vTILEINFO(),
    const vRECT* source = nullptr)
{
    return {dib.Width(), dib.Height(), &target, source, angle, flip_h, flip_v, colour, tiles};
}

std::string drawn(const oDIB& dib, oDIBCONTEXT context, int width, int height, vRECT* clip = nullptr)
{
    surface paper(width, height);
    vDEVICE device(paper.dc());
    device.DrawDIB(dib, context, clip, 0);
    return paper.art();
}

TEST(Bitmaps, FillTheirRectangle)
{
    const oMEMDIB dib = picture({"RG", "B#"});
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(1, 0, 3, 2)), 4, 3), ".RG.\n.B#.\n....\n");
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 4, 4)), 4, 4), "RRGG\nRRGG\nBB##\nBB##\n");
    vRECT clip(1, 1, 3, 3);
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 4, 4)), 4, 4, &clip), "....\n.RG.\n.B#.\n....\n");
    const vRECT right(1, 0, 2, 2);
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 2, 2), 0, 0, 0, {}, {}, &right), 2, 2), "GG\n##\n");
}

TEST(Bitmaps, FlipAndTurn)
{
    const oMEMDIB dib = picture({"RG", "B#"});
    const vRECT target(0, 0, 2, 2);
    EXPECT_EQ(drawn(dib, context_of(dib, target, 0, 1, 0), 2, 2), "GR\n#B\n");
    EXPECT_EQ(drawn(dib, context_of(dib, target, 0, 0, 1), 2, 2), "B#\nRG\n");
    EXPECT_EQ(drawn(dib, context_of(dib, target, 180), 2, 2), "#B\nGR\n");
    const std::string turned = drawn(dib, context_of(dib, target, 90), 2, 2);
    EXPECT_TRUE(turned == "BR\n#G\n" || turned == "G#\nRB\n") << turned;
}

TEST(Bitmaps, TransparentColoursLeaveTheBackground)
{
    const oMEMDIB dib = picture({"R.", ".G"});
    const struct {
        vTRANSPARENCYTYPE type;
        vCOLOUR key;
        const char* expected;
    } cases[] = {
        {vTRANSPARENCY_WHITE, vCOLOUR(), "RB\nBG\n"},
        {vTRANSPARENCY_COLOUR, vCOLOUR(0, 255, 0), "R.\n.B\n"},
        {vTRANSPARENCY_ALL_BUT_COLOUR, vCOLOUR(0, 255, 0), "BB\nBG\n"},
    };
    for (const auto& c : cases) {
        surface paper(2, 2);
        vDEVICE device(paper.dc());
        device.LineSpec(no_line());
        device.FillSpec(fill(vFILL_SOLID, vCOLOUR(0, 0, 255)));
        device.DrawRect(vRECT(-1, -1, 3, 3));
        vIMAGECOLOUR colour;
        colour.SetTransparency(c.type);
        colour.SetTransparencyColour(c.key);
        oDIBCONTEXT context = context_of(dib, vRECT(0, 0, 2, 2), 0, 0, 0, colour);
        device.DrawDIB(dib, context, nullptr, 0);
        EXPECT_EQ(paper.art(), c.expected) << c.type;
    }
}

TEST(Bitmaps, Tiles)
{
    const oMEMDIB dib = picture({"RG", "B#"});
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 4, 2), 0, 0, 0, {}, vTILEINFO(vTILE_TILED, 2, 1)), 5, 3),
        "RGRG.\nB#B#.\n.....\n");
    vTILEINFO fixed(vTILE_TILED, 1, 1);
    fixed.SetTileDrawMode(vTILE_FIXED_SIZE);
    fixed.SetTileSize(vSIZE(2, 2));
    EXPECT_EQ(
        drawn(dib, context_of(dib, vRECT(0, 0, 3, 3), 0, 0, 0, {}, fixed), 4, 4), "RGR.\nB#B.\nRGR.\n....\n");
}

TEST(Bitmaps, OverridesReplaceColours)
{
    const oMEMDIB dib = picture({"#."});
    vIMAGECOLOUR colour;
    colour.SetType(vOVERRIDE_MONOCHROME);
    colour.SetForegroundColour(vCOLOUR(255, 0, 0));
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 2, 1), 0, 0, 0, colour), 2, 1), "R.\n");
    colour.SetType(vOVERRIDE_TRITONE);
    colour.SetBackgroundColour(vCOLOUR(0, 0, 255));
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 2, 1), 0, 0, 0, colour), 2, 1), "BR\n");
    colour.SetType(vOVERRIDE_DUOTONE); // bitmaps go from black to white
    EXPECT_EQ(drawn(dib, context_of(dib, vRECT(0, 0, 2, 1), 0, 0, 0, colour), 2, 1), "#.\n");
}

TEST(Bitmaps, GreyscaleOutputHasNoColours)
{
    const oMEMDIB dib = picture({"RGB"});
    surface paper(3, 1);
    vDEVICE device(paper.dc());
    device.DisplayMode(vDISPLAY_GREYSCALE, vCOLOUR(), 1, 1);
    oDIBCONTEXT context = context_of(dib, vRECT(0, 0, 3, 1));
    device.DrawDIB(dib, context, nullptr, 0);
    for (int x = 0; x < 3; ++x)
        EXPECT_EQ(paper.at(x, 0) & 0xFF, paper.at(x, 0) >> 16) << x;
    EXPECT_GT(paper.at(1, 0) & 0xFF, paper.at(2, 0) & 0xFF); // green is brighter than blue
}

TEST(Bitmaps, ExtremeTargetsAreHarmless)
{
    const oMEMDIB dib = picture({"RG", "B#"});
    surface paper(8, 8);
    vDEVICE device(paper.dc());
    const vRECT targets[]
        = {{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, {INT32_MAX, 0, INT32_MIN, 8}, {3, 3, 3, 3}};
    for (const vRECT& target : targets) {
        for (const double angle : {0.0, 33.0, 90.0}) {
            oDIBCONTEXT context = context_of(dib, target, angle);
            device.DrawDIB(dib, context, nullptr, 0);
            vIMAGECOLOUR colour;
            colour.SetTransparency(vTRANSPARENCY_WHITE);
            oDIBCONTEXT transparent
                = context_of(dib, target, angle, 0, 0, colour, vTILEINFO(vTILE_TILED, INT32_MAX, 3));
            device.DrawDIB(dib, transparent, nullptr, 0);
        }
    }
}

TEST(ColourMatch, ToleranceWidensAboutTheKey)
{
    const RGBQUAD key{40, 80, 120, 0};
    const colour_match exact(key, 0);
    EXPECT_TRUE(exact(key));
    EXPECT_FALSE(exact({41, 80, 120, 0}));
    const colour_match near(key, 5);
    EXPECT_TRUE(near(key));
    EXPECT_TRUE(near({42, 82, 122, 0}));
    EXPECT_FALSE(near({120, 80, 40, 0}));
    const colour_match white({255, 255, 255, 0}, 5);
    EXPECT_TRUE(white({250, 250, 250, 0}));
    EXPECT_FALSE(white({128, 128, 128, 0}));
}

TEST(ColourOverride, BalanceAtItsEnds)
{
    vIMAGECOLOUR colour;
    vCOLOUR out;
    const vCOLOUR grey(128, 128, 128);
    EXPECT_EQ(vDEVICE::RGBtoRGB(&grey, &out, colour), 1);
    EXPECT_EQ(out, grey);
    const auto changed = [&](auto set) {
        vIMAGECOLOUR balance;
        set(balance);
        vDEVICE::RGBtoRGB(&grey, &out, balance);
        return int{out.Red()};
    };
    EXPECT_LT(changed([](vIMAGECOLOUR& c) { c.SetBrightness(0); }), 100);
    EXPECT_GT(changed([](vIMAGECOLOUR& c) { c.SetBrightness(100); }), 150);
    EXPECT_EQ(changed([](vIMAGECOLOUR& c) { c.SetContrast(100); }), 128);
    const vCOLOUR red(255, 0, 0);
    colour.SetSaturation(0);
    vDEVICE::RGBtoRGB(&red, &out, colour);
    EXPECT_EQ(out.Red(), out.Green());
}

TEST(ColourOverride, PaletteTakesTheColourForBlack)
{
    std::uint8_t entries[256 * 4] = {};
    entries[4] = entries[5] = entries[6] = 255;
    entries[7] = 9;
    EXPECT_EQ(vDEVICE::Munge256Palette(entries, vCOLOUR(10, 20, 30)), 1);
    EXPECT_EQ(entries[0], 30);
    EXPECT_EQ(entries[2], 10);
    EXPECT_EQ(entries[4], 255);
    EXPECT_EQ(entries[7], 9);
}

} // namespace
} // namespace klv::test
