#include <gtest/gtest.h>

#include <cmath>

#include "tests/geometry/shape_text.h"

using namespace klv;

namespace {

std::vector<vPOINT> circle(int n)
{
    std::vector<vPOINT> points;
    for (int i = 0; i < n; ++i) {
        const double a = i * 6.283185307179586 / n;
        points.emplace_back(static_cast<int>(std::lround(1000 * std::cos(a))),
            static_cast<int>(std::lround(1000 * std::sin(a))));
    }
    return points;
}

} // namespace

TEST(Smooth, FollowsACircleWithFewCurves)
{
    const auto points = circle(60);
    vSHAPE shape(60, points.data(), 1, 1);
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.Closed(), 1);
    EXPECT_EQ(shape[0], vBEZPOINT(points[0], 17));
    EXPECT_EQ(shape.GetLastPoint(), vBEZPOINT(points[59], 10));
    EXPECT_LT(shape.NoPoint(), 40);
    const vRECT box = shape.BoundBox();
    for (const int edge : {-box.Left(), -box.Top(), box.Right(), box.Bottom()})
        EXPECT_NEAR(edge, 1000, 8);
}

TEST(Smooth, KeepsCornersAndLeavesShortShapesAlone)
{
    // A square with points along its sides.
    std::vector<vPOINT> points;
    for (const auto& [from, step] : {std::pair(vPOINT(0, 0), vPOINT(100, 0)), {{300, 0}, {0, 100}},
             {{300, 300}, {-100, 0}}, {{0, 300}, {0, -100}}}) {
        for (int i = 0; i < 3; ++i)
            points.emplace_back(from.x + i * step.x, from.y + i * step.y);
    }
    vSHAPE shape(static_cast<unsigned short>(points.size()), points.data(), 1, 1);
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 300, 300));
    EXPECT_TRUE(shape.IsValid());
    for (const vPOINT corner : {vPOINT(300, 0), vPOINT(300, 300), vPOINT(0, 300)}) {
        bool found = false;
        for (const auto& r : shape.records())
            found |= r.point() == corner && !r.has(point_flags::control);
        EXPECT_TRUE(found) << corner.x << ',' << corner.y;
    }

    vSHAPE few(7, points.data());
    EXPECT_EQ(few.Smooth(), 0);
    EXPECT_EQ(vSHAPE(8, points.data(), 1, 1).NoPoint(), 8) << "the constructor wants nine";
    EXPECT_EQ(shape.Smooth(), 0) << "curved already";
}
