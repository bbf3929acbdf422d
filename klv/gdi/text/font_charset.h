#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace klv::gdi {

/// A character of a text: the bytes it was written with and what they mean.
struct text_character {
    char32_t unicode = 0;
    std::uint16_t code = 0; ///< the byte, or lead byte * 256 + trail byte
    std::uint8_t bytes = 1;
};

/// Reads text in the code page of a character set (CreateFontIndirectA's lfCharSet).
class code_page {
public:
    /// The code page of a character set, made once for each. Sets without one are read as ANSI (1252).
    static const code_page& of_charset(std::uint8_t charset);

    /// The first character of a text that is not empty.
    [[nodiscard]] text_character next(std::string_view text) const;
    /// The character of a single byte; 0 for a lead byte.
    [[nodiscard]] char32_t unicode(std::uint8_t byte) const { return single_[byte]; }
    /// A name in this code page, in UTF-8.
    [[nodiscard]] std::string utf8(std::string_view text) const;

private:
    explicit code_page(const char* name);
    [[nodiscard]] char32_t pair(std::uint8_t lead, std::uint8_t trail) const;

    const char* name_;
    std::array<char32_t, 256> single_{};
};

/// A face name taken apart: "Arial CYR" is the face Arial with the Russian character set.
struct face_and_charset {
    std::string face;
    std::uint8_t charset;
};

/// Strips the marks that face names carry for a character set ("Arial CE", "Arial (Hebrew)", "@MingLiU")
/// and completes a set that was left at ANSI or default by the mark, or by what the face is known for.
face_and_charset split_face_name(std::string_view name, std::uint8_t charset);

} // namespace klv::gdi

namespace klv {

/// A face name that alone tells the character set: "Arial CYR" for Arial with the Russian set. The name
/// itself for the ANSI and default sets, and for faces that are known to hold signs.
std::string face_name_with_charset(std::string_view face, std::uint8_t charset);

} // namespace klv
