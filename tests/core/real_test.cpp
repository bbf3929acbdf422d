#include "klv/core/range.h"
#include "klv/core/real.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

using namespace klv;

namespace {

vREAL raw(std::int32_t value) { return vREAL::FromRaw(value); }

} // namespace

TEST(Real, StoresWholeNumbersAndDoublesAsSixteenSixteen)
{
    const struct {
        vREAL value;
        std::int32_t raw;
    } cases[] = {
        {vREAL(short{-1}), -65536},
        {vREAL(short{-32768}), INT32_MIN},
        {vREAL(2.75), 180224},
        {vREAL(-2.75), -180224},
        {vREAL(-0.00001), 0},
        {vREAL(32768.0), INT32_MIN},
        {vREAL(65537.5), 98304},
        {vREAL(1e300), 0},
        {vREAL(std::nan("")), 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.value(), c.raw);

    vREAL assigned;
    assigned = 5;
    EXPECT_EQ(assigned(), 5) << "an integer is taken as the raw value";
}

TEST(Real, MultipliesTowardZeroInSixteenSixteen)
{
    const struct {
        double a, b;
        std::int32_t raw;
    } cases[] = {
        {1.5, 1.5, 147456},
        {-2.0, 3.0, -393216},
        {-2.0, -2.0, 262144},
        {1.0 / 3, 3.0, 65535},
        {-1.0 / 3, 3.0, -65535},
        {200.0, 400.0, 0x38800000},
        {-32768.0, 1.0, INT32_MIN},
        {0.0, -5.0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ((vREAL(c.a) * vREAL(c.b))(), c.raw) << c.a << " * " << c.b;

    EXPECT_EQ((raw(0x7FFFFFFF) * 3)(), 0x7FFFFFFD) << "integer products wrap";
    EXPECT_EQ((raw(-7) * -3)(), 21);
}

TEST(Real, DividesWithRoundingAndSaturation)
{
    const struct {
        std::int32_t a, b, quotient;
    } cases[] = {
        {65536, 65536, 65536},
        {65536, 3 * 65536, 21845},
        {2 * 65536, 3 * 65536, 43691},
        {-2 * 65536, 3 * 65536, -43691},
        {-2 * 65536, -3 * 65536, 43691},
        {65536, 1, 0x7FFFFFFF},
        {-65536, 1, -0x7FFFFFFF},
        {65535 * 5, 5, 0x7FFFFFFF},
        {40000, 1, static_cast<std::int32_t>(40000U << 16)},
        {INT32_MIN, 65536, INT32_MIN},
        {7, 0, 0x7FFFFFFF},
        {0, 65536, 0},
    };
    for (const auto& c : cases) {
        if (c.b == 0) {
            EXPECT_EQ(std::abs((raw(c.a) / raw(c.b))()), c.quotient);
            continue;
        }
        EXPECT_EQ((raw(c.a) / raw(c.b))(), c.quotient) << c.a << " / " << c.b;
    }
    EXPECT_EQ((raw(-65537) / 2)(), -32768);
}

TEST(Real, QuotientsAreTheNearestStep)
{
    std::mt19937 random(20);
    for (int i = 0; i < 2000; ++i) {
        const auto a = static_cast<std::int32_t>(random() % 0x20000000U) - 0x10000000;
        const auto b = static_cast<std::int32_t>(random() % 0x100000U) + 0x10000;
        const double exact = a * 65536.0 / b;
        // One step more where the bits run full before the sixteenth.
        EXPECT_NEAR((raw(a) / raw(b))(), exact, 1.0) << a << " / " << b;
    }
}

TEST(Real, RoundsHalfAwayFromZeroAndTakesTheTrueCeiling)
{
    const struct {
        double value;
        int floor, round, ceil;
    } cases[] = {
        {2.0, 2, 2, 2},
        {2.25, 2, 2, 3},
        {2.5, 2, 3, 3},
        {0.0, 0, 0, 0},
        {-0.25, -1, 0, 0},
        {-2.5, -3, -3, -2},
        {-2.75, -3, -3, -2},
        {-3.0, -3, -3, -3},
        {32767.75, 32767, 32768, 32768},
        {-32768.0, -32768, -32768, -32768},
    };
    for (const auto& c : cases) {
        const vREAL value(c.value);
        EXPECT_EQ(value.Floor(), c.floor) << c.value;
        EXPECT_EQ(value.Round(), c.round) << c.value;
        EXPECT_EQ(value.Ceil(), c.ceil) << c.value;
    }
}

TEST(Real, RootsAndInverseFunctions)
{
    EXPECT_EQ(vREAL(2.25).Sqrt()(), 98304);
    EXPECT_EQ(vREAL(2.0).Sqrt()(), 92681);
    EXPECT_EQ(vREAL(-4.0).Sqrt()(), 131072);
    EXPECT_EQ(vREAL(1.0).aSin()(), 90 * 65536);
    EXPECT_EQ(vREAL(0.0).aCos()(), 90 * 65536);
    EXPECT_EQ(vREAL(-1.0).aTan()(), -45 * 65536);
    EXPECT_EQ(vREAL(2.0).aCos()(), 0) << "outside the domain";
}

TEST(Angle, ReducesWholeDegreesOnly)
{
    const struct {
        short degrees;
        int reduced;
    } cases[] = {{450, 90}, {-90, -90}, {-450, -90}, {725, 5}, {-370, -10}, {360, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(vANGLE(c.degrees)(), c.reduced * 65536) << c.degrees;
    EXPECT_EQ(vANGLE(450.0)(), 450 * 65536);
}

TEST(Angle, FunctionsTruncateTowardZero)
{
    EXPECT_EQ(vANGLE(short{30}).Sin()(), 32767);
    EXPECT_EQ(vANGLE(short{-90}).Sin()(), -65536);
    EXPECT_EQ(vANGLE(short{180}).Cos()(), -65536);
    EXPECT_EQ(vANGLE(short{45}).Tan()(), 65535);
}

TEST(Range, OrdersOnlyWhereBothComponentsAgree)
{
    const vRANGE low(1, 2);
    const vRANGE high(3, 4);
    const vRANGE mixed(0, 5);
    EXPECT_TRUE(low < high && low <= high && high > low && high >= low);
    EXPECT_FALSE(low < mixed || low > mixed || low >= mixed || low <= mixed);
    EXPECT_TRUE(low + high == vRANGE(4, 6));
    EXPECT_TRUE(high - low == vRANGE(2, 2));
    EXPECT_TRUE(vRANGE(vREAL(1.0), vREAL(-3.0)) * vREAL(0.5) == vRANGE(vREAL(0.5), vREAL(-1.5)));
    EXPECT_TRUE(vRANGE(vREAL(1.0), vREAL(-3.0)) / vREAL(2.0) == vRANGE(vREAL(0.5), vREAL(-1.5)));
}
