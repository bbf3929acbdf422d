#pragma once

#include "klv/base/types.h"

#include <span>
#include <string_view>

/// String resources of modules, texts in the ANSI code page (Windows-1252).
namespace klv {

struct string_resource {
    UINT id;
    std::string_view text;
};

/// Gives a module strings, in any order, beside those it has; a number that it has gets the new text. The
/// texts are not copied and must outlive the module. \return false when memory is out
bool register_strings(HINSTANCE module, std::span<const string_resource> strings) noexcept;

/// Copies the string, NUL-terminated and cut to size characters, the NUL included.
/// \return the characters copied, without the NUL; 0 (and an empty text) when there is no such string
int LoadStringA(HINSTANCE module, UINT id, char* text, int size) noexcept;

} // namespace klv
