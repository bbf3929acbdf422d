#pragma once

#include "klv/base/types.h"

/// The per-user profile: "[Section]" lines with "Key=Value" lines below, in the file profile.ini of the
/// settings directory. Section and key names ignore letter case.
namespace klv {

/// Copies the value, or fallback when there is none, NUL-terminated and cut to size. Blanks and one pair of
/// quotation marks around a value are not part of it.
/// \return the characters copied, without the NUL
DWORD GetProfileStringA(
    const char* section, const char* key, const char* fallback, char* value, DWORD size) noexcept;
/// Sets a value; a null value removes the key. \return TRUE when the profile was written
BOOL WriteProfileStringA(const char* section, const char* key, const char* value) noexcept;

} // namespace klv
