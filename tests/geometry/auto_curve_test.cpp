#include "tests/geometry/shape_text.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace klv;

namespace {

vSHAPE appended(std::initializer_list<vPOINT> points, int close, int smooth)
{
    vSHAPE shape;
    std::size_t left = points.size();
    for (const auto& p : points)
        EXPECT_EQ(shape.AppendAutoCurvePoint(p, --left == 0 ? close : 0, smooth), 1);
    return shape;
}

// Whether the control points around an on-curve point lie in one line with it, on both sides.
void expect_smooth(const vPOINT& before, const vPOINT& p, const vPOINT& after)
{
    EXPECT_EQ(p - before, after - p) << p.x << ',' << p.y;
    EXPECT_NE(before, after);
}

} // namespace

TEST(AppendAutoCurvePoint, FirstPointBeginsAContourAndTheNextOneMakesItWhole)
{
    vSHAPE shape;
    EXPECT_EQ(shape.AppendAutoCurvePoint(vPOINT(0, 0), 0, 1), 1);
    EXPECT_EQ(text_of(shape), "0,0:17");
    EXPECT_FALSE(shape.IsValid());
    EXPECT_EQ(shape.AppendAutoCurvePoint(vPOINT(90, 0), 0, 1), 1);
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.Closed(), 0);
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 90, 0)) << text_of(shape);
    EXPECT_EQ(shape.NoPoint(), 4);
}

TEST(AppendAutoCurvePoint, SmoothsThePointThatWasLast)
{
    const vSHAPE smooth = appended({{0, 0}, {100, 100}, {200, 0}}, 0, 1);
    ASSERT_EQ(smooth.NoPoint(), 7) << text_of(smooth);
    EXPECT_TRUE(smooth.IsValid());
    expect_smooth(smooth[2], smooth[3], smooth[4]);
    EXPECT_EQ(smooth[2].y, 100) << "the tangent of the circle through the three points is level";
    EXPECT_EQ(smooth[6], vBEZPOINT(vPOINT(200, 0), 2));
    // A vertex keeps its straight way.
    const vSHAPE vertex = appended({{0, 0}, {99, 99}, {198, 0}}, 0, 0);
    for (const std::size_t i : {1u, 2u})
        EXPECT_EQ(vertex[i].x, vertex[i].y) << text_of(vertex);
}

TEST(AppendAutoCurvePoint, ClosesAContourSmoothly)
{
    const vSHAPE shape = appended({{0, -1000}, {1000, 0}, {0, 1000}, {-1000, 0}}, 1, 1);
    ASSERT_EQ(shape.NoPoint(), 12) << text_of(shape);
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.Closed(), 1);
    EXPECT_EQ(shape[9].GetFlags(), 18);
    expect_smooth(shape[11], shape[0], shape[1]);
    for (const std::size_t i : {3u, 6u, 9u})
        expect_smooth(shape[i - 1], shape[i], shape[i + 1]);
    // Near the circle through the points.
    const vRECT box = shape.BoundBox();
    for (const int edge : {-box.Left(), -box.Top(), box.Right(), box.Bottom()})
        EXPECT_NEAR(edge, 1000, 100);
    // Without smoothing the closing curve is straight; what follows begins another contour.
    vSHAPE flat = appended({{0, 0}, {90, 0}, {90, 90}}, 1, 0);
    EXPECT_TRUE(flat.IsValid());
    EXPECT_EQ(flat.BoundBox(), vRECT(0, 0, 90, 90));
    EXPECT_EQ(flat.AppendAutoCurvePoint(vPOINT(200, 0), 0, 1), 1);
    EXPECT_EQ(flat.AppendAutoCurvePoint(vPOINT(300, 0), 1, 1), 1);
    EXPECT_TRUE(flat.IsValid()) << text_of(flat);
    EXPECT_EQ(flat.NoOfContours(), 2);
}

TEST(AppendAutoCurvePoint, GoesOnFromStraightContours)
{
    vSHAPE shape = polyline({{0, 0}, {100, 0}, {100, 100}}, 0);
    EXPECT_EQ(shape.AppendAutoCurvePoint(vPOINT(0, 100), 1, 1), 1);
    EXPECT_TRUE(shape.IsValid()) << text_of(shape);
    EXPECT_EQ(shape[1], vBEZPOINT(vPOINT(100, 0), 8));
    EXPECT_EQ(shape[2].GetFlags(), 16);
}

TEST(AppendAutoCurvePoint, AFullShapeAnswersZero)
{
    vSHAPE full;
    std::vector<vPOINT> points(vSHAPE::max_points - 2);
    ASSERT_TRUE(full.assign_polyline(points, 0));
    EXPECT_EQ(full.AppendAutoCurvePoint(vPOINT(5, 5), 0, 1), 0);
    EXPECT_EQ(full.NoPoint(), vSHAPE::max_points - 2);
}
