#include "klv/geometry/planar/crossings.h"
#include "klv/geometry/planar/decompose.h"
#include "klv/platform/host.h"

#include "tests/geometry/pairwise_walk.h"
#include "tests/geometry/random_outlines.h"

#include <set>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

namespace {

struct counting_host : host {
    int duplicates = 0;
    void debug_output(const char* line) override
    {
        duplicates += std::string_view(line) == "*** Illegal DuplicateNode!\n";
    }
};

// Without repeats of points and without edges that go straight back.
bool is_plain(const poly_polygon& p) { return edge_outline(p.points, p.counts).size() == p.points.size(); }

pairwise_walk walk_of(const poly_polygon& p, bool self)
{
    return {{p.points.begin(), p.points.end()}, {p.counts.begin(), p.counts.end()}, self};
}

} // namespace

TEST(Crossings, AreThoseOfThePairwiseWalkInItsOrder)
{
    random_outlines random(1);
    for (int round = 0; round < 3000; ++round) {
        // Few points that often coincide, some, and many edges of several runs.
        const int kind = round % 3;
        const auto p = random.contours(4, kind == 2 ? 60 : 12, kind == 0 ? 12 : 50000);
        if (!is_plain(p))
            continue;
        const bool self = round % 4 != 0;
        const edge_outline outline(p.points, p.counts);
        const auto found = find_crossings(outline, outline_tree(outline), self).crossings;

        // The first at each point makes a node; others there are the same crossing or left to it.
        std::vector<edge_pair> expected;
        const auto walk = walk_of(p, self);
        for (const auto& c : walk.found())
            expected.push_back({c.a, c.b});
        std::vector<edge_pair> nodes;
        std::set<std::pair<int, int>> taken;
        for (const auto& pair : found) {
            const POINT at = crossing_point(outline, pair);
            if (taken.emplace(at.x, at.y).second)
                nodes.push_back(pair);
        }
        ASSERT_EQ(nodes.size(), expected.size()) << "round " << round;
        ASSERT_TRUE(nodes == expected) << "round " << round;
    }
}

TEST(Crossings, LoopsOfContoursInGeneralPositionAreThoseOfThePairwiseWalk)
{
    random_outlines random(2);
    int compared = 0;
    for (int round = 0; round < 2500; ++round) {
        // Without self-crossings contours must not cross themselves: triangles.
        const bool self = round % 4 != 0;
        const auto p = random.contours(self ? 3 : 8, !self ? 3 : round % 8 == 1 ? 40 : 10, 1000000);
        auto walk = walk_of(p, self);
        const auto expected = walk.loops();
        if (walk.ambiguous() || walk.found().empty())
            continue;
        ++compared;
        poly_polygon loops;
        ASSERT_TRUE(
            DecomposePolyPolygon(p.points, p.counts, loops, self ? self_crossings::yes : self_crossings::no));
        ASSERT_EQ(loops.counts, expected.counts) << "round " << round;
        ASSERT_TRUE(loops.points == expected.points) << "round " << round;
    }
    EXPECT_GT(compared, 1200);
}

TEST(Crossings, OnesLeftToANodeOfOtherEdgesAreReported)
{
    counting_host host;
    auto* const before = install_host(&host);
    random_outlines random(3);
    int expected = 0;
    for (int round = 0; round < 300; ++round) {
        const auto p = random.contours(2, 9, 9);
        if (!is_plain(p))
            continue;
        const edge_outline outline(p.points, p.counts);
        std::vector<std::pair<POINT, edge_pair>> nodes;
        for (const auto& pair : find_crossings(outline, outline_tree(outline), true).crossings) {
            const POINT at = crossing_point(outline, pair);
            const auto node = std::ranges::find_if(nodes, [&](const auto& n) { return n.first == at; });
            if (node == nodes.end())
                nodes.emplace_back(at, pair);
            else
                expected += std::set{pair.a, pair.b, node->second.a, node->second.b}.size() == 4;
        }
        poly_polygon loops;
        (void)DecomposePolyPolygon(p.points, p.counts, loops, self_crossings::yes);
    }
    install_host(before);
    EXPECT_GT(expected, 50);
    EXPECT_EQ(host.duplicates, expected);
}

TEST(OutlineTree, CountsWindingsAroundAPoint)
{
    random_outlines random(4);
    for (int round = 0; round < 300; ++round) {
        const auto p = random.contours(round % 2 == 0 ? 3 : 40, round % 3 == 0 ? 100 : 6, 60);
        const edge_outline outline(p.points, p.counts);
        const outline_tree tree(outline);
        for (int i = 0; i < 20; ++i) {
            const POINT at{random.number(-1, 61), random.number(-1, 61)};
            int expected = 0;
            for (std::uint32_t e = 0; e < outline.size(); ++e) {
                const POINT a = outline[e], b = outline.end(e);
                if ((a.y < at.y) == (b.y < at.y))
                    continue;
                const int side = (b.x - a.x) * (at.y - a.y) - (b.y - a.y) * (at.x - a.x);
                if (a.y < b.y ? side < 0 : side > 0)
                    expected += a.y < b.y ? 1 : -1;
            }
            ASSERT_EQ(tree.winding_left_of(at), expected) << "round " << round;
        }
    }
}
