#include "klv/filters/tiff/tiff_huffman.h"

#include "klv/filters/tiff/tiff_huffman_tables.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::int16_t first_make_up_run = 64;

void set_bits(std::span<std::uint8_t> row, std::uint32_t from, std::uint32_t count)
{
    if (count == 0)
        return;
    const std::uint32_t first = from / 8, last = (from + count - 1) / 8;
    const auto first_mask = static_cast<std::uint8_t>(0xFFU >> from % 8);
    const auto last_mask = static_cast<std::uint8_t>(0xFF00U >> ((from + count - 1) % 8 + 1) & 0xFFU);
    if (first == last) {
        row[first] |= first_mask & last_mask;
        return;
    }
    row[first] |= first_mask;
    std::fill(row.begin() + first + 1, row.begin() + last, std::uint8_t{0xFF});
    row[last] |= last_mask;
}

} // namespace

namespace {

/// Paints the runs of a row, white and black by turns.
oFILTER_STATUS read_runs(tiff_bits& bits, std::uint32_t width, std::span<std::uint8_t> row)
{
    bool black = false;
    for (std::uint32_t x = 0; x < width;) {
        std::uint32_t run = 0;
        run_lookup code;
        do {
            code = black ? black_runs[bits.peek(longest_black_code)]
                         : white_runs[bits.peek(longest_white_code)];
            bits.drop(code.length);
            if (!bits.ok())
                return oFILTER_READ_ERROR;
            run += static_cast<std::uint32_t>(code.run);
            if (code.length == 0 || run > width - x)
                return oFILTER_BAD_DATA;
        } while (code.run >= first_make_up_run);
        if (black)
            set_bits(row, x, run);
        x += run;
        black = !black;
    }
    bits.align();
    return oFILTER_OK;
}

} // namespace

oFILTER_STATUS read_huffman_row(tiff_bits& in, std::uint32_t width, std::span<std::uint8_t> row)
{
    std::ranges::fill(row, std::uint8_t{0});
    tiff_bits bits = in;
    const oFILTER_STATUS status = read_runs(bits, width, row);
    in = bits; // after an error too: the cursor may have gone on
    return status;
}

} // namespace klv
