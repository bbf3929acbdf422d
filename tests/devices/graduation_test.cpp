#include "klv/devices/fill/band_cutter.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/geometry/primitive_shapes.h"

#include "test_surface.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace klv::test {
namespace {

constexpr vCOLOUR black(0, 0, 0);
constexpr vCOLOUR white(255, 255, 255);

int red_at(const surface& paper, int x, int y) { return static_cast<int>(paper.at(x, y) >> 16); }

// ---- Painted bands ---------------------------------------------------------------------------------

struct graduated : testing::Test {
    surface paper{101, 101};
    vDEVICE device{paper.dc()};

    void paint(vFILLTYPE type, int angle = 0, const vCOLOUR& from = black, const vCOLOUR& to = white)
    {
        device.LineSpec(no_line());
        device.FillSpec(fill(type, from, to, angle));
        device.DrawRect(vRECT(0, 0, 101, 101));
    }
};

TEST_F(graduated, LinearRunsFromLeftToRight)
{
    paint(vFILL_LINEAR);
    EXPECT_EQ(red_at(paper, 1, 50), 0);
    EXPECT_EQ(red_at(paper, 99, 50), 255);
    EXPECT_NEAR(red_at(paper, 50, 50), 128, 6);
    for (int x = 1; x < 100; ++x)
        EXPECT_LE(red_at(paper, x - 1, 9), red_at(paper, x, 9)) << x;
}

TEST_F(graduated, AngleTurnsTheBands)
{
    paint(vFILL_LINEAR, 90);
    EXPECT_NEAR(red_at(paper, 2, 50), red_at(paper, 98, 50), 2);
    EXPECT_LT(red_at(paper, 50, 3), 12);
    EXPECT_GT(red_at(paper, 50, 97), 243);
    paint(vFILL_LINEAR, 180);
    EXPECT_GT(red_at(paper, 3, 50), 243);
    EXPECT_LT(red_at(paper, 97, 50), 12);
}

TEST_F(graduated, TwoWayHasTheSecondColourInTheMiddle)
{
    paint(vFILL_LINEAR_TWO_WAY);
    EXPECT_LT(red_at(paper, 1, 50), 12);
    EXPECT_LT(red_at(paper, 99, 50), 12);
    EXPECT_GT(red_at(paper, 50, 50), 240);
}

TEST_F(graduated, LogarithmicRisesFasterThanLinear)
{
    paint(vFILL_LINEAR_LOGARITHMIC);
    EXPECT_GT(red_at(paper, 25, 50), 100);
    EXPECT_GT(red_at(paper, 99, 50), 245);
}

TEST_F(graduated, RadialStartsInTheMiddleAndLeavesNoGap)
{
    paint(vFILL_RADIAL, 0, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 0));
    EXPECT_GT(red_at(paper, 50, 50), 240);
    EXPECT_LT(red_at(paper, 1, 1), 30);
    EXPECT_EQ(paper.count(0xFFFFFF), 0);
    const int linear = red_at(paper, 50, 20);
    paint(vFILL_RADIAL_QUADRATIC, 0, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 0));
    EXPECT_GT(red_at(paper, 50, 20), linear + 20); // slower near the middle
}

TEST_F(graduated, BoxApproachesTheFirstColour)
{
    paint(vFILL_BOX, 0, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 255));
    EXPECT_EQ(paper.at(1, 1), 0x0000FFU);
    EXPECT_GT(red_at(paper, 50, 50), 230);
    EXPECT_EQ(paper.at(50, 10), paper.at(10, 50));
}

TEST_F(graduated, ClipsToTheShape)
{
    device.LineSpec(no_line());
    device.FillSpec(fill(vFILL_LINEAR, black, vCOLOUR(200, 200, 200)));
    const vPOINT triangle[] = {{0, 0}, {100, 0}, {0, 100}};
    device.DrawShape(vSHAPE(3, triangle, 1));
    EXPECT_NE(paper.at(20, 20), 0xFFFFFFU);
    EXPECT_EQ(paper.at(80, 80), 0xFFFFFFU);
    EXPECT_EQ(device.ClipArea(), vRECT(0, 0, 102, 102));
}

TEST(Graduated, EqualColoursPaintOneDiscOnADeviceThatIsNoDisplay)
{
    struct bitmap_device : vDEVICE {
        using vDEVICE::vDEVICE;
        vDEV_TYPE DeviceType() const noexcept override { return vDEV_BITMAP; }
    };
    surface paper(60, 60);
    bitmap_device device(paper.dc());
    device.FillSpec(fill(vFILL_RADIAL, vCOLOUR(255, 0, 0), vCOLOUR(255, 0, 0)));
    NewRadialFill(device, {15, 15, 44, 44});
    EXPECT_EQ(paper.at(30, 30), 0xFF0000U);
    EXPECT_EQ(paper.at(15, 15), 0xFF0000U); // the disc reaches the corners
    EXPECT_EQ(paper.at(1, 1), 0xFFFFFFU);
}

TEST(Graduated, StepsFollowTheLargestDifferenceAndTheQuality)
{
    vDEVICE device;
    EXPECT_EQ(device.GetColourRange(RGB(0, 0, 0), RGB(10, 255, 3)), 128);
    device.SetGradQuality(vGRAD_LOW);
    EXPECT_EQ(device.GetColourRange(RGB(0, 0, 0), RGB(10, 255, 3)), 64);
    EXPECT_EQ(device.GetColourRange(RGB(9, 9, 9), RGB(9, 9, 9)), 0);
    EXPECT_EQ(vDEVICE::rgb_blend(RGB(0, 200, 10), RGB(255, 100, 10), 1, 2), RGB(128, 150, 10));
    EXPECT_EQ(vDEVICE::CalcDist({0, 0}, {-7, 0}), 7);
    EXPECT_EQ(vDEVICE::CalcDist({0, 0}, {3, -4}), 5);
}

// ---- Cut bands -------------------------------------------------------------------------------------

double area_of(const LISTINFO& list)
{
    double sum = 0;
    std::size_t at = 0;
    for (const int count : list.Counts()) {
        double twice = 0;
        for (int i = 0; i < count; ++i) {
            const POINT& p = list.Points()[at + static_cast<std::size_t>(i)];
            const POINT& q = list.Points()[at + static_cast<std::size_t>((i + 1) % count)];
            twice += static_cast<double>(p.x) * q.y - static_cast<double>(q.x) * p.y;
        }
        sum += std::abs(twice) / 2;
        at += static_cast<std::size_t>(count);
    }
    return sum;
}

// Pixels inside, by the platform's own scan converter: an oracle that shares no code with the cutters.
int pixels_of(const std::vector<POINT>& points, const std::vector<int>& counts, bool alternate)
{
    surface paper(400, 400);
    SelectObject(paper.dc(), GetStockObject(BLACK_BRUSH));
    SelectObject(paper.dc(), GetStockObject(NULL_PEN));
    SetPolyFillMode(paper.dc(), alternate ? ALTERNATE : WINDING);
    PolyPolygon(paper.dc(), points.data(), counts.data(), static_cast<int>(counts.size()));
    return paper.count(0);
}

struct outline {
    std::vector<POINT> points;
    std::vector<int> counts;
};

outline star(int corners, int step, int radius)
{
    outline result;
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2 * std::numbers::pi * (i * step % corners) / corners;
        result.points.push_back({static_cast<LONG>(200 + radius * std::sin(angle)),
            static_cast<LONG>(200 - radius * std::cos(angle))});
    }
    result.counts = {corners + 1};
    return result;
}

outline scribble(unsigned seed)
{
    std::mt19937 random(seed);
    outline result;
    for (int i = 0; i < 12; ++i)
        result.points.push_back(
            {static_cast<LONG>(random() % 380 + 10), static_cast<LONG>(random() % 380 + 10)});
    result.points.push_back(result.points.front());
    result.counts = {13};
    return result;
}

TEST(CutBands, StripsAddUpToTheShape)
{
    std::vector<outline> outlines = {star(5, 2, 180), star(8, 3, 150)};
    for (unsigned seed = 1; seed <= 12; ++seed)
        outlines.push_back(scribble(seed));
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        for (const bool alternate : {true, false}) {
            const cut_outline cut{outlines[i].points, outlines[i].counts, alternate};
            cut_array<POINT> crossings;
            GetLineIntersections(cut, crossings);
            double area = 0;
            for (int x = 0; x < 400; x += 17) {
                LISTINFO strip;
                GetLinearFillPolygons(x, x + 17, cut, crossings, strip);
                area += area_of(strip);
                for (const POINT& point : strip.Points())
                    EXPECT_TRUE(x <= point.x && point.x <= x + 17);
            }
            const int expected = pixels_of(outlines[i].points, outlines[i].counts, alternate);
            EXPECT_NEAR(area, expected, expected * 0.02 + 300)
                << "outline " << i << " alternate " << alternate;
        }
    }
}

TEST(CutBands, RingsAddUpToTheShape)
{
    std::vector<outline> outlines = {star(5, 2, 180), star(7, 1, 150)};
    for (unsigned seed = 1; seed <= 12; ++seed)
        outlines.push_back(scribble(seed));
    const POINT centre{200, 200};
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        for (const bool alternate : {true, false}) {
            const cut_outline cut{outlines[i].points, outlines[i].counts, alternate};
            cut_array<POINT> crossings;
            cut_array<double> tangents;
            GetLineIntersections(cut, crossings);
            GetTangents(centre, cut, tangents);
            double area = 0;
            for (int r = 0; r < 300; r += 20) {
                LISTINFO ring;
                GetRadialFillPolygons(centre, r, r + 20, cut, crossings, tangents, ring);
                area += area_of(ring);
            }
            const int expected = pixels_of(outlines[i].points, outlines[i].counts, alternate);
            EXPECT_NEAR(area, expected, expected * 0.04 + 500)
                << "outline " << i << " alternate " << alternate;
        }
    }
}

TEST(CutBands, WholeRingWhereNoEdgePasses)
{
    const outline square{{{0, 0}, {400, 0}, {400, 400}, {0, 400}, {0, 0}}, {5}};
    LISTINFO ring;
    EXPECT_EQ(
        GetRadialFillPolygons({200, 200}, 50, 100, {square.points, square.counts, true}, {}, {}, ring), 1);
    EXPECT_NEAR(area_of(ring), std::numbers::pi * (100 * 100 - 50 * 50), 300);
    LISTINFO outside;
    EXPECT_EQ(
        GetRadialFillPolygons({900, 200}, 50, 100, {square.points, square.counts, true}, {}, {}, outside), 0);
}

TEST(CutBands, SegmentsCrossWhereTheyShould)
{
    POINT at{};
    EXPECT_TRUE(LinesIntersect({0, 0}, {10, 10}, {0, 10}, {10, 0}, at, false));
    EXPECT_EQ(at, (POINT{5, 5}));
    EXPECT_FALSE(LinesIntersect({0, 0}, {10, 0}, {10, 0}, {10, 10}, at, false));
    EXPECT_TRUE(LinesIntersect({0, 0}, {10, 0}, {10, 0}, {10, 10}, at, true));
    EXPECT_FALSE(LinesIntersect({0, 0}, {10, 0}, {0, 5}, {10, 5}, at, true));
}

TEST(CutBands, PointInsideByMode)
{
    const outline pentagram = star(5, 2, 180);
    EXPECT_FALSE(PointInPoly({pentagram.points, pentagram.counts, true}, {200, 200}));
    EXPECT_EQ(std::abs(PointInPoly({pentagram.points, pentagram.counts, false}, {200, 200})), 2);
    EXPECT_FALSE(PointInPoly({pentagram.points, pentagram.counts, false}, {30, 30}));
}

} // namespace
} // namespace klv::test
