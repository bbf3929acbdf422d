#include "klv/core/collection.h"
#include "klv/geometry/primitive_shapes.h"

#include "test_surface.h"

#include <gtest/gtest.h>

namespace klv::test {
namespace {

constexpr vCOLOUR red(255, 0, 0);
constexpr vCOLOUR blue(0, 0, 255);

vSHAPE polygons(std::initializer_list<std::vector<POINT>> contours)
{
    std::vector<POINT> points;
    std::vector<int> counts;
    for (const auto& contour : contours) {
        points.insert(points.end(), contour.begin(), contour.end());
        counts.push_back(static_cast<int>(contour.size()));
    }
    return {points.data(), counts.data(), static_cast<int>(counts.size()), 1};
}

TEST(Figures, RectIsFilledThenStroked)
{
    surface paper(10, 7);
    vDEVICE device(paper.dc());
    device.FillSpec(fill(vFILL_SOLID, red));
    device.LineSpec(line(1));
    device.DrawRect(vRECT(1, 1, 8, 5));
    EXPECT_EQ(paper.art(), drawing(R"(
            ..........
            .########.
            .#RRRRRR#.
            .#RRRRRR#.
            .#RRRRRR#.
            .########.
            ..........
        )"));
}

TEST(Figures, RingIsHollowUnlessWindingFillsIt)
{
    // Both contours run the same way.
    const vSHAPE ring = polygons({{{0, 0}, {8, 0}, {8, 6}, {0, 6}}, {{2, 2}, {6, 2}, {6, 4}, {2, 4}}});
    const struct {
        vFILLMODE mode;
        const char* expected;
    } cases[] = {
        {vFILL_ALTERNATE, R"(
                RRRRRRRR.
                RRRRRRRR.
                RR....RR.
                RR....RR.
                RRRRRRRR.
                RRRRRRRR.
                .........
            )"},
        {vFILL_WINDING, R"(
                RRRRRRRR.
                RRRRRRRR.
                RRRRRRRR.
                RRRRRRRR.
                RRRRRRRR.
                RRRRRRRR.
                .........
            )"},
    };
    for (const auto& c : cases) {
        surface paper(9, 7);
        vDEVICE device(paper.dc());
        device.LineSpec(no_line());
        device.FillSpec(fill(vFILL_SOLID, red, red, 0, c.mode));
        device.DrawShape(ring);
        EXPECT_EQ(paper.art(), drawing(c.expected)) << "mode " << c.mode;
    }
}

TEST(Figures, OneSelfCrossingContourHonoursTheFillMode)
{
    // A square that winds round twice in its middle.
    const vSHAPE loop = polygons({{{0, 0}, {8, 0}, {8, 8}, {2, 8}, {2, 2}, {6, 2}, {6, 6}, {0, 6}}});
    for (const vFILLMODE mode : {vFILL_ALTERNATE, vFILL_WINDING}) {
        surface paper(9, 9);
        vDEVICE device(paper.dc());
        device.LineSpec(no_line());
        device.FillSpec(fill(vFILL_SOLID, red, red, 0, mode));
        device.DrawShape(loop);
        EXPECT_EQ(paper.at(4, 4), mode == vFILL_ALTERNATE ? 0xFFFFFFU : 0xFF0000U);
        EXPECT_EQ(paper.at(7, 4), 0xFF0000U);
    }
}

TEST(Figures, OpenShapeIsStrokedButNotFilled)
{
    const vPOINT points[] = {{1, 1}, {6, 1}, {6, 4}};
    surface paper(8, 6);
    vDEVICE device(paper.dc());
    device.FillSpec(fill(vFILL_SOLID, red));
    device.LineSpec(line(1));
    device.DrawShape(vSHAPE(3, points, 0));
    EXPECT_EQ(paper.art(), drawing(R"(
            ........
            .######.
            ......#.
            ......#.
            ......#.
            ........
        )"));
}

TEST(Figures, HairlineSetsItsEndPixel)
{
    surface paper(8, 4);
    vDEVICE device(paper.dc());
    device.DrawLine(vPOINT(1, 1), vPOINT(6, 1));
    vCOLLECTION points(vARRAYTYPE::int_pairs);
    points.AddPoint(vPOINT(1, 3));
    points.AddPoint(vPOINT(3, 3));
    points.AddPoint(vPOINT(7, 3));
    device.DrawLine(2, points);
    EXPECT_EQ(paper.art(), drawing(R"(
            ........
            .######.
            ........
            .###....
        )"));
}

TEST(Figures, LineOfSeveralPointsTakesTheCountGiven)
{
    surface paper(6, 4);
    vDEVICE device(paper.dc());
    device.DrawLine(3, vPOINT(0, 0), vPOINT(4, 0), vPOINT(4, 3));
    device.DrawLine(2, vPOINT(0, 2), vPOINT(2, 2), vPOINT(2, 3));
    EXPECT_EQ(paper.art(), drawing(R"(
            #####.
            ....#.
            ###.#.
            ....#.
        )"));
}

TEST(Figures, EllipseFillStaysInItsRectangle)
{
    surface paper(9, 7);
    vDEVICE device(paper.dc());
    device.LineSpec(no_line());
    device.FillSpec(fill(vFILL_SOLID, blue));
    device.DrawEllipse(vRECT(1, 1, 7, 5));
    EXPECT_EQ(paper.at(4, 3), 0x0000FFU);
    EXPECT_EQ(paper.at(1, 1), 0xFFFFFFU);
    for (int x = 0; x < 9; ++x) {
        EXPECT_EQ(paper.at(x, 0), 0xFFFFFFU) << x;
        EXPECT_EQ(paper.at(x, 6), 0xFFFFFFU) << x;
    }
}

TEST(Figures, PieAndChordPensFollowTheDeviceResolution)
{
    surface paper(80, 80);
    ASSERT_TRUE(SetDeviceResolution(paper.dc(), 96 * 4));
    vDEVICE device(paper.dc());
    device.LogUnitsPerHorzInch(96);
    device.LogUnitsPerVertInch(96);
    device.FillSpec(fill(vFILL_NONE));
    device.LineSpec(line(2));
    device.DrawPie(vRECT(2, 2, 18, 18), vPOINT(18, 10), vPOINT(10, 2));
    // The straight side from the centre to the right is 2 units, 8 pixels, thick.
    int thick = 0;
    for (int y = 0; y < 80; ++y)
        thick += paper.at(56, y) == 0 && y > 30 && y < 50;
    EXPECT_NEAR(thick, 8, 1);
}

TEST(Figures, HairlinesKeepTheirWeightAtAMultipleOfTheResolution)
{
    surface paper(40, 12);
    ASSERT_TRUE(SetDeviceResolution(paper.dc(), 96 * 4));
    vDEVICE device(paper.dc());
    device.LogUnitsPerHorzInch(96);
    device.LogUnitsPerVertInch(96);
    device.DrawLine(vPOINT(2, 1), vPOINT(8, 1));
    EXPECT_EQ(paper.count(0), 24 * 4);
}

TEST(Figures, DrawingAgainAllocatesNothing)
{
    surface paper(100, 100);
    vDEVICE device(paper.dc());
    const vELPSSHAPE ellipse(vRECT(5, 5, 95, 80));
    std::vector<vPOINT> points;
    for (int i = 0; i < 500; ++i)
        points.emplace_back(i * 37 % 100, i * 61 % 100);
    const auto draw = [&] {
        for (const vFILLTYPE type : {vFILL_SOLID, vFILL_HATCH_FIRST}) {
            for (const int width : {1, 3, 12}) {
                device.LineSpec(line(width, vCORNER_ROUND));
                device.FillSpec(fill(type, red));
                device.DrawShape(ellipse);
                device.DrawLine(std::span<const vPOINT>(points));
                device.DrawLine(points[0], points[1]);
            }
        }
    };
    draw();
    const std::uint64_t before = vMemAllocations();
    draw();
    EXPECT_EQ(vMemAllocations(), before);
}

TEST(Figures, AnyCoordinatesAreDrawnWithoutHarm)
{
    constexpr int far = INT32_MAX;
    constexpr int near = INT32_MIN;
    surface paper(16, 16);
    vDEVICE device(paper.dc());
    const vPOINT points[] = {{near, near}, {far, near}, {far, far}, {near, 4}};
    const vCOLOUR orange(255, 128, 0);
    for (const int width : {1, 2, 5, 40, far})
        for (const vLINETYPE type : {vLINE_SOLID, vLINE_DASH, vLINE_DOT})
            for (const vCOLOUR& colour : {vCOLOUR(), orange}) {
                device.LineSpec(vLINESPEC(type, colour, width, vCORNER_MITRE, vDASH_ROUND, nullptr,
                    vLINESPEC::no_arrow, vLINESPEC::no_arrow));
                device.DrawShape(vSHAPE(4, points, 1));
                device.DrawLine(points[0], points[2]);
                device.DrawRect(vRECT(near, near, far, far));
                device.DrawEllipse(vRECT(near, 3, far, far));
                device.DrawArc(vRECT(near, near, far, far), points[0], points[1]);
            }
    for (const vFILLTYPE type :
        {vFILL_SOLID, vFILL_RADIAL, vFILL_RADIAL_QUADRATIC, vFILL_LINEAR, vFILL_BOX}) {
        device.FillSpec(fill(type, red, blue, 30));
        device.DrawRect(vRECT(near, near, far, far));
        device.DrawRoundRect(vRECT(far, far, near, near), vSIZE(far, near));
    }
    EXPECT_EQ(paper.count(0xFFFFFF), 0); // the last fills cover everything
}

} // namespace
} // namespace klv::test
