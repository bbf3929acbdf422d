#include "klv/bitmaps/memory_dib.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

// A photograph of 24 bits made one of fewer bits, which takes dithering: to the cube of 6 x 6 x 6 colours, to
// the 16 standard colours, to black and white. The counter "ms_per_megapixel" is CPU time; the speed of
// memset tells machines apart.

namespace {

using namespace klv;

oMEMDIB photograph(int width, int height)
{
    oMEMDIB picture(width, height, 24, oMODEL_RGB24, 0);
    std::mt19937 random(11);
    std::normal_distribution<double> grain(0, 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel) {
                const double tone
                    = 128 + 90 * std::sin(x * 0.011 + channel) + 30 * std::cos(y * 0.013 * (channel + 1));
                picture.line(y)[static_cast<std::size_t>(3 * x + channel)]
                    = static_cast<std::uint8_t>(std::clamp(tone + grain(random), 0.0, 255.0));
            }
    return picture;
}

void Dither(benchmark::State& state)
{
    const auto side = static_cast<int>(state.range(0));
    const auto bits = static_cast<int>(state.range(1));
    const oMEMDIB picture = photograph(side, side);
    for (auto _ : state) {
        const oMEMDIB reduced(picture, 0, 0, bits, 0, 0);
        benchmark::DoNotOptimize(reduced.line(0).data());
    }
    const double megapixels = 1e-6 * side * side;
    state.SetItemsProcessed(state.iterations() * side * side);
    state.counters["ms_per_megapixel"] = benchmark::Counter(
        1e-3 * megapixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(Dither)->ArgsProduct({{1000}, {8, 4, 1}});
BENCHMARK(Dither)->ArgsProduct({{250, 500, 2000, 4000}, {8}});

void MemsetOfAMegabyte(benchmark::State& state)
{
    std::vector<std::uint8_t> bytes(1'000'000);
    for (auto _ : state) {
        std::memset(bytes.data(), 1, bytes.size());
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(MemsetOfAMegabyte);

} // namespace
