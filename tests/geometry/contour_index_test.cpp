#include "klv/geometry/planar/contour_index.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

// The index against the definitions, which look at all edges.

namespace {

using contour = std::vector<POINT>;

std::int64_t square(std::int64_t v) { return v * v; }

std::int64_t dot(const POINT& a, const POINT& b, const POINT& c)
{
    return std::int64_t{b.x - a.x} * (c.x - a.x) + std::int64_t{b.y - a.y} * (c.y - a.y);
}

bool edge_is_closer(const POINT& a, const POINT& b, const POINT& p, std::int64_t d)
{
    if (dot(a, b, p) <= 0)
        return dot(a, p, p) < square(d);
    if (dot(b, a, p) <= 0)
        return dot(b, p, p) < square(d);
    const std::int64_t doubled_area
        = std::int64_t{b.x - a.x} * (p.y - a.y) - std::int64_t{b.y - a.y} * (p.x - a.x);
    return square(doubled_area) < square(d) * dot(a, b, b);
}

bool plainly_lies_away(const contour& c, const POINT& p, std::int64_t d)
{
    for (std::size_t i = 0; i < c.size(); ++i) {
        if (edge_is_closer(c[i], c[(i + 1) % c.size()], p, d))
            return false;
    }
    return true;
}

// Quarters of the plane about p that the vertices lie in; going round once adds up to four.
bool plainly_contains(contour c, const POINT& p)
{
    const auto quadrant
        = [&p](const POINT& v) { return v.x > p.x ? (v.y > p.y ? 0 : 3) : (v.y > p.y ? 1 : 2); };
    if (c.front() != c.back())
        c.push_back(c.front());
    int sum = 0;
    for (std::size_t i = 1; i < c.size(); ++i) {
        const POINT &old = c[i - 1], &now = c[i];
        int step = quadrant(now) - quadrant(old);
        if (step == 3 || step == -3) {
            step = -step / 3;
        } else if (step == 2 || step == -2) {
            const double slope = static_cast<double>(old.x - now.x) / (old.y - now.y);
            if (now.x - static_cast<int>((now.y - p.y) * slope) > p.x)
                step = -step;
        }
        sum += step;
    }
    return sum == 4 || sum == -4;
}

class random_points {
public:
    explicit random_points(std::uint32_t seed)
        : engine_(seed)
    {
    }
    int number(int from, int to) { return std::uniform_int_distribution(from, to)(engine_); }
    POINT point(int reach) { return {number(-reach, reach), number(-reach, reach)}; }

private:
    std::mt19937 engine_;
};

} // namespace

TEST(ContourIndex, AnswersAsTheDefinitionsDo)
{
    random_points random(7);
    for (int round = 0; round < 600; ++round) {
        // Small coordinates put many points on the outline itself.
        const int reach = round % 3 == 0 ? 6 : round % 3 == 1 ? 50 : 20000;
        contour c(static_cast<std::size_t>(random.number(1, 60)));
        for (auto& p : c)
            p = random.point(reach);
        if (round % 5 == 0)
            c.push_back(c.front());
        const contour_index index(c);
        contour asked;
        for (int i = 0; i < 40; ++i)
            asked.push_back(random.point(reach + 2));
        const int d = random.number(0, reach);

        std::size_t near = 0;
        for (const auto& p : asked) {
            ASSERT_EQ(index.PointLiesNUnitsFromContour(p, d), plainly_lies_away(c, p, d))
                << "round " << round << " at " << p.x << ',' << p.y;
            ASSERT_EQ(index.contains(p), plainly_contains(c, p))
                << "round " << round << " at " << p.x << ',' << p.y;
            near += !plainly_lies_away(c, p, d);
        }
        EXPECT_EQ(index.ContourLiesNUnitsFromContour(asked, d, asked.size()), near);
        EXPECT_EQ(index.ContourLiesNUnitsFromContour(asked, d, 3), std::min<std::size_t>(near, 3));
    }
}

TEST(ContourIndex, CountsAndFlagsThePointsThatLieOutside)
{
    const contour square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    const contour_index index(square);
    // Inside is strict, against the box as well.
    const contour asked{{5, 5}, {0, 5}, {10, 5}, {20, 5}, {5, 10}, {9, 9}};
    std::vector<std::uint8_t> flags(asked.size(), 0);
    EXPECT_EQ(index.ContourLiesInsideContour(asked, flags, asked.size()), 4u);
    EXPECT_EQ(flags, (std::vector<std::uint8_t>{0, 1, 1, 1, 1, 0}));
    EXPECT_EQ(index.ContourLiesInsideContour(asked, {}, 1), 2u) << "stops above the limit";
    EXPECT_EQ(contour_index({}).ContourLiesInsideContour(asked, {}, 9), asked.size());
    EXPECT_TRUE(contour_index({}).PointLiesNUnitsFromContour({0, 0}, 5));
}
