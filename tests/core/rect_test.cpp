#include "klv/core/rect.h"

#include <gtest/gtest.h>

using namespace klv;

namespace klv {

static void PrintTo(const vRECT& r, std::ostream* out)
{
    *out << '(' << r.Left() << ", " << r.Top() << ", " << r.Right() << ", " << r.Bottom() << ')';
}

} // namespace klv

namespace {

const vRECT ten(0, 0, 10, 10);

} // namespace

TEST(Rect, CornersAndSize)
{
    vRECT r(vPOINT(1, 2), 10, 20);
    EXPECT_EQ(r, vRECT(1, 2, 11, 22));
    r.TopRight({5, 6});
    r.BottomLeft({-1, 0});
    EXPECT_EQ(r, vRECT(-1, 6, 5, 0));
    EXPECT_EQ(r.Height(), -6);
    EXPECT_EQ(r.Centre(), vPOINT(2, 3));
    EXPECT_EQ(vRECT(0, 0, 5, -5).Centre(), vPOINT(2, -2)) << "halves go toward zero";
    EXPECT_EQ(vRECT(INT32_MIN, 0, INT32_MAX, 0).Width(), -1);
    const RECT platform = r;
    EXPECT_EQ(platform, (RECT{-1, 6, 5, 0}));
}

TEST(Rect, UnionAndIntersection)
{
    EXPECT_EQ(ten + vRECT(20, 20, 30, 30), vRECT(0, 0, 30, 30));
    EXPECT_EQ(ten + vRECT(0, 0, 0, 0), ten);
    EXPECT_EQ(ten ^ vRECT(20, 20, 30, 30), vRECT());
    EXPECT_EQ(ten ^ vRECT(5, -5, 30, 4), vRECT(5, 0, 10, 4));
    EXPECT_TRUE(ten & vRECT(10, 0, 20, 10)) << "a shared edge";
    EXPECT_FALSE(ten & vRECT(11, 0, 20, 10));
}

TEST(Rect, IntersectChangesOnlyWhereTheCentreFits)
{
    vRECT r = ten;
    EXPECT_EQ(r.Intersect(vRECT(5, 5, 20, 20)), 1);
    EXPECT_EQ(r, vRECT(5, 5, 10, 10));
    EXPECT_EQ(r.Intersect(vRECT(20, 20, 30, 30)), 0);
    EXPECT_EQ(r, vRECT(5, 5, 10, 10));
}

TEST(Rect, ExpandMovesEachSideByHalfRoundedUp)
{
    const struct {
        int dx, dy;
        vRECT expanded;
    } cases[] = {
        {3, 0, {-2, 0, 12, 10}},
        {-3, 4, {2, -2, 8, 12}},
        {0, -1, {0, 1, 10, 9}},
        {INT32_MIN, 0, {1 << 30, 0, 10 - (1 << 30), 10}},
    };
    for (const auto& c : cases) {
        vRECT r = ten;
        EXPECT_EQ(r.Expand(c.dx, c.dy), c.expanded);
        EXPECT_EQ(r, c.expanded);
    }
}

TEST(Rect, DistanceBoundaryAndCapture)
{
    const struct {
        vPOINT p;
        int distance, boundary;
        vPOINT captured;
    } cases[] = {
        {{5, 5}, 0, 0, {5, 5}},
        {{10, 5}, 0, 1, {9, 5}},
        {{15, -3}, 8, 0, {9, 0}},
        {{-2, 5}, 2, 0, {0, 5}},
        {{0, 10}, 0, 1, {0, 9}},
        {{10, 11}, 1, 0, {9, 9}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ten.DistFrom(c.p), c.distance);
        EXPECT_EQ(ten.BoundaryPoint(c.p), c.boundary);
        vPOINT p = c.p;
        ten.capture(p);
        EXPECT_EQ(p, c.captured);
    }
}

TEST(Rect, MirrorsMovesAndScales)
{
    EXPECT_EQ(vRECT(1, 2, 4, 8).Mirror(10.25, 0.0, 1, 0), vRECT(16, 2, 19, 8));
    EXPECT_EQ(vRECT(1, 2, 4, 8).Mirror(vPOINT(0, 10), 0, 1), vRECT(1, 12, 4, 18));

    vRECT r(10, 0, 20, 4);
    r.RotateCentre({0, 0}, 90, 1);
    EXPECT_EQ(r, vRECT(-3, -17, 7, -13)) << "the centre turns, the size stays";
    r.MoveTo({1, 1});
    EXPECT_EQ(r, vRECT(1, 1, 11, 5));
    r.MoveToCentre({0, 0});
    EXPECT_EQ(r, vRECT(-5, -2, 5, 2));
    r = vRECT(-3, 3, 5, 7);
    r.Rescale(vPOINT(-65536 * 3 / 2, 32768));
    EXPECT_EQ(r, vRECT(-7, 1, 4, 3)) << "truncated, then normalised";
}

TEST(Rect, PercentagesGoBothWays)
{
    const vRECT outer(100, 100, 300, 200);
    EXPECT_EQ(outer.RectToPercent({150, 125, 301, 99}, 1000), vRECT(250, 250, 1004, -10))
        << "201 / 200 is a little less than 1.005 in doubles";
    EXPECT_EQ(outer.PercentToRect({250, 250, 1005, 500}, 1, 1000), vRECT(150, 125, 301, 150));
    EXPECT_EQ(outer.PercentToRect({250, 250, 1005, 500}, 0, 1000), vRECT(150, 150, 301, 175));
    EXPECT_EQ(vRECT().RectToPercent({1, 1, 2, 2}, 100), vRECT()) << "no division by nothing";
}

TEST(Rect, EncompassesOnlyCurves)
{
    const vBEZPOINT p0({0, 0}, point_flags::curve_to);
    const vBEZPOINT p1({0, 100}, point_flags::control);
    const vBEZPOINT p2({100, 100}, point_flags::control);
    const vBEZPOINT p3({100, 0}, 0);

    vRECT r(0, 0, 0, 0);
    r.EncompassBezierCurve(p0, p1, p2, p3);
    EXPECT_EQ(r, vRECT(0, 0, 100, 75)) << "the curve, not its control points";

    r = vRECT(0, 0, 0, 0);
    r.EncompassBezierCurve(p0, p1, p3, p3);
    EXPECT_EQ(r, vRECT(0, 0, 0, 0));
}
