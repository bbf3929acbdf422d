#include "klv/geometry/primitive_shapes.h"

#include "test_surface.h"

#include <gtest/gtest.h>

namespace klv::test {
namespace {

// What a black fill of everything shows through a clip area.
std::string shown(surface& paper, vDEVICE& device)
{
    device.LineSpec(no_line());
    device.FillSpec(fill(vFILL_SOLID));
    device.DrawRect(vRECT(-5, -5, 50, 50));
    return paper.art();
}

TEST(Clip, FirstAreaByMode)
{
    const struct {
        int mode;
        const char* expected;
    } cases[] = {
        {RGN_AND, "......\n.##...\n.##...\n......\n"},
        {RGN_OR, "######\n######\n######\n######\n"},
        {RGN_XOR, "######\n#..###\n#..###\n######\n"},
        {RGN_DIFF, "######\n#..###\n#..###\n######\n"},
        {RGN_COPY, "......\n.##...\n.##...\n......\n"},
    };
    for (const auto& c : cases) {
        surface paper(6, 4);
        vDEVICE device(paper.dc());
        device.ClipArea(vRECT(1, 1, 3, 3), c.mode);
        EXPECT_EQ(shown(paper, device), c.expected) << "mode " << c.mode;
    }
}

TEST(Clip, FurtherAreasCombine)
{
    surface paper(6, 4);
    vDEVICE device(paper.dc());
    device.ClipArea(vRECT(0, 0, 3, 3), RGN_COPY);
    device.ClipArea(vRECT(3, 1, 6, 4), RGN_OR);
    device.ClipArea(vRECTSHAPE(vRECT(1, 1, 5, 2)), RGN_DIFF);
    EXPECT_EQ(shown(paper, device), drawing(R"(
            ###...
            #....#
            ######
            ...###
        )"));
}

TEST(Clip, NothingLeftStaysNothingThroughPushAndPop)
{
    surface paper(6, 4);
    vDEVICE device(paper.dc());
    device.ClipArea(vRECT(0, 0, 2, 2), RGN_COPY);
    device.ClipArea(vRECT(3, 3, 4, 4), RGN_AND);
    device.PushClipArea();
    device.ClearClipArea();
    device.PopClipArea();
    device.LineSpec(no_line());
    device.DrawRect(vRECT(0, 0, 6, 4));
    EXPECT_EQ(paper.count(0xFFFFFF), 24);
}

TEST(Clip, PopWithoutClipEndsClipping)
{
    surface paper(4, 2);
    vDEVICE device(paper.dc());
    device.PushClipArea();
    device.ClipArea(vRECT(0, 0, 1, 1), RGN_AND);
    device.PopClipArea();
    EXPECT_EQ(shown(paper, device), "####\n####\n");
}

TEST(Clip, EmptyRectanglesAreTestedOnePixelWide)
{
    surface paper(10, 10);
    vDEVICE device(paper.dc());
    device.ClipArea(vRECT(0, 0, 5, 5), RGN_COPY);
    EXPECT_TRUE(device.ClipAreaIntersect(vRECT(1, 3, 4, 3)));
    EXPECT_TRUE(device.ClipAreaIntersect(vRECT(2, 4, 2, 4)));
    EXPECT_FALSE(device.ClipAreaIntersect(vRECT(7, 8, 9, 8)));
    EXPECT_TRUE(device.ClipAreaIntersect(vPOINT(4, 4)));
    EXPECT_FALSE(device.ClipAreaIntersect(vPOINT(5, 4)));
}

TEST(Clip, RegionOfAContextIsTakenOverAndGivenBack)
{
    surface paper(6, 2);
    HRGN region = CreateRectRgn(1, 0, 3, 2);
    SelectClipRgn(paper.dc(), region);
    DeleteObject(region);
    {
        vDEVICE device(paper.dc());
        device.ClipArea(vRECT(2, 0, 6, 2), RGN_AND);
        EXPECT_EQ(shown(paper, device), "..#...\n..#...\n");
    }
    RECT box{};
    GetClipBox(paper.dc(), &box);
    EXPECT_EQ(box, (RECT{1, 0, 3, 2}));
}

} // namespace
} // namespace klv::test
