#include "tests/gdi/raster_canvas.h"

#include <cstdlib>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

TEST(Lines, LeaveOutTheLastPixel)
{
    raster_canvas canvas(8, 5);
    MoveToEx(canvas, 0, 0, nullptr);
    LineTo(canvas, 4, 0);
    LineTo(canvas, 4, 4);
    MoveToEx(canvas, 7, 4, nullptr);
    LineTo(canvas, 5, 2);
    EXPECT_EQ(canvas.art(), R"(
#####...
....#...
....#...
....#.#.
.......#)");
    POINT at{};
    GetCurrentPositionEx(canvas, &at);
    EXPECT_EQ(at, (POINT{5, 2}));
}

TEST(Lines, MeetTheSamePixelsBothWays)
{
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        raster_canvas canvas(30, 30);
        SetROP2(canvas, R2_NOT);
        const auto any = [&] { return static_cast<INT>(random() % 30); };
        const POINT a{any(), any()};
        const POINT b{any(), any()};
        MoveToEx(canvas, a.x, a.y, nullptr);
        LineTo(canvas, b.x, b.y);
        LineTo(canvas, a.x, a.y);
        // What is left are the two ends, each drawn once.
        std::string expected = raster_canvas(30, 30).art();
        if (a != b)
            for (const POINT& p : {a, b})
                expected[static_cast<std::size_t>(p.y * 31 + p.x + 1)] = '#';
        ASSERT_EQ(canvas.art(), expected) << "round " << round;
    }
}

TEST(Lines, ClippedLinesAreTheSameLines)
{
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        raster_canvas whole(60, 60);
        raster_canvas part(20, 20);
        SetViewportOrgEx(part, -20, -20, nullptr);
        const auto any = [&] { return static_cast<INT>(random() % 60); };
        const POINT line[] = {{any(), any()}, {any(), any()}, {any(), any()}};
        Polyline(whole, line, 3);
        Polyline(part, line, 3);
        for (INT y = 20; y < 40; ++y)
            for (INT x = 20; x < 40; ++x)
                ASSERT_EQ(GetPixel(whole, x, y), GetPixel(part, x, y)) << round << " at " << x << ", " << y;
    }
}

TEST(Lines, DashesGoOnRoundCornersAndGapsTakeTheBackground)
{
    raster_canvas canvas(9, 7);
    const auto pen = use_pen(canvas, PS_DOT, 1, black);
    SetBkColor(canvas, red);
    const POINT corner[] = {{0, 0}, {8, 0}, {8, 6}};
    Polyline(canvas, corner, 3);
    EXPECT_EQ(canvas.art(), R"(
###rrr###
........r
........r
........r
........#
........#
.........)");
    canvas.clear();
    SetBkMode(canvas, TRANSPARENT);
    Polyline(canvas, corner, 3);
    EXPECT_EQ(canvas.art().substr(0, 10), "\n###...###");
}

TEST(Lines, WidePensHaveRoundEndsAndPaintOverlapsOnce)
{
    raster_canvas canvas(16, 9);
    const auto pen = use_pen(canvas, PS_SOLID, 5, black);
    SetROP2(canvas, R2_NOT);
    const POINT there_and_back[] = {{4, 4}, {11, 4}, {4, 4}};
    Polyline(canvas, there_and_back, 3);
    EXPECT_EQ(canvas.art(), R"(
................
................
...##########...
..############..
..############..
..############..
...##########...
................
................)");
}

TEST(Lines, MixModesFollowTheirTruthTables)
{
    // Pen and surface bits, least significant first: P 0011, D 0101.
    for (INT mode = R2_BLACK; mode <= R2_WHITE; ++mode) {
        for (const WORD bits : {WORD{16}, WORD{24}, WORD{32}}) {
            raster_canvas canvas(1, 1, bits);
            const auto pen = use_pen(canvas, PS_SOLID, 0, RGB(255, 255, 0));
            for (unsigned d = 0; d < 2; ++d) {
                SetPixel(canvas, 0, 0, d != 0 ? white : black);
                SetROP2(canvas, mode);
                MoveToEx(canvas, 0, 0, nullptr);
                LineTo(canvas, 1, 0);
                const unsigned table = static_cast<unsigned>(mode) - 1;
                const bool pen_set = (table >> (2 + d) & 1) != 0;
                const bool pen_clear = (table >> d & 1) != 0;
                EXPECT_EQ(
                    GetPixel(canvas, 0, 0), RGB(pen_set ? 255 : 0, pen_set ? 255 : 0, pen_clear ? 255 : 0))
                    << "mode " << mode << " at " << bits << " bits on " << d;
            }
        }
    }
}

TEST(Lines, FarAwayEndsDoNotMoveTheLine)
{
    raster_canvas canvas(20, 20);
    MoveToEx(canvas, -1000000000, -1000000000, nullptr);
    LineTo(canvas, 1000000000, 1000000000);
    for (INT i = 0; i < 20; ++i)
        EXPECT_EQ(GetPixel(canvas, i, i), black) << i;
    canvas.clear();
    MoveToEx(canvas, INT32_MIN, 5, nullptr);
    LineTo(canvas, INT32_MAX, 5);
    EXPECT_EQ(canvas.art().find('.', 1 + 5 * 21), 1 + 6 * 21U);
}

TEST(Lines, PixelsAreSetAndReadInsideTheClipOnly)
{
    raster_canvas canvas(4, 1);
    IntersectClipRect(canvas, 1, 0, 3, 1);
    EXPECT_EQ(SetPixel(canvas, 0, 0, red), CLR_INVALID);
    EXPECT_EQ(SetPixel(canvas, 1, 0, red), red);
    EXPECT_EQ(GetPixel(canvas, 3, 0), CLR_INVALID);
    SelectClipRgn(canvas, nullptr);
    EXPECT_EQ(canvas.art(), "\n.r..");
    EXPECT_EQ(GetPixel(canvas, -1, 0), CLR_INVALID);
    EXPECT_EQ(GetPixel(canvas, INT32_MAX, INT32_MIN), CLR_INVALID);
}

} // namespace
} // namespace klv
