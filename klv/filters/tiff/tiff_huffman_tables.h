#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace klv {

/// A code of ITU-T Recommendation T.4 as it is printed there, and the pixels that it stands for. Codes of 64
/// and more are make-up codes, after which the colour stays.
struct run_code {
    std::string_view bits;
    std::int16_t run;
};

inline constexpr std::size_t codes_of_a_colour = 64 + 27;
extern const std::array<run_code, codes_of_a_colour> white_run_codes;
extern const std::array<run_code, codes_of_a_colour> black_run_codes;
/// Make-up codes of both colours.
extern const std::array<run_code, 13> long_run_codes;

/// What begins with some bits: the run and the length of its code; length 0 where no code begins so.
struct run_lookup {
    std::int16_t run = 0;
    std::uint8_t length = 0;
};

/// By the next bits, as many as the longest code has.
inline constexpr unsigned longest_white_code = 12;
inline constexpr unsigned longest_black_code = 13;
extern const std::array<run_lookup, 1U << longest_white_code> white_runs;
extern const std::array<run_lookup, 1U << longest_black_code> black_runs;

} // namespace klv
