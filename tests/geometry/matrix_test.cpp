#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/geometry/matrix.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

vPOINT mapped(const oMATRIX& matrix, int x, int y)
{
    vPOINT point(x, y);
    matrix.Transform(&point, 1);
    return point;
}

TEST(Matrix, TruncatesTowardZeroAndStaysWithin32Bits)
{
    EXPECT_EQ(mapped(oMATRIX(), 3, -4), vPOINT(3, -4));
    const oMATRIX half({0.5, 0, 0, 0, 0.5, 0});
    EXPECT_EQ(mapped(half, 3, -3), vPOINT(1, -1));
    const oMATRIX huge({1e300, 0, 0, 0, -1e300, 0});
    EXPECT_EQ(mapped(huge, 1, 1), vPOINT(INT32_MAX, INT32_MIN));
}

TEST(Matrix, CombinesInTheOrderOfApplication)
{
    oMATRIX move;
    move.Translate(5, 0);
    oMATRIX twice;
    twice.Scale(2, 2);
    IDistort* const both = move.MapOp2(twice);
    ASSERT_TRUE(both);
    EXPECT_EQ(vPOINT(1, 0).Distort(both), vPOINT(12, 0));
    IDistort* const back = both->MapOp3();
    ASSERT_TRUE(back);
    EXPECT_EQ(vPOINT(12, 0).Distort(back), vPOINT(1, 0));
    EXPECT_EQ(both->AddRef(), 2U);
    EXPECT_EQ(both->Release(), 1U);
    oMATRIX::DeleteMatrix(both);
    oMATRIX::DeleteMatrix(back);
    oMATRIX flat;
    flat.Scale(0, 1);
    EXPECT_EQ(flat.MapOp3(), nullptr);
}

TEST(Matrix, EqualityLeavesTheTranslationsOutWhenTold)
{
    oMATRIX moved;
    moved.Translate(7, 8);
    EXPECT_TRUE(moved.IsEqual(oMATRIX(), 0));
    EXPECT_FALSE(moved.IsEqual(oMATRIX(), 1));
    moved.Scale(1, -1);
    EXPECT_FALSE(moved.IsEqual(oMATRIX(), 0));
}

TEST(Matrix, BoundsAndLengths)
{
    oMATRIX turned;
    turned.Rotate(3.141592653589793 / 2, 0, 0);
    vRECT box;
    vRECT(0, 0, 100, 40).DistortBbox(&turned, box);
    EXPECT_EQ(box, vRECT(-40, 0, 0, 100));
    oMATRIX stretched;
    stretched.Scale(2, -8);
    EXPECT_EQ(stretched.MapLength(10), 40);
}

} // namespace
} // namespace klv
