#include "test_surface.h"
#include "tests/geometry/random_outlines.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace klv::test {
namespace {

constexpr int side = 120;
constexpr std::uint32_t ink = 0xFF0000;

std::vector<bool> filled(const vSHAPE& shape)
{
    surface paper(side, side);
    vDEVICE device(paper.dc());
    device.LineSpec(no_line());
    device.FillSpec(fill(vFILL_SOLID, vCOLOUR(255, 0, 0)));
    device.DrawShape(shape);
    std::vector<bool> pixels;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            pixels.push_back(paper.at(x, y) == ink);
    return pixels;
}

// Rounded crossings move edges by less than a unit, and with them the pixels beside them.
bool near_an_edge(const vSHAPE& shape, int x, int y)
{
    constexpr double near = 1.5;
    const auto records = shape.records();
    std::size_t first = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (records[i].has(point_flags::first))
            first = i;
        const auto& next = records[records[i].has(point_flags::last) ? first : i + 1];
        const double dx = next.x() - records[i].x(), dy = next.y() - records[i].y();
        const double px = x + 0.5 - records[i].x(), py = y + 0.5 - records[i].y();
        const double square = dx * dx + dy * dy;
        const double t = square == 0 ? 0 : std::clamp((px * dx + py * dy) / square, 0.0, 1.0);
        if (std::hypot(px - t * dx, py - t * dy) < near)
            return true;
    }
    return false;
}

TEST(BooleanFill, IsTheBooleanOfTheFills)
{
    random_outlines random(21);
    int compared = 0;
    for (int round = 0; round < 200; ++round) {
        const vSHAPE a = random.shape(7, side), b = random.shape(7, side);
        vSHAPE both(a), common(a), rest(a), not_b(b);
        not_b.Negate();
        ASSERT_TRUE(both.Union(b) && common.Intersection(b) && rest.Intersection(not_b));
        const auto in_a = filled(a), in_b = filled(b), in_both = filled(both), in_common = filled(common),
                   in_rest = filled(rest);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                if (near_an_edge(a, x, y) || near_an_edge(b, x, y))
                    continue;
                ++compared;
                const auto i = static_cast<std::size_t>(y * side + x);
                ASSERT_EQ(in_both[i], in_a[i] || in_b[i]) << "round " << round << " at " << x << ',' << y;
                ASSERT_EQ(in_common[i], in_a[i] && in_b[i]) << "round " << round << " at " << x << ',' << y;
                ASSERT_EQ(in_rest[i], in_a[i] && !in_b[i]) << "round " << round << " at " << x << ',' << y;
            }
        }
    }
    EXPECT_GT(compared, 200 * side * side / 10);
}

} // namespace
} // namespace klv::test
