#include "klv/geometry/shape.h"

#include "bench/outlines.h"

#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_CLIPPER
#include <clipper.hpp>
#endif

using namespace klv;

// Moving outlines by a few times the length of their edges, or the width of their spikes. Larger outlines
// have more of the same: 30000 points lie about a radius of a million units.

namespace {

enum kind : std::int64_t { coast, blob, star };

outlines::outline outline_of(std::int64_t kind, std::int64_t points)
{
    constexpr std::uint32_t seed = 1;
    const auto n = static_cast<std::size_t>(points);
    return outlines::scaled(kind == coast ? outlines::coast(n, seed)
            : kind == blob                ? outlines::blob(n, seed)
                                          : outlines::star(n, seed),
        static_cast<double>(points) / 30000);
}

void BM_Offset(benchmark::State& state)
{
    vSHAPE shape;
    std::vector<vPOINT> points;
    for (const POINT& p : outline_of(state.range(0), state.range(1)))
        points.emplace_back(p);
    shape.assign_polyline(points, 1);
    for (auto _ : state) {
        vSHAPE moved(shape);
        if (moved.Shrink(static_cast<int>(state.range(2)), 0) == 0)
            state.SkipWithError("no result");
        benchmark::DoNotOptimize(moved.BoundBox());
    }
    state.SetComplexityN(state.range(1));
}

#if KLV_BENCH_CLIPPER
void BM_ClipperOffset(benchmark::State& state)
{
    ClipperLib::Path path;
    for (const POINT& p : outline_of(state.range(0), state.range(1)))
        path.emplace_back(p.x, p.y);
    constexpr double longest_mitre = 57.3; // of ours
    for (auto _ : state) {
        ClipperLib::ClipperOffset offset(longest_mitre);
        offset.AddPath(path, ClipperLib::jtMiter, ClipperLib::etClosedPolygon);
        ClipperLib::Paths moved;
        offset.Execute(moved, -static_cast<double>(state.range(2)));
        benchmark::DoNotOptimize(moved.data());
    }
    state.SetComplexityN(state.range(1));
}
#endif

void workloads(benchmark::internal::Benchmark* bench)
{
    constexpr int distance = 1000;
    bench->ArgNames({"kind", "points", "distance"})->Unit(benchmark::kMillisecond);
    for (const std::int64_t kind : {coast, blob, star}) {
        for (const std::int64_t points : {7500, 15000, 30000, 60000}) {
            bench->Args({kind, points, distance});
            bench->Args({kind, points, -distance});
        }
    }
}
BENCHMARK(BM_Offset)->Apply(workloads);
#if KLV_BENCH_CLIPPER
// The star takes it half a minute.
BENCHMARK(BM_ClipperOffset)->Apply([](benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"kind", "points", "distance"})->Unit(benchmark::kMillisecond);
    for (const std::int64_t kind : {coast, blob, star}) {
        for (const std::int64_t distance : {1000, -1000})
            bench->Args({kind, 30000, distance});
    }
});
#endif

} // namespace
