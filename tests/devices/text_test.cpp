#include "klv/core/list.h"
#include "klv/core/string.h"
#include "klv/devices/font_detail.h"

#include "tests/devices/test_surface.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::fill;
using test::surface;

vFONTSPEC font(const char* face, int size, vFONTSTYLE style = vFONT_NORMAL, double angle = 0)
{
    return {vSTRING(face), style, size, vREAL(), 0, vFONT_CHARACTER_HEIGHT, vANGLE(angle)};
}

/// A device on a surface whose logical unit is a pixel at 96 an inch, with a black solid fill.
struct text_device {
    explicit text_device(int width = 200, int height = 100)
        : pixels(width, height)
        , device(pixels.dc())
    {
        device.FillSpec(fill(vFILL_SOLID));
    }
    RECT ink() const
    {
        RECT box{INT32_MAX, INT32_MAX, 0, 0};
        for (int y = 0; y < height(); ++y)
            for (int x = 0; x < width(); ++x)
                if (pixels.at(x, y) != 0xFFFFFF)
                    box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                        std::max(box.bottom, y + 1)};
        return box.right > 0 ? box : RECT{};
    }
    int ink_pixels() const { return width() * height() - pixels.count(0xFFFFFF); }
    int width() const { return description().bmWidth; }
    int height() const { return description().bmHeight; }
    LOGFONTA selected() const
    {
        LOGFONTA logical{};
        GetObjectA(GetCurrentObject(pixels.dc(), OBJ_FONT), sizeof logical, &logical);
        return logical;
    }

    surface pixels;
    vDEVICE device;

private:
    BITMAP description() const
    {
        BITMAP bitmap{};
        GetObjectA(GetCurrentObject(pixels.dc(), OBJ_BITMAP), sizeof bitmap, &bitmap);
        return bitmap;
    }
};

// ---- Selection -----------------------------------------------------------------------------------------

TEST(DeviceFont, StartsAsBoldArial)
{
    vDEVICE device;
    EXPECT_EQ(device.FontSpec(), font("Arial", 8, vFONT_BOLD));
    device.FontSpec(font("Courier New", 12));
    device.PopFontSpec();
    EXPECT_EQ(device.FontSpec(), font("Arial", 8, vFONT_BOLD)) << "popping an empty stack";
}

TEST(DeviceFont, KeepsADetailForEachSpecification)
{
    text_device d;
    const vFONTSPEC a = font("Arial", 20);
    const vFONTSPEC b = font("Times New Roman", 20);
    d.device.FontSpec(a);
    vFONTDETAIL* const first = d.device.GetCurFontDetail();
    const HFONT realised = d.device.ActivateFont(0);
    ASSERT_NE(realised, nullptr);
    EXPECT_EQ(d.device.ActivateFont(0), realised);
    d.device.FontSpec(b);
    EXPECT_NE(d.device.GetCurFontDetail(), first);
    d.device.FontSpec(a);
    EXPECT_EQ(d.device.GetCurFontDetail(), first);
    EXPECT_EQ(d.device.ActivateFont(0), realised);
}

TEST(DeviceFont, ListMovesWhatIsUsedToItsHead)
{
    vDEVICE device;
    font_list list;
    const vFONTSPEC a = font("Arial", 20);
    const vFONTSPEC b = font("Times New Roman", 20);
    vFONTDETAIL* const first = list.use(a, device);
    vFONTDETAIL* const second = list.use(b, device);
    EXPECT_EQ(list.head(), second);
    EXPECT_EQ(list.use(a, device), first);
    EXPECT_EQ(list.head(), first);
    EXPECT_EQ(list.size(), 2U);
}

TEST(DeviceFont, RealisesSpecifications)
{
    struct {
        vFONTSTYLE style;
        int height; // as the font record stores it
        double angle;
        int realised;
        int weight;
        bool italic;
        int escapement;
    } cases[] = {
        {vFONT_NORMAL, -13, 0, -13, FW_NORMAL, false, 0}, // 13 * 72 / 96 = 10 points, 10 * 1.3 = 13 pixels
        {vFONT_ITALIC, -40, 30, -39, FW_NORMAL, true, 299},
        {vFONT_BOLD, 40, 90, 30, FW_BOLD, false, 899}, // a cell height is not widened
        {vFONT_BOLD_ITALIC, -1, -90, -1, FW_BOLD, true, -899},
    };
    text_device d;
    for (const auto& c : cases) {
        vFONTSPEC spec = font("Arial", 1, c.style, c.angle);
        spec.Height(c.height);
        d.device.FontSpec(spec);
        ASSERT_NE(d.device.ActivateFont(1), nullptr);
        const LOGFONTA logical = d.selected();
        EXPECT_EQ(logical.lfHeight, c.realised) << c.height;
        EXPECT_EQ(logical.lfWeight, c.weight) << c.height;
        EXPECT_EQ(logical.lfItalic != 0, c.italic) << c.height;
        EXPECT_EQ(logical.lfEscapement, c.escapement) << c.height;
        EXPECT_EQ(logical.lfOrientation, c.escapement) << c.height;
        EXPECT_STREQ(logical.lfFaceName, "Arial");
    }
}

TEST(DeviceFont, KeepsItsSizeAtEveryResolutionAndRatio)
{
    struct {
        int dots_per_inch;
        double ratio;
        int realised;
    } cases[] = {{96, 1, -39}, {192, 1, -78}, {96, 2, -78}, {96, 0, -39}, {384, 0.5, -78}, {96, 0.001, -1}};
    for (const auto& c : cases) {
        surface pixels(10, 10);
        SetDeviceResolution(pixels.dc(), c.dots_per_inch);
        vDEVICE device(pixels.dc());
        device.LogUnitsPerHorzInch(96);
        device.LogUnitsPerVertInch(96);
        device.SetFontRatio(vREAL(c.ratio));
        EXPECT_EQ(realised_font_height(font("Arial", 40), device), c.realised)
            << c.dots_per_inch << ' ' << c.ratio;
    }
}

TEST(DeviceFont, ExpandsHorizontally)
{
    text_device d;
    const auto width = [&](double expansion) {
        vFONTSPEC spec = font("Arial", 400);
        spec.Expansion(vREAL(expansion));
        d.device.FontSpec(spec);
        EXPECT_EQ(d.device.GetCurFontDetail()->GetCharHeight(), 436);
        return d.device.GetCurFontDetail()->GetDefStringWidth(d.device, "Expanded");
    };
    const int natural = width(0);
    EXPECT_EQ(width(1), natural);
    EXPECT_NEAR(width(2), 2 * natural, 0.02 * natural);
    EXPECT_NEAR(width(0.5), 0.5 * natural, 0.02 * natural);
    EXPECT_EQ(width(-3), natural);
}

TEST(DeviceFont, IsMeasuredAnewWhenTheRatioChanges)
{
    text_device d;
    d.device.FontSpec(font("Arial", 40));
    vFONTDETAIL& detail = *d.device.GetCurFontDetail();
    const int height = detail.GetCharHeight();
    const int width = detail.GetCharWidthA('M');
    EXPECT_GT(width, 0);
    d.device.SetFontRatio(vREAL(2.0));
    EXPECT_NEAR(detail.GetCharHeight(), 2 * height, 1);
    EXPECT_NEAR(detail.GetCharWidthA('M'), 2 * width, 1);
}

TEST(DeviceFont, IsGivenBackWhenItIsCleared)
{
    text_device d;
    ASSERT_NE(d.device.ActivateFont(0), nullptr);
    d.device.ClearFont();
    EXPECT_EQ(d.device.GetCurFontDetail()->Font(), nullptr);
    EXPECT_EQ(GetCurrentObject(d.pixels.dc(), OBJ_FONT), GetStockObject(SYSTEM_FONT));
    EXPECT_NE(d.device.ActivateFont(0), nullptr);
}

TEST(FontDetail, AnswersZeroWithoutADeviceOrAContext)
{
    vFONTDETAIL alone;
    EXPECT_EQ(alone.GetCharWidthA('a'), 0);
    EXPECT_EQ(alone.GetCharHeight(), 0);
    vDEVICE without_context;
    EXPECT_EQ(without_context.GetCurFontDetail()->GetCharHeight(), 0);
    EXPECT_EQ(without_context.ActivateFont(0), nullptr);
    EXPECT_EQ(without_context.TextOutA("a", vRECT(0, 0, 9, 9), vTEXT_LEFT, 0, vPOINT(), 0), 0);
}

TEST(FontDetail, MeasuresStrings)
{
    text_device d;
    d.device.FontSpec(font("Arial", 100));
    vFONTDETAIL& detail = *d.device.GetCurFontDetail();
    EXPECT_EQ(
        detail.GetDefStringWidth(d.device, "Ai"), detail.GetCharWidthA('A') + detail.GetCharWidthA('i'));
    EXPECT_EQ(detail.GetCharWidthA('\x01'), 0) << "below the font's first character";
    EXPECT_GT(detail.GetCharWidthA(vCHAR(0xE9)), 0);
}

TEST(FontDetail, AsksEachKerningPairOnce)
{
    text_device d;
    d.device.FontSpec(font("Arial", 1000));
    vFONTDETAIL& detail = *d.device.GetCurFontDetail();
    KERNINGPAIR pair{'A', 'V', 99};
    EXPECT_EQ(detail.GetKerningValue(pair), 0);
    EXPECT_EQ(pair.iKernAmount, 99);
    const int amount = detail.GetKernValue(d.device, 'A', 'V');
    EXPECT_LT(amount, -50);
    EXPECT_EQ(detail.GetKerningValue(pair), 1);
    EXPECT_EQ(pair.iKernAmount, amount);
    EXPECT_EQ(detail.GetKernValue(d.device, 'x', 'x'), 0);

    detail.SetKerningValue({0xFFE9, 'V', 5});
    EXPECT_EQ(detail.GetKernValue(d.device, vCHAR(0xE9), 'V'), 5) << "characters are signed in pairs";
}

TEST(FontDetail, CopiesTheSpecificationButNotTheFont)
{
    text_device d;
    d.device.FontSpec(font("Arial", 40));
    vFONTDETAIL& detail = *d.device.GetCurFontDetail();
    const int height = detail.GetCharHeight();
    vFONTDETAIL copy(detail);
    EXPECT_EQ(copy.Font(), nullptr);
    EXPECT_EQ(copy, font("Arial", 40));
    EXPECT_EQ(copy.GetCharHeight(), height);
    copy.Init();
    EXPECT_EQ(copy.Ascent(), 0);
}

// ---- Drawing -------------------------------------------------------------------------------------------

TEST(DeviceText, StandsInItsRectangle)
{
    const vRECT rect(20, 10, 180, 90);
    const auto ink = [&](vTEXTALIGN align) {
        text_device d;
        d.device.FontSpec(font("Arial", 40));
        EXPECT_NE(d.device.DrawTextA("HH", rect, align, 0, vPOINT(), 0), 0);
        return d.ink();
    };
    text_device d;
    d.device.FontSpec(font("Arial", 40));
    d.device.ActivateFont(0);
    const int baseline = 90 - (80 - d.device.GetLogFontHeight()) / 2;
    const RECT left = ink(vTEXT_LEFT);
    const RECT right = ink(vTEXT_RIGHT);
    const RECT centre = ink(vTEXT_CENTRE);
    EXPECT_EQ(left.bottom, baseline);
    EXPECT_EQ(right.bottom, baseline);
    const int bearing = left.left - 20;
    EXPECT_NEAR(bearing, 3, 1);
    EXPECT_NEAR(180 - right.right, bearing, 1);
    EXPECT_NEAR(centre.left + centre.right, 200, 2);
}

TEST(DeviceText, TurnsAboutThePivot)
{
    text_device d(200, 200);
    d.device.FontSpec(font("Arial", 40));
    d.device.FontSpec(font("Arial", 40, vFONT_NORMAL, 90));
    d.device.DrawTextA("L", vRECT(100, 80, 200, 120), vTEXT_LEFT, 1, vPOINT(100, 100), 90);
    const RECT turned = d.ink();
    text_device upright(200, 200);
    upright.device.FontSpec(font("Arial", 40));
    upright.device.DrawTextA("L", vRECT(100, 80, 200, 120), vTEXT_LEFT, 0, vPOINT(), 0);
    const RECT r = upright.ink();
    EXPECT_NEAR(turned.left, r.top, 2);
    EXPECT_NEAR(turned.right, r.bottom, 2);
    EXPECT_NEAR(turned.bottom, 200 - r.left, 2);
}

TEST(DeviceText, DrawsOnlyWithASolidVisibleFill)
{
    struct {
        vFILLTYPE type;
        bool drawn;
    } cases[] = {{vFILL_SOLID, true}, {vFILL_NONE, false}, {vFILL_RADIAL, false}};
    for (const auto& c : cases) {
        text_device d;
        d.device.FillSpec(fill(c.type));
        d.device.DrawTextA("text", vRECT(0, 0, 200, 100), vTEXT_LEFT, 0, vPOINT(), 0);
        EXPECT_EQ(d.ink_pixels() > 0, c.drawn) << c.type;
    }
}

TEST(DeviceText, IsClippedToItsRectangle)
{
    text_device d;
    d.device.FontSpec(font("Arial", 80));
    d.device.DrawTextA("WWWW", vRECT(50, 40, 90, 60), vTEXT_CENTRE, 0, vPOINT(), 0);
    const RECT ink = d.ink();
    EXPECT_GE(ink.left, 50);
    EXPECT_GE(ink.top, 40);
    EXPECT_LE(ink.right, 90);
    EXPECT_LE(ink.bottom, 60);
    EXPECT_GT(d.ink_pixels(), 0);
}

TEST(DeviceText, IsDoneWhenItCannotBeSeen)
{
    text_device d;
    d.device.ClipArea(vRECT(0, 0, 10, 10), RGN_COPY);
    EXPECT_EQ(d.device.DrawTextA("text", vRECT(50, 50, 90, 60), vTEXT_LEFT, 0, vPOINT(), 0), 1);
    EXPECT_EQ(d.ink_pixels(), 0);
}

TEST(DeviceText, RunsOnALineFromItsUpperLeftCorner)
{
    text_device d;
    d.device.FontSpec(font("Arial", 40));
    EXPECT_NE(d.device.DrawTextOnLine("H", vPOINT(10, 20), nullptr, 0), 0);
    const RECT one = d.ink();
    const int ascent
        = d.device.GetCurFontDetail()->GetCharHeight() != 0 ? d.device.GetCurFontDetail()->Ascent() : 0;
    EXPECT_EQ(one.bottom, 20 + ascent);

    const short advances[] = {60, 30};
    d.device.DrawTextOnLine("HH", vPOINT(10, 20), advances, 0);
    EXPECT_EQ(d.ink().right, one.right + 60);
}

TEST(DeviceText, TakesLongTextsWithAdvances)
{
    text_device d;
    const std::string many(1000, 'i');
    const std::vector<short> advances(many.size(), 0);
    EXPECT_NE(d.device.DrawTextOnLine(vSTRING(many.c_str()), vPOINT(50, 20), advances.data(), 0), 0);
    EXPECT_LT(d.ink().right, 60);
}

TEST(DeviceText, DrawsSingleCharactersInTheirCells)
{
    text_device d;
    d.device.FontSpec(font("Arial", 40));
    d.device.DrawChar('H', vPOINT(50, 80));
    const RECT ink = d.ink();
    const vFONTDETAIL& detail = *d.device.GetCurFontDetail();
    EXPECT_EQ(ink.bottom, 80 - detail.Descent());
    EXPECT_GE(ink.left, 50);
}

TEST(DeviceText, TakesTheFillColour)
{
    text_device d;
    d.device.FillSpec(fill(vFILL_SOLID, vCOLOUR(255, 0, 0)));
    d.device.FontSpec(font("Arial", 40));
    d.device.DrawTextOnLine("H", vPOINT(10, 20), nullptr, 0);
    EXPECT_EQ(d.pixels.count(0xFF0000), d.ink_pixels());
    EXPECT_GT(d.ink_pixels(), 0);
}

TEST(DeviceFonts, ListsTheInstalledFamiliesOnce)
{
    text_device d;
    EXPECT_EQ(d.device.NoFonts(), 0);
    const int count = d.device.LoadFont();
    EXPECT_GT(count, 1);
    EXPECT_EQ(d.device.LoadFont(), count);
    EXPECT_EQ(d.device.NoFonts(), count);
    ITERATOR position;
    bool liberation = false;
    for (int i = 0; i < count; ++i) {
        const vFONT& family = d.device.GetFont(position);
        liberation |= std::string(family.TypeFaceName()) == "Liberation Sans";
        EXPECT_STREQ(family.Description(), "TrueType");
    }
    EXPECT_TRUE(liberation);
    EXPECT_STREQ(d.device.GetFont(position).TypeFaceName(), "") << "beyond the last";
}

} // namespace
} // namespace klv
