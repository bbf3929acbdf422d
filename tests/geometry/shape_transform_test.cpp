#include "klv/geometry/matrix.h"

#include "tests/geometry/shape_text.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(ShapeTransform, RescaleTruncatesTowardZero)
{
    vSHAPE shape = polyline({{-3, 3}, {7, 5}, {101, -101}});
    EXPECT_EQ(shape.Rescale({32768, -32768}), 1);
    EXPECT_EQ(text_of(shape), "-1,-1:9 3,-2:8 50,50:10");
    EXPECT_EQ(shape.BoundBox(), vRECT(-1, -2, 50, 50)) << "normalised";
}

TEST(ShapeTransform, QuarterTurnsAreExact)
{
    const struct {
        double degrees, aspect;
        const char* expected;
        vRECT box;
    } cases[]{
        {90, 1, "10,15:9 10,5:8 14,5:10", {10, 5, 14, 15}},
        {450, 1, "10,15:9 10,5:8 14,5:10", {10, 5, 14, 15}},
        {-270, 1, "10,15:9 10,5:8 14,5:10", {10, 5, 14, 15}},
        {180, 1, "15,10:9 5,10:8 5,6:10", {5, 6, 15, 10}},
        {270, 1, "10,5:9 10,15:8 6,15:10", {6, 5, 10, 15}},
        {90, 2, "10,20:9 10,0:8 12,0:10", {10, 0, 12, 20}},
        {270, 2, "10,0:9 10,20:8 8,20:10", {8, 0, 10, 20}},
    };
    for (const auto& c : cases) {
        vSHAPE shape = polyline({{5, 10}, {15, 10}, {15, 14}});
        EXPECT_EQ(shape.Rotate({10, 10}, c.degrees, c.aspect), 1);
        EXPECT_EQ(text_of(shape), c.expected) << c.degrees;
        EXPECT_EQ(shape.BoundBox(), c.box) << c.degrees;
    }
}

TEST(ShapeTransform, OtherAnglesTruncate)
{
    vSHAPE shape = polyline({{10, 0}, {110, 0}, {10, -30}});
    EXPECT_EQ(shape.Rotate({10, 0}, 45, 3), 1);
    EXPECT_EQ(text_of(shape), "10,0:9 80,-70:8 -11,-21:10");
    EXPECT_EQ(shape.BoundBox(), vRECT(-11, -70, 80, 0));
}

TEST(ShapeTransform, WholeTurnsDoNothing)
{
    vSHAPE shape = polyline({{10, 0}, {110, 0}});
    for (const double degrees : {0.0, 360.0, -720.0, 1e300 * 1e300, -1e-300})
        EXPECT_EQ(shape.Rotate({3, 3}, degrees, 1), 0) << degrees;
    EXPECT_EQ(text_of(shape), "10,0:9 110,0:10");
}

TEST(ShapeTransform, DistortMapsEveryRecord)
{
    vSHAPE shape;
    for (int i = 0; i < 200; ++i)
        shape.AppendPoint({{i, -i}, static_cast<std::uint8_t>(i == 0 ? 9 : i == 199 ? 10 : 8)});
    oMATRIX matrix({0.5, 0, 10, 0, 2, 0});
    EXPECT_EQ(shape.Distort(&matrix), 1);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(static_cast<vPOINT>(shape[static_cast<std::size_t>(i)]), vPOINT(10 + i / 2, -2 * i));
    EXPECT_EQ(shape.BoundBox(), vRECT(10, -398, 109, 0));
    EXPECT_EQ(shape.Distort(nullptr), 0);
}
