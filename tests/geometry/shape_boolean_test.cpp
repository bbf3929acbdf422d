#include "klv/geometry/planar/crossings.h"
#include "klv/geometry/planar/exact.h"
#include "klv/geometry/planar/shape_boolean.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/geometry/shape.h"

#include "tests/geometry/random_outlines.h"
#include "tests/geometry/shape_text.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

namespace {

using contours = std::vector<std::vector<POINT>>;

vSHAPE shape_of(const contours& all)
{
    poly_polygon p;
    for (const auto& c : all)
        p.append(c);
    return {p.points.data(), p.counts.data(), static_cast<int>(p.counts.size()), 1};
}

contours contours_of(const vSHAPE& shape)
{
    contours all;
    for (const auto& r : shape.records()) {
        if (r.has(point_flags::first))
            all.emplace_back();
        all.back().push_back({r.x(), r.y()});
    }
    return all;
}

std::vector<POINT> box(int left, int top, int right, int bottom)
{
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

vSHAPE united(const vSHAPE& a, const vSHAPE& b)
{
    vSHAPE result(a);
    EXPECT_EQ(result.Union(b), 1);
    return result;
}

vSHAPE intersected(const vSHAPE& a, const vSHAPE& b)
{
    vSHAPE result(a);
    EXPECT_EQ(result.Intersection(b), 1);
    return result;
}

// Twice the area of a result, whose outlines run in direction 2 and whose holes in direction 1.
std::int64_t doubled_area_of(const vSHAPE& result)
{
    wide sum = 0;
    for (const auto& c : contours_of(result))
        sum -= doubled_area(c);
    return static_cast<std::int64_t>(sum);
}

bool encloses(const vSHAPE& shape, double x, double y)
{
    bool inside = false;
    for (const auto& c : contours_of(shape)) {
        for (std::size_t i = 0; i < c.size(); ++i) {
            const POINT a = c[i], b = c[(i + 1) % c.size()];
            inside ^= (a.y > y) != (b.y > y) && a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y) < x;
        }
    }
    return inside;
}

} // namespace

TEST(Boolean, OfRectangles)
{
    const vRECTSHAPE a(vRECT(0, 0, 10, 10));
    const struct {
        vRECT b;
        const char* united;
        const char* common;
    } cases[] = {
        {{5, 5, 15, 15}, "5,10:9 5,15:8 15,15:8 15,5:8 10,5:8 10,0:8 0,0:8 0,10:10",
            "5,5:9 5,10:8 10,10:8 10,5:10"},
        {{2, 2, 4, 4}, "0,10:9 10,10:8 10,0:8 0,0:10", "2,4:9 4,4:8 4,2:8 2,2:10"},
        {{100, 0, 110, 10}, "0,10:9 10,10:8 10,0:8 0,0:10 100,10:9 110,10:8 110,0:8 100,0:10", ""},
        {{10, 0, 20, 10}, "10,10:9 20,10:8 20,0:8 10,0:8 0,0:8 0,10:10", ""},
        {{0, 0, 10, 10}, "0,10:9 10,10:8 10,0:8 0,0:10", "0,10:9 10,10:8 10,0:8 0,0:10"},
    };
    for (const auto& c : cases) {
        const vRECTSHAPE b(c.b);
        EXPECT_EQ(text_of(united(a, b)), c.united);
        EXPECT_EQ(text_of(intersected(a, b)), c.common);
    }
    EXPECT_EQ(text_of(united(a, vSHAPE())), "0,10:9 10,10:8 10,0:8 0,0:10");
    EXPECT_TRUE(intersected(a, vSHAPE()).empty());
}

TEST(Boolean, PolyPolygonsCountTheirDirections)
{
    std::vector<POINT> a = box(0, 0, 10, 10), b = box(5, 5, 15, 15);
    const std::vector<POINT> eight{{0, 0}, {10, 10}, {10, 0}, {0, 10}};
    poly_polygon result;
    const int four[] = {4};
    ASSERT_TRUE(UnionPolyPolygon(eight, four, result, self_crossings::yes)) << "one of the two loops stays";
    EXPECT_EQ(result.counts.size(), 1u);
    EXPECT_EQ(doubled_area(result.points), -50);
    EXPECT_FALSE(UnionPolyPolygon(a, four, result, self_crossings::yes)) << "direction 1 takes away";
    std::ranges::reverse(a);
    std::ranges::reverse(b);
    a.insert(a.end(), b.begin(), b.end());
    const int both[] = {4, 4};
    ASSERT_TRUE(UnionPolyPolygon(a, both, result, self_crossings::no));
    EXPECT_EQ(result.counts, (decltype(result.counts){8}));
    EXPECT_FALSE(UnionPolyPolygon({}, {}, result, self_crossings::yes));
}

TEST(Boolean, OpenShapesAreRefused)
{
    const vRECTSHAPE closed(vRECT(0, 0, 10, 10));
    const vSHAPE open = polyline({{5, 5}, {15, 5}, {15, 15}}, 0);
    for (const auto operation : {&vSHAPE::Union, &vSHAPE::Intersection}) {
        vSHAPE a(closed), b(open);
        EXPECT_EQ((a.*operation)(open), 0);
        EXPECT_EQ((b.*operation)(closed), 0);
        EXPECT_EQ(text_of(a), text_of(closed));
        EXPECT_EQ(text_of(b), text_of(open));
    }
    vSHAPE negated(open);
    negated.Negate();
    EXPECT_EQ(text_of(negated), text_of(open));
    EXPECT_FALSE(negated.negated());
}

TEST(Boolean, CurvesComeOutAsPolygons)
{
    const vELPSSHAPE disc(vRECT(0, 0, 1000, 1000));
    const auto half = intersected(disc, vRECTSHAPE(vRECT(0, 0, 500, 1000)));
    EXPECT_NEAR(static_cast<double>(doubled_area_of(half)), 250000 * 3.14159, 2000);
    for (const auto& r : half.records())
        EXPECT_TRUE(r.has(point_flags::line_to));
}

TEST(Boolean, NegateTurnsContoursAndTurnsThemBack)
{
    vSHAPE mixed = append({{{0, 0}, 17}, {{1, 2}, 32}, {{3, 4}, 32}, {{10, 0}, 8}, {{10, 10}, 18},
        {{7, 7}, 32}, {{5, 6}, 32}, {{20, 0}, 9}, {{30, 0}, 8}, {{30, 9}, 10}});
    const std::string before = text_of(mixed);
    mixed.Negate();
    EXPECT_TRUE(mixed.negated());
    EXPECT_EQ(text_of(mixed), "10,10:9 10,0:16 3,4:32 1,2:32 0,0:18 5,6:32 7,7:32 30,9:9 30,0:8 20,0:10");
    EXPECT_TRUE(mixed.IsValid());
    vSHAPE copy(mixed);
    copy.Negate();
    EXPECT_EQ(text_of(copy), before);
    EXPECT_FALSE(copy.negated());
    mixed.clear();
    EXPECT_FALSE(mixed.negated());
}

TEST(Boolean, FramesTravelAndNeverShow)
{
    const vRECTSHAPE a(vRECT(0, 0, 10, 10)), b(vRECT(5, 0, 20, 10));
    vSHAPE not_b(b), none, everything(a);
    not_b.Negate();
    EXPECT_EQ(doubled_area_of(intersected(a, not_b)), 100) << "what b leaves of a";
    EXPECT_FALSE(intersected(a, not_b).negated());

    EXPECT_EQ(everything.Union(not_b), 1);
    EXPECT_TRUE(everything.negated());
    everything.Negate();
    EXPECT_EQ(doubled_area_of(everything), 200) << "what a leaves of b";

    none.Negate();
    EXPECT_EQ(text_of(united(a, none)), "") << "everything has no outline";
    EXPECT_TRUE(united(a, none).negated());
    EXPECT_EQ(doubled_area_of(intersected(a, none)), 200);
}

TEST(Boolean, IsExactWhereNoCrossingIsRounded)
{
    // Edges at multiples of 45 degrees through even coordinates meet at whole ones, on top of each other and
    // many in one point. Between them every square of side 2 has four triangles that are wholly inside or
    // outside.
    constexpr int cells = 7;
    random_outlines random(11);
    const auto contour = [&] {
        std::vector<POINT> c{{2 * random.number(0, cells), 2 * random.number(0, cells)}};
        const int last = random.number(2, 9);
        for (int i = 0; i < last; ++i) {
            const int length = 2 * random.number(1, cells), dx = random.number(-1, 1),
                      dy = random.number(-1, 1);
            const POINT p{c.back().x + dx * length, c.back().y + dy * length};
            if (p.x >= 0 && p.x <= 2 * cells && p.y >= 0 && p.y <= 2 * cells)
                c.push_back(p);
        }
        c.push_back({c.back().x, c.front().y}); // back home along the axes
        return c;
    };
    const auto shape = [&] {
        contours all(static_cast<std::size_t>(random.number(1, 3)));
        std::ranges::generate(all, contour);
        return shape_of(all);
    };
    const auto expect = [&](const vSHAPE& result, const std::function<bool(double, double)>& inside,
                            int round) {
        std::int64_t triangles = 0;
        for (int y = 1; y < 2 * cells; y += 2) {
            for (int x = 1; x < 2 * cells; x += 2) {
                for (const auto& [dx, dy] : {std::pair{0.5, 0.1}, {-0.5, 0.1}, {0.1, 0.5}, {0.1, -0.5}}) {
                    const bool expected = inside(x + dx, y + dy);
                    ASSERT_EQ(encloses(result, x + dx, y + dy), expected) << "round " << round;
                    triangles += expected;
                }
            }
        }
        ASSERT_EQ(doubled_area_of(result), 2 * triangles) << "round " << round;
    };
    for (int round = 0; round < 2000; ++round) {
        const vSHAPE a = shape(), b = shape();
        const auto in_a = [&](double x, double y) { return encloses(a, x, y); };
        const auto in_b = [&](double x, double y) { return encloses(b, x, y); };
        vSHAPE not_a(a);
        not_a.Negate();
        expect(
            united(a, b), [&](double x, double y) { return in_a(x, y) || in_b(x, y); }, round);
        expect(
            intersected(a, b), [&](double x, double y) { return in_a(x, y) && in_b(x, y); }, round);
        expect(
            intersected(b, not_a), [&](double x, double y) { return in_b(x, y) && !in_a(x, y); }, round);
        expect(united(a, a), in_a, round);
        ASSERT_TRUE(intersected(a, not_a).empty());
        if (testing::Test::HasFatalFailure())
            return;
    }
}

namespace {

// Rounding a crossing moves it by at most half the diagonal of a unit square. Of an edge that is cut by
// crossings, each moves two pieces: the area next to the edge changes by at most that distance times the
// edge's length. Self-crossings of each shape are rounded before those of both together.
double rounding_bound(const vSHAPE& a, const vSHAPE& b)
{
    constexpr double half_diagonal = 0.7072;
    poly_polygon all;
    for (const auto& shape : {a, b}) {
        for (const auto& c : contours_of(shape))
            all.append(c);
    }
    const edge_outline outline(all.points, all.counts);
    std::vector<bool> crosses(outline.size());
    for (const auto& [p, q] : find_crossings(outline, outline_tree(outline), true).crossings)
        crosses[p] = crosses[q] = true;
    double length = 0;
    for (std::uint32_t e = 0; e < outline.size(); ++e) {
        const offset along = outline.direction(e);
        length += crosses[e] ? std::hypot(along.x, along.y) : 0;
    }
    return 2 * half_diagonal * length + 1;
}

} // namespace

TEST(Boolean, AreasAddUp)
{
    random_outlines random(12);
    for (int round = 0; round < 2000; ++round) {
        const int range = round % 3 == 0 ? 7 : round % 3 == 1 ? 50 : 1000000;
        const vSHAPE a = random.shape(10, range), b = random.shape(10, range);
        const vSHAPE both = united(a, b), common = intersected(a, b), only_a = united(a, a),
                     only_b = united(b, b);
        const double twice_bound = 2 * rounding_bound(a, b);
        const auto doubled = [](const vSHAPE& s) { return static_cast<double>(doubled_area_of(s)); };
        ASSERT_NEAR(doubled(both) + doubled(common), doubled(only_a) + doubled(only_b), twice_bound) << round;
        ASSERT_NEAR(doubled(both), doubled(united(b, a)), twice_bound) << round;
        ASSERT_NEAR(doubled(intersected(b, a)), doubled(common), twice_bound) << round;
        ASSERT_NEAR(doubled(united(only_a, a)), doubled(only_a), twice_bound) << round;
        vSHAPE not_a(a);
        not_a.Negate();
        ASSERT_TRUE(intersected(a, not_a).empty()) << round;
        ASSERT_TRUE(united(a, not_a).empty()) << round;
    }
}

TEST(Boolean, TakesDegenerateOutlines)
{
    constexpr int far = 1 << 30, lowest = INT32_MIN, highest = INT32_MAX;
    constexpr std::int64_t all_along = std::int64_t{highest} - lowest;
    std::vector<POINT> whirl;
    for (int i = 0; i < 40; ++i) // forty edges through one point
        whirl.push_back({(i % 2 == 0 ? 100 : -100) * (20 - i), (i % 2 == 0 ? 100 : -100) * i});
    std::vector<POINT> grid_star;
    for (int i = 0; i < 11; ++i)
        grid_star.push_back({static_cast<int>(std::lround(1000 * std::cos(i * 5 * 2 * 3.14159265 / 11))),
            static_cast<int>(std::lround(1000 * std::sin(i * 5 * 2 * 3.14159265 / 11)))});
    const contours one_box{box(0, 0, 10, 10)};
    struct {
        const char* what;
        contours a, b;
        std::int64_t united, common; // doubled areas; -1: whatever adds up
    } cases[] = {
        {"touching along an edge", one_box, {box(10, 0, 20, 10)}, 400, 0},
        {"touching along a part of an edge", one_box, {box(10, 3, 20, 7)}, 280, 0},
        {"touching in a corner", one_box, {box(10, 10, 20, 20)}, 400, 0},
        {"the same twice", one_box, one_box, 200, 200},
        {"the same backwards", one_box, {{{0, 10}, {10, 10}, {10, 0}, {0, 0}}}, 200, 200},
        {"a contour twice in one shape is none", {one_box[0], one_box[0]}, {box(5, 5, 6, 6)}, 2, 0},
        {"repeated points", {{{0, 0}, {0, 0}, {10, 0}, {10, 10}, {10, 10}, {0, 10}, {0, 0}}}, one_box, 200,
            200},
        {"spikes", {{{0, 0}, {10, 0}, {30, 0}, {10, 0}, {10, 10}, {5, 10}, {5, -20}, {5, 10}, {0, 10}}},
            one_box, 200, 200},
        {"nothing but a spike", {{{0, 0}, {10, 0}, {5, 0}}}, one_box, 200, 0},
        {"points only", {{{3, 3}, {3, 3}, {3, 3}}}, one_box, 200, 0},
        {"overlap on one line", {{{0, 0}, {10, 0}, {10, 10}}}, {{{5, 0}, {15, 0}, {15, -10}}}, 200, 0},
        {"corner on an edge", one_box, {{{5, 10}, {9, 20}, {1, 20}}}, 280, 0},
        {"hole filled exactly", {box(0, 0, 10, 10), box(3, 3, 6, 6)}, {box(3, 3, 6, 6)}, 200, 0},
        {"far corners", {box(-far, -far, far, 0)}, {box(0, -far, far, 0)}, std::int64_t{4} * far * far,
            std::int64_t{2} * far * far},
        {"along the borders of all there is", {box(lowest, lowest, lowest + 10, highest)},
            {box(lowest, highest - 10, highest, highest)}, 40 * all_along - 200, 200},
        {"across all there is", {{{lowest, lowest}, {highest, highest - 1}, {highest, highest}}},
            {{{lowest, highest}, {highest, lowest + 1}, {highest, lowest}}}, -1, -1},
        {"edges through one point", {whirl}, {whirl}, -1, -1},
        {"star", {grid_star}, {box(-500, -500, 500, 500)}, -1, -1},
        {"long thin crossings", {{{-far, -far}, {far, far - 1}, {far, far}}},
            {{{-far, -far + 1}, {far, far - 2}, {far, far - 3}}}, -1, -1},
    };
    for (const auto& c : cases) {
        const vSHAPE a = shape_of(c.a), b = shape_of(c.b);
        const auto both = united(a, b), common = intersected(a, b);
        if (c.united >= 0) {
            EXPECT_EQ(doubled_area_of(both), c.united) << c.what;
            EXPECT_EQ(doubled_area_of(common), c.common) << c.what;
        }
        EXPECT_NEAR(static_cast<double>(doubled_area_of(both)) + static_cast<double>(doubled_area_of(common)),
            static_cast<double>(doubled_area_of(united(a, a)))
                + static_cast<double>(doubled_area_of(united(b, b))),
            2 * rounding_bound(a, b))
            << c.what;
    }
}

namespace {

std::vector<POINT> wheel(int points, int radius, double turned)
{
    std::vector<POINT> c;
    for (int i = 0; i < points; ++i) {
        const double angle = (i + turned) * 2 * 3.14159265358979 / points;
        const double r = i % 2 == 0 ? radius : radius * 0.9;
        c.push_back({static_cast<int>(std::lround(r * std::cos(angle))),
            static_cast<int>(std::lround(r * std::sin(angle)))});
    }
    return c;
}

} // namespace

TEST(Boolean, HandlesAsManyPointsAsAShapeHolds)
{
    const vSHAPE fine = shape_of({wheel(65535, 1 << 26, 0)});
    ASSERT_EQ(fine.NoPoint(), 65535);
    EXPECT_EQ(united(fine, fine).NoPoint(), 65535);

    // The union of this and the same turned a little has more points.
    const vSHAPE a = shape_of({wheel(40000, 1 << 26, 0)}), b = shape_of({wheel(40000, 1 << 26, 0.7)});
    vSHAPE refused(a);
    EXPECT_EQ(refused.Union(b), 0);
    EXPECT_EQ(text_of(refused), text_of(a));
    EXPECT_EQ(refused.Intersection(b), 0);
    EXPECT_EQ(text_of(refused), text_of(a));
}

TEST(Boolean, ManySmallContoursAreNoPairwiseWork)
{
    // 15000 boxes in each other's neighbourhood, far too many to compare each with each in the time of a
    // test.
    poly_polygon all;
    for (int i = 0; i < 15000; ++i) {
        const int x = i % 123 * 10, y = i / 123 * 10;
        auto c = box(x, y, x + 6, y + 6);
        std::ranges::reverse(c);
        all.append(c);
    }
    poly_polygon result;
    ASSERT_TRUE(UnionPolyPolygon(all.points, all.counts, result, self_crossings::yes));
    EXPECT_EQ(result.counts.size(), 15000u);
}
