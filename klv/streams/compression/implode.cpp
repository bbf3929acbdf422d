#include "klv/streams/compression/implode.h"

#include "klv/base/memory.h"
#include "klv/streams/compression/implode_code.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

// LZ77 (Ziv and Lempel, 1977) over a window of 4096 bytes with a fixed prefix code. Earlier occurrences are
// found by hash chains, and one place is looked ahead before a copy is taken (lazy matching). The choices are
// free: any choice decodes to the same block, so they may change with the next measurement.
namespace klv {

namespace {

using namespace implode_code;

constexpr std::uint32_t window_size = std::uint32_t{1024} << (max_dictionary_bits - min_dictionary_bits);
constexpr std::size_t max_block = 0xFFFFFFF0; // positions are 32 bits wide
constexpr std::uint32_t min_copy = 2;
// Decoders with the customary buffers take copies of up to 516 bytes.
constexpr std::uint32_t max_copy = 516;
constexpr std::uint32_t max_short_copy_distance = distance_symbols << short_copy_distance_bits;
constexpr unsigned literal_cost = 1 + 8;

constexpr auto length_code = canonical_code(length_code_bits);
constexpr auto distance_code = canonical_code(distance_code_bits);

// The flag, length code and extra bits of every copy length as one word.
struct bit_word {
    std::uint32_t bits;
    std::uint32_t count;
};
constexpr auto copy_lengths = [] {
    std::array<bit_word, end_length + 1> table{};
    for (std::size_t symbol = 0; symbol < length_symbols; ++symbol) {
        const auto [bits, count] = length_code[symbol];
        for (std::uint32_t extra = 0; extra < 1U << length_extra_bits[symbol]; ++extra)
            table[length_base[symbol] + extra] = {
                1U | std::uint32_t{bits} << 1 | extra << (1 + count), 1U + count + length_extra_bits[symbol]};
    }
    return table;
}();

constexpr unsigned low_distance_bits(std::uint32_t length)
{
    return length == min_copy ? short_copy_distance_bits : max_dictionary_bits;
}

struct copy {
    std::uint32_t length = 0; // 0: none was found
    std::uint32_t distance = 0;

    // Bits that the copy takes in the data.
    unsigned cost() const
    {
        const auto low = low_distance_bits(length);
        return copy_lengths[length].count + distance_code_bits[(distance - 1) >> low] + low;
    }
    // Bits that the copy saves against literals.
    int gain() const { return length == 0 ? 0 : static_cast<int>(length * literal_cost - cost()); }
};

class bit_sink {
public:
    explicit bit_sink(std::span<std::uint8_t> output)
        : begin_(output.data())
        , next_(output.data())
        , end_(output.data() + output.size())
    {
    }

    void put(std::uint64_t bits, unsigned count)
    {
        bits_ |= bits << count_;
        count_ += count;
        if (count_ >= 32)
            flush_bytes(4);
    }
    // Writes the last bits. \return the size of the output; nothing when it was too small.
    std::optional<std::size_t> finish()
    {
        flush_bytes((count_ + 7) / 8);
        return full_ ? std::nullopt : std::optional(static_cast<std::size_t>(next_ - begin_));
    }
    bool full() const { return full_; }

private:
    void flush_bytes(unsigned count)
    {
        if (end_ - next_ < static_cast<std::ptrdiff_t>(count)) {
            full_ = true;
            next_ = end_;
            count = 0;
            count_ = 0;
            return;
        }
        for (unsigned i = 0; i < count; ++i, bits_ >>= 8)
            *next_++ = static_cast<std::uint8_t>(bits_ & 0xFF);
        count_ -= std::min(count_, 8 * count);
    }

    std::uint8_t* begin_;
    std::uint8_t* next_;
    std::uint8_t* end_;
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;
    bool full_ = false;
};

// Finds earlier occurrences within the window. Places are kept plus one, so that 0 means none; those of one
// hash are chained from the latest back.
//
// A place within a run of equal bytes is chained by what is left of the run. Every longer run has a place
// with just as much left, so no occurrence that goes on behind the run is missed, and the many places of a
// run that would all match equally far are not looked at.
class occurrence_finder {
public:
    explicit occurrence_finder(std::span<const std::uint8_t> block)
        : block_(block)
    {
    }

    // The best copy for the bytes at `at`, and makes the place known. Places are asked for in order.
    copy find(std::uint32_t at, std::uint32_t good_enough)
    {
        const auto left = static_cast<std::uint32_t>(block_.size()) - at;
        if (left < hashed_bytes)
            return {};
        const auto limit = std::min(left, max_copy);
        const std::uint8_t* const here = block_.data() + at;

        copy best = near_copy(at, limit);
        const auto oldest = at > window_size ? at - window_size : 0;
        auto& latest = latest_[place_hash(at)];
        const auto first = latest;
        auto candidate = first;
        for (int steps = best.length < good_enough ? max_steps : 0; candidate > oldest && steps > 0;
             --steps) {
            const std::uint8_t* const there = block_.data() + (candidate - 1);
            if (best.length < limit && there[best.length] == here[best.length]) {
                const auto length = common_length(there, here, limit);
                if (length > best.length && length >= hashed_bytes) {
                    best = {length, at - (candidate - 1)};
                    if (length >= good_enough || length == limit)
                        break;
                }
            }
            candidate = previous_[(candidate - 1) % window_size];
        }
        previous_[at % window_size] = first;
        latest = at + 1;
        return best;
    }

    // Makes a place known without a search.
    void pass(std::uint32_t at)
    {
        if (block_.size() - at >= hashed_bytes) {
            pairs_[pair_hash(at)] = at + 1;
            auto& latest = latest_[place_hash(at)];
            previous_[at % window_size] = latest;
            latest = at + 1;
        }
    }

private:
    static constexpr std::uint32_t hashed_bytes = 3;
    static constexpr unsigned hash_bits = 13;
    static constexpr unsigned pair_hash_bits = 12;
    static constexpr int max_steps = 256;

    static std::uint32_t hash(std::uint32_t value, unsigned bits)
    {
        return static_cast<std::uint32_t>(std::uint64_t{value} * 2654435761U & 0xFFFFFFFFU) >> (32 - bits);
    }
    std::uint32_t pair_hash(std::uint32_t at) const
    {
        return hash(block_[at] | std::uint32_t{block_[at + 1]} << 8, pair_hash_bits);
    }
    std::uint32_t place_hash(std::uint32_t at)
    {
        const auto run = run_length(at);
        if (run >= hashed_bytes)
            return hash(block_[at] | std::min(run, max_copy) << 8, hash_bits);
        return hash(
            block_[at] | std::uint32_t{block_[at + 1]} << 8 | std::uint32_t{block_[at + 2]} << 16, hash_bits);
    }
    // How many bytes from `at` on are equal.
    std::uint32_t run_length(std::uint32_t at)
    {
        if (at >= run_end_) {
            run_end_ = at + 1;
            while (run_end_ < block_.size() && block_[run_end_] == block_[at])
                ++run_end_;
        }
        return run_end_ - at;
    }
    // The rest of a run, or two bytes from a short distance.
    copy near_copy(std::uint32_t at, std::uint32_t limit)
    {
        auto& latest = pairs_[pair_hash(at)];
        const auto before = latest;
        latest = at + 1;
        if (at > 0 && block_[at - 1] == block_[at] && run_length(at) >= hashed_bytes)
            return {std::min(run_length(at), limit), 1};
        const bool near = before != 0 && at - (before - 1) <= max_short_copy_distance;
        if (near && block_[before - 1] == block_[at] && block_[before] == block_[at + 1])
            return {min_copy, at - (before - 1)};
        return {};
    }
    static std::uint32_t common_length(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t limit)
    {
        std::uint32_t length = 0;
        for (; limit - length >= 8; length += 8) {
            std::uint64_t x;
            std::uint64_t y;
            std::memcpy(&x, a + length, 8);
            std::memcpy(&y, b + length, 8);
            if (x != y && std::endian::native == std::endian::little)
                return length + static_cast<std::uint32_t>(std::countr_zero(x ^ y)) / 8;
            if (x != y)
                break;
        }
        while (length < limit && a[length] == b[length])
            ++length;
        return length;
    }

    std::span<const std::uint8_t> block_;
    std::uint32_t run_end_ = 0;
    std::array<std::uint32_t, std::size_t{1} << hash_bits> latest_{};
    std::array<std::uint32_t, std::size_t{1} << pair_hash_bits> pairs_{};
    std::array<std::uint32_t, window_size> previous_;
};

void put_copy(bit_sink& out, const copy& c)
{
    const auto [bits, count] = copy_lengths[c.length];
    const auto low = low_distance_bits(c.length);
    const auto high = distance_code[(c.distance - 1) >> low];
    out.put(bits, count);
    out.put(
        high.bits | std::uint64_t{(c.distance - 1) & ((1U << low) - 1)} << high.length, high.length + low);
}

void put_literal(bit_sink& out, std::uint8_t byte) { out.put(std::uint64_t{byte} << 1, literal_cost); }

// Takes at each place the longest copy, unless a literal and the copy at the next place save clearly more.
void encode(std::span<const std::uint8_t> block, occurrence_finder& finder, bit_sink& out)
{
    constexpr std::uint32_t long_enough = 256;
    constexpr int worthwhile = literal_cost; // measured on text and line art
    const auto size = static_cast<std::uint32_t>(block.size());
    std::uint32_t at = 0;
    copy here = size > 0 ? finder.find(at, long_enough) : copy{};
    while (at < size && !out.full()) {
        copy next;
        const bool look_ahead = here.length < long_enough && at + 1 < size;
        if (look_ahead)
            next = finder.find(at + 1, long_enough);
        if (here.length == 0 || next.gain() > here.gain() + worthwhile) {
            put_literal(out, block[at]);
            ++at;
            here = next;
            continue;
        }
        put_copy(out, here);
        const auto end = at + here.length;
        for (at += look_ahead ? 2 : 1; at < end; ++at)
            finder.pass(at);
        here = at < size ? finder.find(at, long_enough) : copy{};
    }
}

} // namespace

std::optional<std::size_t> implode(
    std::span<const std::uint8_t> block, std::span<std::uint8_t> output) noexcept
{
    if (block.size() > max_block)
        return std::nullopt;
    void* work_area = vMemAlloc(sizeof(occurrence_finder));
    if (!work_area)
        return std::nullopt;
    auto* finder = new (work_area) occurrence_finder(block);

    bit_sink out(output);
    out.put(plain_literals, 8);
    out.put(max_dictionary_bits, 8);
    encode(block, *finder, out);
    out.put(copy_lengths[end_length].bits, copy_lengths[end_length].count);
    vMemFree(work_area);
    return out.finish();
}

} // namespace klv
