#include "klv/base/wrapping.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

using namespace klv;

TEST(Wrapping, ResultsAreModuloTwoToThe32)
{
    EXPECT_EQ(wrap_add(INT32_MAX, 1), INT32_MIN);
    EXPECT_EQ(wrap_sub(INT32_MIN, 1), INT32_MAX);
    EXPECT_EQ(wrap_mul(65536, 65537), 65536);
    EXPECT_EQ(wrap_mul(INT32_MIN, -1), INT32_MIN);
    EXPECT_EQ(wrap_neg(INT32_MIN), INT32_MIN);
    EXPECT_EQ(wrap_abs(INT32_MIN), INT32_MIN);
    EXPECT_EQ(wrap_abs(-5), 5);
    EXPECT_EQ(wrap_div(INT32_MIN, -1), INT32_MIN);
    EXPECT_EQ(wrap_div(-7, 2), -3);
    EXPECT_EQ(wrap_narrow(std::int64_t{0x1'8000'0001}), INT32_MIN + 1);
}

TEST(Wrapping, EveryDoubleHasAnInteger)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        std::int32_t wrapped, rounded;
    } cases[] = {
        {2.9, 2, 3},
        {-2.9, -2, -3},
        {0.5, 0, 1},
        {-0.5, 0, -1},
        {2147483648.0, INT32_MIN, INT32_MIN},
        {-2147483649.0, INT32_MAX, INT32_MAX},
        {4294967303.0, 7, 7},
        {1e19, 0, 0},
        {infinity, 0, 0},
        {-infinity, 0, 0},
        {std::nan(""), 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(truncate_wrapped(c.value), c.wrapped) << c.value;
        EXPECT_EQ(round_wrapped(c.value), c.rounded) << c.value;
    }
}
