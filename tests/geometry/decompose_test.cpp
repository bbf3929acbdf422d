#include "klv/geometry/planar/decompose.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

namespace {

using contours = std::vector<std::vector<POINT>>;

contours decomposed(const contours& given, self_crossings crossings = self_crossings::yes)
{
    std::vector<POINT> points;
    std::vector<int> counts;
    for (const auto& c : given) {
        points.insert(points.end(), c.begin(), c.end());
        counts.push_back(static_cast<int>(c.size()));
    }
    poly_polygon loops;
    if (!DecomposePolyPolygon(points, counts, loops, crossings))
        return {};
    contours result;
    auto at = loops.points.begin();
    for (const int count : loops.counts) {
        result.emplace_back(at, at + count);
        at += count;
    }
    return result;
}

std::string text_of(const contours& all)
{
    std::string text;
    for (const auto& c : all) {
        for (const auto& p : c)
            text += std::to_string(p.x) + ',' + std::to_string(p.y) + ' ';
        text += "/ ";
    }
    return text;
}

double area(const std::vector<POINT>& c)
{
    double twice = 0;
    for (std::size_t i = 0; i < c.size(); ++i) {
        const POINT &a = c[i], &b = c[(i + 1) % c.size()];
        twice += static_cast<double>(a.x) * b.y - static_cast<double>(a.y) * b.x;
    }
    return twice / 2;
}

const std::vector<POINT> square_a{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
const std::vector<POINT> square_b{{5, 5}, {15, 5}, {15, 15}, {5, 15}};

} // namespace

TEST(Decompose, WithoutCrossingsContoursStay)
{
    const std::vector<POINT> inner{{2, 2}, {4, 2}, {4, 4}, {2, 4}};
    EXPECT_EQ(text_of(decomposed({square_a, inner})), text_of({square_a, inner}));
    EXPECT_EQ(text_of(decomposed({{{0, 0}, {9, 0}, {9, 9}, {0, 0}}})), "0,0 9,0 9,9 / ")
        << "a repeated first point goes";
    EXPECT_TRUE(decomposed({}).empty());
}

TEST(Decompose, FigureEightBecomesTwoLoops)
{
    const auto loops = decomposed({{{0, 0}, {10, 10}, {10, 0}, {0, 10}}});
    ASSERT_EQ(loops.size(), 2u) << text_of(loops);
    EXPECT_EQ(area(loops[0]), -area(loops[1]));
    EXPECT_EQ(std::abs(area(loops[0])), 25);
}

TEST(Decompose, OverlappingSquares)
{
    // One loop runs around both, one around what they share.
    const auto loops = decomposed({square_a, square_b});
    ASSERT_EQ(loops.size(), 2u) << text_of(loops);
    std::vector<double> areas{area(loops[0]), area(loops[1])};
    std::ranges::sort(areas);
    EXPECT_EQ(areas, (std::vector<double>{25, 175}));
    EXPECT_EQ(loops[0].size() + loops[1].size(), 8u + 4);
    EXPECT_EQ(text_of(decomposed({square_a, square_b}, self_crossings::no)), text_of(loops));
}

TEST(Decompose, UncrossedContoursAreKeptBesideCrossedOnes)
{
    const std::vector<POINT> apart{{100, 100}, {110, 100}, {110, 110}};
    const auto loops = decomposed({square_a, apart, square_b});
    ASSERT_EQ(loops.size(), 3u) << text_of(loops);
    EXPECT_EQ(text_of({loops[2]}), text_of({apart}));
}

TEST(Decompose, AreasAddUpForRandomPolygons)
{
    // The signed areas of the loops add up to that of the polygon, but for the rounding of the crossings.
    std::uint32_t seed = 12345;
    const auto next = [&] { return static_cast<int>((seed = seed * 1664525u + 1013904223u) >> 16) % 20000; };
    for (int round = 0; round < 20; ++round) {
        std::vector<POINT> star(11);
        for (auto& p : star)
            p = {next(), next()};
        double total = 0;
        for (const auto& loop : decomposed({star}))
            total += area(loop);
        EXPECT_NEAR(total, area(star), 2e6) << "round " << round << ' ' << text_of({star});
    }
}

TEST(Decompose, LargePolygonsTakeNoMoreThanTheirCrossings)
{
    // A circle of many short edges, crossed by a bar.
    std::vector<POINT> circle;
    for (int i = 0; i < 60000; ++i) {
        const double a = i * 6.283185307179586 / 60000;
        circle.push_back({static_cast<int>(1e8 * std::cos(a)), static_cast<int>(1e8 * std::sin(a))});
    }
    const std::vector<POINT> bar{{-200000000, -500}, {200000000, -500}, {200000000, 500}, {-200000000, 500}};
    EXPECT_EQ(decomposed({circle, bar}).size(), 2u) << "the outline of both, and what they share";
}
