#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/gif/gif_decoder.h"
#include "klv/filters/gif/gif_encoder.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_GIFLIB
#include <gif_lib.h>
#endif

// GIF files of 1000 x 1000 pixels. "Giflib" is the same work by giflib, memory to memory: a file becomes
// rows of indices, rows of indices become a file. The counter "size" is the file's bytes. "Ratio" does both
// by turns in one run; its counter "of_giflib" is our CPU time as a part of giflib's.

namespace {

using namespace klv;
using byte_vector = std::vector<std::uint8_t>;

constexpr int side = 1000;

/// Smooth shapes and grain in 8 levels of red and green and 4 of blue, dithered by noise.
oMEMDIB photograph()
{
    oMEMDIB picture(side, side, 8, oMODEL_PALETTE8, 0);
    const double levels[]{7, 7, 3};
    std::vector<RGBQUAD> colours;
    for (int i = 0; i < 256; ++i)
        colours.push_back({static_cast<BYTE>(i % 4 * 85), static_cast<BYTE>(i / 4 % 8 * 255 / 7),
            static_cast<BYTE>(i / 32 * 255 / 7), 0});
    picture.SetPalette(oDIBPALETTE(colours.data(), 256));
    std::mt19937 random(11);
    std::normal_distribution<double> grain(0, 0.02);
    std::uniform_real_distribution<double> dither(0, 1);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double a = std::sin(x * 0.011 + 2 * std::sin(y * 0.007));
            const double b = std::cos(y * 0.013 + x * 0.004);
            const double c = std::sin((x - 400) * (y - 500) * 0.00003);
            const double tones[]{0.5 + 0.36 * a + 0.1 * c, 0.5 + 0.3 * b + 0.15 * a, 0.5 + 0.3 * c + 0.2 * b};
            int index = 0;
            for (int channel = 0; channel < 3; ++channel) {
                const double level = std::clamp(tones[channel] + grain(random), 0.0, 1.0) * levels[channel];
                index = index * (static_cast<int>(levels[channel]) + 1)
                    + static_cast<int>(std::min(level + dither(random), levels[channel]));
            }
            picture.line(y)[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(index);
        }
    }
    return picture;
}

/// A white page with lines of 15 colours across it.
oMEMDIB line_art()
{
    oMEMDIB page(side, side, 4, oMODEL_PALETTE4, 0);
    std::vector<RGBQUAD> colours(16);
    for (std::size_t i = 0; i < colours.size(); ++i)
        colours[i] = {
            static_cast<BYTE>(i * 17), static_cast<BYTE>(i * 40 % 256), static_cast<BYTE>(i * 90 % 256), 0};
    page.SetPalette(oDIBPALETTE(colours.data(), 16));
    std::vector<byte_vector> rows(side, byte_vector(side, 15));
    std::mt19937 random(5);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int line = 0; line < 120; ++line) {
        const int x0 = below(side), y0 = below(side), x1 = below(side), y1 = below(side);
        for (int i = 0; i < 2 * side; ++i)
            for (int thickness = 0; thickness < 3; ++thickness) {
                const auto x = static_cast<std::size_t>(
                    std::min(x0 + (x1 - x0) * i / (2 * side) + thickness, side - 1));
                rows[static_cast<std::size_t>(y0 + (y1 - y0) * i / (2 * side))][x]
                    = static_cast<std::uint8_t>(line % 15);
            }
    }
    for (int y = 0; y < side; ++y)
        write_indices(rows[static_cast<std::size_t>(y)].data(), page.line(y).data(), 4, side);
    return page;
}

struct sample {
    oMEMDIB bitmap;
    byte_vector file;
    byte_vector indices; ///< top row first
};

byte_vector encoded(const oDIB& bitmap)
{
    vMEMSTREAM out;
    write_gif(bitmap, out, nullptr);
    byte_vector file(out.Size());
    out.MoveFromStart(0);
    out.ReadPlain(file.data(), out.Size());
    return file;
}

sample make_sample(oMEMDIB&& bitmap)
{
    sample made;
    for (int y = side; y-- > 0;) {
        byte_vector row(side);
        read_line_as_indices(bitmap.line(y).data(), bitmap.ColourDepth(), row.data(), side);
        made.indices.insert(made.indices.end(), row.begin(), row.end());
    }
    made.file = encoded(bitmap);
    made.bitmap = std::move(bitmap);
    return made;
}

const sample& sample_of(std::int64_t kind)
{
    static const sample samples[] = {make_sample(photograph()), make_sample(line_art())};
    return samples[kind];
}

void report(benchmark::State& state, std::size_t size)
{
    state.SetLabel(state.range(0) == 0 ? "photograph" : "line art");
    state.SetItemsProcessed(state.iterations() * side * side);
    state.counters["size"] = static_cast<double>(size);
}

void decode(const sample& from)
{
    auto* bytes = const_cast<std::uint8_t*>(from.file.data()); // the stream is only read
    vMEMSTREAM in(&bytes, static_cast<std::uint32_t>(from.file.size()), vSTRING(), 0);
    gif_picture picture;
    oMEMDIB bitmap;
    read_gif_picture(in, picture);
    if (read_gif_pixels(in, picture, bitmap, nullptr) != oFILTER_OK)
        std::abort();
    benchmark::DoNotOptimize(bitmap.line(0).data());
}

std::size_t encode(const sample& from)
{
    vMEMSTREAM out;
    write_gif(from.bitmap, out, nullptr);
    return out.Size();
}

void GifDecode(benchmark::State& state)
{
    const sample& from = sample_of(state.range(0));
    for (auto _ : state)
        decode(from);
    report(state, from.file.size());
}
BENCHMARK(GifDecode)->Arg(0)->Arg(1);

void GifEncode(benchmark::State& state)
{
    const sample& from = sample_of(state.range(0));
    std::size_t size = 0;
    for (auto _ : state)
        size = encode(from);
    report(state, size);
}
BENCHMARK(GifEncode)->Arg(0)->Arg(1);

// Growth: 8-bit noise of n x n pixels there and back.
void GifRoundTripNoise(benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    oMEMDIB bitmap(n, n, 8, oMODEL_PALETTE8, 0);
    std::mt19937 random(1);
    for (int y = 0; y < n; ++y)
        std::ranges::generate(bitmap.line(y), [&] { return static_cast<std::uint8_t>(random() & 0xFF); });
    for (auto _ : state) {
        vMEMSTREAM stream;
        write_gif(bitmap, stream, nullptr);
        stream.MoveFromStart(0);
        gif_picture picture;
        oMEMDIB back;
        read_gif_picture(stream, picture);
        benchmark::DoNotOptimize(read_gif_pixels(stream, picture, back, nullptr));
    }
    state.SetItemsProcessed(state.iterations() * n * n);
}
BENCHMARK(GifRoundTripNoise)->RangeMultiplier(4)->Range(64, 4096);

#if KLV_BENCH_GIFLIB

struct memory_file {
    byte_vector bytes;
    std::size_t at = 0;
};

int take(GifFileType* file, GifByteType* to, int size)
{
    auto& from = *static_cast<memory_file*>(file->UserData);
    const std::size_t count = std::min(static_cast<std::size_t>(size), from.bytes.size() - from.at);
    std::memcpy(to, from.bytes.data() + from.at, count);
    from.at += count;
    return static_cast<int>(count);
}

int give(GifFileType* file, const GifByteType* from, int size)
{
    auto& to = static_cast<memory_file*>(file->UserData)->bytes;
    to.insert(to.end(), from, from + size);
    return size;
}

void decode_by_giflib(memory_file& from)
{
    from.at = 0;
    GifFileType* const file = DGifOpen(&from, take, nullptr);
    if (DGifSlurp(file) != GIF_OK)
        std::abort();
    benchmark::DoNotOptimize(file->SavedImages[0].RasterBits);
    DGifCloseFile(file, nullptr);
}

std::size_t encode_by_giflib(const sample& from, byte_vector& indices)
{
    memory_file to;
    GifFileType* const file = EGifOpen(&to, give, nullptr);
    const int bits = from.bitmap.ColourDepth();
    ColorMapObject* const colours = GifMakeMapObject(1 << bits, nullptr);
    EGifPutScreenDesc(file, side, side, bits, 0, colours);
    EGifPutImageDesc(file, 0, 0, side, side, false, nullptr);
    for (int y = 0; y < side; ++y)
        EGifPutLine(file, indices.data() + y * side, side);
    GifFreeMapObject(colours);
    EGifCloseFile(file, nullptr);
    return to.bytes.size();
}

void GiflibDecode(benchmark::State& state)
{
    memory_file file{sample_of(state.range(0)).file};
    for (auto _ : state)
        decode_by_giflib(file);
    report(state, file.bytes.size());
}
BENCHMARK(GiflibDecode)->Arg(0)->Arg(1);

void GiflibEncode(benchmark::State& state)
{
    const sample& from = sample_of(state.range(0));
    byte_vector indices = from.indices;
    std::size_t size = 0;
    for (auto _ : state)
        size = encode_by_giflib(from, indices);
    report(state, size);
}
BENCHMARK(GiflibEncode)->Arg(0)->Arg(1);

double cpu_seconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Ours, typename Theirs>
void measure_by_turns(benchmark::State& state, Ours ours, Theirs theirs)
{
    double our_time = 0;
    double their_time = 0;
    for (auto _ : state) {
        const double start = cpu_seconds();
        ours();
        const double middle = cpu_seconds();
        theirs();
        our_time += middle - start;
        their_time += cpu_seconds() - middle;
    }
    state.counters["of_giflib"] = our_time / their_time;
}

void GifDecodeRatio(benchmark::State& state)
{
    const sample& from = sample_of(state.range(0));
    memory_file file{from.file};
    measure_by_turns(
        state, [&] { decode(from); }, [&] { decode_by_giflib(file); });
    report(state, from.file.size());
}
BENCHMARK(GifDecodeRatio)->Arg(0)->Arg(1);

void GifEncodeRatio(benchmark::State& state)
{
    const sample& from = sample_of(state.range(0));
    byte_vector indices = from.indices;
    measure_by_turns(
        state, [&] { encode(from); }, [&] { encode_by_giflib(from, indices); });
    report(state, encode(from));
    state.counters["giflib_size"] = static_cast<double>(encode_by_giflib(from, indices));
}
BENCHMARK(GifEncodeRatio)->Arg(0)->Arg(1);

#endif

} // namespace
