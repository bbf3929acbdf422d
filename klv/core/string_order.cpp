#include "klv/core/string.h"

#include <algorithm>
#include <array>

namespace klv {

namespace {

// One character's place in a dictionary. The letters of the ANSI code page (Windows-1252) stand with
// the plain letters that they are written for.
struct sort_keys {
    std::uint16_t letter; ///< signs, then digits, then letters without accent and case
    std::uint8_t accented; ///< the lower-case character
    bool upper;
};

// Plain letters for the codes 0xC0 to 0xDF; the codes 0xE0 to 0xFF are their lower case. A sign has '*'.
constexpr char plain_letters[] = "aaaaaaaceeeeiiiidnooooo*ouuuuyts";

constexpr int first_letter_code = 0xC0;
constexpr int first_lower_code = 0xE0;
constexpr int sharp_s = 0xDF;
constexpr int y_diaeresis = 0xFF;

constexpr bool is_sign(int code) { return code == 0xD7 || code == 0xF7; }

constexpr sort_keys letter_keys(int lower_code, char plain, bool upper)
{
    constexpr int after_signs_and_digits = 0x200;
    return {static_cast<std::uint16_t>(after_signs_and_digits + plain), static_cast<std::uint8_t>(lower_code),
        upper};
}

constexpr sort_keys keys_of(int code)
{
    constexpr int after_signs = 0x100;
    if (code >= 'A' && code <= 'Z')
        return letter_keys(code - 'A' + 'a', static_cast<char>(code - 'A' + 'a'), true);
    if (code >= 'a' && code <= 'z')
        return letter_keys(code, static_cast<char>(code), false);
    switch (code) {
    case 0x8A:
    case 0x9A:
        return letter_keys(0x9A, 's', code == 0x8A);
    case 0x8C:
    case 0x9C:
        return letter_keys(0x9C, 'o', code == 0x8C);
    case 0x8E:
    case 0x9E:
        return letter_keys(0x9E, 'z', code == 0x8E);
    case 0x9F:
    case y_diaeresis:
        return letter_keys(y_diaeresis, 'y', code == 0x9F);
    default:
        break;
    }
    if (code == sharp_s)
        return letter_keys(sharp_s, 's', false);
    if (code >= first_letter_code && !is_sign(code)) {
        const bool upper = code < first_lower_code;
        const int lower_code = upper ? code - first_letter_code + first_lower_code : code;
        return letter_keys(lower_code, plain_letters[lower_code - first_lower_code], upper);
    }
    const bool digit = code >= '0' && code <= '9';
    return {static_cast<std::uint16_t>(digit ? after_signs + code : code), static_cast<std::uint8_t>(code),
        false};
}

constexpr auto order_table = [] {
    std::array<sort_keys, 256> table = {};
    for (int code = 0; code < 256; ++code)
        table[static_cast<std::size_t>(code)] = keys_of(code);
    return table;
}();

const sort_keys& keys(char c) noexcept { return order_table[static_cast<std::uint8_t>(c)]; }

template <class Key> std::strong_ordering compare_by(std::string_view a, std::string_view b, Key key) noexcept
{
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(),
        [key](char x, char y) -> std::strong_ordering { return keys(x).*key <=> keys(y).*key; });
}

} // namespace

bool vSTRING::operator==(const vSTRING& other) const noexcept { return View() == other.View(); }

std::strong_ordering vSTRING::operator<=>(const vSTRING& other) const noexcept
{
    const std::string_view a = View();
    const std::string_view b = other.View();
    if (const auto order = compare_by(a, b, &sort_keys::letter); order != 0)
        return order;
    if (const auto order = compare_by(a, b, &sort_keys::accented); order != 0)
        return order;
    return compare_by(a, b, &sort_keys::upper);
}

} // namespace klv
