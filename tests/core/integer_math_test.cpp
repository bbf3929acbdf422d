#include "klv/core/integer_math.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace klv;

TEST(IntegerMath, SinesAreTheRoundedSines)
{
    for (int d = -720; d <= 720; ++d) {
        const double exact = 25600 * std::sin(d * 3.14159265358979323846 / 180);
        EXPECT_EQ(Sin(static_cast<short>(d)), std::lround(exact)) << d;
        EXPECT_EQ(Cos(static_cast<short>(d)), Sin(static_cast<short>(d + 90))) << d;
    }
    EXPECT_EQ(Cos(32767), Sin(32767 - 360 + 90)) << "adding a quarter turn does not wrap";
}

TEST(IntegerMath, GradingCurve)
{
    const struct {
        short v, grade;
        double real;
    } cases[] = {
        {0, 0, 0.0},
        {6, 5, 5 / 64.0},
        {7, 6, 6 / 64.0},
        {9, 7, 7.5 / 64},
        {31, 20, 20.5 / 64},
        {32, 21, 21 / 64.0},
        {63, 32, 32.75 / 64},
        {64, 33, 33 / 64.0},
        {68, 33, 0.53125},
        {255, 63, (63 + 7 / 8.0) / 64},
        {256, 64, 1.0},
        {263, 64, 1.0},
        {-5, 0, 0.0},
        {1000, 64, 1.0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Log(c.v), c.grade) << c.v;
        EXPECT_DOUBLE_EQ(RealLog(c.v), c.real) << c.v;
    }
}

TEST(IntegerMath, RootsAreWithinOne)
{
    const struct {
        int n;
        int root;
    } cases[] = {{0, 0}, {1, 1}, {2, 1}, {10, 3}, {15, 4}, {-16, 4}, {65536, 256}, {1 << 30, -32768}};
    for (const auto& c : cases)
        EXPECT_EQ(Sqrt(c.n), c.root) << c.n;

    for (std::int64_t n = 2; n <= INT32_MAX; n += n / 7 + 1) {
        const auto root = static_cast<std::uint16_t>(Sqrt(static_cast<int>(n)));
        EXPECT_NEAR(root, std::sqrt(static_cast<double>(n)), 1.0) << n;
    }
    EXPECT_EQ(Sqrt(INT32_MIN), Sqrt(INT32_MAX));
}

TEST(IntegerMath, MulDivRoundsAndKnowsItsLimits)
{
    const struct {
        std::int32_t a, b, c, result;
    } cases[] = {
        {7, 3, 2, 11},
        {-7, 3, 2, -11},
        {7, -3, -2, 11},
        {1, 1, 3, 0},
        {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX},
        {INT32_MAX, 2, 1, -1},
        {INT32_MIN, 1, 2, -0x40000000},
        {5, 5, 0, -1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MulDiv(c.a, c.b, c.c), c.result) << c.a << " * " << c.b << " / " << c.c;
}

TEST(IntegerMath, PolarAndCartesianAreInverse)
{
    double x = 0, y = 0, radius = 0, angle = 0;
    for (int degrees = 0; degrees < 360; degrees += 15) {
        PolarToCartesian({10, -20}, 50.0, degrees, &x, &y);
        CartesianToPolar({10, -20}, x, y, &radius, &angle);
        EXPECT_NEAR(radius, 50.0, 1e-9);
        EXPECT_NEAR(std::remainder(angle - degrees, 360.0), 0.0, 1e-9);
        EXPECT_TRUE(angle >= 0 && angle < 360);
    }
    PolarToCartesian({0, 0}, 1.0, 90.0, nullptr, &y);
    EXPECT_NEAR(y, 1.0, 1e-12);
    CartesianToPolar({0, 0}, 0, -2, nullptr, &angle);
    EXPECT_DOUBLE_EQ(angle, 270.0);
}
