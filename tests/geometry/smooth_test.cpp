#include "tests/geometry/shape_text.h"

#include <cmath>

#include <gtest/gtest.h>

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

namespace {

struct location {
    double x;
    double y;
};

// Places all along the shape's lines and curves.
std::vector<location> samples(const vSHAPE& shape)
{
    constexpr int steps = 200;
    std::vector<location> all;
    std::size_t first = 0;
    for (std::size_t i = 0; i < shape.NoPoint(); ++i) {
        if (shape[i].First())
            first = i;
        if (shape[i].Control() || !(shape[i].LineTo() || shape[i].CurveTo()))
            continue;
        const bool curve = shape[i].CurveTo() != 0;
        const std::size_t end = shape[i].Last() ? first : i + (curve ? 3 : 1);
        for (int k = 0; k <= steps; ++k) {
            const double t = static_cast<double>(k) / steps, u = 1 - t;
            const auto at = [&](auto part) {
                return curve ? u * u * u * part(shape[i]) + 3 * t * u * u * part(shape[i + 1])
                        + 3 * t * t * u * part(shape[i + 2]) + t * t * t * part(shape[end])
                             : u * part(shape[i]) + t * part(shape[end]);
            };
            all.push_back({at([](const vBEZPOINT& q) { return static_cast<double>(q.x); }),
                at([](const vBEZPOINT& q) { return static_cast<double>(q.y); })});
        }
    }
    return all;
}

double squared_distance(const location& p, const std::vector<location>& all)
{
    double nearest = 1e300;
    for (const auto& q : all)
        nearest = std::min(nearest, (p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y));
    return nearest;
}

// The greatest and the mean of the squared distances of the points from the shape's curves.
std::pair<double, double> errors(const std::vector<vPOINT>& points, const vSHAPE& shape)
{
    const auto outline = samples(shape);
    double sum = 0, greatest = 0;
    for (const auto& p : points) {
        const double square = squared_distance({static_cast<double>(p.x), static_cast<double>(p.y)}, outline);
        sum += square;
        greatest = std::max(greatest, square);
    }
    return {greatest, sum / static_cast<double>(points.size())};
}

std::vector<vPOINT> wave(double noise)
{
    std::vector<vPOINT> points;
    std::uint32_t seed = 9;
    for (int i = 0; i < 200; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const double off = noise * (static_cast<int>(seed >> 16) % 201 - 100) / 100.0;
        points.emplace_back(i * 50, static_cast<int>(1000 * std::sin(i / 20.0) + off));
    }
    return points;
}

} // namespace

TEST(Smooth, KeepsBothTolerances)
{
    const std::pair<int, int> tolerances[] = {{50, 3500}, {4, 3500}, {1000, 16}, {1, 1}, {100000, 100000}};
    int last = 0;
    for (const auto& [mean, greatest] : tolerances) {
        const auto points = wave(5);
        vSHAPE shape(static_cast<unsigned short>(points.size()), points.data(), 0);
        EXPECT_EQ(shape.Smooth(mean, greatest), 1);
        const auto [worst, average] = errors(points, shape);
        // Control points are rounded, and the sampling is coarse.
        EXPECT_LE(worst, std::pow(std::sqrt(greatest) + 1.5, 2)) << mean << ' ' << greatest;
        EXPECT_LE(average, std::pow(std::sqrt(mean) + 1, 2)) << mean << ' ' << greatest;
        last = shape.NoPoint();
    }
    EXPECT_LT(last, 16) << "a wide tolerance needs few curves";
}

TEST(Smooth, TakesNoMoreCurvesThanTheOutlineNeeds)
{
    const auto points = wave(0);
    vSHAPE shape(static_cast<unsigned short>(points.size()), points.data(), 0, 1, 4, 16);
    EXPECT_LE(shape.NoPoint(), 1 + 3 * 10) << "three turns";
    const auto ring = circle(400);
    EXPECT_LE(vSHAPE(400, ring.data(), 1, 1, 4, 16).NoPoint(), 3 * 8 + 1);
}

TEST(Smooth, CurvesStayNearTheOutlineBetweenItsPoints)
{
    // Few points to a lobe leave the fit much freedom.
    for (int turned = 0; turned < 40; ++turned) {
        std::vector<vPOINT> points;
        for (int i = 0; i < 24; ++i) {
            const double a = i * 6.283185307179586 / 24, r = 988 + 312 * std::sin(3 * a + turned * 0.1);
            points.emplace_back(static_cast<int>(r * std::cos(a)), static_cast<int>(r * std::sin(a)));
        }
        const auto outline = samples(vSHAPE(24, points.data()));
        for (const auto& p : samples(vSHAPE(24, points.data(), 1, 1)))
            ASSERT_LT(squared_distance(p, outline), 60 * 60) << turned << ": " << p.x << ',' << p.y;
    }
}

TEST(Smooth, ContoursAreFittedEachByItself)
{
    auto points = circle(40);
    for (const auto& p : circle(30))
        points.emplace_back(p.x + 5000, p.y);
    const int counts[] = {40, 30};
    vSHAPE shape;
    ASSERT_TRUE(shape.assign_polypolygon(points, counts, 1));
    EXPECT_EQ(shape.Smooth(), 1);
    EXPECT_TRUE(shape.IsValid());
    EXPECT_EQ(shape.NoOfContours(), 2);
    EXPECT_EQ(shape.Closed(), 1);
    // Points all in one place are no curve; straight runs stay straight.
    vSHAPE still = polyline({{5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}});
    EXPECT_EQ(still.Smooth(), 1);
    EXPECT_TRUE(still.IsValid());
    EXPECT_EQ(still.BoundBox(), vRECT(5, 5, 5, 5));
}

TEST(Smooth, CurvesThatDoNotFitLeaveThePolygon)
{
    // Every other point is a corner, and each run of two edges a curve of three records.
    std::vector<vPOINT> zigzag;
    for (int i = 0; i < static_cast<int>(vSHAPE::max_points); ++i)
        zigzag.emplace_back(100 * i, 100 * std::abs(i % 4 - 2));
    vSHAPE shape(vSHAPE::max_points, zigzag.data(), 1);
    EXPECT_EQ(shape.Smooth(), 0);
    EXPECT_EQ(text_of(shape), text_of(vSHAPE(vSHAPE::max_points, zigzag.data(), 1, 1)));
    EXPECT_EQ(shape.NoPoint(), vSHAPE::max_points);
    EXPECT_EQ(shape[1], vBEZPOINT(zigzag[1], 8));
    EXPECT_GT(vSHAPE(30000, zigzag.data(), 1, 1).NoPoint(), 44000);
}
