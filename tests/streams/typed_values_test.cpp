#include "klv/core/real.h"
#include "klv/core/string.h"
#include "klv/streams/memory_stream.h"

#include "tests/streams/stream_testing.h"

#include <functional>

#include <gtest/gtest.h>

namespace klv {

TEST(TypedValues, AreLittleEndianAtTheirWidths)
{
    vMEMSTREAM stream;
    stream << std::uint32_t{0x12345678} << std::int32_t{-2} << std::uint16_t{0xABCD} << std::int16_t{-3}
           << std::uint8_t{0x7F} << std::int8_t{-1};
    vREAL(-1.5) >> stream;
    vSTRING("abc") >> stream;
    EXPECT_EQ(contents(stream),
        (byte_vector{0x78, 0x56, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0xCD, 0xAB, 0xFD, 0xFF, 0x7F, 0xFF, 0x00,
            0x80, 0xFE, 0xFF, 0x03, 0x00, 'a', 'b', 'c'}));

    stream.MoveFromStart(0);
    std::uint32_t ulong;
    std::int32_t slong;
    std::uint16_t uword;
    std::int16_t sword;
    std::uint8_t ubyte;
    std::int8_t sbyte;
    vREAL real;
    vSTRING text("old");
    stream >> ulong >> slong >> uword >> sword >> ubyte >> sbyte;
    real << stream;
    text << stream;
    EXPECT_EQ(ulong, 0x12345678U);
    EXPECT_EQ(slong, -2);
    EXPECT_EQ(uword, 0xABCD);
    EXPECT_EQ(sword, -3);
    EXPECT_EQ(ubyte, 0x7F);
    EXPECT_EQ(sbyte, -1);
    EXPECT_EQ(real, vREAL(-1.5));
    EXPECT_EQ(text, vSTRING("abc"));
    EXPECT_TRUE(stream.AtEnd());
    EXPECT_EQ(stream.Status(), vSTREAM_OK);
}

TEST(TypedValues, SwappedOrderTurnsReadsRoundAndNothingElse)
{
    vMEMSTREAM stream;
    stream.SwapByteOrder(1);
    stream << std::uint32_t{1} << std::uint16_t{2} << std::int32_t{-2} << std::int16_t{3} << std::uint8_t{4};
    EXPECT_EQ(contents(stream), (byte_vector{1, 0, 0, 0, 2, 0, 0xFE, 0xFF, 0xFF, 0xFF, 3, 0, 4}));
    stream.MoveFromStart(0);
    EXPECT_EQ(stream.ReadULong(), 0x01000000U);
    EXPECT_EQ(stream.ReadUWord(), 0x0200);
    EXPECT_EQ(stream.ReadSLong(), static_cast<std::int32_t>(0xFEFFFFFFU));
    EXPECT_EQ(stream.ReadSWord(), 0x0300);
    EXPECT_EQ(stream.ReadUByte(), 4);
}

TEST(TypedValues, PastTheEndAreZeroAndTheStreamIsAtItsEnd)
{
    const struct {
        std::uint32_t width;
        std::function<std::int64_t(vSTREAM&)> read;
    } cases[] = {
        {4, [](vSTREAM& s) { return std::int64_t{s.ReadULong()}; }},
        {4, [](vSTREAM& s) { return std::int64_t{s.ReadSLong()}; }},
        {2, [](vSTREAM& s) { return std::int64_t{s.ReadUWord()}; }},
        {2, [](vSTREAM& s) { return std::int64_t{s.ReadSWord()}; }},
        {1, [](vSTREAM& s) { return std::int64_t{s.ReadUByte()}; }},
        {1, [](vSTREAM& s) { return std::int64_t{s.ReadSByte()}; }},
        {4, [](vSTREAM& s) { return s.ReadPointer() ? 1 : 0; }},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream;
        write(stream, byte_vector(c.width - 1, 0xFF));
        stream.MoveFromStart(0);
        EXPECT_EQ(c.read(stream), 0) << c.width;
        EXPECT_EQ(stream.Status(), vSTREAM_END) << c.width;
        EXPECT_EQ(stream.CurrentPos(), c.width - 1);
    }
}

TEST(TypedValues, AShortStringKeepsWhatIsThere)
{
    vMEMSTREAM stream;
    write(stream, {0xFF, 0xFF, 'h', 'i'});
    stream.MoveFromStart(0);
    vSTRING text;
    text << stream;
    EXPECT_EQ(text, vSTRING("hi"));
    EXPECT_EQ(stream.Status(), vSTREAM_END);
}

TEST(TypedValues, PointersTravelAsTokensOfFourBytes)
{
    vREAL a;
    vREAL b;
    vMEMSTREAM stream;
    for (const vOBJECT* object :
        {static_cast<vOBJECT*>(&a), static_cast<vOBJECT*>(&b), static_cast<vOBJECT*>(&a)})
        EXPECT_EQ(stream.WritePointer(object), 4);
    stream.WritePointer(nullptr);
    stream << std::uint32_t{0xFFFFFFFF};
    EXPECT_EQ(stream.Size(), 20U);

    stream.MoveFromStart(0);
    EXPECT_EQ(stream.ReadPointer(), &a);
    EXPECT_EQ(stream.ReadPointer(), &b);
    EXPECT_EQ(stream.ReadPointer(), &a);
    EXPECT_EQ(stream.ReadPointer(), nullptr);
    EXPECT_EQ(stream.ReadPointer(), nullptr) << "a token that nobody wrote";
}

} // namespace klv
