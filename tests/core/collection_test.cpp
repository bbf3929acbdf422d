#include "klv/base/memory.h"
#include "klv/core/collection.h"
#include "klv/core/system.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(Collection, KeepsTheLowSixteenBitsOfPoints)
{
    vCOLLECTION points(vARRAYTYPE::int_pairs);
    for (int i = 0; i < 99; ++i)
        ASSERT_EQ(points.AddPoint({i, -i}), 1);
    ASSERT_EQ(points.AddPoint({70000, -70000}), 1);
    EXPECT_EQ(points.NoValues(), 200);
    EXPECT_EQ(points.GetPoint(98), vPOINT(98, -98));
    EXPECT_EQ(points.GetPoint(99), vPOINT(4464, -4464));
    EXPECT_EQ(points.GetPoint(100), vPOINT(0, 0));
    points.Reset();
    EXPECT_EQ(points.GetPoint(0), vPOINT(0, 0));
}

TEST(Collection, HoldsAsManyPointsAsItCanCount)
{
    vCOLLECTION points(vARRAYTYPE::int_pairs);
    int stored = 0;
    while (points.AddPoint({stored, 1}))
        ++stored;
    EXPECT_EQ(stored, 32767);
    EXPECT_EQ(points.GetPoint(32766), vPOINT(32766, 1));
}

TEST(Collection, NeverLeavesTheCallersBuffer)
{
    std::uint8_t bytes[10] = {};
    vCOLLECTION points(bytes, vARRAYTYPE::int_pairs, 9, 0);
    EXPECT_EQ(points.AddPoint({1, 2}), 1);
    EXPECT_EQ(points.AddPoint({3, -4}), 1);
    EXPECT_EQ(points.AddPoint({5, 6}), 0);
    EXPECT_EQ(bytes[8], 0);

    const vCOLLECTION words(bytes, vARRAYTYPE::words, 8, 4);
    EXPECT_EQ(words.GetPoint(1), vPOINT(3, -4));
    EXPECT_EQ(vCOLLECTION(bytes, vARRAYTYPE::rects, 8, 4).GetPoint(1), vPOINT(0, 0));
}

TEST(Collection, RefusesWhatItCannotHold)
{
    vCOLLECTION other(vARRAYTYPE::bytes4);
    EXPECT_EQ(other.AddPoint({1, 1}), 0);
    EXPECT_EQ(other.AddInt(1) + other.AddUWord(1) + other.AddRect({}), 0);

    vCOLLECTION points(vARRAYTYPE::int_pairs);
    vMemFailAfter(0);
    EXPECT_EQ(points.AddPoint({1, 1}), 0);
    EXPECT_EQ(points.AddPoint({2, 2}), 1);
    vSYSTEM::SetExceptionFlag(0);
}
