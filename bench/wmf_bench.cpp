#include "klv/filters/wmf/wmf_filter.h"
#include "klv/metafiles/metafile.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/wmf_builder.h"

#include <vector>

#include <benchmark/benchmark.h>

// Simple records of a Windows metafile into a recorded picture: half of them set or select, half draw.

namespace klv {
namespace {

std::vector<std::uint8_t> simple_records(std::int64_t count)
{
    auto file = test::wmf_builder().placeable(0, 0, 10000, 10000, 1000).window(0, 0, 10000, 10000);
    file.pen(0, 3, 0xFF).brush(0, 0xFF00).select(0).select(1);
    for (std::int64_t i = 0; i < count; i += 2) {
        const int x = static_cast<int>(i * 37 % 9000);
        const int y = static_cast<int>(i * 91 % 9000);
        file.add(wmf_function::set_text_color, {x, 0});
        file.add(wmf_function::polygon, {3, x, y, x + 50, y, x, y + 50});
    }
    return file.build();
}

void wmf_to_picture(benchmark::State& state, oREADING_LEVEL level)
{
    auto bytes = simple_records(state.range(0));
    for (auto _ : state) {
        std::uint8_t* data = bytes.data();
        vMEMSTREAM stream(&data, static_cast<std::uint32_t>(bytes.size()), vSTRING("bench.wmf"), 0);
        vMETAFILE picture;
        WMFFILTER filter;
        filter.ReadingLevel(level);
        benchmark::DoNotOptimize(filter.Convert(stream, &picture));
    }
    state.counters["records/s"] = benchmark::Counter(
        static_cast<double>(state.range(0) * static_cast<std::int64_t>(state.iterations())),
        benchmark::Counter::kIsRate);
    state.SetComplexityN(state.range(0));
}

BENCHMARK_CAPTURE(wmf_to_picture, documented, oREADING_LEVEL::documented)
    ->Arg(7000)
    ->Arg(70000)
    ->Arg(700000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wmf_to_picture, faithful, oREADING_LEVEL::faithful)
    ->Arg(7000)
    ->Arg(70000)
    ->Arg(700000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace klv
