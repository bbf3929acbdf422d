#include "klv/base/byte_reader.h"
#include "klv/base/byte_writer.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(ByteWriter, WritesBothByteOrders)
{
    byte_writer out;
    out.u8(1);
    out.i8(-1);
    out.u16le(0x1234);
    out.u16be(0x1234);
    out.i32le(-2);
    out.u32be(0x89ABCDEF);
    out.text("ab");
    out.align(4);
    out.fill(2, 7);
    const std::uint8_t expected[]
        = {1, 0xFF, 0x34, 0x12, 0x12, 0x34, 0xFE, 0xFF, 0xFF, 0xFF, 0x89, 0xAB, 0xCD, 0xEF, 'a', 'b', 7, 7};
    ASSERT_EQ(out.size(), std::size(expected));
    EXPECT_TRUE(std::ranges::equal(out.span(), expected));
    out.align(4);
    EXPECT_EQ(out.size(), 20U);
}

TEST(ByteReader, RunningOutSticks)
{
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5};
    byte_reader in(bytes);
    EXPECT_EQ(in.u32be(), 0x01020304U);
    EXPECT_FALSE(in.holds(1, 2));
    EXPECT_FALSE(in.holds(SIZE_MAX, 4));
    EXPECT_EQ(in.u16le(), 0) << "not a part of a value";
    EXPECT_FALSE(in.ok());
    EXPECT_TRUE(in.at_end());
    in.seek(1);
    EXPECT_EQ(in.i8(), 2);
    EXPECT_FALSE(in.ok());

    byte_reader whole(bytes);
    byte_reader part = whole.sub(2);
    part.skip(3);
    EXPECT_FALSE(part.ok());
    EXPECT_TRUE(whole.ok());
    EXPECT_EQ(whole.rest().size(), 3U);
    whole.seek(6);
    EXPECT_FALSE(whole.ok());
}
