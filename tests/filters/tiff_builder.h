#pragma once

#include "klv/base/byte_order.h"
#include "klv/base/byte_writer.h"
#include "klv/filters/tiff/tiff_huffman_tables.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace klv::test {

using tiff_bytes = std::vector<std::uint8_t>;

/// Collects bits, the first in the highest place.
class bit_packer {
public:
    void put(std::uint32_t value, unsigned bits)
    {
        for (unsigned i = bits; i-- > 0;)
            put_bit((value >> i & 1) != 0);
    }
    void put(std::string_view code)
    {
        for (const char bit : code)
            put_bit(bit == '1');
    }
    void align() { used_ = 0; }
    tiff_bytes bytes;

private:
    void put_bit(bool one)
    {
        if (used_ == 0)
            bytes.push_back(0);
        if (one)
            bytes.back() = static_cast<std::uint8_t>(bytes.back() | 0x80 >> used_);
        used_ = (used_ + 1) % 8;
    }
    unsigned used_ = 0;
};

/// Runs of two or more as runs, everything else as literals.
inline void pack_bits(std::span<const std::uint8_t> row, tiff_bytes& out)
{
    const auto run_at = [&](std::size_t at) {
        std::size_t end = at + 1;
        while (end < row.size() && end - at < 128 && row[end] == row[at])
            ++end;
        return end - at;
    };
    for (std::size_t at = 0; at < row.size();) {
        if (const std::size_t run = run_at(at); run > 1) {
            out.push_back(static_cast<std::uint8_t>(257 - run));
            out.push_back(row[at]);
            at += run;
            continue;
        }
        std::size_t end = at;
        while (end < row.size() && end - at < 128 && run_at(end) == 1)
            ++end;
        out.push_back(static_cast<std::uint8_t>(end - at - 1));
        out.insert(out.end(), row.begin() + static_cast<std::ptrdiff_t>(at),
            row.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
}

/// The encoder of TIFF 6.0, section 13, word for word.
inline tiff_bytes lzw_encode(std::span<const std::uint8_t> strip)
{
    constexpr std::uint32_t clear = 256, end = 257, last_entry = 4094;
    bit_packer out;
    std::map<std::pair<std::uint32_t, std::uint8_t>, std::uint32_t> table;
    std::uint32_t next = 258;
    const auto width = [&] { return next < 512 ? 9U : next < 1024 ? 10U : next < 2048 ? 11U : 12U; };
    out.put(clear, 9);
    std::uint32_t string = end;
    for (const std::uint8_t byte : strip) {
        if (string == end) {
            string = byte;
            continue;
        }
        if (const auto longer = table.find({string, byte}); longer != table.end()) {
            string = longer->second;
            continue;
        }
        out.put(string, width());
        table[{string, byte}] = next++;
        string = byte;
        if (next > last_entry) {
            out.put(clear, 12);
            table.clear();
            next = 258;
        }
    }
    if (string != end) {
        out.put(string, width());
        ++next;
    }
    out.put(end, width());
    return out.bytes;
}

/// One row of bits, 1 being black.
inline void huffman_encode(const std::vector<bool>& row, bit_packer& out)
{
    bool black = false;
    for (std::size_t at = 0; at < row.size(); black = !black) {
        const auto begin = row.begin() + static_cast<std::ptrdiff_t>(at);
        auto run = static_cast<std::int16_t>(std::find(begin, row.end(), !black) - begin);
        at += static_cast<std::size_t>(run);
        const auto& codes = black ? black_run_codes : white_run_codes;
        const auto make_up = [&](const auto& longer_codes) {
            for (auto code = longer_codes.rbegin(); code != longer_codes.rend(); ++code)
                for (; code->run >= 64 && run >= code->run; run = static_cast<std::int16_t>(run - code->run))
                    out.put(code->bits);
        };
        make_up(long_run_codes);
        make_up(codes);
        out.put(codes[static_cast<std::size_t>(run)].bits);
    }
    out.align();
}

/// A TIFF file of one image.
struct tiff_file {
    using row = std::vector<std::uint32_t>; ///< samples, pixel by pixel

    bool big_endian = false;
    std::uint32_t photometric = 1;
    std::vector<std::uint32_t> bits{8}; ///< of the samples of a pixel
    std::vector<row> rows{};
    std::uint32_t compression = 1;
    std::uint32_t predictor = 1;
    std::uint32_t planar = 1;
    std::uint32_t rows_per_strip = 0; ///< 0: one strip, and no tag that says so
    std::uint32_t extra_samples = 0;
    std::vector<std::uint32_t> colour_map{}; ///< 16-bit values
    std::map<std::uint32_t, std::vector<std::uint32_t>> more_tags{}; ///< of 32-bit values; replace ours
    std::vector<std::uint32_t> dropped_tags{};

    [[nodiscard]] std::uint32_t width() const
    {
        return static_cast<std::uint32_t>(rows.at(0).size() / bits.size());
    }

    [[nodiscard]] tiff_bytes bytes() const
    {
        byte_writer out;
        out.text(big_endian ? "MM" : "II");
        u16(out, 42);
        u32(out, 0);
        std::vector<std::uint32_t> offsets, counts;
        for (const auto& strip : strips()) {
            offsets.push_back(static_cast<std::uint32_t>(out.size()));
            counts.push_back(static_cast<std::uint32_t>(strip.size()));
            out.bytes(strip);
        }
        out.align(2);
        write_directory(out, offsets, counts);
        return {out.span().begin(), out.span().end()};
    }

private:
    struct field {
        std::uint16_t type;
        std::vector<std::uint32_t> values;
    };
    static constexpr std::uint16_t type_short = 3, type_long = 4;

    void u16(byte_writer& out, std::uint32_t value) const
    {
        const auto narrow = static_cast<std::uint16_t>(value);
        big_endian ? out.u16be(narrow) : out.u16le(narrow);
    }
    void u32(byte_writer& out, std::uint32_t value) const
    {
        big_endian ? out.u32be(value) : out.u32le(value);
    }

    /// The samples of a row that lie together, packed; plane -1: all of them.
    [[nodiscard]] tiff_bytes packed_row(const row& samples, int plane) const
    {
        bit_packer out;
        std::vector<std::uint32_t> left(bits.size(), 0);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::size_t sample = i % bits.size();
            if (plane >= 0 && sample != static_cast<std::size_t>(plane))
                continue;
            const std::uint32_t stored = predictor == 2 ? samples[i] - left[sample] : samples[i];
            left[sample] = samples[i];
            out.put(stored, bits[sample]);
        }
        return out.bytes;
    }

    [[nodiscard]] tiff_bytes strip(std::size_t first, std::size_t end, int plane) const
    {
        tiff_bytes data;
        bit_packer huffman;
        for (std::size_t y = first; y < end; ++y) {
            const auto packed = packed_row(rows[y], plane);
            if (compression == 32773)
                pack_bits(packed, data);
            else if (compression == 2) {
                std::vector<bool> black;
                for (const std::uint32_t sample : rows[y])
                    black.push_back(sample != photometric);
                huffman_encode(black, huffman);
            } else
                data.insert(data.end(), packed.begin(), packed.end());
        }
        return compression == 5 ? lzw_encode(data) : compression == 2 ? huffman.bytes : data;
    }

    [[nodiscard]] std::vector<tiff_bytes> strips() const
    {
        std::vector<tiff_bytes> all;
        const std::size_t step = rows_per_strip ? rows_per_strip : rows.size();
        for (int plane = planar == 2 ? 0 : -1; plane < (planar == 2 ? static_cast<int>(bits.size()) : 0);
             ++plane)
            for (std::size_t y = 0; y < rows.size(); y += step)
                all.push_back(strip(y, std::min(y + step, rows.size()), plane));
        return all;
    }

    void write_directory(byte_writer& out, const std::vector<std::uint32_t>& offsets,
        const std::vector<std::uint32_t>& counts) const
    {
        std::map<std::uint32_t, field> fields{
            {256, {type_long, {width()}}},
            {257, {type_short, {static_cast<std::uint32_t>(rows.size())}}},
            {258, {type_short, bits}},
            {259, {type_short, {compression}}},
            {262, {type_short, {photometric}}},
            {273, {type_long, offsets}},
            {277, {type_short, {static_cast<std::uint32_t>(bits.size())}}},
            {279, {type_long, counts}},
            {284, {type_short, {planar}}},
            {317, {type_short, {predictor}}},
        };
        if (rows_per_strip != 0)
            fields[278] = {type_short, {rows_per_strip}};
        if (!colour_map.empty())
            fields[320] = {type_short, colour_map};
        if (extra_samples != 0)
            fields[338] = {type_short, std::vector<std::uint32_t>(extra_samples, 0)};
        for (const auto& [tag, values] : more_tags)
            fields[tag] = {type_long, values};
        for (const std::uint32_t tag : dropped_tags)
            fields.erase(tag);

        const auto directory = static_cast<std::uint32_t>(out.size());
        auto* const offset_field = out.span().data() + 4;
        big_endian ? store_be<4>(offset_field, directory) : store_le<4>(offset_field, directory);
        byte_writer values;
        const std::size_t values_at = directory + 2 + 12 * fields.size() + 4;
        u16(out, static_cast<std::uint32_t>(fields.size()));
        for (const auto& [tag, contents] : fields) {
            u16(out, tag);
            u16(out, contents.type);
            u32(out, static_cast<std::uint32_t>(contents.values.size()));
            const std::size_t size = contents.values.size() * (contents.type == type_short ? 2 : 4);
            if (size > 4)
                u32(out, static_cast<std::uint32_t>(values_at + values.size()));
            byte_writer& to = size > 4 ? values : out;
            for (const std::uint32_t value : contents.values)
                contents.type == type_short ? u16(to, value) : u32(to, value);
            if (size < 4)
                to.fill(4 - size);
            values.align(2);
        }
        u32(out, 0);
        out.bytes(values.span());
    }
};

} // namespace klv::test
