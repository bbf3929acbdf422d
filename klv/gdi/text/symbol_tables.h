#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace klv::gdi {

/// An encoding of signs that a symbol face uses instead of a character set.
enum class symbol_set {
    symbol, ///< Greek letters and mathematics
    dingbats, ///< Zapf Dingbats
    wingdings,
    wingdings_2, ///< its commoner signs only
    wingdings_3, ///< likewise
    webdings,
    mt_extra, ///< the signs that equation editors add to Symbol
};

/// The encoding of a face by its name (any letter case); nothing for faces of text.
std::optional<symbol_set> symbol_set_of_face(std::string_view face) noexcept;

/// The sign of a byte in Unicode, or the nearest that common fonts have. 0 where the set has none.
char32_t symbol_to_unicode(symbol_set set, std::uint8_t byte) noexcept;

/// A sign of like look that common fonts have, for one that only few have. 0 where there is none.
char32_t common_sign_like(char32_t sign) noexcept;

} // namespace klv::gdi
