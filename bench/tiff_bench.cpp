#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/tiff_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_TIFF
#include <tiffio.h>
#endif

// Decoding of TIFF files of 1000 x 1000 pixels, memory to memory, in strips of 8 KB as most programs write
// them. "Libtiff" reads the same strips to rows as they are stored. "Ratio" does both by turns in one run;
// its counter "of_libtiff" is our CPU time as a part of libtiff's.

namespace {

using namespace klv;
using test::tiff_bytes;
using test::tiff_file;

constexpr std::uint32_t side = 1000;
constexpr std::uint32_t strip_bytes = 8192;

/// Smooth shapes and grain.
std::vector<tiff_file::row> photograph(std::size_t channels)
{
    std::mt19937 random(11);
    std::normal_distribution<double> grain(0, 0.02);
    std::vector<tiff_file::row> rows(side);
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x) {
            const double a = std::sin(x * 0.011 + 2 * std::sin(y * 0.007)),
                         b = std::cos(y * 0.013 + x * 0.004);
            const std::array tones{0.5 + 0.4 * a, 0.5 + 0.3 * b + 0.15 * a, 0.5 + 0.35 * b};
            for (std::size_t c = 0; c < channels; ++c)
                rows[y].push_back(
                    static_cast<std::uint32_t>(std::clamp(tones[c] + grain(random), 0.0, 1.0) * 255));
        }
    return rows;
}

/// The photograph in black and white, dithered by noise.
std::vector<tiff_file::row> halftone()
{
    std::mt19937 random(3);
    auto rows = photograph(1);
    for (auto& row : rows)
        for (std::uint32_t& sample : row)
            sample = sample > 64 + random() % 128 ? 0 : 1;
    return rows;
}

/// A page with lines across it.
std::vector<tiff_file::row> line_art(std::uint32_t paper, std::uint32_t colours)
{
    std::vector<tiff_file::row> rows(side, tiff_file::row(side, paper));
    std::mt19937 random(5);
    for (std::uint32_t line = 0; line < 120; ++line) {
        const auto place = [&] { return static_cast<int>(random() % side); };
        const int x0 = place(), y0 = place(), x1 = place(), y1 = place();
        constexpr int steps = 2 * side;
        for (int i = 0; i < steps; ++i)
            for (int thickness = 0; thickness < 3; ++thickness) {
                const int x = std::min<int>(x0 + (x1 - x0) * i / steps + thickness, side - 1);
                rows[static_cast<std::size_t>(y0 + (y1 - y0) * i / steps)][static_cast<std::size_t>(x)]
                    = 1 + line % colours;
            }
    }
    return rows;
}

tiff_file in_strips(tiff_file file, std::uint32_t compression)
{
    std::uint32_t bits = 0;
    for (const std::uint32_t sample : file.bits)
        bits += sample;
    file.compression = compression;
    file.rows_per_strip = strip_bytes / ((bits * side + 7) / 8);
    return file;
}

struct sample {
    const char* name;
    tiff_bytes file;
};

const std::vector<sample>& samples()
{
    static const std::vector<sample> all = [] {
        const tiff_file colour{.photometric = 2, .bits = {8, 8, 8}, .rows = photograph(3)};
        const tiff_file grey{.bits = {8}, .rows = photograph(1)};
        tiff_file chart{.photometric = 3, .bits = {8}, .rows = line_art(0, 15)};
        chart.colour_map.assign(std::size_t{3} * 256, 0x8000);
        const tiff_file drawing{.photometric = 0, .bits = {1}, .rows = line_art(0, 1)};
        const tiff_file screen{.photometric = 0, .bits = {1}, .rows = halftone()};
        constexpr std::uint32_t huffman = 2, lzw = 5, packbits = 32773;
        return std::vector<sample>{
            {"LZW, colour photograph", in_strips(colour, lzw).bytes()},
            {"LZW, grey photograph", in_strips(grey, lzw).bytes()},
            {"LZW, line art of 8 bits", in_strips(chart, lzw).bytes()},
            {"LZW, line art of 1 bit", in_strips(drawing, lzw).bytes()},
            {"PackBits, colour photograph", in_strips(colour, packbits).bytes()},
            {"PackBits, grey photograph", in_strips(grey, packbits).bytes()},
            {"PackBits, line art of 8 bits", in_strips(chart, packbits).bytes()},
            {"PackBits, line art of 1 bit", in_strips(drawing, packbits).bytes()},
            {"Huffman, halftone", in_strips(screen, huffman).bytes()},
            {"Huffman, line art", in_strips(drawing, huffman).bytes()},
        };
    }();
    return all;
}

const sample& sample_of(const benchmark::State& state)
{
    return samples()[static_cast<std::size_t>(state.range(0))];
}

void report(benchmark::State& state)
{
    state.SetLabel(sample_of(state).name);
    state.SetItemsProcessed(state.iterations() * side * side);
}

void decode(const tiff_bytes& file, oMEMDIB& dib)
{
    auto* bytes = const_cast<std::uint8_t*>(file.data()); // the stream is only read
    vMEMSTREAM in(&bytes, static_cast<std::uint32_t>(file.size()), vSTRING(), 0);
    TIFFILTER filter;
    if (filter.Convert(in, dib) != oFILTER_OK)
        std::abort();
    benchmark::DoNotOptimize(dib.line(0).data());
}

void TiffDecode(benchmark::State& state)
{
    oMEMDIB dib;
    const tiff_bytes& file = sample_of(state).file;
    for (auto _ : state)
        decode(file, dib);
    report(state);
}
BENCHMARK(TiffDecode)->DenseRange(0, 9);

// Growth: LZW noise of n x n pixels.
void TiffDecodeNoise(benchmark::State& state)
{
    const auto n = static_cast<std::uint32_t>(state.range(0));
    std::mt19937 random(1);
    tiff_file file{.bits = {8}, .rows = std::vector(n, tiff_file::row(n)), .compression = 5};
    file.rows_per_strip = std::max(strip_bytes / n, 1U);
    for (auto& row : file.rows)
        std::ranges::generate(row, [&] { return static_cast<std::uint32_t>(random() & 0xFF); });
    const auto bytes = file.bytes();
    oMEMDIB dib;
    for (auto _ : state)
        decode(bytes, dib);
    state.SetItemsProcessed(state.iterations() * n * n);
}
BENCHMARK(TiffDecodeNoise)->RangeMultiplier(4)->Range(64, 4096);

#if KLV_BENCH_TIFF

struct memory_file {
    std::span<const std::uint8_t> bytes;
    toff_t at = 0;
};

tmsize_t take(thandle_t file, void* to, tmsize_t size)
{
    auto& from = *static_cast<memory_file*>(file);
    const auto rest = from.bytes.subspan(std::min<std::size_t>(from.at, from.bytes.size()));
    const std::size_t count = std::min(static_cast<std::size_t>(size), rest.size());
    std::memcpy(to, rest.data(), count);
    from.at += count;
    return static_cast<tmsize_t>(count);
}

toff_t move(thandle_t file, toff_t offset, int) { return static_cast<memory_file*>(file)->at = offset; }

int map(thandle_t file, void** base, toff_t* size)
{
    auto& from = *static_cast<memory_file*>(file);
    *base = const_cast<std::uint8_t*>(from.bytes.data());
    *size = from.bytes.size();
    return 1;
}

void decode_by_libtiff(const tiff_bytes& file, std::vector<std::uint8_t>& pixels)
{
    TIFFSetWarningHandler(nullptr);
    memory_file from{file};
    TIFF* const tiff = TIFFClientOpen(
        "memory", "r", &from, take, [](thandle_t, void*, tmsize_t) { return tmsize_t{0}; }, move,
        [](thandle_t) { return 0; },
        [](thandle_t handle) -> toff_t { return static_cast<memory_file*>(handle)->bytes.size(); }, map,
        [](thandle_t, void*, toff_t) {});
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    const auto size = static_cast<std::size_t>(TIFFStripSize(tiff));
    pixels.resize(size * strips);
    for (std::uint32_t strip = 0; strip < strips; ++strip)
        if (TIFFReadEncodedStrip(tiff, strip, pixels.data() + size * strip, -1) < 0)
            std::abort();
    std::uint16_t samples = 1;
    TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    if (samples == 3)
        for (std::size_t i = 0; i + 2 < pixels.size(); i += 3)
            std::swap(pixels[i], pixels[i + 2]);
    benchmark::DoNotOptimize(pixels.data());
    TIFFClose(tiff);
}

void LibtiffDecode(benchmark::State& state)
{
    std::vector<std::uint8_t> pixels;
    const tiff_bytes& file = sample_of(state).file;
    for (auto _ : state)
        decode_by_libtiff(file, pixels);
    report(state);
}
BENCHMARK(LibtiffDecode)->DenseRange(0, 9);

void TiffDecodeRatio(benchmark::State& state)
{
    oMEMDIB dib;
    std::vector<std::uint8_t> pixels;
    const tiff_bytes& file = sample_of(state).file;
    std::clock_t ours = 0, theirs = 0;
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        decode(file, dib);
        const std::clock_t middle = std::clock();
        decode_by_libtiff(file, pixels);
        ours += middle - start;
        theirs += std::clock() - middle;
    }
    report(state);
    state.counters["of_libtiff"] = static_cast<double>(ours) / static_cast<double>(theirs);
}
BENCHMARK(TiffDecodeRatio)->DenseRange(0, 9);

#endif

} // namespace
