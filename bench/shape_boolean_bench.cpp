#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/shape_boolean.h"
#include "klv/geometry/shape.h"

#include "bench/outlines.h"

#include <cmath>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_CLIPPER
#include <clipper.hpp>
#endif
#if KLV_BENCH_BOOST_GEOMETRY
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#endif
#if KLV_BENCH_GEOS
#include <geos_c.h>
#endif

using namespace klv;
using outlines::outline;

namespace {

// Two outlines to unite, of n points (teeth for combs) each.
struct outline_pair {
    outline a;
    outline b;
};
using workload = outline_pair (*)(std::size_t n);

outline_pair coasts(std::size_t n)
{
    const auto coast = outlines::coast(n, 1);
    const double step = 2 * std::numbers::pi * outlines::radius / static_cast<double>(n);
    return {coast, outlines::shaken(coast, step / 2, 2)};
}

outline_pair blobs(std::size_t n) { return {outlines::blob(n, 1), outlines::blob(n, 2)}; }

outline_pair stars(std::size_t n) { return {outlines::star(n, 1), outlines::star(n, 2)}; }

outline_pair combs(std::size_t n)
{
    const auto comb = outlines::comb(n);
    return {comb, outlines::laid_down(comb)};
}

template <typename UNITE> void measure(benchmark::State& state, const UNITE& unite)
{
    std::size_t contours = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(contours = unite());
    state.counters["contours"] = static_cast<double>(contours);
    state.SetComplexityN(state.range(0));
}

// Poly-polygons in the direction of outlines.
void BM_UnionPolyPolygon(benchmark::State& state, workload make)
{
    const auto [a, b] = make(static_cast<std::size_t>(state.range(0)));
    std::vector<POINT> points;
    std::vector<int> counts;
    for (const auto& part : {a, b}) {
        points.insert(points.end(), part.rbegin(), part.rend());
        counts.push_back(static_cast<int>(part.size()));
    }
    measure(state, [&] {
        poly_polygon result;
        benchmark::DoNotOptimize(UnionPolyPolygon(points, counts, result, self_crossings::yes));
        return result.counts.size();
    });
}

// Whole shapes, flattening and the making of the new shape included.
void BM_UnionShape(benchmark::State& state, workload make)
{
    const auto [a, b] = make(static_cast<std::size_t>(state.range(0)));
    const auto shape_of = [](const outline& part) {
        const int count = static_cast<int>(part.size());
        return vSHAPE(part.data(), &count, 1, 1);
    };
    const vSHAPE first = shape_of(a), second = shape_of(b);
    measure(state, [&] {
        vSHAPE both(first);
        benchmark::DoNotOptimize(both.Union(second));
        return static_cast<std::size_t>(both.NoOfContours());
    });
}

#if KLV_BENCH_CLIPPER
void BM_UnionClipper(benchmark::State& state, workload make)
{
    const auto [a, b] = make(static_cast<std::size_t>(state.range(0)));
    const auto path_of = [](const outline& part) {
        ClipperLib::Path path;
        for (const auto& p : part)
            path.emplace_back(p.x, p.y);
        return path;
    };
    const auto first = path_of(a), second = path_of(b);
    measure(state, [&] {
        ClipperLib::Clipper clipper;
        ClipperLib::Paths result;
        clipper.AddPath(first, ClipperLib::ptSubject, true);
        clipper.AddPath(second, ClipperLib::ptClip, true);
        clipper.Execute(ClipperLib::ctUnion, result, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        return result.size();
    });
}
#endif

#if KLV_BENCH_BOOST_GEOMETRY
void BM_UnionBoost(benchmark::State& state, workload make)
{
    namespace bg = boost::geometry;
    using polygon = bg::model::polygon<bg::model::d2::point_xy<double>>;
    const auto [a, b] = make(static_cast<std::size_t>(state.range(0)));
    const auto polygon_of = [](const outline& part) {
        polygon result;
        for (const auto& p : part)
            bg::append(result.outer(), bg::model::d2::point_xy<double>(p.x, p.y));
        bg::correct(result);
        return result;
    };
    const polygon first = polygon_of(a), second = polygon_of(b);
    measure(state, [&] {
        bg::model::multi_polygon<polygon> result;
        bg::union_(first, second, result);
        std::size_t contours = 0;
        for (const auto& p : result)
            contours += 1 + p.inners().size();
        return contours;
    });
}
#endif

#if KLV_BENCH_GEOS
void BM_UnionGeos(benchmark::State& state, workload make)
{
    const auto [a, b] = make(static_cast<std::size_t>(state.range(0)));
    const std::unique_ptr<GEOSContextHandle_HS, void (*)(GEOSContextHandle_t)> geos(
        GEOS_init_r(), GEOS_finish_r);
    const auto destroy = [&](GEOSGeometry* g) { GEOSGeom_destroy_r(geos.get(), g); };
    using geometry = std::unique_ptr<GEOSGeometry, decltype(destroy)>;
    const auto polygon_of = [&](const outline& part) {
        const auto n = static_cast<unsigned>(part.size());
        auto* const sequence = GEOSCoordSeq_create_r(geos.get(), n + 1, 2);
        for (unsigned i = 0; i <= n; ++i)
            GEOSCoordSeq_setXY_r(geos.get(), sequence, i, part[i % n].x, part[i % n].y);
        auto* const ring = GEOSGeom_createLinearRing_r(geos.get(), sequence);
        return geometry(GEOSGeom_createPolygon_r(geos.get(), ring, nullptr, 0), destroy);
    };
    const geometry first = polygon_of(a), second = polygon_of(b);
    measure(state, [&] {
        const geometry result(GEOSUnion_r(geos.get(), first.get(), second.get()), destroy);
        if (!result)
            return std::size_t{0};
        std::size_t contours = 0;
        for (int i = 0; i < GEOSGetNumGeometries_r(geos.get(), result.get()); ++i) {
            const auto* const part = GEOSGetGeometryN_r(geos.get(), result.get(), i);
            contours += 1 + static_cast<std::size_t>(GEOSGetNumInteriorRings_r(geos.get(), part));
        }
        return contours;
    });
}
#endif

// Growth is seen from 7500 to 30000 points each, and from 62 to 250 teeth, of which each crosses all of the
// other comb's.
void sizes(benchmark::internal::Benchmark* b)
{
    b->Arg(7500)->Arg(15000)->Arg(30000)->Unit(benchmark::kMillisecond);
}
void teeth(benchmark::internal::Benchmark* b)
{
    b->Arg(62)->Arg(125)->Arg(250)->Unit(benchmark::kMillisecond);
}

#define KLV_OUTLINE_BENCHMARKS(engine)                                                                       \
    BENCHMARK_CAPTURE(engine, coasts, coasts)->Apply(sizes);                                                 \
    BENCHMARK_CAPTURE(engine, blobs, blobs)->Apply(sizes);                                                   \
    BENCHMARK_CAPTURE(engine, stars, stars)->Apply(sizes)
#define KLV_UNION_BENCHMARKS(engine)                                                                         \
    KLV_OUTLINE_BENCHMARKS(engine);                                                                          \
    BENCHMARK_CAPTURE(engine, combs, combs)->Apply(teeth)

KLV_UNION_BENCHMARKS(BM_UnionPolyPolygon);
KLV_UNION_BENCHMARKS(BM_UnionShape);
#if KLV_BENCH_CLIPPER
KLV_UNION_BENCHMARKS(BM_UnionClipper);
#endif
#if KLV_BENCH_BOOST_GEOMETRY
KLV_OUTLINE_BENCHMARKS(BM_UnionBoost); // 250 teeth take it minutes
#endif
#if KLV_BENCH_GEOS
KLV_UNION_BENCHMARKS(BM_UnionGeos);
#endif

} // namespace
