#include "klv/base/memory.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/geometry/shape_text.h"

#include <vector>

#include <gtest/gtest.h>

using namespace klv;

TEST(Shape, ConstructedFromPoints)
{
    const vSHAPE empty;
    EXPECT_EQ(empty.NoPoint(), 0);
    EXPECT_EQ(empty.Closed(), 1);
    EXPECT_EQ(empty.BoundBox(), vRECT());
    EXPECT_EQ(empty.GetLastPoint(), vBEZPOINT());

    const vPOINT points[]{{5, 9}, {-3, 4}, {7, 1}};
    EXPECT_EQ(text_of(vSHAPE(3, points)), "5,9:9 -3,4:8 7,1:10");
    const vSHAPE open(3, points, 0);
    EXPECT_EQ(text_of(open), "5,9:9 -3,4:8 7,1:2");
    EXPECT_EQ(open.Closed(), 0);
    EXPECT_EQ(open.BoundBox(), vRECT(-3, 1, 7, 9));
    EXPECT_TRUE(open.IsValid());

    // No contour, hence no box, but the closed argument holds.
    const vSHAPE single(1, points, 0);
    EXPECT_EQ(single.NoPoint(), 1);
    EXPECT_FALSE(single.IsValid());
    EXPECT_EQ(single.Closed(), 0);
    EXPECT_EQ(single.BoundBox(), vRECT());
}

TEST(Shape, ConstructedFromAPolyPolygon)
{
    const POINT points[]{{0, 0}, {9, 0}, {9, 9}, {100, 100}, {20, 20}, {30, 20}, {30, 30}, {20, 30}};
    const int counts[]{3, 1, 4};
    const vSHAPE open(points, counts, 3, 0);
    EXPECT_EQ(text_of(open), "0,0:9 9,0:8 9,9:2 20,20:9 30,20:8 30,30:8 20,30:2")
        << "a single point is no contour";
    EXPECT_EQ(open.Closed(), 0);
    EXPECT_EQ(open.NoOfContours(), 2);
    EXPECT_EQ(open.BoundBox(), vRECT(0, 0, 30, 30));
    EXPECT_EQ(vSHAPE(points, counts, 3, 1)[6].GetFlags(), 10);

    const int negative[]{-3, 4};
    EXPECT_EQ(vSHAPE(points, negative, 2, 1).NoPoint(), 4);
    EXPECT_EQ(vSHAPE(nullptr, counts, 3, 0).NoPoint(), 0);
}

TEST(Shape, HoldsAtMost65535Points)
{
    const std::vector<vPOINT> points(70000, vPOINT(1, 2));
    const std::int32_t counts[]{40000, 25535, 100};
    vSHAPE shape;
    EXPECT_FALSE(shape.assign_polypolygon(points, counts, 1));
    EXPECT_EQ(shape.NoPoint(), 65535) << "whole contours as long as they fit";
    EXPECT_EQ(shape.NoOfContours(), 2);
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.AppendPoint(vBEZPOINT(vPOINT(), 9)), 0);
    EXPECT_EQ(shape.DeletePoint(0), 1);
    EXPECT_EQ(shape.NoPoint(), 65534);
    EXPECT_FALSE(shape.assign_polyline(points, 1));
    EXPECT_EQ(shape.NoPoint(), 0);
    EXPECT_FALSE(shape.assign_polypolygon(std::span(points).first(5), counts, 1))
        << "counts beyond the points";
}

TEST(Shape, Validity)
{
    using flags = std::vector<int>;
    const struct {
        flags given;
        bool valid;
    } cases[]{
        {{}, false},
        {{9}, false},
        {{9, 2}, true},
        {{9, 10}, true},
        {{9, 8, 8, 10}, true},
        {{9, 2, 9, 10}, true},
        {{17, 32, 32, 2}, true},
        {{17, 32, 32, 16, 32, 32, 8, 10}, true},
        {{9, 18, 32, 32}, true},
        {{9, 18, 32}, false},
        {{9, 18}, false},
        {{8, 10}, false},
        {{9, 8}, false},
        {{9, 9, 10}, false},
        {{9, 10, 10}, false},
        {{9, 32, 10}, false},
        {{17, 32, 8, 10}, false},
        {{9, 12, 10}, false},
        {{9, 10, 32}, false},
        {{3, 9, 10}, false},
    };
    for (const auto& c : cases) {
        std::vector<point_record> records;
        vSHAPE appended;
        for (const int f : c.given) {
            const vBEZPOINT point(vPOINT(f, static_cast<int>(records.size())), static_cast<std::uint8_t>(f));
            records.emplace_back(point);
            appended.AppendPoint(point);
        }
        vSHAPE whole;
        whole.assign_records(records);
        EXPECT_EQ(whole.IsValid(), c.valid) << text_of(whole);
        EXPECT_EQ(appended.IsValid(), c.valid) << "point by point " << text_of(whole);
    }
}

TEST(Shape, BoxHoldsCurvesByTheirExtremes)
{
    // The curve reaches three quarters of the way to its control points.
    const vSHAPE arch = append({{{0, 0}, 17}, {{0, 40}, 32}, {{100, 40}, 32}, {{100, 0}, 2}});
    EXPECT_EQ(arch.BoundBox(), vRECT(0, 0, 100, 30));
    EXPECT_EQ(arch.Closed(), 0);
    const vSHAPE lens = append({{{0, 0}, 9}, {{100, 0}, 18}, {{100, -40}, 32}, {{0, -40}, 32}});
    EXPECT_EQ(lens.BoundBox(), vRECT(0, -30, 100, 0));
    EXPECT_EQ(lens.Closed(), 1);
}

TEST(Shape, AppendKeepsTheBoxOfTheLastValidOutline)
{
    vSHAPE shape;
    shape.AppendPoint({{5, 5}, 9});
    EXPECT_EQ(shape.BoundBox(), vRECT(5, 5, 5, 5));
    shape.AppendPoint({{10, 10}, 2});
    EXPECT_EQ(shape.BoundBox(), vRECT(5, 5, 10, 10));
    EXPECT_EQ(shape.Closed(), 0);
    shape.AppendPoint({{90, 90}, 9});
    EXPECT_EQ(shape.BoundBox(), vRECT(5, 5, 10, 10)) << "the new contour is not whole yet";
    shape.AppendPoint({{95, 95}, 10});
    EXPECT_EQ(shape.BoundBox(), vRECT(5, 5, 95, 95));
    EXPECT_EQ(shape.Closed(), 0) << "one contour is still open";
    EXPECT_EQ(shape.NoOfContours(), 2);
}

TEST(Shape, AppendingAfterOtherChangesStartsAfresh)
{
    vSHAPE shape = polyline({{0, 0}, {10, 0}, {10, 10}});
    shape.Translate(100, 0);
    shape.AppendPoint({{0, 0}, 9});
    shape.AppendPoint({{1, 1}, 10});
    EXPECT_EQ(shape.BoundBox(), vRECT(0, 0, 110, 10));
    shape.DeletePoint(3);
    shape.DeletePoint(3);
    EXPECT_EQ(shape.BoundBox(), vRECT(100, 0, 110, 10));
}

TEST(Shape, Contours)
{
    vSHAPE shape = append({{{0, 0}, 17}, {{1, 1}, 32}, {{2, 2}, 32}, {{3, 3}, 2}});
    shape.AddShape(polyline({{5, 5}, {6, 5}, {6, 6}}));
    vPOINT out[4];
    int closed = -1;
    EXPECT_EQ(shape.GetNthContour(0, out, closed), 2);
    EXPECT_EQ(out[1], vPOINT(3, 3));
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(shape.GetNthContour(1, out, closed), 3);
    EXPECT_EQ(out[0], vPOINT(5, 5));
    EXPECT_EQ(closed, 8);
    EXPECT_EQ(shape.GetNthContour(2, out, closed), 0);
    EXPECT_EQ(shape.GetNthContour(-1, out, closed), 0);

    int n = 0;
    vPOINT* points = shape.GetShapeAsPoints(n, 0);
    EXPECT_EQ(n, 5);
    EXPECT_EQ(points[1], vPOINT(3, 3));
    vMemFree(points);
    points = shape.GetShapeAsPoints(n, 1);
    EXPECT_EQ(n, 7);
    vMemFree(points);
    EXPECT_EQ(vSHAPE().GetShapeAsPoints(n, 1), nullptr);
    EXPECT_EQ(n, 0);
}

TEST(Shape, EqualsByForm)
{
    const vSHAPE square = vRECTSHAPE(vRECT(0, 0, 10, 10));
    EXPECT_EQ(square, vRECTSHAPE(vRECT(-7, 100, 3, 110)));
    EXPECT_NE(square, vRECTSHAPE(vRECT(0, 0, 10, 11)));
    vSHAPE other = square;
    EXPECT_EQ(other, square);
    other.CloseAllContours(0);
    EXPECT_NE(other, square);
    other = polyline({{0, 0}, {10, 0}, {10, 10}, {1, 10}});
    EXPECT_NE(other, square) << "same box, other points";
}

TEST(Shape, MovesAndCopiesOwnTheirPoints)
{
    vSHAPE a = polyline({{0, 0}, {9, 0}, {9, 9}});
    vSHAPE b = a;
    b.Translate(1, 1);
    EXPECT_EQ(a[0], vBEZPOINT(vPOINT(0, 0), 9));
    vSHAPE c = std::move(b);
    EXPECT_EQ(c.NoPoint(), 3);
    EXPECT_EQ(b.NoPoint(), 0);
    b.AppendPoint({{4, 4}, 9});
    EXPECT_EQ(b.NoPoint(), 1);
    const vSHAPE& itself = c;
    c = itself;
    EXPECT_EQ(c.NoPoint(), 3);
    c.AddShape(c);
    EXPECT_EQ(c.NoPoint(), 6);
    EXPECT_EQ(c.NoOfContours(), 2);
}

TEST(Shape, WithoutMemoryIsEmptyAndChangesNothing)
{
    const std::vector<vPOINT> points(1000, vPOINT(3, 3));
    vMemFailAfter(0, memory_failure::from_then_on);
    const vSHAPE made(1000, points.data());
    vMemNeverFail();
    EXPECT_EQ(made.NoPoint(), 0);

    vSHAPE shape = polyline({{0, 0}, {9, 0}, {9, 9}});
    vMemFailAfter(0, memory_failure::from_then_on);
    const vSHAPE copy = shape;
    const int appended = shape.AppendPoint({{1, 1}, 9});
    const int split = shape.SplitPoint(1, 2);
    const int curved = shape.MakePointAutoCurve(1);
    vMemNeverFail();
    EXPECT_EQ(copy.NoPoint(), 0);
    EXPECT_EQ(appended + split + curved, 0);
    EXPECT_EQ(text_of(shape), "0,0:9 9,0:8 9,9:10");
}

TEST(Shape, ExtremeCoordinatesWrap)
{
    vSHAPE shape = polyline({{INT32_MIN, INT32_MIN}, {INT32_MAX, 0}, {0, INT32_MAX}});
    EXPECT_EQ(shape.BoundBox(), vRECT(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX));
    shape.Translate(1, -1);
    EXPECT_EQ(text_of(shape), "-2147483647,2147483647:9 -2147483648,-1:8 1,2147483646:10");
    EXPECT_EQ(shape.IsRectangular(), 0);
    EXPECT_EQ(shape.IsSingleClosedConvexPolygon(), vWINDING_CLOCKWISE);
    shape.Rescale({INT32_MAX, INT32_MIN});
    shape.Rotate({INT32_MIN, INT32_MAX}, 90, 0);
    shape.Rotate({INT32_MIN, INT32_MAX}, 33, 1);
    EXPECT_EQ(shape.NoPoint(), 3);
}
