#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The fixed code of the implode method of the PKWARE Data Compression Library, as published by
/// Ben Rudiak-Gould (comp.compression, 13 August 2001).
///
///     data:    literal mode (0 plain, 1 coded), dictionary bits (4, 5, 6), then bits, least first
///     literal: 0, then 8 plain bits or a literal code
///     copy:    1, length code, its extra bits, distance code, low bits of the distance
///     end:     the copy length 519
///
/// Code words travel with their first bit first and every bit inverted.
namespace klv::implode_code {

inline constexpr std::uint8_t plain_literals = 0;
inline constexpr std::uint8_t coded_literals = 1;
inline constexpr std::size_t header_size = 2;

inline constexpr unsigned min_dictionary_bits = 4; ///< 1024 bytes
inline constexpr unsigned max_dictionary_bits = 6; ///< 4096 bytes

inline constexpr std::size_t length_symbols = 16;
inline constexpr std::size_t distance_symbols = 64;
inline constexpr std::size_t literal_symbols = 256;
inline constexpr unsigned longest_length_code = 7;
inline constexpr unsigned longest_distance_code = 8;
inline constexpr unsigned longest_literal_code = 13;

inline constexpr std::uint32_t end_length = 519;
/// A copy of two bytes has this many low distance bits whatever the dictionary.
inline constexpr unsigned short_copy_distance_bits = 2;

inline constexpr std::array<std::uint8_t, length_symbols> length_code_bits{
    3, 2, 3, 3, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 7, 7};
inline constexpr std::array<std::uint16_t, length_symbols> length_base{
    2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 40, 72, 136, 264};
inline constexpr std::array<std::uint8_t, length_symbols> length_extra_bits{
    0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};

// Code lengths of the high six bits of a distance, sixteen values a line.
inline constexpr std::array<std::uint8_t, distance_symbols> distance_code_bits{
    2, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6, 6, 6, 6, // 00
    6, 6, 6, 6, 6, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, // 10
    7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, // 20
    8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, // 30
};

// Code lengths of the literals, sixteen bytes a line.
inline constexpr std::array<std::uint8_t, literal_symbols> literal_code_bits{
    11, 12, 12, 12, 12, 12, 12, 12, 12, 8, 7, 12, 12, 7, 12, 12, // 00
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 13, 12, 12, 12, 12, 12, // 10
    4, 10, 8, 12, 10, 12, 10, 8, 7, 7, 8, 9, 7, 6, 7, 8, // 20
    7, 6, 7, 7, 7, 7, 8, 7, 7, 8, 8, 12, 11, 7, 9, 11, // 30
    12, 6, 7, 6, 6, 5, 7, 8, 8, 6, 11, 9, 6, 7, 6, 6, // 40
    7, 11, 6, 6, 6, 7, 9, 8, 9, 9, 11, 8, 11, 9, 12, 8, // 50
    12, 5, 6, 6, 6, 5, 6, 6, 6, 5, 11, 7, 5, 6, 5, 5, // 60
    6, 10, 5, 5, 5, 5, 8, 7, 8, 8, 10, 11, 11, 12, 12, 12, // 70
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, // 80
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, // 90
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, // A0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, // B0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, // C0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, // D0
    13, 12, 13, 13, 13, 12, 13, 13, 13, 12, 13, 13, 13, 13, 12, 13, // E0
    13, 13, 12, 12, 12, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, // F0
};

/// The code word of one symbol as it stands in the data.
struct code_word {
    std::uint16_t bits;
    std::uint8_t length;
};

/// Code words in the order of their lengths, then of their symbols.
template <std::size_t Symbols>
constexpr std::array<code_word, Symbols> canonical_code(const std::array<std::uint8_t, Symbols>& lengths)
{
    std::array<code_word, Symbols> code{};
    unsigned next = 0;
    for (unsigned length = 1; length <= longest_literal_code; ++length, next <<= 1) {
        for (std::size_t symbol = 0; symbol < Symbols; ++symbol) {
            if (lengths[symbol] != length)
                continue;
            unsigned bits = 0;
            for (unsigned i = 0; i < length; ++i)
                bits |= (~(next >> (length - 1 - i)) & 1U) << i;
            code[symbol] = {static_cast<std::uint16_t>(bits), static_cast<std::uint8_t>(length)};
            ++next;
        }
    }
    return code;
}

/// For every value of the next `Bits` bits of the data, the symbol whose code word they begin with.
template <unsigned Bits, std::size_t Symbols>
constexpr std::array<std::uint8_t, std::size_t{1} << Bits> decoding_table(
    const std::array<code_word, Symbols>& code)
{
    std::array<std::uint8_t, std::size_t{1} << Bits> table{};
    for (std::size_t symbol = 0; symbol < Symbols; ++symbol)
        for (std::size_t at = code[symbol].bits; at < table.size();
             at += std::size_t{1} << code[symbol].length)
            table[at] = static_cast<std::uint8_t>(symbol);
    return table;
}

} // namespace klv::implode_code
