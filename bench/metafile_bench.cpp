// Recording and replaying simple records: both should cost the same for each record at every size.

#include "klv/devices/memory_device.h"
#include "klv/geometry/shape.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"

#include <array>

#include <benchmark/benchmark.h>

namespace {

using namespace klv;

constexpr int first_size = 7'000;
constexpr int last_size = 700'000;
constexpr int growth = 10;

void record_figures(vMETAFILE& picture, std::int64_t count)
{
    const std::array<vPOINT, 3> corners{vPOINT(0, 0), vPOINT(30, 10), vPOINT(20, 40)};
    vSHAPE triangle(3, corners.data());
    const vFILLSPEC fill(vFILL_SOLID, vCOLOUR(1, 2, 3), vCOLOUR(), vANGLE(), vFILL_ALTERNATE, vPOINT());
    for (std::int64_t i = 0; i < count; ++i) {
        switch (i % 4) {
        case 0:
            picture.FillSpec(fill);
            break;
        case 1:
            picture.DrawLine(corners);
            break;
        default:
            picture.DrawShape(triangle);
            break;
        }
    }
    picture.EndMetaFile();
}

void RecordFigures(benchmark::State& state)
{
    for (auto _ : state) {
        vMETAFILE picture;
        record_figures(picture, state.range(0));
        benchmark::DoNotOptimize(picture.Length());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(RecordFigures)
    ->RangeMultiplier(growth)
    ->Range(first_size, last_size)
    ->Unit(benchmark::kMillisecond);

void WalkRecords(benchmark::State& state)
{
    vMETAFILE picture;
    record_figures(picture, state.range(0));
    for (auto _ : state) {
        std::int64_t records = 0;
        for_each_record(picture, [&](metafile_record&) { ++records; });
        benchmark::DoNotOptimize(records);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WalkRecords)->RangeMultiplier(growth)->Range(first_size, last_size)->Unit(benchmark::kMillisecond);

void PlayFigures(benchmark::State& state)
{
    vMETAFILE picture;
    record_figures(picture, state.range(0));
    vMEMDEVICE device(64, 64);
    const std::uint64_t allocations = vMemAllocations();
    for (auto _ : state)
        device.DrawMetafile(picture, vRECT(0, 0, 64, 64));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["allocations/record"] = benchmark::Counter(
        static_cast<double>(vMemAllocations() - allocations) / static_cast<double>(state.range(0)),
        benchmark::Counter::kAvgIterations);
}
BENCHMARK(PlayFigures)->RangeMultiplier(growth)->Range(first_size, last_size)->Unit(benchmark::kMillisecond);

} // namespace
