#include "klv/geometry/planar/offset_corners.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/geometry/shape_text.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

using namespace klv;

namespace {

vSHAPE shrunk(vSHAPE shape, int distance, int bevel = 0)
{
    EXPECT_EQ(shape.Shrink(distance, bevel), 1);
    return shape;
}

using contours = std::vector<std::vector<vPOINT>>;

contours contours_of(const vSHAPE& shape)
{
    contours all;
    bool begins = true;
    for (const auto& r : shape.records()) {
        if (begins)
            all.emplace_back();
        all.back().push_back(r.point());
        begins = r.has(point_flags::last);
    }
    return all;
}

vSHAPE shape_of(const contours& all)
{
    std::vector<vPOINT> points;
    std::vector<std::int32_t> counts;
    for (const auto& c : all) {
        points.insert(points.end(), c.begin(), c.end());
        counts.push_back(static_cast<std::int32_t>(c.size()));
    }
    vSHAPE shape;
    EXPECT_TRUE(shape.assign_polypolygon(points, counts, 1));
    return shape;
}

std::vector<vPOINT> box(int left, int top, int right, int bottom)
{
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

double distance(const vPOINT& p, const vPOINT& a, const vPOINT& b)
{
    const double ex = b.x - a.x, ey = b.y - a.y, px = p.x - a.x, py = p.y - a.y;
    const double length = ex * ex + ey * ey;
    const double t = length > 0 ? std::clamp((ex * px + ey * py) / length, 0.0, 1.0) : 0;
    return std::hypot(px - t * ex, py - t * ey);
}

double distance(const vPOINT& p, const contours& outline)
{
    double least = std::numeric_limits<double>::max();
    for (const auto& c : outline) {
        for (std::size_t i = 0; i < c.size(); ++i)
            least = std::min(least, distance(p, c[i], c[(i + 1) % c.size()]));
    }
    return least;
}

bool contains(const contours& outline, double x, double y)
{
    bool inside = false;
    for (const auto& c : outline) {
        for (std::size_t i = 0; i < c.size(); ++i) {
            const vPOINT &a = c[i], &b = c[(i + 1) % c.size()];
            if ((a.y > y) != (b.y > y) && a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y) > x)
                inside = !inside;
        }
    }
    return inside;
}

double area(const contours& all)
{
    double doubled = 0;
    for (const auto& c : all) {
        for (std::size_t i = 0; i < c.size(); ++i) {
            const vPOINT &a = c[i], &b = c[(i + 1) % c.size()];
            doubled -= static_cast<double>(a.x) * b.y - static_cast<double>(a.y) * b.x;
        }
    }
    return doubled / 2;
}

// Of any kind: knots of long edges, or many short ones around a middle.
vSHAPE random_shape(std::mt19937& random, int reach)
{
    const auto number = [&](int from, int to) { return std::uniform_int_distribution(from, to)(random); };
    contours all(static_cast<std::size_t>(number(1, 2)));
    for (auto& c : all) {
        if (number(0, 1) == 0) {
            c.resize(static_cast<std::size_t>(number(3, 12)));
            for (auto& p : c) {
                p.x = number(-reach, reach);
                p.y = number(-reach, reach);
            }
            continue;
        }
        const int n = number(8, 60);
        for (int i = 0; i < n; ++i) {
            const double r = reach * number(20, 100) / 100.0, a = 2 * 3.14159265 * i / n;
            c.emplace_back(static_cast<int>(r * std::cos(a)), static_cast<int>(r * std::sin(a)));
        }
    }
    return shape_of(all);
}

} // namespace

TEST(Shrink, MovesEachSideByExactlyTheDistance)
{
    EXPECT_EQ(shrunk(vRECTSHAPE(vRECT(0, 0, 100, 60)), 10).BoundBox(), vRECT(10, 10, 90, 50));
    EXPECT_EQ(shrunk(vRECTSHAPE(vRECT(0, 0, 100, 60)), 10).NoPoint(), 4);
    EXPECT_EQ(shrunk(vRECTSHAPE(vRECT(-50, -50, 50, 50)), -1000).BoundBox(), vRECT(-1050, -1050, 1050, 1050));
    // A regular octagon keeps its angles; the long way round is the same.
    const vSHAPE octagon = vPOLYGONSHAPE(vRECT(0, 0, 20000, 20000), 8, 1);
    const double apothem = 10000 - 1000;
    for (const vSHAPE& moved : {shrunk(octagon, 1000), shrunk(octagon, 1000, 1)}) {
        EXPECT_EQ(moved.NoPoint(), 8);
        EXPECT_NEAR(area(contours_of(moved)), 8 * apothem * apothem * std::tan(3.14159265 / 8), 1e6);
    }
}

TEST(Shrink, LeavesOpenShapesAndDistanceZeroAlone)
{
    vSHAPE square = vRECTSHAPE(vRECT(0, 0, 100, 100));
    const auto before = text_of(square);
    EXPECT_EQ(square.Shrink(0, 0), 1);
    EXPECT_EQ(text_of(square), before);
    vSHAPE open = polyline({{0, 0}, {100, 0}, {100, 100}}, 0);
    const auto open_before = text_of(open);
    EXPECT_EQ(open.Shrink(10, 0), 1);
    EXPECT_EQ(text_of(open), open_before);
    EXPECT_TRUE(shrunk(vSHAPE(), 5).empty());
}

TEST(Shrink, CutsLongMitresWhenBevelIsAsked)
{
    // Growing a triangle of 30 degrees: the mitre at the tip is almost four distances long, the others 1.64.
    const vSHAPE triangle = polyline({{0, 0}, {1000, 268}, {1000, -268}});
    EXPECT_EQ(shrunk(triangle, -100).NoPoint(), 3);
    EXPECT_NEAR(shrunk(triangle, -100).BoundBox().Left(), -386, 4);
    const vSHAPE cut = shrunk(triangle, -100, 1);
    EXPECT_EQ(cut.NoPoint(), 6);
    EXPECT_EQ(cut.BoundBox().Left(), -100) << "the cut touches the circle around the corner";
    // A square's mitres are 1.41 distances.
    EXPECT_EQ(shrunk(vRECTSHAPE(vRECT(0, 0, 100, 100)), -10, 1).NoPoint(), 4);
    // A fold that all but turns back is cut anyhow.
    EXPECT_LT(shrunk(polyline({{0, 0}, {10000, 10}, {10000, -10}}), -100).BoundBox().Right(), 20000);
}

TEST(Shrink, MitresBeyondTheCoordinatesAreCut)
{
    const vSHAPE spike = polyline({{2000000000, 0}, {0, 100000000}, {0, -100000000}});
    const int d = 20000000; // the mitre is twenty times as long
    const contours source = contours_of(spike), moved = contours_of(shrunk(spike, -d));
    ASSERT_EQ(moved.size(), 1u);
    for (const auto& p : moved[0])
        EXPECT_GE(distance(p, source), d - 2) << p.x << ',' << p.y;
    EXPECT_EQ(shrunk(spike, -d).BoundBox().Right(), 2000000000 + d);
}

TEST(Shrink, MovesHolesTheOtherWay)
{
    const auto frame = [](bool turned) {
        auto hole = box(300, 300, 600, 600);
        if (turned)
            std::reverse(hole.begin(), hole.end());
        return shape_of({box(0, 0, 1000, 1000), hole});
    };
    for (const bool turned : {false, true}) {
        EXPECT_EQ(area(contours_of(shrunk(frame(turned), 50))), 900.0 * 900 - 400 * 400);
        EXPECT_EQ(area(contours_of(shrunk(frame(turned), -50))), 1100.0 * 1100 - 200 * 200);
        EXPECT_EQ(shrunk(frame(turned), -150).NoOfContours(), 1) << "the hole is gone";
        EXPECT_EQ(area(contours_of(shrunk(frame(turned), 160))), 680.0 * 680 - 600 * 600)
            << "the hole opened two sides";
        EXPECT_TRUE(shrunk(frame(turned), 220).empty());
    }
}

TEST(Shrink, AClosedBayBecomesAHole)
{
    // A C whose mouth is narrower than twice the distance.
    const vSHAPE bay = polyline({{0, 0}, {1000, 0}, {1000, 450}, {800, 450}, {800, 200}, {200, 200},
        {200, 800}, {800, 800}, {800, 550}, {1000, 550}, {1000, 1000}, {0, 1000}});
    const vSHAPE grown = shrunk(bay, -60);
    EXPECT_EQ(grown.NoOfContours(), 2);
    EXPECT_EQ(area(contours_of(grown)), 1120.0 * 1120 - 480 * 480);
}

TEST(Shrink, ShapesThatShrinkAwayBecomeEmpty)
{
    const vSHAPE shapes[] = {vRECTSHAPE(vRECT(0, 0, 100, 100)), vELPSSHAPE(vRECT(0, 0, 100, 80)),
        vSTARSHAPE(vRECT(0, 0, 100, 100), 7, 0, 40, 0, 0), polyline({{0, 0}, {1000, 2}, {1000, 0}}),
        shape_of({box(0, 0, 100, 100), box(20, 20, 80, 80)})};
    for (const vSHAPE& shape : shapes) {
        for (const int d : {50, 51, 99, 1000, 1 << 30, std::numeric_limits<int>::max()})
            EXPECT_TRUE(shrunk(shape, d).empty()) << text_of(shape) << " by " << d;
        EXPECT_EQ(shrunk(shape, 1000).Closed(), 1);
    }
}

TEST(Shrink, SpikesAreCutOnlyWhereTheyVanish)
{
    // A spike 100 wide and 1000 long on a square.
    const vSHAPE spiked
        = polyline({{0, 0}, {1000, 0}, {1000, 450}, {2000, 500}, {1000, 550}, {1000, 1000}, {0, 1000}});
    EXPECT_GT(shrunk(spiked, 10).BoundBox().Right(), 1700);
    EXPECT_EQ(shrunk(spiked, 60).BoundBox(), vRECT(60, 60, 940, 940));
}

TEST(Shrink, EveryPointKeepsItsDistance)
{
    std::mt19937 random(3);
    const auto number = [&](int from, int to) { return std::uniform_int_distribution(from, to)(random); };
    int left = 0;
    for (int round = 0; round < 1500; ++round) {
        const int reach = round % 3 == 0 ? 100 : round % 3 == 1 ? 3000 : 1 << 20;
        vSHAPE shape = random_shape(random, reach);
        // Where contours cross, slivers that are thinner than the rounding have no outline.
        ASSERT_EQ(shape.Union(vSHAPE()), 1);
        const contours source = contours_of(shape);
        const int d = number(1, reach / 5);
        const contours inner = contours_of(shrunk(shape, d, round % 2));
        for (const auto& c : inner) {
            for (const auto& p : c) {
                ++left;
                ASSERT_GE(distance(p, source), d - 1)
                    << "round " << round << ", d " << d << ": " << text_of(shape);
                ASSERT_TRUE(contains(source, p.x, p.y)) << "round " << round << ": " << text_of(shape);
            }
        }
        // Growing covers all that is as near as the distance.
        const contours outer = contours_of(shrunk(shape, -d, round % 2));
        for (int i = 0; i < 30; ++i) {
            const vPOINT p(number(-reach, reach), number(-reach, reach));
            if (contains(source, p.x, p.y) || distance(p, source) < d - 1.5) {
                ASSERT_TRUE(contains(outer, p.x + 0.01, p.y + 0.01) || distance(p, outer) < 1)
                    << "round " << round << ", d " << d << ": " << p.x << ',' << p.y << " of "
                    << text_of(shape);
            }
        }
        for (const auto& c : outer) {
            for (const auto& p : c)
                ASSERT_GE(distance(p, source), d - 1)
                    << "round " << round << ", d " << d << ": " << text_of(shape);
        }
    }
    EXPECT_GT(left, 5000);
}

TEST(Shrink, KeepsWhatIsFarEnoughFromTheOutline)
{
    // With corners no sharper than those of a hexagon, mitres reach 1.16 distances.
    std::mt19937 random(5);
    const auto number = [&](int from, int to) { return std::uniform_int_distribution(from, to)(random); };
    for (int round = 0; round < 200; ++round) {
        contours parts;
        for (int i = 0; i < 4; ++i) {
            const int x = number(0, 8000), y = number(0, 8000), size = number(1000, 8000);
            parts.push_back(contours_of(vPOLYGONSHAPE(vRECT(x, y, x + size, y + size), 12, 0))[0]);
        }
        vSHAPE shape;
        for (const auto& part : parts)
            ASSERT_EQ(shape.Union(shape_of({part})), 1);
        const contours source = contours_of(shape);
        const int d = number(1, 1500);
        const contours inner = contours_of(shrunk(shape, d, 1));
        for (int i = 0; i < 100; ++i) {
            const vPOINT p(number(0, 16000), number(0, 16000));
            if (contains(source, p.x, p.y) && distance(p, source) > 1.5 * d + 2) {
                ASSERT_TRUE(contains(inner, p.x, p.y)) << "round " << round << " d " << d;
            }
        }
    }
}

TEST(Shrink, DegenerateInputIsHarmless)
{
    const int far = 1 << 30, farthest = std::numeric_limits<int>::max();
    const vSHAPE shapes[] = {
        polyline({{0, 0}, {0, 0}, {100, 0}, {100, 0}, {100, 100}, {100, 100}}), // repeated points
        polyline({{5, 5}, {5, 5}, {5, 5}}), // no extent
        polyline({{0, 0}, {100, 0}, {50, 0}}), // no area
        polyline({{0, 0}, {100, 0}, {200, 0}, {100, 0}, {100, 100}, {0, 100}}), // a spike without area
        shape_of({box(0, 0, 100, 100), box(0, 0, 100, 100)}), // twice the same
        shape_of({box(0, 0, 100, 100), box(100, 0, 200, 100)}), // touching along a side
        shape_of({box(0, 0, 100, 100), box(100, 100, 200, 200)}), // touching at a corner
        shape_of({box(-far, -far, far, far), box(-far + 5, -far + 5, far - 5, far - 5)}),
        shape_of({box(-farthest - 1, -farthest - 1, farthest, farthest)}),
        polyline({{0, 0}, {farthest, 1}, {-farthest, 2}, {farthest, 3}, {0, -farthest}}),
    };
    for (const vSHAPE& shape : shapes) {
        for (const int d : {1, 10, 50, 1 << 20, far, farthest, -farthest - 1, -10, -1}) {
            const vSHAPE moved = shrunk(shape, d, d % 2);
            EXPECT_TRUE(moved.empty() || moved.IsValid()) << text_of(shape) << " by " << d;
            EXPECT_EQ(moved.Closed(), 1);
        }
    }
    EXPECT_EQ(shrunk(shapes[0], 10).NoPoint(), 3);
    EXPECT_EQ(area(contours_of(shrunk(shapes[3], 10))), 80.0 * 80);
    EXPECT_TRUE(shrunk(shapes[4], -10).empty()) << "twice is not at all, by the even-odd rule";
    EXPECT_EQ(
        shrunk(shape_of({box(0, 0, 100, 100), box(0, 0, 50, 100)}), -10).BoundBox(), vRECT(40, -10, 110, 110))
        << "where two sides lie on each other there is none";
    EXPECT_EQ(shrunk(shapes[5], 10).BoundBox(), vRECT(10, 10, 190, 90));
    EXPECT_EQ(shrunk(shapes[8], 1000).BoundBox(),
        vRECT(-farthest + 999, -farthest + 999, farthest - 1000, farthest - 1000));
}

TEST(Shrink, ComplementsShrinkWhereTheirContoursGrow)
{
    vSHAPE shape = vRECTSHAPE(vRECT(0, 0, 100, 100));
    shape.Negate();
    EXPECT_EQ(shape.Shrink(10, 0), 1);
    EXPECT_TRUE(shape.negated());
    EXPECT_EQ(shape.BoundBox(), vRECT(-10, -10, 110, 110));
}

TEST(Shrink, LargeResultsAnswerZeroAndLeaveTheShape)
{
    // Growing with bevel adds a point at each of 30000 tips.
    std::vector<vPOINT> star;
    for (int i = 0; i < 60000; ++i) {
        const double r = i % 2 == 0 ? 5e8 : 4.997e8, a = i * 2 * 3.14159265358979 / 60000;
        star.emplace_back(static_cast<int>(r * std::cos(a)), static_cast<int>(r * std::sin(a)));
    }
    vSHAPE shape;
    ASSERT_TRUE(shape.assign_polyline(star, 1));
    EXPECT_EQ(shape.Shrink(-10, 1), 0);
    EXPECT_EQ(shape.NoPoint(), 60000);
    EXPECT_EQ(shape[7], vBEZPOINT(star[7], point_flags::line_to));
    EXPECT_EQ(shape.Shrink(-10, 0), 1);
    EXPECT_EQ(shape.NoPoint(), 60000);
}

TEST(CutoffSpike, MovesTheTipToTheLengthOfTheShorterEdge)
{
    struct {
        POINT prev, next;
        int d;
        bool cut;
        POINT out;
    } const cases[] = {
        {{100, 10}, {100, -10}, 50, true, {100, 0}}, // equal edges: halfway
        {{100, 10}, {200, -20}, 50, true, {100, -10}}, // on the longer edge
        {{200, 20}, {100, -10}, 50, true, {100, 10}},
        {{100, 100}, {100, -10}, 50, false, {}}, // 51 degrees
        {{1000, 300}, {1000, -300}, 84, false, {}}, // 1044 * sin(17) * sin(163) is 89
        {{1000, 300}, {1000, -300}, 90, true, {1000, 0}},
        {{1000, 300}, {1000, -300}, -1, true, {1000, 0}}, // always
        {{1000, 300}, {1000, -300}, -50, false, {}},
    };
    for (const auto& c : cases) {
        POINT out{};
        const bool cut = CutoffSpike(c.prev, {0, 0}, c.next, c.d, out, 45);
        EXPECT_EQ(cut, c.cut) << c.prev.x << ',' << c.prev.y << ' ' << c.next.x << ',' << c.next.y << ' '
                              << c.d;
        if (cut) {
            EXPECT_NEAR(out.x, c.out.x, 1);
            EXPECT_NEAR(out.y, c.out.y, 1);
        }
    }
}

TEST(Expand, MovesTheEdgesOfConvexPolygons)
{
    for (const bool turned : {false, true}) {
        auto corners = box(0, 0, 100, 60);
        if (turned)
            std::reverse(corners.begin(), corners.end());
        vSHAPE shape = shape_of({corners});
        EXPECT_EQ(shape.Expand(10, 5), 1);
        EXPECT_EQ(shape.BoundBox(), vRECT(-10, -5, 110, 65));
        EXPECT_EQ(shape.NoPoint(), 4);
    }
    // Slope 1: the edges move by the root of dy * dy + dx * dx up or down.
    vSHAPE diamond = polyline({{0, -100}, {100, 0}, {0, 100}, {-100, 0}});
    EXPECT_EQ(diamond.Expand(30, 40), 1);
    EXPECT_EQ(text_of(diamond), "0,-150:9 150,0:8 0,150:8 -150,0:10");
    // A corner that does not turn moves straight out.
    vSHAPE flat = polyline({{0, 0}, {50, 0}, {50, 0}, {100, 0}, {100, 100}, {0, 100}});
    EXPECT_EQ(flat.Expand(7, 3), 1);
    EXPECT_EQ(text_of(flat), "-7,-3:9 50,-3:8 50,-3:8 107,-3:8 107,103:8 -7,103:10");
}

TEST(Expand, RefusesOtherShapes)
{
    vSHAPE hollow = polyline({{0, 0}, {100, 0}, {50, 10}, {50, 100}});
    vSHAPE open = polyline({{0, 0}, {100, 0}, {100, 100}}, 0);
    vSHAPE two = shape_of({box(0, 0, 10, 10), box(20, 0, 30, 10)});
    vSHAPE none;
    for (vSHAPE* shape : {&hollow, &open, &two, &none}) {
        const auto before = text_of(*shape);
        EXPECT_EQ(shape->Expand(5, 5), 0);
        EXPECT_EQ(text_of(*shape), before);
    }
    vSHAPE square = vRECTSHAPE(vRECT(0, 0, 10, 10));
    const unsigned most = std::numeric_limits<unsigned>::max();
    EXPECT_EQ(square.Expand(most, most), 1) << "limited to the coordinates there are";
}
