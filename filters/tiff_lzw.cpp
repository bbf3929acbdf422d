#include "filters/tiff_lzw.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace {

constexpr std::uint32_t clear_code = 256;
constexpr std::uint32_t end_code = 257;
constexpr std::uint32_t first_free_code = 258;
constexpr unsigned shortest_code = 9;
constexpr unsigned longest_code = 12;

/// Strings are copied in pieces of this size, whose excess the next string overwrites.
constexpr std::size_t piece = 8;

/// Before revision 6.0 some programs wrote the least significant bit of each code first. Their strips begin
/// with a clear code that reads so.
bool has_reversed_codes(tiff_cursor& in)
{
    const auto start = in.ahead(2);
    return start.size() >= 2 && start[0] == 0 && (start[1] & 1) != 0;
}

/// Copies a string that ends, except for its last byte, before the place where it goes.
inline void copy_string(const std::uint8_t* from, std::uint8_t* to, std::size_t length)
{
    for (std::size_t i = 0; i < length; i += piece)
        std::memcpy(to + i, from + i, piece);
}

} // namespace

tiff_lzw_decoder::tiff_lzw_decoder(std::uint32_t longest_strip)
    : text_(literals + longest_strip + piece)
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

oFILTER_STATUS tiff_lzw_decoder::ParseLZW(tiff_cursor& in, std::uint32_t size)
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
            codes_[next++] = {previous.start, static_cast<std::uint16_t>(previous.length + 1)};
            if (next == limit - 1) {
                if (++width > longest_code)
                    return oFILTER_BAD_DATA;
                limit *= 2;
            }
        }
        if (code >= next)
            return oFILTER_BAD_DATA;
        const LZWCode string = codes_[code];
        const std::uint32_t length = std::min<std::uint32_t>(string.length, end - at);
        copy_string(text + string.start, text + at, length);
        text[at + length - 1] = text[string.start + length - 1];
        previous = {static_cast<std::uint16_t>(at), string.length};
        at += length;
    }
    return oFILTER_OK;
}

} // namespace klv
