#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include <array>
#include <cstdint>

#include <benchmark/benchmark.h>

// The small reads and writes that records are made of, through the virtual interface.

namespace {

using namespace klv;

constexpr std::uint32_t record_size = 1 + 2 + 4 * 4 + 8;

void write_record(vSTREAM& stream, std::int32_t value)
{
    static constexpr std::array<std::uint8_t, 8> tail{};
    stream << std::uint8_t{7} << std::uint16_t{9} << value << value << value << value;
    stream.WriteBlock(tail.data(), tail.size());
}

std::int32_t read_record(vSTREAM& stream)
{
    std::array<std::uint8_t, 8> tail;
    std::int32_t sum = stream.ReadUByte() + stream.ReadUWord();
    for (int i = 0; i < 4; ++i)
        sum ^= stream.ReadSLong();
    stream.ReadByteString(tail.data(), tail.size());
    return sum;
}

void WriteRecords(benchmark::State& state)
{
    for (auto _ : state) {
        vMEMSTREAM stream;
        for (int i = 0; i < state.range(0); ++i)
            write_record(stream, i);
        benchmark::DoNotOptimize(stream.Size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WriteRecords)->Arg(7'000)->Arg(70'000)->Arg(700'000);

template <class Stream> void ReadRecords(benchmark::State& state)
{
    Stream stream;
    {
        vMEMSTREAM records;
        for (int i = 0; i < state.range(0); ++i)
            write_record(records, i);
        records.MoveFromStart(0);
        static_cast<vSTREAM&>(stream) = records;
    }
    for (auto _ : state) {
        stream.MoveFromStart(0);
        for (int i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(read_record(stream));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.items_processed() * record_size);
}
BENCHMARK(ReadRecords<vMEMSTREAM>)->Arg(7'000)->Arg(700'000);
BENCHMARK(ReadRecords<vFILE>)->Arg(7'000)->Arg(700'000);

} // namespace
