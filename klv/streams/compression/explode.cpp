#include "klv/streams/compression/explode.h"

#include "klv/streams/compression/implode_code.h"

#include <algorithm>
#include <array>
#include <cstring>

// The decoder of LZ77 with a fixed prefix code. Code words are looked up by their next bits in tables as long
// as the longest word, so a token costs a load for each of its two codes. Every distance and every length is
// checked against what is there before bytes move.
namespace klv {

namespace {

using namespace implode_code;

// A copy: its flag, length code, extra bits, distance code and low bits of the distance.
constexpr unsigned longest_token_bits
    = 1 + longest_length_code + 8 + longest_distance_code + max_dictionary_bits;

// What the length code at the next seven bits says.
struct length_entry {
    std::uint16_t base;
    std::uint8_t code_bits;
    std::uint8_t extra_bits;
};

constexpr auto length_table = [] {
    constexpr auto symbols = decoding_table<longest_length_code>(canonical_code(length_code_bits));
    std::array<length_entry, symbols.size()> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = {length_base[symbols[i]], length_code_bits[symbols[i]], length_extra_bits[symbols[i]]};
    return table;
}();

// The symbol and length of the code word at the next bits.
struct symbol_entry {
    std::uint8_t symbol;
    std::uint8_t code_bits;
};

template <unsigned Bits, std::size_t Symbols>
constexpr auto symbol_table(const std::array<std::uint8_t, Symbols>& lengths)
{
    const auto symbols = decoding_table<Bits>(canonical_code(lengths));
    std::array<symbol_entry, std::size_t{1} << Bits> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = {symbols[i], lengths[symbols[i]]};
    return table;
}

constexpr auto distance_table = symbol_table<longest_distance_code>(distance_code_bits);
constexpr auto literal_table = symbol_table<longest_literal_code>(literal_code_bits);

constexpr std::uint64_t low_bits(std::uint64_t value, unsigned count)
{
    return value & ((std::uint64_t{1} << count) - 1);
}

// The bits of the data from the next one on, least first. Beyond the end they read as 0; what was used
// too much shows in `overrun`.
struct bit_source {
    const std::uint8_t* next;
    const std::uint8_t* end;
    std::uint64_t bits;
    unsigned count;

    // Makes at least 56 bits ready, or all that are left.
    void refill()
    {
        if (end - next >= 8) [[likely]] {
            std::uint64_t word = 0;
            for (unsigned i = 0; i < 8; ++i)
                word |= std::uint64_t{next[i]} << (8 * i);
            bits |= word << count;
            next += (63 - count) >> 3;
            count |= 56;
            return;
        }
        for (; count <= 56 && next != end; count += 8)
            bits |= std::uint64_t{*next++} << count;
    }
    void use(unsigned used)
    {
        bits >>= used;
        count -= used;
    }
};

// The slack that a copy in whole words may write behind its end.
constexpr std::ptrdiff_t word_size = 8;

// Copies length bytes from distance bytes back, where the areas may overlap.
inline void copy_back(std::uint8_t* out, std::uint32_t distance, std::uint32_t length, std::ptrdiff_t room)
{
    const std::uint8_t* from = out - distance;
    if (distance >= word_size && room >= std::ptrdiff_t{length} + word_size) [[likely]] {
        for (std::uint32_t done = 0; done < length; done += word_size)
            std::memcpy(out + done, from + done, word_size);
        return;
    }
    if (distance == 1) {
        std::memset(out, *from, length);
        return;
    }
    for (std::uint32_t i = 0; i < length; ++i)
        out[i] = from[i];
}

} // namespace

exploder::exploder(std::span<const std::uint8_t> data) noexcept
    : next_(data.data())
    , end_(data.data() + data.size())
{
    if (data.size() < header_size || data[0] > implode_code::coded_literals || data[1] < min_dictionary_bits
        || data[1] > max_dictionary_bits) {
        state_ = explode_state::damaged;
        return;
    }
    coded_literals_ = data[0] == implode_code::coded_literals;
    low_distance_bits_ = data[1];
    next_ += header_size;
}

std::size_t exploder::decode(std::span<std::uint8_t> output, std::size_t from) noexcept
{
    if (state_ != explode_state::more || from >= output.size())
        return from;

    bit_source in{next_, end_, bits_, bit_count_};
    std::uint8_t* const begin = output.data();
    std::uint8_t* const end = begin + output.size();
    std::uint8_t* out = begin + from;
    const std::uint8_t* const start = out;
    // Bytes may alias members, values don't.
    const bool coded = coded_literals_;
    const unsigned low_distance_bits = low_distance_bits_;
    const std::uint64_t produced_before = produced_;

    const auto copy = [&](std::uint32_t distance, std::uint32_t length) {
        const auto fits = static_cast<std::uint32_t>(std::min<std::ptrdiff_t>(length, end - out));
        copy_back(out, distance, fits, end - out);
        out += fits;
        pending_length_ = length - fits;
        pending_distance_ = distance;
    };

    if (pending_length_ > 0)
        copy(pending_distance_, pending_length_);

    while (out != end) {
        if (in.count < longest_token_bits)
            in.refill();
        const auto ready = in.count;
        unsigned used;
        if ((in.bits & 1) == 0) {
            std::uint8_t literal;
            if (coded) {
                const auto entry = literal_table[low_bits(in.bits >> 1, longest_literal_code)];
                literal = entry.symbol;
                used = 1U + entry.code_bits;
            } else {
                literal = static_cast<std::uint8_t>(in.bits >> 1 & 0xFF);
                used = 1 + 8;
            }
            if (used > ready) {
                state_ = explode_state::damaged;
                break;
            }
            in.use(used);
            *out++ = literal;
            continue;
        }

        auto bits = in.bits >> 1;
        const auto entry = length_table[low_bits(bits, longest_length_code)];
        bits >>= entry.code_bits;
        const auto length = static_cast<std::uint32_t>(entry.base + low_bits(bits, entry.extra_bits));
        bits >>= entry.extra_bits;
        used = 1U + entry.code_bits + entry.extra_bits;
        if (length == end_length) {
            state_ = used > ready ? explode_state::damaged : explode_state::complete;
            in.use(std::min(used, ready));
            break;
        }

        const auto high = distance_table[low_bits(bits, longest_distance_code)];
        bits >>= high.code_bits;
        const auto low_count = length == 2 ? short_copy_distance_bits : low_distance_bits;
        const auto distance = static_cast<std::uint32_t>(
            (std::uint32_t{high.symbol} << low_count) + low_bits(bits, low_count) + 1);
        used += high.code_bits + low_count;
        if (used > ready || distance > produced_before + static_cast<std::uint64_t>(out - start)) {
            state_ = explode_state::damaged;
            break;
        }
        in.use(used);
        copy(distance, length);
    }

    next_ = in.next;
    bits_ = in.bits;
    bit_count_ = in.count;
    produced_ = produced_before + static_cast<std::uint64_t>(out - start);
    return static_cast<std::size_t>(out - begin);
}

exploded explode(std::span<const std::uint8_t> data, std::span<std::uint8_t> output) noexcept
{
    exploder decoder(data);
    const auto size = decoder.decode(output, 0);
    return {size, decoder.state()};
}

} // namespace klv
