#include "klv/geometry/curves/auto_curve.h"

#include "tests/geometry/shape_text.h"

#include <gtest/gtest.h>

using namespace klv;

namespace {

vSHAPE square(int closed = 1) { return polyline({{0, 0}, {100, 0}, {100, 100}, {0, 100}}, closed); }

} // namespace

TEST(ShapeEdit, InsertAndDelete)
{
    vSHAPE shape = square();
    EXPECT_EQ(shape.InsertPoint(2, {{150, 50}, 8}), 1);
    EXPECT_EQ(text_of(shape), "0,0:9 100,0:8 150,50:8 100,100:8 0,100:10");
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 150, 100));
    EXPECT_EQ(shape.DeletePoint(2), 1);
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 100, 100));
    EXPECT_EQ(shape.InsertPoint(5, {{0, 0}, 8}), 0);
    EXPECT_EQ(shape.DeletePoint(4), 0);
    EXPECT_EQ(shape.DeletePoint(3), 1);
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 100, 100)) << "no longer a whole contour";
}

TEST(ShapeEdit, CloseAndOpen)
{
    vSHAPE shape = square(0);
    shape.CloseAllContours(1);
    EXPECT_EQ(text_of(shape), text_of(square()));
    EXPECT_EQ(shape.Closed(), 1);

    vSHAPE lens = append({{{0, 0}, 9}, {{90, 0}, 18}, {{90, 40}, 32}, {{0, 40}, 32}});
    lens.AddShape(square());
    lens.CloseAllContours(0);
    EXPECT_EQ(text_of(lens), "0,0:9 90,0:2 0,0:9 100,0:8 100,100:8 0,100:2")
        << "the controls of a closing curve go";
    EXPECT_EQ(lens.Closed(), 0);
}

TEST(ShapeEdit, SplitOpensAClosedContourAtThePoint)
{
    const struct {
        unsigned short at;
        const char* expected;
    } cases[]{
        {0, "0,0:9 100,0:8 100,100:8 0,100:8 -5,5:2"},
        {1, "100,0:9 100,100:8 0,100:8 0,0:8 95,-5:2"},
        {3, "0,100:9 0,0:8 100,0:8 100,100:8 5,95:2"},
    };
    for (const auto& c : cases) {
        vSHAPE shape = square();
        EXPECT_EQ(shape.SplitPoint(c.at, 5), 1);
        EXPECT_EQ(text_of(shape), c.expected);
        EXPECT_EQ(shape.Closed(), 0);
        EXPECT_TRUE(shape.IsValid());
    }
}

TEST(ShapeEdit, SplitTakesAClosingCurveAlong)
{
    vSHAPE shape = append({{{0, 0}, 9}, {{50, 0}, 8}, {{90, 9}, 18}, {{90, 40}, 32}, {{0, 40}, 32}});
    shape.AddShape(square());
    EXPECT_EQ(shape.SplitPoint(1, 2), 1);
    EXPECT_EQ(
        text_of(shape), "50,0:9 90,9:16 90,40:32 0,40:32 0,0:8 48,-2:2 0,0:9 100,0:8 100,100:8 0,100:10");
    EXPECT_TRUE(shape.IsValid());
}

TEST(ShapeEdit, SplitCutsAnOpenContourInTwo)
{
    vSHAPE shape = square(0);
    EXPECT_EQ(shape.SplitPoint(2, 5), 1);
    EXPECT_EQ(text_of(shape), "0,0:9 100,0:8 95,95:2 100,100:9 0,100:2");
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.SplitPoint(4, 5), 0) << "the end of an open contour";
    EXPECT_EQ(shape.SplitPoint(3, 5), 0) << "the point after one";
    EXPECT_EQ(shape.SplitPoint(5, 5), 0);
    vSHAPE first = square(0);
    EXPECT_EQ(first.SplitPoint(0, 5), 0) << "the record before the first is the last";
}

TEST(ShapeEdit, AutoCurveAndBack)
{
    vSHAPE shape = square();
    EXPECT_EQ(shape.MakePointAutoCurve(1), 1);
    // Half a chord's length to each side along the circle through three corners; a third of the way at the
    // far ends.
    const vPOINT v = CalculateControlPointVector({0, 0}, {100, 0}, {100, 100});
    ASSERT_EQ(shape.NoPoint(), 8);
    EXPECT_EQ(shape[0].GetFlags(), 17);
    EXPECT_EQ(shape[3], vBEZPOINT(vPOINT(100, 0), 16));
    EXPECT_EQ(shape[2], vBEZPOINT(vPOINT(100, 0) + v, 32));
    EXPECT_EQ(shape[4], vBEZPOINT(vPOINT(100, 0) - v, 32));
    EXPECT_EQ(shape[1], vBEZPOINT(vPOINT((100 + v.x) / 3, v.y / 3), 32));
    EXPECT_EQ(shape[5].GetFlags(), 32);
    EXPECT_TRUE(shape.IsValid());

    EXPECT_EQ(shape.MakePointVertex(3), 1);
    EXPECT_EQ(text_of(shape), text_of(square()));
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 100, 100));
}

TEST(ShapeEdit, AutoCurveAcrossTheClosingSegment)
{
    vSHAPE shape = square();
    EXPECT_EQ(shape.MakePointAutoCurve(0), 1);
    EXPECT_EQ(shape.NoPoint(), 8);
    EXPECT_EQ(shape[5], vBEZPOINT(vPOINT(0, 100), 18));
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.MakePointVertex(0), 1);
    EXPECT_EQ(text_of(shape), text_of(square()));

    vSHAPE open = square(0);
    EXPECT_EQ(open.MakePointAutoCurve(3), 0) << "an open end";
    EXPECT_EQ(open.MakePointAutoCurve(0), 0) << "the record before is one";
    EXPECT_EQ(open.MakePointAutoCurve(4), 0);
    EXPECT_EQ(text_of(open), text_of(square(0)));
}

TEST(ShapeEdit, TangentOfThreePoints)
{
    const struct {
        vPOINT prev, point, next, expected;
    } cases[]{
        {{0, 0}, {30, 0}, {60, 0}, {-10, 0}}, // in line: a sixth of the chord
        {{0, 0}, {0, 0}, {60, 7}, {-10, -1}},
        {{0, 0}, {100, 0}, {100, 100}, {-25, -25}}, // L = r / 2 on a quarter turn, r = 50 root 2
        {{100, 100}, {100, 0}, {0, 0}, {25, 25}},
        {{0, 0}, {50, -50}, {100, 0}, {-25, 0}},
    };
    for (const auto& c : cases) {
        const vPOINT v = CalculateControlPointVector(c.prev, c.point, c.next);
        EXPECT_NEAR(v.x, c.expected.x, 1) << c.point.x << ' ' << v.x << ',' << v.y;
        EXPECT_NEAR(v.y, c.expected.y, 1) << c.point.x << ' ' << v.x << ',' << v.y;
    }
}
