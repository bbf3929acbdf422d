// Shapes of arbitrary contours: what is united, intersected and complemented keeps its area but for the
// rounding of crossings, and what is moved keeps its distance.
#include "klv/geometry/planar/exact.h"
#include "klv/geometry/planar/shape_boolean.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

using namespace klv;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

struct shape_pair {
    int unit = 1;
    poly_polygon a;
    poly_polygon b;
};

// A byte that scales, then contours: a byte whose lowest bit chooses the shape and whose others are the
// number of points, then these, a signed byte for each coordinate.
shape_pair shapes_of(std::span<const std::uint8_t> data)
{
    constexpr std::uint8_t greatest_shift = 23;
    shape_pair shapes;
    if (data.empty())
        return shapes;
    shapes.unit = 1 << (data[0] % (greatest_shift + 1));
    data = data.subspan(1);
    while (!data.empty()) {
        const std::size_t wanted = data[0] / 2u;
        poly_polygon& shape = data[0] % 2 == 0 ? shapes.a : shapes.b;
        data = data.subspan(1);
        std::vector<POINT> contour;
        while (contour.size() < wanted && data.size() >= 2) {
            contour.push_back({static_cast<std::int8_t>(data[0]) * shapes.unit,
                static_cast<std::int8_t>(data[1]) * shapes.unit});
            data = data.subspan(2);
        }
        if (contour.size() >= 2)
            shape.append(contour);
    }
    return shapes;
}

vSHAPE shape_of(const poly_polygon& p)
{
    return {p.points.data(), p.counts.data(), static_cast<int>(p.counts.size()), 1};
}

double length_of(const poly_polygon& p)
{
    double length = 0;
    for_each_contour(std::span<const POINT>(p.points), p.counts, [&](std::span<const POINT> c) {
        for (std::size_t i = 0; i < c.size(); ++i) {
            const offset along = offset::between(c[i], c[i + 1 == c.size() ? 0 : i + 1]);
            length += std::hypot(along.x, along.y);
        }
    });
    return length;
}

double area_of(const vSHAPE& shape)
{
    wide doubled = 0;
    std::vector<POINT> contour;
    for (const auto& r : shape.records()) {
        contour.push_back({r.x(), r.y()});
        if (!r.has(point_flags::last))
            continue;
        doubled -= doubled_area(contour);
        contour.clear();
    }
    return static_cast<double>(doubled) / 2;
}

vSHAPE united(const vSHAPE& a, const vSHAPE& b)
{
    vSHAPE result(a);
    require(result.Union(b) == 1 && result.Closed());
    require(result.empty() || result.IsValid());
    return result;
}

vSHAPE intersected(const vSHAPE& a, const vSHAPE& b)
{
    vSHAPE result(a);
    require(result.Intersection(b) == 1 && !result.negated());
    require(result.empty() || result.IsValid());
    return result;
}

void check_decomposition(const poly_polygon& p)
{
    for (const auto crossings : {self_crossings::no, self_crossings::yes}) {
        poly_polygon loops;
        if (!DecomposePolyPolygon(p.points, p.counts, loops, crossings))
            continue;
        wide before = 0, after = 0;
        const auto add_to
            = [](wide& sum) { return [&sum](std::span<const POINT> c) { sum += doubled_area(c); }; };
        for_each_contour(std::span<const POINT>(p.points), p.counts, add_to(before));
        for_each_contour(std::span<const POINT>(loops.points), loops.counts, add_to(after));
        require(std::abs(static_cast<double>(after - before)) <= 2 * length_of(p) + 1);
    }
}

double distance_of(const POINT& p, const POINT& a, const POINT& b)
{
    const offset along = offset::between(a, b), to = offset::between(a, p);
    const double length = std::hypot(along.x, along.y);
    if (length == 0)
        return std::hypot(to.x, to.y);
    const double at = static_cast<double>(dot(along, to)) / length;
    if (at <= 0 || at >= length)
        return std::min(std::hypot(to.x, to.y), std::hypot(p.x - 1.0 * b.x, p.y - 1.0 * b.y));
    return std::abs(static_cast<double>(cross(along, to))) / length;
}

// Takes away points where an outline turns back on itself: the spikes that they end have no width, and so
// bound nothing.
void cut_empty_spikes(std::vector<POINT>& contour)
{
    for (std::size_t i = 0, kept = 0; contour.size() > 2 && kept < contour.size();) {
        const std::size_t count = contour.size();
        const offset in = offset::between(contour[(i + count - 1) % count], contour[i]);
        const offset out = offset::between(contour[i], contour[(i + 1) % count]);
        if (cross(in, out) == 0 && dot(in, out) <= 0) {
            contour.erase(contour.begin() + static_cast<std::ptrdiff_t>(i));
            kept = 0;
            i = i == 0 ? contour.size() - 1 : i - 1;
        } else {
            ++kept;
            i = (i + 1) % count;
        }
    }
}

double distance_from(const POINT& p, const std::vector<POINT>& contour)
{
    double least = HUGE_VAL;
    for (std::size_t i = 0; i < contour.size(); ++i)
        least = std::min(least, distance_of(p, contour[i], contour[i + 1 == contour.size() ? 0 : i + 1]));
    return least;
}

// Every point of the moved shape lies at least the distance from the outline, but for a unit, and as much for
// what rounding moves the outline.
void check_distance(const vSHAPE& source, int distance, int bevel)
{
    constexpr double tolerance = 2;
    vSHAPE moved(source);
    require(moved.Shrink(distance, bevel) == 1 && (moved.empty() || moved.IsValid()));
    std::vector<POINT> contour;
    for (const auto& r : source.records()) {
        contour.push_back({r.x(), r.y()});
        if (!r.has(point_flags::last))
            continue;
        cut_empty_spikes(contour);
        for (const auto& m : moved.records())
            require(distance_from({m.x(), m.y()}, contour)
                >= std::abs(static_cast<double>(distance)) - tolerance);
        contour.clear();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [unit, points_a, points_b] = shapes_of({data, size});
    check_decomposition(points_a);
    const vSHAPE a = shape_of(points_a), b = shape_of(points_b);
    const vSHAPE both = united(a, b), common = intersected(a, b);

    // A crossing moves by less than a unit when it is rounded, in each of two steps.
    const double bound = 2 * (length_of(points_a) + length_of(points_b)) + 1;
    const double areas = area_of(united(a, a)) + area_of(united(b, b));
    require(std::abs(area_of(both) + area_of(common) - areas) <= bound);
    require(std::abs(area_of(united(b, a)) - area_of(both)) <= bound);

    const vSHAPE outline = united(a, vSHAPE());
    for (const int distance : {3, -3, 200, -5 * unit, 9 * unit})
        check_distance(outline, distance, distance % 2);
    for (const int distance : {INT32_MIN, INT32_MAX}) {
        vSHAPE moved(a);
        require(moved.Shrink(distance, 0) == 1 && (moved.empty() || moved.IsValid()));
    }

    vSHAPE smooth(a);
    smooth.Smooth();
    require(smooth.IsValid() == a.IsValid() && smooth.Closed() == a.Closed());

    vSHAPE not_a(a);
    not_a.Negate();
    require(intersected(a, not_a).empty());
    not_a.Negate();
    require(not_a == a && not_a.negated() == a.negated());
    return 0;
}
