#include "test_surface.h"

#include <gtest/gtest.h>

namespace klv::test {
namespace {

TEST(Attributes, PoppingAnEmptyStackRestoresTheDefault)
{
    vDEVICE device;
    device.LineSpec(line(7, vCORNER_MITRE, vCOLOUR(1, 2, 3)));
    device.PopLineSpec();
    EXPECT_EQ(device.LineSpec(), vLINESPEC());
    EXPECT_EQ(device.LineSpec().Width(), 1);
    device.FillSpec(fill(vFILL_RADIAL, vCOLOUR(1, 2, 3)));
    device.PopFillSpec();
    EXPECT_TRUE(device.FillSpec() == vFILLSPEC());
}

TEST(Attributes, StateIsPushedAndPoppedAsAWhole)
{
    surface paper(8, 8);
    vDEVICE device(paper.dc());
    device.LineSpec(line(3));
    device.FillSpec(fill(vFILL_SOLID, vCOLOUR(255, 0, 0)));
    device.ClipArea(vRECT(0, 0, 4, 4), RGN_AND);
    device.PushState();
    device.LineSpec(line(9));
    device.FillSpec(fill(vFILL_NONE));
    device.ClipArea(vRECT(0, 0, 2, 2), RGN_AND);
    EXPECT_EQ(device.ClipArea(), vRECT(0, 0, 3, 3));
    device.PopState();
    EXPECT_EQ(device.LineSpec().Width(), 3);
    EXPECT_EQ(device.FillSpec().Type(), vFILL_SOLID);
    EXPECT_EQ(device.ClipArea(), vRECT(0, 0, 5, 5));
}

struct recording_device : vDEVICE {
    using vDEVICE::FillSpec;
    using vDEVICE::FontSpec;
    using vDEVICE::LineSpec;
    std::string calls;
    void LineSpec(const vLINESPEC& spec) noexcept override
    {
        calls += 'L' + std::to_string(spec.Width());
        vDEVICE::LineSpec(spec);
    }
    void FillSpec(const vFILLSPEC& spec) noexcept override
    {
        calls += 'F' + std::to_string(spec.Type());
        vDEVICE::FillSpec(spec);
    }
};

TEST(Attributes, PopsGoThroughTheSetters)
{
    recording_device device;
    device.LineSpec(line(4));
    device.PushLineSpec();
    device.PushFillSpec();
    device.LineSpec(line(5));
    device.calls.clear();
    device.PopLineSpec();
    device.PopFillSpec();
    EXPECT_EQ(device.calls, "L4F1");
}

TEST(Attributes, ResolutionLimitsAreKeptAboveTen)
{
    vDEVICE device;
    EXPECT_EQ(device.maxXTransformDPI(), 150);
    device.maxXTransformDPI(5);
    device.maxYTransformDPI(11);
    EXPECT_EQ(device.maxXTransformDPI(), 10);
    EXPECT_EQ(device.maxYTransformDPI(), 11);
}

TEST(Attributes, GreyscaleConvertsOnceHoweverOftenASpecIsPopped)
{
    vDEVICE device;
    device.DisplayMode(vDISPLAY_PROCESS_SEPARATION, vCOLOUR(vCOLOUR_CMYK, 100U << 24, 100, 0), 1, 0);
    const vCOLOUR ink(vCOLOUR_CMYK, 60U << 24 | 20U, 100, 0); // 60 cyan, 20 black
    device.LineSpec(line(1, vCORNER_BEVEL, ink));
    EXPECT_EQ(device.LineSpec().Colour(), vCOLOUR(vCOLOUR_RGB, 0, 60, 0));
    device.PushLineSpec();
    device.PopLineSpec();
    EXPECT_EQ(device.LineSpec().Colour(), vCOLOUR(vCOLOUR_RGB, 0, 60, 0));
}

TEST(Attributes, PlateFollowsAPureInkAndStaysOtherwise)
{
    const vCOLOUR ink(vCOLOUR_CMYK, 10U << 24 | 20U << 16 | 30U << 8 | 40U, 100, 0);
    const struct {
        std::uint32_t plate;
        int expected;
    } cases[] = {{100U << 24, 10}, {100U << 16, 20}, {100U << 8, 30}, {100U, 40}, {50U << 16, 40},
        {100U << 24 | 1U, 40}};
    vDEVICE device;
    for (const auto& c : cases) {
        device.DisplayMode(vDISPLAY_PROCESS_SEPARATION, vCOLOUR(vCOLOUR_CMYK, c.plate, 100, 0), 1, 1);
        int visible = 0;
        EXPECT_EQ(device.separate_process_colour(ink, visible), c.expected) << c.plate;
    }
}

TEST(Attributes, HiddenColoursAreNotDrawn)
{
    surface paper(6, 6);
    vDEVICE device(paper.dc());
    const vCOLOUR spot(vCOLOUR_CMYK, 80U << 16, 100, 1);
    device.DisplayMode(vDISPLAY_SPOT_SEPARATION, spot, 0, 0);
    device.FillSpec(fill(vFILL_SOLID, vCOLOUR(255, 0, 0)));
    device.LineSpec(line(1, vCORNER_BEVEL, spot));
    EXPECT_EQ(device.FillVisible(), 0);
    EXPECT_EQ(device.LineVisible(), 1);
    device.DrawRect(vRECT(1, 1, 4, 4));
    EXPECT_EQ(paper.count(0), 12);
    EXPECT_EQ(paper.count(0xFFFFFF), 24);
}

TEST(Units, ScaledMappingBecomesUnitsPerInch)
{
    surface paper(40, 40);
    SetMapMode(paper.dc(), MM_ANISOTROPIC);
    SetWindowExtEx(paper.dc(), 100, 50, nullptr);
    SetViewportExtEx(paper.dc(), 50, 50, nullptr);
    SetWindowOrgEx(paper.dc(), 10, 20, nullptr);
    {
        vDEVICE device(paper.dc());
        EXPECT_EQ(device.LogUnitsPerHorzInch(), 192);
        EXPECT_EQ(device.LogUnitsPerVertInch(), 96);
        EXPECT_EQ(GetMapMode(paper.dc()), MM_TEXT);
        vPOINT point(30, 25);
        device.LPtoDP(point);
        EXPECT_EQ(point, vPOINT(10, 5));
        device.DPtoLP(point);
        EXPECT_EQ(point, vPOINT(30, 25));
    }
    EXPECT_EQ(GetMapMode(paper.dc()), MM_ANISOTROPIC);
}

TEST(Units, ZeroUnitsPerInchChangeNothing)
{
    vDEVICE device;
    device.LogUnitsPerHorzInch(1000);
    device.LogUnitsPerHorzInch(0);
    EXPECT_EQ(device.LogUnitsPerHorzInch(), 1000);
    EXPECT_EQ(device.DevUnitsPerHorzInch(), 300); // no context to ask
}

TEST(Units, ConversionsRoundAndHoldAtTheEnds)
{
    vDEVICE device;
    device.LogUnitsPerHorzInch(200);
    EXPECT_EQ(device.LHtoDH(3), 5); // 4.5
    EXPECT_EQ(device.LHtoDH(-3), -5);
    EXPECT_EQ(device.DHtoLH(INT32_MAX), 1431655765);
    vPOINT point(INT32_MAX, INT32_MIN);
    device.Origin(vPOINT(INT32_MAX, INT32_MIN));
    device.LPtoDP(point);
    EXPECT_GT(point.x, 1 << 20);
    EXPECT_LT(point.y, -(1 << 20));
}

TEST(Device, CopyHasItsOwnClipAndLeavesTheContextAlone)
{
    surface paper(8, 8);
    vDEVICE device(paper.dc());
    device.ClipArea(vRECT(0, 0, 4, 4), RGN_COPY);
    {
        vDEVICE copy(device);
        EXPECT_EQ(copy.LogUnitsPerHorzInch(), device.LogUnitsPerHorzInch());
    }
    device.PushClipArea();
    device.ClearClipArea();
    device.PopClipArea();
    EXPECT_EQ(device.ClipArea(), vRECT(0, 0, 5, 5));
}

TEST(Device, CopyKeepsEveryAttributeAndTheStacks)
{
    surface paper(8, 8);
    vDEVICE device(paper.dc());
    const vFONTSPEC font(vSTRING("Arial"), vFONT_ITALIC, 31, vREAL(), 0, vFONT_CHARACTER_HEIGHT, vANGLE());
    device.LogUnitsPerHorzInch(300);
    device.LogUnitsPerVertInch(200);
    device.Origin(vPOINT(5, -7));
    device.maxXTransformDPI(77);
    device.maxYTransformDPI(66);
    device.SetGradQuality(vGRAD_LOW);
    device.SetFontRatio(vREAL(short{3}));
    device.LineSpec(line(8));
    device.FillSpec(fill(vFILL_RADIAL, vCOLOUR(9, 8, 7), vCOLOUR(1, 2, 3)));
    device.FontSpec(font);
    device.PushState();
    device.DisplayMode(vDISPLAY_GREYSCALE, vCOLOUR(), 1, 1);
    device.LineSpec(line(3, vCORNER_MITRE, vCOLOUR(255, 0, 0)));
    device.FillSpec(fill(vFILL_SOLID, vCOLOUR(0, 255, 0)));
    device.PopFontSpec();

    vDEVICE copy(device);
    EXPECT_EQ(copy.LogUnitsPerHorzInch(), 300);
    EXPECT_EQ(copy.LogUnitsPerVertInch(), 200);
    EXPECT_EQ(copy.DevUnitsPerVertInch(), device.DevUnitsPerVertInch());
    EXPECT_EQ(copy.Origin(), vPOINT(5, -7));
    EXPECT_EQ(copy.maxXTransformDPI(), 77);
    EXPECT_EQ(copy.maxYTransformDPI(), 66);
    EXPECT_EQ(copy.GetGradQuality(), vGRAD_LOW);
    EXPECT_EQ(copy.GetFontRatio(), vREAL(short{3}));
    EXPECT_EQ(copy.GetNoColours(), device.GetNoColours());
    EXPECT_EQ(copy.LineSpec(), device.LineSpec());
    EXPECT_TRUE(copy.FillSpec() == device.FillSpec());
    EXPECT_EQ(copy.FontSpec(), font);

    // The mode goes on converting, and the stacks are the copy's own.
    device.PopLineSpec();
    device.PopFillSpec();
    copy.PopLineSpec();
    copy.PopFillSpec();
    EXPECT_EQ(copy.LineSpec().Width(), 8);
    EXPECT_TRUE(copy.FillSpec() == device.FillSpec());
    const vCOLOUR grey = copy.FillSpec().ColourFrom();
    EXPECT_EQ(GetRValue(grey.PackedRGB()), GetGValue(grey.PackedRGB()));
}

} // namespace
} // namespace klv::test
