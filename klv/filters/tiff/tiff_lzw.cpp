#include "klv/filters/tiff/tiff_lzw.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace {

constexpr std::uint32_t clear_code = 256;
constexpr std::uint32_t end_code = 257;
constexpr std::uint32_t first_free_code = 258;
constexpr unsigned shortest_code = 9;
constexpr unsigned longest_code = 12;

/// Strings up to this long are copied whole pieces at a time; the next string overwrites the excess.
constexpr std::size_t piece = 8;
constexpr std::size_t short_string = 2 * piece;

/// Before revision 6.0 some programs wrote the least significant bit of each code first. Their strips begin
/// with a clear code that reads so.
bool has_reversed_codes(tiff_cursor& in)
{
    const auto start = in.ahead(2);
    return start.size() >= 2 && start[0] == 0 && (start[1] & 1) != 0;
}

/// Copies a string that ends before the place where it goes.
inline void copy_string(const std::uint8_t* from, std::uint8_t* to, std::size_t length)
{
    if (length > short_string) {
        std::memcpy(to, from, length);
        return;
    }
    std::memcpy(to, from, piece);
    if (length > piece)
        std::memcpy(to + piece, from + piece, piece);
}

} // namespace

tiff_lzw_decoder::tiff_lzw_decoder(std::uint32_t longest_strip)
    : text_(literals + longest_strip + short_string)
{
    for (std::uint32_t i = 0; i < literals; ++i) {
        text_[i] = static_cast<std::uint8_t>(i);
        codes_[i] = {static_cast<std::uint16_t>(i), 1};
    }
}

std::span<std::uint8_t> tiff_lzw_decoder::strip() noexcept
{
    return std::span(text_).subspan(literals, size_);
}

oFILTER_STATUS tiff_lzw_decoder::decode_strip(tiff_cursor& in, std::uint32_t size)
{
    size_ = size;
    std::uint32_t at = literals;
    const oFILTER_STATUS status = has_reversed_codes(in) ? oFILTER_BAD_DATA : decode(in, literals + size, at);
    decoded_ = at - literals;
    std::fill(text_.begin() + at, text_.begin() + literals + size, std::uint8_t{0});
    return status;
}

oFILTER_STATUS tiff_lzw_decoder::decode(tiff_cursor& in, std::uint32_t end, std::uint32_t& at)
{
    std::uint8_t* const text = text_.data();
    LZWCode* const codes = codes_.data();
    tiff_bits bits(in);
    LZWCode previous{0, 0};
    std::uint32_t next = first_free_code;
    unsigned width = shortest_code;
    std::uint32_t limit = 1U << shortest_code;
    while (at < end) {
        const std::uint32_t code = bits.take(width);
        if (!bits.ok())
            return oFILTER_READ_ERROR;
        if (code == clear_code) {
            previous = {0, 0};
            next = first_free_code;
            width = shortest_code;
            limit = 1U << shortest_code;
            continue;
        }
        if (code == end_code)
            return oFILTER_BAD_DATA;
        // The new string is the previous one and the first byte of this one, which follows it in the text.
        if (previous.length != 0) {
            codes[next++] = {previous.start, static_cast<std::uint16_t>(previous.length + 1)};
            if (next == limit - 1) {
                if (++width > longest_code)
                    return oFILTER_BAD_DATA;
                limit *= 2;
            }
        }
        if (code >= next)
            return oFILTER_BAD_DATA;
        const LZWCode string = codes[code];
        const std::uint32_t length = std::min<std::uint32_t>(string.length, end - at);
        if (code == next - 1) { // its last byte is its first, which is still to be written
            copy_string(text + string.start, text + at, length - 1U);
            text[at + length - 1] = text[string.start];
        } else {
            copy_string(text + string.start, text + at, length);
        }
        previous = {static_cast<std::uint16_t>(at), string.length};
        at += length;
    }
    bits.move_cursor();
    return oFILTER_OK;
}

} // namespace klv
