#pragma once

#include "klv/platform/system/string_resources.h"

#include <span>

namespace klv {

/// Numbers of the library's own message texts.
namespace library_string {
inline constexpr UINT fatal_error = 31013;
inline constexpr UINT error = 31014;
inline constexpr UINT warning = 31015;
inline constexpr UINT debugging = 31016;
inline constexpr UINT out_of_memory = 31017;
inline constexpr UINT nearly_out_of_memory = 31018;
} // namespace library_string

/// The message texts of the library. The names of formats are string resources too, from 33000 on; each
/// filter brings its own.
[[nodiscard]] std::span<const string_resource> library_strings() noexcept;

} // namespace klv
