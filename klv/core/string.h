#pragma once

#include "klv/base/buffer.h"
#include "klv/core/object.h"
#include "klv/core/real.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <string_view>

namespace klv {

class vDEVICE;
class vRECT;
class vRESID;
class vSTREAM;
enum vTEXTALIGN : std::int32_t;

/// One character of the ANSI code page. Classification knows ASCII letters and digits only.
class vCHAR : public vOBJECT {
public:
    constexpr vCHAR() noexcept = default;
    /// The low 8 bits of code.
    template <std::integral T>
    constexpr vCHAR(T code) noexcept
        : symbol_(static_cast<std::int8_t>(static_cast<std::uint8_t>(code & 0xFF)))
    {
    }

    [[nodiscard]] constexpr char operator()() const noexcept { return static_cast<char>(symbol_); }
    /// Stores the character in out and returns it.
    constexpr char Symbol(char& out) const noexcept { return out = (*this)(); }
    /// Moves on by one code.
    constexpr vCHAR& Next() noexcept { return *this = vCHAR(symbol_ + 1); }

    /// Compared as signed 8-bit numbers.
    constexpr bool operator==(const vCHAR& other) const noexcept { return symbol_ == other.symbol_; }
    constexpr std::strong_ordering operator<=>(const vCHAR& other) const noexcept
    {
        return symbol_ <=> other.symbol_;
    }

    [[nodiscard]] constexpr int IsCharAlphaA() const noexcept { return IsCharUpperA() || IsCharLowerA(); }
    [[nodiscard]] constexpr int IsCharNumeric() const noexcept { return symbol_ >= '0' && symbol_ <= '9'; }
    [[nodiscard]] constexpr int IsCharUpperA() const noexcept { return symbol_ >= 'A' && symbol_ <= 'Z'; }
    [[nodiscard]] constexpr int IsCharLowerA() const noexcept { return symbol_ >= 'a' && symbol_ <= 'z'; }

private:
    std::int8_t symbol_ = 0;
};

/// Owned, NUL-terminated text in the ANSI code page, at most 65535 bytes (longer text is cut). Positions are
/// byte positions from 0. When memory is out the text becomes empty.
class vSTRING : public vOBJECT {
public:
    static constexpr std::size_t max_length = 65535;

    vSTRING() noexcept = default;
    /// A copy of text; null gives the empty string.
    vSTRING(const char* text) noexcept;
    explicit vSTRING(std::string_view text) noexcept;
    vSTRING(const vSTRING& other) noexcept;
    vSTRING(vSTRING&& other) noexcept = default;
    /// The number in decimal.
    vSTRING(const int& number) noexcept;
    /// The number with at most four significant digits, as printf's %.4g.
    vSTRING(const vREAL& number) noexcept;
    /// The string resource, at most 255 characters; empty when there is none.
    vSTRING(const vRESID& id) noexcept;

    vSTRING& operator=(const char* text) noexcept;
    vSTRING& operator=(const vSTRING& other) noexcept;
    vSTRING& operator=(vSTRING&& other) noexcept = default;
    vSTRING& operator=(const int& number) noexcept;
    vSTRING& operator=(const vREAL& number) noexcept;
    /// At most 127 characters.
    vSTRING& operator=(const vRESID& id) noexcept;
    vSTRING& operator=(const vCHAR& c) noexcept;

    /// Replaces the text, which may be a part of this string's own.
    /// \return false when memory is out; the text is then empty
    bool Assign(std::string_view text) noexcept;
    /// Formats as printf does, at most 1023 characters; a null format empties the string.
    vSTRING& FormatString(const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));

    /// The bytes, never null.
    [[nodiscard]] const char* operator()() const noexcept { return text_.empty() ? "" : text_.data(); }
    [[nodiscard]] std::string_view View() const noexcept { return {(*this)(), Length()}; }
    [[nodiscard]] std::uint16_t Length() const noexcept
    {
        return static_cast<std::uint16_t>(text_.empty() ? 0 : text_.size() - 1);
    }
    [[nodiscard]] int Null() const noexcept { return Length() == 0; }

    /// The character at i; NUL beyond the end.
    [[nodiscard]] vCHAR operator[](std::uint16_t i) const noexcept { return Char(i); }
    [[nodiscard]] vCHAR Char(std::uint16_t i) const noexcept { return i < Length() ? text_[i] : '\0'; }
    /// Replaces the character at i when there is one.
    void Char(std::uint16_t i, const vCHAR& c) noexcept;

    [[nodiscard]] std::uint16_t Count(const vCHAR& c) const noexcept;
    [[nodiscard]] std::uint16_t NoOfOccurance(const vCHAR& c) const noexcept { return Count(c); }
    /// At how many positions s begins; occurrences may overlap.
    [[nodiscard]] std::uint16_t NoOfOccurance(const vSTRING& s) const noexcept;
    /// The leading decimal integer, limited to 32 bits; 0 when there is none.
    [[nodiscard]] int Int() const noexcept;
    /// The leading decimal number; 0 when there is none.
    [[nodiscard]] vREAL Real() const noexcept;
    /// \return 1
    int Scan(const char* format) const noexcept;

    /// Ordered as a dictionary does: signs, digits, letters; an accent and then case decide between words
    /// that are otherwise alike (lower case first).
    bool operator==(const vSTRING& other) const noexcept;
    std::strong_ordering operator<=>(const vSTRING& other) const noexcept;

    [[nodiscard]] vSTRING operator+(const vSTRING& tail) const noexcept;
    [[nodiscard]] vSTRING operator+(const vCHAR& tail) const noexcept;
    /// From the first occurrence of s to the end; empty when s does not occur.
    [[nodiscard]] vSTRING GetSubString(const vSTRING& s) const noexcept;
    /// The characters from index `from` to index `to`, both included.
    [[nodiscard]] vSTRING GetSubString(std::uint16_t from, std::uint16_t to) const noexcept;
    /// Everything before the n-th c, n from 1; empty when there are fewer.
    [[nodiscard]] vSTRING GetPreDelimitedSubString(const vCHAR& c, std::uint16_t n) const noexcept;
    /// The field after the n-th c (n = 0: the first field), at most 1023 characters; empty when there are
    /// fewer.
    [[nodiscard]] vSTRING GetDelimitedSubString(const vCHAR& c, std::uint16_t n) const noexcept;
    /// The n-th word from 0, words standing between runs of spaces; empty beyond the last.
    [[nodiscard]] vSTRING Word(std::uint16_t n) const noexcept;

    /// Keeps the text before the last c and returns the text after it. Without a c nothing changes and a
    /// copy is returned.
    vSTRING RemoveFromEnd(const vCHAR& c) noexcept;
    void ConvertUpper() noexcept;
    void ConvertLower() noexcept;
    /// The first lower-case letter becomes upper case, every later upper-case letter lower case.
    void Capitalise() noexcept;
    /// Removes every c.
    void StripLTChar(const vCHAR& c) noexcept;
    /// Removes the runs of c at the start and at the end.
    vSTRING& RemoveLeadAndTrailing(const vCHAR& c) noexcept;

    void Draw(vDEVICE& device, const vRECT& box, vTEXTALIGN align) const;

    /// Loads and stores a 16-bit length and the bytes as one block.
    vSTREAM& operator<<(vSTREAM& from) noexcept;
    vSTREAM& operator>>(vSTREAM& to) const noexcept;

private:
    [[nodiscard]] vSTRING part(std::size_t from, std::size_t count = std::string_view::npos) const noexcept;
    void load(const vRESID& id, int max_characters) noexcept;

    // Empty, or the text and its NUL.
    vBUFFER<char> text_;
};

} // namespace klv
