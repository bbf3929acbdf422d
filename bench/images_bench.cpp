// Bitmaps: resampling, depth conversion, the stream form, and PNG writing.
#include "klv/bitmaps/detail/dib_stream.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/pixels/resample.h"
#include "klv/core/rect.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/imaging/imaging_api.h"
#include "klv/platform/module_table.h"
#include "klv/streams/memory_stream.h"

#include "tests/build_folder.h"

#include <benchmark/benchmark.h>

#ifdef KLV_BENCH_QT
#include <QImage>
#endif

#include <cstdint>
#include <vector>

namespace {

using namespace klv;

/// Something like a drawing: flat areas with soft edges.
std::vector<std::uint8_t> drawing(int width, int height, int channels)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
        * static_cast<std::size_t>(channels));
    std::size_t at = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                bytes[at++]
                    = static_cast<std::uint8_t>((x / 37 + y / 23 * 5) * (60 + 20 * c) + (x % 37 == 0) * 11);
    return bytes;
}

pixel_rows rows_of(const std::vector<std::uint8_t>& bytes, int width, int height, int channels)
{
    return {bytes.data(), std::ptrdiff_t{width} * channels, width, height, channels};
}

constexpr int reduced_side = 500;

void area_average(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    const int channels = static_cast<int>(state.range(1));
    const auto source = drawing(side, side, channels);
    std::vector<std::uint8_t> target(reduced_side * reduced_side * 4);
    for (auto _ : state) {
        resample_smooth(rows_of(source, side, side, channels),
            {target.data(), reduced_side * channels, reduced_side, reduced_side, channels});
        benchmark::ClobberMemory();
    }
}
BENCHMARK(area_average)->ArgsProduct({{1000, 1700, 4000}, {4, 3}})->MeasureProcessCPUTime();

#ifdef KLV_BENCH_QT
// It scales on several threads, hence the processor time of the whole process on both sides.
void area_average_qt(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    const int channels = static_cast<int>(state.range(1));
    auto source = drawing(side, side, channels);
    const QImage image(source.data(), side, side, side * channels,
        channels == 4 ? QImage::Format_RGB32 : QImage::Format_RGB888);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            image.scaled(reduced_side, reduced_side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}
BENCHMARK(area_average_qt)->ArgsProduct({{1000, 1700, 4000}, {4, 3}})->MeasureProcessCPUTime();
#endif

/// Supersampled surfaces: whole, and in the bands in which they are drawn.
void reduce_by_factor(benchmark::State& state)
{
    const int factor = static_cast<int>(state.range(0));
    const int band = static_cast<int>(state.range(1));
    constexpr int side = 1000;
    const auto source = drawing(side * factor, band * factor, 4);
    std::vector<std::uint8_t> target(std::size_t{side} * side * 3);
    for (auto _ : state) {
        for (int y = 0; y < side; y += band)
            reduce_box(rows_of(source, side * factor, band * factor, 4),
                {target.data() + std::ptrdiff_t{y} * side * 3, side * 3, side, band, 3}, factor, factor);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * side * side * factor * factor * 4);
}
BENCHMARK(reduce_by_factor)->ArgsProduct({{2, 3, 4, 8}, {10, 50, 1000}});

void enlarge(benchmark::State& state)
{
    constexpr int side = 500;
    const auto source = drawing(side, side, 3);
    std::vector<std::uint8_t> target(std::size_t{1700} * 1300 * 3);
    for (auto _ : state) {
        resample_smooth(rows_of(source, side, side, 3), {target.data(), 1700 * 3, 1700, 1300, 3});
        benchmark::ClobberMemory();
    }
}
BENCHMARK(enlarge);

oMEMDIB bitmap(int side, int bits)
{
    oMEMDIB dib(side, side, 24, oMODEL_RGB24, 0);
    const auto bytes = drawing(side, side, 3);
    for (int y = 0; y < side; ++y)
        std::copy_n(bytes.data() + std::ptrdiff_t{y} * side * 3, side * 3, dib.line(y).data());
    return oMEMDIB(dib, 0, 0, bits, 0, 0);
}

void convert_to_8_bits(benchmark::State& state)
{
    const oMEMDIB source = bitmap(static_cast<int>(state.range(0)), 24);
    for (auto _ : state)
        benchmark::DoNotOptimize(oMEMDIB(source, 0, 0, 8, 0, 0).HasPixels());
}
BENCHMARK(convert_to_8_bits)->Arg(100)->Arg(1000);

void turn(benchmark::State& state)
{
    const oMEMDIB source = bitmap(static_cast<int>(state.range(0)), 24);
    const vRECT whole(0, 0, source.Width(), source.Height());
    for (auto _ : state)
        benchmark::DoNotOptimize(
            oMEMDIB(source, whole, whole, nullptr, 0, 0, 30.0, oMODEL_RGB24).HasPixels());
}
BENCHMARK(turn)->Arg(100)->Arg(1000);

void stream_form(benchmark::State& state)
{
    const oMEMDIB source = bitmap(static_cast<int>(state.range(0)), 24);
    vMEMSTREAM stream;
    for (auto _ : state) {
        stream.MoveFromStart(0);
        source >> stream;
        stream.MoveFromStart(0);
        benchmark::DoNotOptimize(oMEMDIB(stream, 0).HasPixels());
    }
}
BENCHMARK(stream_form)->Arg(100)->Arg(1000);

void write_png(benchmark::State& state)
{
    for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
        MapModule(name, klv::test::imaging_module_path().c_str());
    oMEMDIB source = bitmap(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    std::uint32_t size = 0;
    for (auto _ : state) {
        vMEMSTREAM stream;
        PNGFILTER filter;
        if (filter.Convert(source, stream) != oFILTER_OK)
            state.SkipWithError("the imaging module is not there");
        size = stream.Size();
    }
    state.counters["bytes"] = size;
}
BENCHMARK(write_png)->ArgsProduct({{1000}, {1, 8, 24}});

} // namespace
