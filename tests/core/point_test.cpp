#include "klv/core/bezpoint.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(Point, ArithmeticWraps)
{
    const vPOINT far(INT32_MAX, INT32_MIN);
    EXPECT_EQ(far + vPOINT(1, -1), vPOINT(INT32_MIN, INT32_MAX));
    EXPECT_EQ(far - vPOINT(-1, 1), vPOINT(INT32_MIN, INT32_MAX));
    EXPECT_EQ(far.ManDist(), -1);
    EXPECT_EQ(vPOINT(3, -5) * vREAL::FromRaw(2), vPOINT(6, -10));
    EXPECT_EQ(vPOINT(7, -7) / vREAL::FromRaw(2), vPOINT(3, -3));
    EXPECT_EQ(vPOINT(INT32_MIN, 1) / vREAL::FromRaw(-1), vPOINT(INT32_MIN, -1));
    EXPECT_EQ(vPOINT(3, 4).DiagDist(), 5);
    EXPECT_EQ(vPOINT(200, 200).DiagDist(), 283);
}

TEST(Point, OrdersByBothCoordinates)
{
    EXPECT_TRUE(vPOINT(1, 1) < vPOINT(2, 2));
    EXPECT_FALSE(vPOINT(1, 3) < vPOINT(2, 2));
    EXPECT_FALSE(vPOINT(1, 3) >= vPOINT(2, 2));
    EXPECT_TRUE(vPOINT(1, 2) <= vPOINT(1, 2));
    EXPECT_FALSE(vPOINT(1, 2) < vPOINT(1, 3));
}

TEST(Point, TurnsAboutACentre)
{
    const struct {
        vPOINT p, centre;
        double angle, aspect;
        vPOINT turned;
    } cases[] = {
        {{10, 0}, {0, 0}, 90, 1, {0, -10}},
        {{10, 0}, {0, 0}, -270, 1, {0, -10}},
        {{10, 0}, {0, 0}, 450, 1, {0, -10}},
        {{10, 0}, {0, 0}, 180, 1, {-10, 0}},
        {{10, 0}, {0, 0}, -90, 1, {0, 10}},
        {{10, 0}, {0, 0}, 45, 1, {7, -7}},
        {{110, 50}, {100, 50}, 90, 1, {100, 40}},
        {{10, 10}, {0, 0}, 90, 2, {5, -20}},
        {{INT32_MAX, 0}, {0, 0}, 90.0000001, 1, {0, -INT32_MAX}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(vPOINT(c.p, c.centre, c.angle, c.aspect), c.turned) << c.angle;
}

TEST(Point, LiesInARectangleEdgesIncluded)
{
    const vRECT r(0, 0, 10, 20);
    EXPECT_TRUE(vPOINT(0, 0) ^ r);
    EXPECT_TRUE(vPOINT(10, 20) ^ r);
    EXPECT_FALSE(vPOINT(11, 20) ^ r);
    EXPECT_FALSE(vPOINT(5, -1) ^ r);
    EXPECT_FALSE(vPOINT(5, 5) ^ vRECT(10, 0, 0, 20)) << "an inverted rectangle holds nothing";
}

TEST(BezPoint, FlagsAreKeptApart)
{
    vBEZPOINT p(vPOINT(1, 2), 0xC4);
    p.First(7), p.LineTo(1), p.Control(1);
    EXPECT_EQ(p.GetFlags(), 0xC4 | 0x01 | 0x08 | 0x20);
    EXPECT_EQ(p.LineTo(), 0x08);
    EXPECT_EQ(p.Last(), 0);
    p.LineTo(0), p.CurveTo(1), p.Last(1);
    EXPECT_EQ(p.GetFlags(), 0xC4 | 0x01 | 0x02 | 0x10 | 0x20);
    EXPECT_NE(p, vBEZPOINT(vPOINT(1, 2), 0xC4)) << "unknown flags take part in equality";
}

TEST(BezPoint, FindsWhereACurveTurns)
{
    std::array<vPOINT, 4> out;
    // An arch: y turns once at the middle, x never.
    ASSERT_EQ(CalculateMaximaMinima({0, 0}, {0, 100}, {100, 100}, {100, 0}, out), 1);
    EXPECT_EQ(out[0], vPOINT(50, 75));
    // A loop: two turns in x, one in y; y comes first.
    ASSERT_EQ(CalculateMaximaMinima({0, 0}, {100, 100}, {-50, 100}, {50, 0}, out), 3);
    EXPECT_EQ(out[0], vPOINT(25, 75));
    // Coefficients of degree two and one.
    EXPECT_EQ(CalculateMaximaMinima({0, 0}, {10, 10}, {20, 20}, {30, 30}, out), 0);
    EXPECT_EQ(CalculateMaximaMinima({5, 5}, {5, 5}, {5, 5}, {5, 5}, out), 0);
    // Differences that do not fit 32 bits.
    EXPECT_LE(CalculateMaximaMinima(
                  {INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MIN}, {INT32_MIN, 0}, {INT32_MAX, 7}, out),
        4);
}
