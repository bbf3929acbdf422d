#include "klv/gdi/gdi.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/geometry/shape_text.h"

#include <gtest/gtest.h>

using namespace klv;

namespace {

vSHAPE square_with_hole()
{
    vSHAPE shape = vRECTSHAPE(vRECT(0, 0, 100, 100));
    shape.AddShape(vRECTSHAPE(vRECT(20, 20, 60, 60)));
    return shape;
}

} // namespace

TEST(ShapeMeasure, Area)
{
    const struct {
        vSHAPE shape;
        int area;
    } cases[]{
        {vRECTSHAPE(vRECT(0, 0, 100, 50)), 5000}, {polyline({{0, 0}, {100, 0}, {100, 50}, {0, 50}}, 0), 0},
        {square_with_hole(), 10000 - 1600},
        {polyline({{0, 0}, {100, 100}, {100, 0}, {0, 100}}), 5000}, // two triangles
        {vSHAPE(), 0}, {polyline({{0, 0}, {0, 50}, {100, 50}, {100, 0}}), 5000}, // either sense
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.shape.Area(), c.area) << text_of(c.shape);
    EXPECT_NEAR(vELPSSHAPE(vRECT(0, 0, 1000, 1000)).Area(), 785398, 2500);
}

TEST(ShapeMeasure, Perimeter)
{
    EXPECT_EQ(vRECTSHAPE(vRECT(0, 0, 100, 50)).Perimeter(), 300);
    EXPECT_EQ(polyline({{0, 0}, {100, 0}, {100, 50}, {0, 50}}, 0).Perimeter(), 250);
    EXPECT_EQ(polyline({{0, 0}, {1, 1}}, 0).Perimeter(), 1) << "each edge is rounded";
    EXPECT_EQ(square_with_hole().Perimeter(), 560);
    EXPECT_EQ(vSHAPE().Perimeter(), 0);
}

TEST(ShapeMeasure, Direction)
{
    vSHAPE shape = square_with_hole();
    shape.AddShape(polyline({{0, 0}, {0, 9}, {9, 9}}));
    vWINDING_DIRECTION direction{};
    EXPECT_EQ(shape.Direction(&direction, 0), 1);
    EXPECT_EQ(direction, vWINDING_CLOCKWISE);
    EXPECT_EQ(shape.Direction(&direction, 2), 1);
    EXPECT_EQ(direction, vWINDING_ANTICLOCKWISE);
    EXPECT_EQ(shape.Direction(&direction, 3), 0);
    EXPECT_EQ(shape.Direction(&direction, -1), 0);
    EXPECT_EQ(polyline({{0, 0}, {5, 5}, {9, 9}}).Direction(&direction, 0), 1);
    EXPECT_EQ(direction, vWINDING_NONE);
}

TEST(ShapeMeasure, Rectangles)
{
    const struct {
        vSHAPE shape;
        int expected;
    } cases[]{
        {vRECTSHAPE(vRECT(0, 0, 100, 50)), 1},
        {polyline({{0, 10}, {10, 0}, {40, 30}, {30, 40}}), 1},
        {polyline({{0, 10}, {10, 0}, {40, 30}, {31, 40}}), 0},
        {polyline({{0, 0}, {10, 0}, {10, 10}}), 0},
        {polyline({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, 0), 0},
        {vELPSSHAPE(vRECT(0, 0, 9, 9)), 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.shape.IsRectangular(), c.expected) << text_of(c.shape);
}

TEST(ShapeMeasure, ConvexPolygons)
{
    const struct {
        vSHAPE shape;
        vWINDING_DIRECTION expected;
    } cases[]{
        {vRECTSHAPE(vRECT(0, 0, 100, 50)), vWINDING_CLOCKWISE},
        {polyline({{0, 0}, {0, 9}, {9, 9}}), vWINDING_ANTICLOCKWISE},
        {polyline({{5, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}}), vWINDING_CLOCKWISE}, // starts within an edge
        {polyline({{5, 0}, {10, 5}, {5, 10}, {0, 5}}), vWINDING_CLOCKWISE},
        {polyline({{0, 0}, {9, 0}, {3, 3}, {0, 9}}), vWINDING_NONE}, // a dent
        {polyline({{50, 0}, {79, 90}, {2, 35}, {98, 35}, {21, 90}}),
            vWINDING_NONE}, // pentagram: turns one way
        {polyline({{0, 0}, {9, 0}, {9, 9}}, 0), vWINDING_NONE},
        {polyline({{0, 0}, {9, 0}, {5, 0}}), vWINDING_NONE},
        {vELPSSHAPE(vRECT(0, 0, 100, 100)), vWINDING_CLOCKWISE}, // by its control points
        {square_with_hole(), vWINDING_NONE},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.shape.IsSingleClosedConvexPolygon(), c.expected) << text_of(c.shape);
}

TEST(ShapeMeasure, PointNearPath)
{
    const vSHAPE triangle = polyline({{0, 0}, {100, 0}, {100, 100}});
    const struct {
        vPOINT p;
        unsigned tolerance;
        int expected;
    } cases[]{
        {{100, 100}, 0, 1},
        {{50, 0}, 0, 1},
        {{50, 3}, 2, 0},
        {{50, 3}, 3, 1},
        {{50, 50}, 2, 1}, // on the closing edge, whose foot is rounded to (51, 51)
        {{53, 50}, 3, 1}, // its foot is 2.1 away
        {{80, 40}, 5, 0}, // inside
        {{103, 103}, 5, 1}, // beyond the corner
        {{104, 104}, 5, 0},
        {{-500, 0}, 3, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(triangle.PointNearPath(c.p, c.tolerance), c.expected) << c.p.x << ',' << c.p.y;
}

TEST(ShapeMeasure, PointInShape)
{
    const vSHAPE shape = square_with_hole();
    const struct {
        vPOINT p;
        int expected;
    } cases[]{
        {{10, 10}, 1},
        {{40, 40}, 0}, // in the hole
        {{20, 40}, 1}, // on its edge
        {{100, 100}, 1},
        {{101, 50}, 0},
        {{0, 50}, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.p ^ shape, c.expected) << c.p.x << ',' << c.p.y;
    EXPECT_EQ(vPOINT(0, 0) ^ vSHAPE(), 0);
    // A triangle as large as coordinates allow.
    const vSHAPE huge = polyline({{INT32_MIN / 2, 0}, {INT32_MAX / 2, 1}, {0, INT32_MAX / 2}});
    EXPECT_EQ(vPOINT(0, 1000) ^ huge, 1);
    EXPECT_EQ(vPOINT(INT32_MAX / 2, 1000) ^ huge, 0);
}

TEST(ShapeMeasure, RegionsOfShapes)
{
    const vSHAPE shape = square_with_hole();
    EXPECT_EQ(shape.Intersect({10, 10}), 1);
    EXPECT_EQ(shape.Intersect({40, 40}), 0);
    EXPECT_EQ(shape.Intersect({101, 10}), 0);

    const HRGN both = shape.CombineShapes(vRECTSHAPE(vRECT(50, 50, 200, 200)), RGN_AND);
    ASSERT_NE(both, nullptr);
    EXPECT_TRUE(PtInRegion(both, 70, 70));
    EXPECT_FALSE(PtInRegion(both, 55, 55));
    EXPECT_FALSE(PtInRegion(both, 10, 10));
    DeleteObject(both);
    EXPECT_EQ(shape.CombineShapes(vRECTSHAPE(vRECT(500, 500, 600, 600)), RGN_OR), nullptr) << "boxes apart";
    EXPECT_EQ(shape.CombineShapes(shape, RGN_DIFF), nullptr) << "nothing is left";
}

TEST(Contour, Holes)
{
    const POINT points[]{{0, 0}, {90, 0}, {90, 90}, {0, 90}, {30, 30}, {60, 30}, {60, 60}, {30, 60}};
    const int counts[]{4, 4};
    const std::span all(points);
    EXPECT_FALSE(ContourIsHole(all, counts, all.first(4)));
    EXPECT_TRUE(ContourIsHole(all, counts, all.last(4)));
    EXPECT_EQ(ContourArea(all.first(4), false), 8100);
    POINT reversed[4];
    std::copy_n(points, 4, reversed);
    ReverseContour(reversed);
    EXPECT_EQ(ContourArea(reversed, false), -8100);
    EXPECT_EQ(ContourArea(reversed, true), 8100);
}
