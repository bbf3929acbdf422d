#include "klv/streams/compression/explode.h"
#include "klv/streams/compression/implode.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

// The first byte chooses what is done with the rest: explode it whole and in pieces, which must agree; read
// it as the blocks of a stream; or implode it and take it back.

namespace {

using namespace klv;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void explode_both_ways(std::span<const std::uint8_t> data, std::size_t piece)
{
    std::vector<std::uint8_t> whole(65536);
    const auto outcome = explode(data, whole);

    std::vector<std::uint8_t> pieces(whole.size());
    exploder decoder(data);
    std::size_t done = 0;
    while (done < pieces.size() && decoder.state() == explode_state::more)
        done = decoder.decode(std::span(pieces).first(std::min(done + piece, pieces.size())), done);
    require(done == outcome.size && decoder.state() == outcome.state);
    require(std::equal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(done), pieces.begin()));
}

void read_as_blocks(std::span<const std::uint8_t> data, std::uint32_t block_size)
{
    vMEMSTREAM stream;
    stream.WritePlain(data.data(), static_cast<std::uint32_t>(data.size()));
    stream.MoveFromStart(0);
    std::array<std::uint8_t, 256> block;
    while (!stream.AtEnd() && stream.ReadByteString(block.data(), block_size) > 0) { }

    stream.MoveFromStart(0);
    if (data.size() < 4096) {
        vMEMSTREAM copy;
        static_cast<vSTREAM&>(copy) = stream;
    }
}

void round_trip(std::span<const std::uint8_t> block)
{
    std::vector<std::uint8_t> data(implode_bound(block.size()));
    const auto size = implode(block, data);
    require(size.has_value());
    std::vector<std::uint8_t> back(block.size() + 1);
    const auto outcome = explode(std::span(data).first(*size), back);
    require(outcome.size == block.size() && outcome.state == explode_state::complete);
    require(std::equal(block.begin(), block.end(), back.begin()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::span<const std::uint8_t> data(bytes + 1, size - 1);
    const unsigned choice = bytes[0];
    switch (choice % 3) {
    case 0:
        explode_both_ways(data, choice / 3 + 1);
        break;
    case 1:
        read_as_blocks(data, choice);
        break;
    default:
        round_trip(data);
        break;
    }
    return 0;
}
