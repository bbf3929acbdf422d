#include "klv/formats/believable_size.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(BelievableSize, IsWhatTheBytesCouldBecome)
{
    constexpr std::uint64_t mebibyte = 1 << 20;
    EXPECT_TRUE(believable_size(mebibyte, 0, 2)) << "small ones are always believed";
    EXPECT_TRUE(believable_size(mebibyte + 1, mebibyte / 2, 2)) << "the last half counts for nothing";
    EXPECT_FALSE(believable_size(mebibyte + 2, mebibyte / 2, 2));
    EXPECT_FALSE(believable_size(UINT64_MAX, UINT32_MAX, 256)) << "no product overflows";
}
