#include "klv/devices/line/line_geometry.h"
#include "klv/devices/outline/flatten.h"
#include "klv/devices/outline/point_list.h"
#include "klv/geometry/primitive_shapes.h"

#include "test_surface.h"

#include <chrono>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace klv::test {
namespace {

vLINESPEC styled(
    vLINETYPE type, int width, vCORNERTYPE corner, vDASHTYPE cap, const unsigned char* pattern = nullptr)
{
    return {type, vCOLOUR(), width, corner, cap, pattern, vLINESPEC::no_arrow, vLINESPEC::no_arrow};
}

// ---- Geometry --------------------------------------------------------------------------------------

TEST(LineGeometry, EdgeOffsetsAddUpToTheWidthAndTurnWithTheSegment)
{
    const struct {
        POINT to;
        int width;
        POINT a;
        POINT b;
    } cases[] = {
        {{0, 10}, 5, {2, 0}, {3, 0}},
        {{0, -10}, 5, {-2, 0}, {-3, 0}},
        {{10, 0}, 5, {0, -2}, {0, -3}},
        {{-10, 0}, 5, {0, 2}, {0, 3}},
        {{30, 40}, 10, {4, -3}, {4, -3}},
        {{-30, -40}, 10, {-4, 3}, {-4, 3}},
        {{30, -40}, 5, {-2, -1}, {-2, -2}},
    };
    for (const auto& c : cases) {
        const line_offsets found = CalcLineCoefs({0, 0}, c.to, c.width);
        EXPECT_EQ(found.a, c.a) << c.to.x << ", " << c.to.y;
        EXPECT_EQ(found.b, c.b) << c.to.x << ", " << c.to.y;
    }
}

TEST(LineGeometry, CapsTakeTheOctantsAhead)
{
    const struct {
        POINT to;
        unsigned octants;
    } cases[] = {{{2, 2}, 0xFF}, {{0, -9}, 0x0F}, {{0, 9}, 0xF0}, {{-9, 0}, 0x3C}, {{9, 0}, 0xC3},
        {{-9, -4}, 0x3E}, {{-4, -9}, 0x1F}, {{-9, 4}, 0x7C}, {{-4, 9}, 0xF8}, {{9, -4}, 0xC7},
        {{4, -9}, 0x8F}, {{9, 4}, 0xE3}, {{4, 9}, 0xF1}};
    for (const auto& c : cases)
        EXPECT_EQ(CalcCircleSegments({0, 0}, c.to), c.octants) << c.to.x << ", " << c.to.y;
}

std::vector<POINT> join(const POINT& p0, const POINT& p1, const POINT& p2, int width, line_join kind)
{
    LISTINFO list;
    AppendJoin(list, p0, p1, p2, width, kind, circle_table(width));
    return {list.Points().begin(), list.Points().end()};
}

TEST(LineGeometry, RightAngleJoins)
{
    // To the right, then down: the outer side is up and right.
    const std::vector<POINT> mitre = join({-40, 0}, {0, 0}, {0, 40}, 12, line_join::mitre);
    const std::vector<POINT> expected = {{6, 0}, {6, -6}, {0, -6}, {-6, 0}, {-6, 6}, {0, 6}, {6, 0}};
    EXPECT_EQ(mitre, expected);
    EXPECT_EQ(join({-40, 0}, {0, 0}, {0, 40}, 4, line_join::bevel).size(), 5U);
    EXPECT_EQ(join({-3, 0}, {0, 0}, {0, 40}, 12, line_join::mitre).size(), 5U); // too short for a mitre
    EXPECT_TRUE(join({-40, 0}, {0, 0}, {40, 0}, 12, line_join::mitre).empty());
    EXPECT_GT(join({-40, 0}, {0, 0}, {0, 40}, 20, line_join::round).size(), 16U);
}

TEST(LineGeometry, CornersAreTurnsOfMoreThanSixDegrees)
{
    EXPECT_FALSE(DetectCorner({0, 0}, {100, 0}, {200, 0}));
    EXPECT_FALSE(DetectCorner({0, 0}, {100, 0}, {200, 8}));
    EXPECT_TRUE(DetectCorner({0, 0}, {100, 0}, {200, 14}));
    EXPECT_TRUE(DetectCorner({0, 0}, {100, 0}, {0, 0}));
    EXPECT_TRUE(DetectCorner({5, 5}, {5, 5}, {9, 5}));
    EXPECT_FALSE(DetectCorner({-134217728, 0}, {0, 0}, {134217728, 0}));
}

// ---- Flattening ------------------------------------------------------------------------------------

int pieces_of(
    const POINT& p0, const POINT& p1, const POINT& p2, const POINT& p3, std::vector<POINT>* ends = nullptr)
{
    std::vector<POINT> found;
    const int count = DivideBezier(p0, p1, p2, p3, [&](const POINT& from, const POINT& to) {
        EXPECT_EQ(from, found.empty() ? p0 : found.back());
        found.push_back(to);
        return 1;
    });
    if (ends)
        *ends = found;
    return count;
}

TEST(Flattening, StraightCurvesAreOnePieceAndLargeOnesAtMost128)
{
    EXPECT_EQ(pieces_of({0, 0}, {10, 10}, {20, 20}, {30, 30}), 1);
    EXPECT_EQ(pieces_of({0, 0}, {1, 1}, {1, 0}, {0, 1}), 1); // within two pixels
    EXPECT_EQ(pieces_of({0, 0}, {0, 100000000}, {100000000, 100000000}, {100000000, 0}), 128);
}

TEST(Flattening, PiecesStayWithinAPixelOfTheCircle)
{
    constexpr int r = 1000;
    constexpr int k = 552;
    std::vector<POINT> ends;
    const int count = pieces_of({r, 0}, {r, k}, {k, r}, {0, r}, &ends);
    EXPECT_GE(count, 16);
    EXPECT_LE(count, 64);
    EXPECT_EQ(ends.back(), (POINT{0, r}));
    POINT from{r, 0};
    for (const POINT& to : ends) {
        EXPECT_NEAR(std::hypot((from.x + to.x) / 2.0, (from.y + to.y) / 2.0), r, 2.0);
        from = to;
    }
}

TEST(Flattening, ClosedContoursEndWithTheirFirstPoint)
{
    surface paper(4, 4);
    vDEVICE device(paper.dc());
    POINT* points = nullptr;
    int* counts = nullptr;
    ASSERT_EQ(device.GetShapeAsPoints(vRECTSHAPE(vRECT(1, 2, 9, 5)), &points, &counts), 1);
    EXPECT_EQ(std::vector<POINT>(points, points + counts[0]),
        (std::vector<POINT>{{1, 2}, {9, 2}, {9, 5}, {1, 5}, {1, 2}}));
    EXPECT_EQ(device.GetShapeAsPoints(vRECTSHAPE(vRECT(1, 2, 9, 5)), &points, &counts), 0); // in use
    vMemFree(points);
    vMemFree(counts);
}

TEST(Flattening, BrokenOutlinesEndAtTheirLastWholeSegment)
{
    using namespace point_flags;
    const struct {
        std::vector<point_record> records;
        std::size_t points;
    } cases[] = {
        {{{0, 0, start_line}, {5, 0, line_to}, {5, 5, curve_to}, {9, 9, control}}, 2},
        {{{0, 0, start_line}, {5, 0, 64}, {5, 5, line_to}}, 1},
        {{{0, 0, closing_curve}, {1, 1, control}, {2, 2, 0}}, 1},
        {{{0, 0, start_curve}, {1, 1, control}, {2, 2, control}}, 0},
    };
    vDEVICE device;
    for (const auto& c : cases) {
        vSHAPE shape;
        shape.assign_records(c.records);
        std::span<const POINT> points;
        std::span<const int> counts;
        device.ConvertShapeToPoints(shape, points, counts);
        EXPECT_LE(points.size(), c.points + 2) << c.records.size();
    }
}

TEST(PointList, DropsRepeatedPointsButNotAcrossPolygons)
{
    LISTINFO list;
    EXPECT_EQ(list.AppendPoint({1, 1}), 1);
    EXPECT_EQ(list.AppendPoint({1, 1}), 0);
    list.AppendCount(1); // a single point is doubled
    EXPECT_EQ(list.AppendPoint({1, 1}), 1);
    EXPECT_EQ(list.AppendPoint({2, 1}), 1);
    list.AppendCount(2);
    EXPECT_EQ(list.Points().size(), 4U);
    EXPECT_EQ(std::vector<int>(list.Counts().begin(), list.Counts().end()), (std::vector<int>{2, 2}));

    LISTINFO keeping(true);
    EXPECT_EQ(keeping.AppendPoint({1, 1}) + keeping.AppendPoint({1, 1}), 2);
}

TEST(PointList, EdgesAreKeptTopFirst)
{
    LISTINFO list;
    EXPECT_EQ(list.AppendLineSeg({0, 5}, {9, 5}), 0);
    list.AppendLineSeg({10, 10}, {0, 0});
    list.AppendLineSeg({10, 0}, {0, 4});
    const LINESEG& up = list.LineSegs()[0];
    EXPECT_EQ(up.direction, 1);
    EXPECT_TRUE(up.Intersect(0));
    EXPECT_FALSE(up.Intersect(10));
    EXPECT_EQ(up.CalcIntersect(3), 3);
    EXPECT_EQ(list.LineSegs()[1].CalcIntersect(1), 7); // 7.5, halves towards the run's end
}

// ---- Strokes ---------------------------------------------------------------------------------------

TEST(Strokes, ThickCornersByJoin)
{
    const vPOINT points[] = {{2, 3}, {8, 3}, {8, 8}};
    const struct {
        vCORNERTYPE corner;
        const char* expected;
    } cases[] = {
        {vCORNER_MITRE, R"(
                ............
                ..########..
                ..########..
                ..########..
                ..########..
                ......####..
                ......####..
                ......####..
                ............
            )"},
        {vCORNER_BEVEL, R"(
                ............
                ..######....
                ..#######...
                ..########..
                ..########..
                ......####..
                ......####..
                ......####..
                ............
            )"},
    };
    for (const auto& c : cases) {
        surface paper(12, 9);
        vDEVICE device(paper.dc());
        device.LineSpec(styled(vLINE_SOLID, 4, c.corner, vDASH_FLAT));
        device.DrawShape(vSHAPE(3, points, 0));
        EXPECT_EQ(paper.art(), drawing(c.expected)) << c.corner;
    }
}

TEST(Strokes, DashesRunOnRoundCorners)
{
    // 2 drawn, 2 left out, along the 28 pixels of the outline.
    const unsigned char pattern[] = {2, 2, 2, 2, 2, 2};
    surface paper(10, 8);
    vDEVICE device(paper.dc());
    device.FillSpec(fill(vFILL_NONE));
    device.LineSpec(styled(vLINE_USER, 1, vCORNER_BEVEL, vDASH_FLAT, pattern));
    device.DrawRect(vRECT(1, 1, 8, 6));
    // The last dash gets its end pixel, as every pen line does.
    EXPECT_EQ(paper.art(), drawing(R"(
            ..........
            .##..##...
            ........#.
            .#......#.
            .#........
            .#........
            ...##..##.
            ..........
        )"));
}

TEST(Strokes, DashesInAnImpureColourAreSquares)
{
    const unsigned char pattern[] = {2, 2, 2, 2, 2, 2};
    surface paper(14, 3);
    vDEVICE device(paper.dc());
    vLINESPEC spec = styled(vLINE_USER, 1, vCORNER_BEVEL, vDASH_FLAT, pattern);
    spec.Colour(vCOLOUR(255, 128, 0));
    device.LineSpec(spec);
    device.DrawLine(vPOINT(1, 1), vPOINT(12, 1));
    EXPECT_EQ(paper.count(0xFF8000), 3 * 3); // a square at either end of each dash
}

TEST(Strokes, PatternOfZerosDrawsSolid)
{
    const unsigned char pattern[] = {0, 0, 0, 0, 0, 0};
    for (const int width : {1, 2, 5, 14}) {
        surface dashed(30, 20);
        surface solid(30, 20);
        vDEVICE with_pattern(dashed.dc());
        vDEVICE without(solid.dc());
        const vPOINT points[] = {{2, 3}, {17, 3}, {25, 12}};
        with_pattern.LineSpec(styled(vLINE_USER, width, vCORNER_BEVEL, vDASH_FLAT, pattern));
        with_pattern.DrawShape(vSHAPE(3, points, 0));
        without.LineSpec(styled(vLINE_SOLID, width, vCORNER_BEVEL, vDASH_FLAT));
        without.DrawShape(vSHAPE(3, points, 0));
        EXPECT_EQ(dashed.art(), solid.art()) << width;
        EXPECT_GT(dashed.count(0), 20) << width;
    }
}

TEST(Strokes, RoundDashesHaveCapsAtBothEnds)
{
    surface paper(140, 40);
    vDEVICE device(paper.dc());
    device.LineSpec(styled(vLINE_DASH, 20, vCORNER_BEVEL, vDASH_ROUND));
    device.DrawLine(vPOINT(20, 20), vPOINT(115, 20));
    EXPECT_EQ(paper.at(12, 20), 0U); // before the start
    EXPECT_EQ(paper.at(12, 12), 0xFFFFFFU); // but rounded
    EXPECT_EQ(paper.at(121, 20), 0U); // behind the end, which lies in a dash
    EXPECT_EQ(paper.at(86, 20), 0xFFFFFFU); // in the gap
}

TEST(Strokes, ThinObliqueLinesAreTheSameAsPensAndAsSquares)
{
    for (const vPOINT to : {vPOINT(17, 6), vPOINT(6, 17), vPOINT(17, 17), vPOINT(1, 15)}) {
        surface pen(20, 20);
        surface squares(20, 20);
        vDEVICE with_pen(pen.dc());
        vDEVICE with_squares(squares.dc());
        const vPOINT points[] = {{2, 3}, to};
        with_pen.DrawShape(vSHAPE(2, points, 0));
        with_squares.LineSpec(line(1, vCORNER_BEVEL, vCOLOUR(0, 0, 90)));
        with_squares.DrawShape(vSHAPE(2, points, 0));
        // A pen sets the end pixel, squares stop before it.
        EXPECT_EQ(pen.count(0), squares.count(0x00005A) + 1) << to.x << ", " << to.y;
    }
}

TEST(Strokes, LongDashedLinesCostWhatShows)
{
    surface paper(100, 100);
    vDEVICE device(paper.dc());
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        device.LineSpec(styled(vLINE_DOT, i % 3 + 1, vCORNER_ROUND, vDASH_ROUND));
        device.DrawLine(vPOINT(-1000000000, 50 - i), vPOINT(1000000000, 50 + i));
    }
    EXPECT_GT(paper.count(0), 100);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(Strokes, ArrowheadReplacesTheEndOfItsLine)
{
    surface paper(200, 80);
    vDEVICE device(paper.dc());
    vLINESPEC spec = line(10);
    spec.EndArrow(0);
    device.LineSpec(spec);
    device.DrawLine(vPOINT(20, 40), vPOINT(160, 40));
    EXPECT_EQ(paper.at(60, 40), 0U); // the line
    EXPECT_EQ(paper.at(60, 50), 0xFFFFFFU);
    EXPECT_EQ(paper.at(110, 55), 0U); // the head, 55 long and 50 wide
    EXPECT_EQ(paper.at(158, 40), 0U); // its tip
    EXPECT_EQ(paper.at(158, 46), 0xFFFFFFU); // where the line's flat end would be
    EXPECT_EQ(device.ClipArea(), vRECT(0, 0, 201, 81)); // the clip is back
}

} // namespace
} // namespace klv::test
