#include "klv/formats/packbits.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::size_t longest_piece = 128;
/// Two equal bytes inside bytes that differ are cheaper to copy than to repeat.
constexpr std::size_t shortest_run = 3;

std::size_t run_length(std::span<const std::uint8_t> row, std::size_t at)
{
    std::size_t length = 1;
    while (length < longest_piece && at + length < row.size() && row[at + length] == row[at])
        ++length;
    return length;
}

} // namespace

bool unpack_bits(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row)
{
    std::size_t at = 0;
    std::size_t filled = 0;
    while (filled < row.size() && at < packed.size()) {
        const auto packet = packbits_packet::of(packed[at++]);
        const std::size_t room = std::min(packet.length, row.size() - filled);
        const auto target = row.subspan(filled, room);
        if (packet.repeats) {
            if (at == packed.size())
                return false;
            std::ranges::fill(target, packed[at++]);
        } else {
            const auto bytes = packed.subspan(at, std::min(room, packed.size() - at));
            std::ranges::copy(bytes, target.begin());
            if (bytes.size() < room)
                return false;
            at = std::min(at + packet.length, packed.size());
        }
        filled += room;
    }
    return filled == row.size();
}

void pack_bits(std::span<const std::uint8_t> row, std::vector<std::uint8_t>& packed)
{
    std::size_t at = 0;
    while (at < row.size()) {
        const std::size_t run = run_length(row, at);
        if (run >= shortest_run) {
            packed.push_back(static_cast<std::uint8_t>(257 - run));
            packed.push_back(row[at]);
            at += run;
            continue;
        }
        std::size_t end = at + run;
        while (end < row.size() && end - at < longest_piece && run_length(row, end) < shortest_run)
            ++end;
        packed.push_back(static_cast<std::uint8_t>(end - at - 1));
        packed.insert(packed.end(), row.begin() + static_cast<std::ptrdiff_t>(at),
            row.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
}

} // namespace klv
