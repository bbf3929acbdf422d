#include "klv/base/byte_order.h"
#include "klv/base/integer_root.h"
#include "klv/base/muldiv.h"
#include "klv/base/saturating.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

using namespace klv;

TEST(Numbers, MulDivRoundsHalfAwayFromZero)
{
    const struct {
        std::int64_t value, multiplier, divisor, quotient;
    } cases[] = {
        {7, 1, 2, 4},
        {-7, 1, 2, -4},
        {7, 1, -2, -4},
        {-7, -1, -2, -4},
        {1, 1, 3, 0},
        {2, 1, 3, 1},
        {5, 1, INT32_MIN, 0},
        {INT32_MIN, INT32_MIN, 1, std::int64_t{1} << 62},
        {INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mul_div(c.value, c.multiplier, c.divisor), c.quotient)
            << c.value << " * " << c.multiplier << " / " << c.divisor;
}

TEST(Numbers, SaturatesAtTheEndsOfTheRange)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(saturated(std::int64_t{INT32_MAX} + 1), INT32_MAX);
    EXPECT_EQ(saturated(std::int64_t{INT32_MIN} - 1), INT32_MIN);
    const struct {
        double value;
        std::int32_t truncated, rounded;
    } cases[] = {
        {2.9, 2, 3},
        {-2.9, -2, -3},
        {0.5, 0, 1},
        {-0.5, 0, -1},
        {2147483647.5, INT32_MAX, INT32_MAX},
        {-2147483648.9, INT32_MIN, INT32_MIN},
        {infinity, INT32_MAX, INT32_MAX},
        {-infinity, INT32_MIN, INT32_MIN},
        {std::nan(""), 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(truncate_saturated(c.value), c.truncated) << c.value;
        EXPECT_EQ(round_saturated(c.value), c.rounded) << c.value;
    }
}

TEST(Numbers, RootsAreTheNearestWholeNumbers)
{
    const struct {
        std::int64_t square;
        std::int32_t root;
    } cases[] = {{0, 0}, {2, 1}, {3, 2}, {6, 2}, {7, 3}, {std::int64_t{INT32_MAX} * INT32_MAX, INT32_MAX},
        {std::int64_t{INT32_MAX} * INT32_MAX - 1, INT32_MAX}, {4503599761588224, 67108865}};
    for (const auto& c : cases)
        EXPECT_EQ(integer_root(c.square), c.root) << c.square;
    EXPECT_EQ(length(-3, 4), 5);
}

TEST(Numbers, BytesInBothOrders)
{
    std::uint8_t bytes[4] = {9, 9, 9, 9};
    store_be<2>(bytes, 0xA1B2);
    store_le<1>(bytes + 2, 0xFFC3);
    const std::uint8_t expected[] = {0xA1, 0xB2, 0xC3, 9};
    EXPECT_TRUE(std::ranges::equal(bytes, expected));
    EXPECT_EQ(load_be<4>(bytes), 0xA1B2C309U);
    EXPECT_EQ(load_le<3>(bytes), 0xC3B2A1U);
}
