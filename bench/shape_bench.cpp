#include "klv/geometry/planar/decompose.h"
#include "klv/geometry/shape.h"
#include "klv/streams/memory_stream.h"

#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

using namespace klv;

namespace {

std::vector<vPOINT> circle(std::size_t n)
{
    std::vector<vPOINT> points;
    for (std::size_t i = 0; i < n; ++i) {
        const double a = static_cast<double>(i) * 6.283185307179586 / static_cast<double>(n);
        points.emplace_back(static_cast<int>(1e6 * std::cos(a)), static_cast<int>(1e6 * std::sin(a)));
    }
    return points;
}

void BM_ShapeFromPolygon(benchmark::State& state)
{
    const auto points = circle(static_cast<std::size_t>(state.range(0)));
    vSHAPE shape;
    for (auto _ : state) {
        shape.assign_polyline(points, 1);
        benchmark::DoNotOptimize(shape.BoundBox());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ShapeFromPolygon)->Arg(4)->Arg(100)->Arg(60000);

void BM_ShapePointByPoint(benchmark::State& state)
{
    const auto points = circle(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        vSHAPE shape;
        for (std::size_t i = 0; i < points.size(); i += 2) {
            shape.AppendPoint({points[i], point_flags::start_line});
            shape.AppendPoint({points[i + 1], point_flags::closing_line});
        }
        benchmark::DoNotOptimize(shape.BoundBox());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ShapePointByPoint)->Arg(600)->Arg(6000)->Arg(60000);

void BM_ShapeThroughStream(benchmark::State& state)
{
    vSHAPE shape, read;
    shape.assign_polyline(circle(static_cast<std::size_t>(state.range(0))), 1);
    vMEMSTREAM stream;
    for (auto _ : state) {
        stream.MoveFromStart(0);
        shape >> stream;
        stream.MoveFromStart(0);
        read << stream;
        benchmark::DoNotOptimize(read.records().data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ShapeThroughStream)->Arg(4)->Arg(100)->Arg(10000);

void BM_Decompose(benchmark::State& state)
{
    std::vector<POINT> points;
    for (const auto& p : circle(static_cast<std::size_t>(state.range(0))))
        points.push_back(p);
    for (int i = 0; i < 20; ++i)
        points.push_back({i % 2 == 0 ? -2000000 : 2000000, i * 50000 - 500000});
    const int counts[]{static_cast<int>(state.range(0)), 20};
    for (auto _ : state) {
        poly_polygon loops;
        benchmark::DoNotOptimize(DecomposePolyPolygon(points, counts, loops, self_crossings::yes));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Decompose)->Arg(600)->Arg(6000)->Arg(60000);

} // namespace
