#include "klv/streams/compression/explode.h"
#include "klv/streams/compression/implode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_STORM
#include <StormLib.h>
#endif

// Block compression of one MiB of text and of line art. "Storm" is the same work by StormLib; the counter
// "size" is the number of compressed bytes.

namespace {

using byte_vector = std::vector<std::uint8_t>;

constexpr std::size_t block_size = 1 << 20;

// Words of a made-up vocabulary, the frequent ones short of rank as in any language.
byte_vector text()
{
    static constexpr std::array syllables{
        "ka", "lo", "ter", "in", "the", "mon", "es", "ra", "pi", "qu", "and", "st", "ver", "o", "al", "ing"};
    constexpr std::size_t vocabulary = 3000;
    std::mt19937 random(7);
    std::vector<std::string> words(vocabulary);
    for (auto& word : words)
        for (auto syllable = 1 + random() % 4; syllable > 0; --syllable)
            word += syllables[random() % syllables.size()];

    byte_vector bytes;
    while (bytes.size() < block_size) {
        const double share = static_cast<double>(random() % 100'000 + 1) / 100'001.0;
        const auto rank = static_cast<std::size_t>(std::pow(double{vocabulary}, share)) - 1;
        const auto& word = words[std::min(rank, vocabulary - 1)];
        bytes.insert(bytes.end(), word.begin(), word.end());
        bytes.push_back(random() % 12 == 0 ? '\n' : ' ');
    }
    bytes.resize(block_size);
    return bytes;
}

// A white page of one bit a pixel with black lines across it.
byte_vector line_art()
{
    constexpr int row = 1024;
    constexpr int width = row * 8;
    constexpr int height = static_cast<int>(block_size) / row;
    constexpr int lines = 60;
    constexpr int steps = 20'000;
    constexpr int thickness = 3;
    byte_vector page(block_size, 0xFF);
    std::mt19937 random(3);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int line = 0; line < lines; ++line) {
        const int x0 = below(width), y0 = below(height), x1 = below(width), y1 = below(height);
        for (int i = 0; i < steps; ++i) {
            const int y = y0 + (y1 - y0) * i / steps;
            for (int t = 0; t < thickness; ++t) {
                const int x = std::min(x0 + (x1 - x0) * i / steps + t, width - 1);
                page[static_cast<std::size_t>(y * row + x / 8)]
                    &= static_cast<std::uint8_t>(~(0x80 >> x % 8));
            }
        }
    }
    return page;
}

const byte_vector& block_of(std::int64_t kind)
{
    static const byte_vector blocks[] = {text(), line_art()};
    return blocks[kind];
}

byte_vector imploded(const byte_vector& block)
{
    byte_vector data(klv::implode_bound(block.size()));
    data.resize(klv::implode(block, data).value_or(0));
    return data;
}

void report(benchmark::State& state, std::size_t size)
{
    state.SetLabel(state.range(0) == 0 ? "text" : "line art");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(block_size));
    state.counters["size"] = static_cast<double>(size);
}

void Implode(benchmark::State& state)
{
    const auto& block = block_of(state.range(0));
    byte_vector data(klv::implode_bound(block.size()));
    std::size_t size = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(size = klv::implode(block, data).value_or(0));
    report(state, size);
}
BENCHMARK(Implode)->Arg(0)->Arg(1);

void Explode(benchmark::State& state)
{
    const auto data = imploded(block_of(state.range(0)));
    byte_vector block(block_size);
    for (auto _ : state)
        benchmark::DoNotOptimize(klv::explode(data, block));
    report(state, data.size());
}
BENCHMARK(Explode)->Arg(0)->Arg(1);

// Growth: the same text a block of n bytes at a time, as records and rows of bitmaps come.
void ImplodeBlocks(benchmark::State& state)
{
    const std::span block(block_of(0));
    const auto size = static_cast<std::size_t>(state.range(0));
    byte_vector data(klv::implode_bound(size));
    for (auto _ : state)
        for (std::size_t at = 0; at + size <= block.size(); at += size)
            benchmark::DoNotOptimize(klv::implode(block.subspan(at, size), data));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(block_size));
}
BENCHMARK(ImplodeBlocks)->Arg(64)->Arg(512)->Arg(4096)->Arg(32768);

#if KLV_BENCH_STORM

void ImplodeStorm(benchmark::State& state)
{
    auto block = block_of(state.range(0));
    byte_vector data(klv::implode_bound(block.size()) + 4096);
    int size = 0;
    for (auto _ : state) {
        size = static_cast<int>(data.size());
        SCompImplode(data.data(), &size, block.data(), static_cast<int>(block.size()));
    }
    report(state, static_cast<std::size_t>(size));
}
BENCHMARK(ImplodeStorm)->Arg(0)->Arg(1);

void ExplodeStorm(benchmark::State& state)
{
    auto data = imploded(block_of(state.range(0)));
    byte_vector block(block_size);
    for (auto _ : state) {
        auto size = static_cast<int>(block.size());
        SCompExplode(block.data(), &size, data.data(), static_cast<int>(data.size()));
    }
    report(state, data.size());
}
BENCHMARK(ExplodeStorm)->Arg(0)->Arg(1);

#endif

} // namespace
