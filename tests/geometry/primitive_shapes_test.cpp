#include "klv/geometry/primitive_shapes.h"

#include "tests/geometry/shape_text.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace klv;

TEST(PrimitiveShapes, Layouts)
{
    EXPECT_EQ(text_of(vRECTSHAPE(vRECT(1, 2, 30, 40))), "1,2:9 30,2:8 30,40:8 1,40:10");
    EXPECT_EQ(text_of(vELPSSHAPE(vRECT(0, 0, 100, 50))),
        "50,0:17 77,0:32 100,12:32 100,25:16 100,38:32 77,50:32 50,50:16 23,50:32 0,38:32 0,25:18 0,12:32 "
        "23,0:32");
    EXPECT_EQ(text_of(vROUNDRECTSHAPE(vRECT(0, 0, 100, 50), vSIZE(20, 9))),
        "10,0:9 90,0:16 95,0:32 100,2:32 100,4:8 100,46:16 100,48:32 95,50:32 90,50:8 10,50:16 5,50:32 "
        "0,48:32 0,46:8 0,4:18 0,2:32 5,0:32");
}

TEST(PrimitiveShapes, AreClosedAndFillTheirRectangle)
{
    for (const vRECT rect : {vRECT(0, 0, 100, 50), vRECT(-333, -7, 1000, 2000), vRECT(5, 5, 46, 47)}) {
        const vSHAPE shapes[]{vRECTSHAPE(rect), vELPSSHAPE(rect), vROUNDRECTSHAPE(rect, vSIZE(10, 12)),
            vPOLYGONSHAPE(rect, 3, 0), vPOLYGONSHAPE(rect, 7, 1), vSTARSHAPE(rect, 5, 0, 40, 0, 0),
            vSTARSHAPE(rect, 9, 1, 60, 1, 20)};
        for (const auto& shape : shapes) {
            EXPECT_TRUE(shape.IsValid()) << text_of(shape);
            EXPECT_EQ(shape.Closed(), 1);
            EXPECT_EQ(shape.NoOfContours(), 1);
            const vRECT box = shape.BoundBox();
            EXPECT_NEAR(box.Left(), rect.Left(), 1) << text_of(shape);
            EXPECT_NEAR(box.Top(), rect.Top(), 1) << text_of(shape);
            EXPECT_NEAR(box.Right(), rect.Right(), 1) << text_of(shape);
            EXPECT_NEAR(box.Bottom(), rect.Bottom(), 1) << text_of(shape);
        }
    }
}

TEST(PrimitiveShapes, NumbersOfCornersAreLimited)
{
    const vRECT rect(0, 0, 1000, 1000);
    EXPECT_EQ(vPOLYGONSHAPE(rect, 2, 0).NoPoint(), 3);
    EXPECT_EQ(vPOLYGONSHAPE(rect, 25, 0).NoPoint(), 20);
    EXPECT_EQ(vSTARSHAPE(rect, 0, 0, 50, 0, 0).NoPoint(), 6);
    EXPECT_EQ(vSTARSHAPE(rect, 21, 0, 50, 1, 20).NoPoint(), 80);
}

TEST(PrimitiveShapes, PolygonStartsAtTheTopAndRunsClockwise)
{
    EXPECT_EQ(text_of(vPOLYGONSHAPE(vRECT(0, 0, 200, 100), 4, 0)), "100,0:9 200,50:8 100,100:8 0,50:10");
    EXPECT_EQ(text_of(vPOLYGONSHAPE(vRECT(0, 0, 200, 100), 4, 1)), "200,0:9 200,100:8 0,100:8 0,0:10");
    EXPECT_EQ(vPOLYGONSHAPE(vRECT(0, 0, 90, 90), 5, 0).IsSingleClosedConvexPolygon(), vWINDING_CLOCKWISE);
}

TEST(PrimitiveShapes, StarsAlternateBetweenTheirRadii)
{
    EXPECT_EQ(text_of(vSTARSHAPE(vRECT(0, 0, 200, 200), 4, 0, 50, 0, 0)),
        "100,0:9 135,65:8 200,100:8 135,135:8 100,200:8 65,135:8 0,100:8 65,65:10");
    const vSHAPE star = vSTARSHAPE(vRECT(0, 0, 2000, 2000), 4, 0, 50, 1, 10);
    EXPECT_EQ(star.NoPoint(), 16);
    const auto radius = [&](std::size_t i) { return std::hypot(star[i].x - 1000, star[i].y - 1000); };
    for (std::size_t i = 0; i < 16; i += 4) {
        EXPECT_NEAR(radius(i), 1000, 2);
        EXPECT_NEAR(radius(i + 1), 500, 2);
        EXPECT_NEAR(radius(i + 2), 100, 2);
        EXPECT_NEAR(radius(i + 3), 500, 2);
    }
}

TEST(PrimitiveShapes, DegenerateRectangles)
{
    for (const vRECT rect : {vRECT(), vRECT(5, 5, 5, 5), vRECT(9, 9, 0, 0), vRECT(0, 0, 100, 0),
             vRECT(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX), vRECT(INT32_MAX, 0, INT32_MIN, 1)}) {
        EXPECT_EQ(vRECTSHAPE(rect).NoPoint(), 4);
        EXPECT_EQ(vELPSSHAPE(rect).NoPoint(), 12);
        EXPECT_EQ(vROUNDRECTSHAPE(rect, vSIZE(INT32_MAX, INT32_MIN)).NoPoint(), 16);
        EXPECT_EQ(vPOLYGONSHAPE(rect, 6, 1).NoPoint(), 6);
        EXPECT_EQ(vSTARSHAPE(rect, 6, 1, 65535, 1, 65535).NoPoint(), 24);
    }
}
