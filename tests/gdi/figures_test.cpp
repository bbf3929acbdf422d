#include "tests/gdi/raster_canvas.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

const WORD every_depth[] = {1, 4, 8, 16, 24, 32};

TEST(Figures, LooksTheSameAtEveryDepth)
{
    for (const WORD bits : every_depth) {
        raster_canvas canvas(14, 8, bits);
        const auto brush = use_brush(canvas, black);
        SelectObject(canvas, GetStockObject(NULL_PEN));
        const POINT triangle[] = {{1, 1}, {13, 1}, {1, 7}};
        Polygon(canvas, triangle, 3);
        EXPECT_EQ(canvas.art(), R"(
..............
.###########..
.#########....
.#######......
.#####........
.###..........
.#............
..............)")
            << bits << " bits";
    }
}

TEST(Figures, RectangleWithPenReachesItsLastRowAndColumnAndWithoutDoesNot)
{
    raster_canvas canvas(12, 6);
    const auto brush = use_brush(canvas, red);
    Rectangle(canvas, 0, 0, 5, 5);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    Rectangle(canvas, 11, 5, 6, 0);
    EXPECT_EQ(canvas.art(), R"(
#####.rrrr..
#rrr#.rrrr..
#rrr#.rrrr..
#rrr#.rrrr..
#####.......
............)");
}

TEST(Figures, ThinRectanglesDrawEachPixelOnce)
{
    raster_canvas canvas(7, 4);
    SetROP2(canvas, R2_NOT);
    SelectObject(canvas, GetStockObject(NULL_BRUSH));
    Rectangle(canvas, 0, 0, 1, 1);
    Rectangle(canvas, 2, 0, 3, 4);
    Rectangle(canvas, 4, 0, 7, 1);
    Rectangle(canvas, 4, 2, 7, 4);
    EXPECT_EQ(canvas.art(), R"(
#.#.###
..#....
..#.###
..#.###)");
}

TEST(Figures, EllipsesAreSymmetric)
{
    raster_canvas canvas(22, 8);
    const auto brush = use_brush(canvas, black);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    Ellipse(canvas, 0, 0, 9, 9);
    Ellipse(canvas, 9, 1, 22, 6);
    EXPECT_EQ(canvas.art(), R"(
..####................
.######....########...
########.############.
########.############.
########...########...
########..............
.######...............
..####................)");
}

TEST(Figures, RingsFromTheOutsideInLookLikeWholeEllipses)
{
    // Odd and even sizes, flat ones, and steps down to an empty inner box; cut off by the canvas as well.
    for (const RECT outer : {RECT{1, 1, 40, 40}, {-9, 3, 48, 32}, {4, 4, 36, 37}, {0, 12, 40, 19}})
        for (const INT step : {1, 2, 5}) {
            raster_canvas rings(40, 40);
            raster_canvas ellipses(40, 40);
            for (raster_canvas* canvas : {&rings, &ellipses})
                SelectObject(*canvas, GetStockObject(NULL_PEN));
            RECT box = outer;
            for (INT i = 0; box.left < box.right && box.top < box.bottom; ++i) {
                const COLORREF colour = i % 2 == 0 ? black : red;
                const auto ring_brush = use_brush(rings, colour);
                const auto ellipse_brush = use_brush(ellipses, colour);
                const RECT inner{box.left + step, box.top + step, std::max(box.left + step, box.right - step),
                    std::max(box.top + step, box.bottom - step)};
                EllipseRing(rings, box, inner);
                Ellipse(ellipses, box.left, box.top, box.right, box.bottom);
                box = inner;
            }
            EXPECT_EQ(rings.art(), ellipses.art()) << outer.left << ' ' << step;
        }
}

TEST(Figures, OutlinesOfRoundFigures)
{
    raster_canvas canvas(24, 9);
    SelectObject(canvas, GetStockObject(NULL_BRUSH));
    Ellipse(canvas, 0, 0, 9, 9);
    RoundRect(canvas, 10, 0, 23, 9, 6, 6);
    EXPECT_EQ(canvas.art(), R"(
..#####....###########..
.#.....#..#...........#.
#.......#.#...........#.
#.......#.#...........#.
#.......#.#...........#.
#.......#.#...........#.
#.......#.#...........#.
.#.....#..#...........#.
..#####....###########..)");
}

TEST(Figures, ArcsRunCounterClockwise)
{
    raster_canvas canvas(24, 10);
    const auto brush = use_brush(canvas, red);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    // From the right to the top: the upper right quarter. The other way round: the other three.
    Pie(canvas, 0, 0, 10, 10, 20, 5, 5, -20);
    Pie(canvas, 12, 0, 22, 10, 17, -20, 32, 5);
    EXPECT_EQ(GetPixel(canvas, 6, 3), red);
    EXPECT_EQ(GetPixel(canvas, 3, 6), white);
    EXPECT_EQ(GetPixel(canvas, 6, 6), white);
    EXPECT_EQ(GetPixel(canvas, 18, 3), white);
    EXPECT_EQ(GetPixel(canvas, 15, 6), red);
    EXPECT_EQ(GetPixel(canvas, 18, 6), red);
    EXPECT_EQ(GetPixel(canvas, 15, 3), red);
}

TEST(Figures, FillModesDifferWhereAPolygonCoversItselfTwice)
{
    const POINT twice[] = {{0, 0}, {6, 0}, {6, 4}, {2, 4}, {2, 1}, {4, 1}, {4, 5}, {0, 5}};
    struct {
        INT mode;
        const char* art;
    } cases[] = {
        {ALTERNATE, "\n######\n##..##\n##..##\n##..##\n####.."},
        {WINDING, "\n######\n######\n######\n######\n####.."},
    };
    for (const auto& c : cases) {
        raster_canvas canvas(6, 5);
        const auto brush = use_brush(canvas, black);
        SelectObject(canvas, GetStockObject(NULL_PEN));
        SetPolyFillMode(canvas, c.mode);
        Polygon(canvas, twice, 8);
        EXPECT_EQ(canvas.art(), c.art) << c.mode;
    }
}

TEST(Figures, AbuttingPolygonsNeitherOverlapNorLeaveGaps)
{
    std::mt19937 random(7);
    raster_canvas canvas(64, 64);
    const auto brush = use_brush(canvas, black);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    SetROP2(canvas, R2_NOT);
    // A fan around a point covers the square exactly once: every pixel is inverted once.
    const auto coordinate
        = [&](int limit) { return static_cast<LONG>(random() % static_cast<unsigned>(limit)); };
    for (int round = 0; round < 50; ++round) {
        canvas.clear();
        const POINT hub{coordinate(65), coordinate(65)};
        const LONG a = coordinate(65);
        const LONG b = coordinate(65);
        const POINT rim[] = {{0, 0}, {a, 0}, {64, 0}, {64, b}, {64, 64}, {b, 64}, {0, 64}, {0, a}};
        for (std::size_t i = 0; i < std::size(rim); ++i) {
            const POINT triangle[] = {hub, rim[i], rim[(i + 1) % std::size(rim)]};
            Polygon(canvas, triangle, 3);
        }
        ASSERT_EQ(canvas.art().find('.'), std::string::npos) << "round " << round << canvas.art();
    }
}

// A slow judge: a pixel is inside when a ray from its centre to the left crosses the edges accordingly.
bool centre_is_inside(const std::vector<POINT>& polygon, INT mode, LONG px, LONG py)
{
    int winding = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        POINT a = polygon[i];
        POINT b = polygon[(i + 1) % polygon.size()];
        const int direction = a.y < b.y ? 1 : -1;
        if (a.y > b.y)
            std::swap(a, b);
        // Doubled coordinates keep the centre whole.
        const std::int64_t y = 2 * py + 1;
        const std::int64_t x = 2 * px + 1;
        if (y < 2 * a.y || y >= 2 * b.y)
            continue;
        const std::int64_t side = (x - 2 * a.x) * (b.y - a.y) - (y - 2 * a.y) * std::int64_t{b.x - a.x};
        if (side >= 0)
            winding += direction;
    }
    return mode == WINDING ? winding != 0 : winding % 2 != 0;
}

TEST(Figures, RandomPolygonsAgreeWithASlowJudge)
{
    std::mt19937 random(42);
    for (int round = 0; round < 200; ++round) {
        raster_canvas canvas(40, 30);
        const auto brush = use_brush(canvas, black);
        SelectObject(canvas, GetStockObject(NULL_PEN));
        std::vector<POINT> polygon(3 + random() % 40);
        for (POINT& p : polygon)
            p = {static_cast<LONG>(random() % 60) - 10, static_cast<LONG>(random() % 50) - 10};
        const INT mode = round % 2 == 0 ? ALTERNATE : WINDING;
        SetPolyFillMode(canvas, mode);
        Polygon(canvas, polygon.data(), static_cast<INT>(polygon.size()));
        for (LONG y = 0; y < 30; ++y)
            for (LONG x = 0; x < 40; ++x)
                ASSERT_EQ(GetPixel(canvas, x, y) == black, centre_is_inside(polygon, mode, x, y))
                    << "round " << round << " at " << x << ", " << y;
    }
}

TEST(Figures, ExtremeCoordinatesKeepTheirSlopes)
{
    raster_canvas canvas(40, 40);
    const auto brush = use_brush(canvas, black);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    // A triangle whose long edge falls at 45 degrees through the surface's diagonal.
    const POINT triangle[] = {{INT32_MIN, INT32_MIN}, {INT32_MAX, INT32_MAX}, {INT32_MIN, INT32_MAX}};
    Polygon(canvas, triangle, 3);
    for (INT i = 2; i < 38; ++i) {
        EXPECT_EQ(GetPixel(canvas, i - 2, i), black);
        EXPECT_EQ(GetPixel(canvas, i + 2, i), white);
    }
    canvas.clear();
    Rectangle(canvas, INT32_MIN, 10, INT32_MAX, 21);
    EXPECT_EQ(GetPixel(canvas, 0, 9), white);
    EXPECT_EQ(GetPixel(canvas, 0, 10), black);
    EXPECT_EQ(GetPixel(canvas, 39, 19), black);
    EXPECT_EQ(GetPixel(canvas, 39, 20), white);

    const auto pen = use_pen(canvas, PS_SOLID, INT32_MAX, red);
    Ellipse(canvas, INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    Arc(canvas, INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX, 0, 0, INT32_MAX, INT32_MIN);
    RoundRect(canvas, INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MAX);
    LineTo(canvas, INT32_MAX, INT32_MIN);
}

TEST(Figures, MappingModesScaleFiguresAndPens)
{
    raster_canvas canvas(12, 12);
    const auto brush = use_brush(canvas, black);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    SetMapMode(canvas, MM_ANISOTROPIC);
    SetWindowExtEx(canvas, 100, 100, nullptr);
    SetViewportExtEx(canvas, 10, -10, nullptr);
    SetViewportOrgEx(canvas, 0, 12, nullptr);
    const POINT square[] = {{10, 10}, {40, 10}, {40, 40}, {10, 40}};
    Polygon(canvas, square, 4);
    EXPECT_EQ(GetPixel(canvas, 10, 20), black); // device 1, 10
    SetMapMode(canvas, MM_TEXT);
    SetViewportOrgEx(canvas, 0, 0, nullptr);
    EXPECT_EQ(canvas.art(), R"(
............
............
............
............
............
............
............
............
.###........
.###........
.###........
............)");
}

TEST(Figures, FloodsStopAtTheirBorders)
{
    struct {
        UINT type;
        COLORREF colour;
        const char* art;
    } cases[] = {
        {FLOODFILLBORDER, black, "\nrrrr#\n###r#\n..#r#\n.##rr"},
        {FLOODFILLSURFACE, white, "\nrrrr#\n###r#\n..#r#\n.##rr"},
    };
    for (const auto& c : cases) {
        raster_canvas canvas(5, 4);
        const POINT wall[] = {{0, 1}, {2, 1}, {2, 3}, {0, 3}};
        Polyline(canvas, wall, 4);
        const POINT side[] = {{4, 0}, {4, 3}};
        Polyline(canvas, side, 2);
        SetPixel(canvas, 0, 3, white);
        SetPixel(canvas, 1, 3, black);
        const auto brush = use_brush(canvas, red);
        EXPECT_TRUE(ExtFloodFill(canvas, 0, 0, c.colour, c.type));
        EXPECT_EQ(canvas.art(), c.art);
        EXPECT_FALSE(ExtFloodFill(canvas, 4, 0, c.colour, c.type));
        EXPECT_FALSE(ExtFloodFill(canvas, 5, 0, c.colour, c.type));
    }
}

TEST(Figures, NullAndBadArgumentsDoNothing)
{
    raster_canvas canvas(4, 4);
    const INT negative = -1;
    const POINT points[] = {{0, 0}, {4, 0}, {0, 4}};
    EXPECT_FALSE(Polygon(nullptr, points, 3));
    EXPECT_FALSE(Polygon(canvas, nullptr, 3));
    EXPECT_FALSE(PolyPolygon(canvas, points, &negative, 1));
    EXPECT_FALSE(PolyPolygon(canvas, points, nullptr, 1));
    Polygon(canvas, points, 0);
    Polygon(canvas, points, 1);
    Ellipse(canvas, 2, 2, 2, 2);
    EXPECT_EQ(canvas.art(), "\n....\n....\n....\n....");
}

} // namespace
} // namespace klv
