#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace klv {

/// Bytes that tell a format: at an offset from the start of a file or, when it is negative, from its end.
/// None for formats that are told otherwise.
struct format_signature {
    std::int32_t offset = 0;
    std::string_view bytes;
};

/// What a format is called and how its files are told. One stands with each filter, and nowhere else.
struct format_identity {
    std::string_view id; ///< the usual extension of its files, in upper case: "WMF"
    std::uint16_t description_resource = 0; ///< number of the string resource that the description becomes
    std::string_view description; ///< what users are shown, in Windows-1252
    std::array<std::string_view, 3> other_extensions{}; ///< in upper case, empty at the end
    /// For formats that their filter's CheckStream knows by their extension only.
    format_signature signature{};

    /// \param extension in upper case, without the dot
    [[nodiscard]] constexpr bool has_extension(std::string_view extension) const noexcept
    {
        return !extension.empty()
            && (extension == id || std::ranges::find(other_extensions, extension) != other_extensions.end());
    }
};

} // namespace klv
