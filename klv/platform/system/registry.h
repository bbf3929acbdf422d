#pragma once

#include "klv/base/types.h"

/// The registry: keys with named text values, in the file registry.ini of the settings directory. Key paths
/// are separated by backslashes; key and value names ignore letter case.
namespace klv {

inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr LONG ERROR_WRITE_FAULT = 29;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;

inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

extern HKEY__ registry_current_user;
extern HKEY__ registry_local_machine;
inline constexpr HKEY HKEY_CURRENT_USER = &registry_current_user;
inline constexpr HKEY HKEY_LOCAL_MACHINE = &registry_local_machine;

/// Every function answers ERROR_SUCCESS or another of the codes above.
/// Opens the key below parent, which must exist.
LONG RegOpenKeyA(HKEY parent, const char* path, HKEY* key) noexcept;
/// Opens the key below parent, or makes it; disposition (may be null) tells which. A key that was made is
/// kept once it has a value.
LONG RegCreateKeyA(HKEY parent, const char* path, HKEY* key, DWORD* disposition) noexcept;
LONG RegCloseKey(HKEY key) noexcept;
/// The i-th value in the order they were set. The sizes come in as the room, NUL included; name_size goes
/// out as the name's length without the NUL, value_size as the value's with it.
LONG RegEnumValueA(
    HKEY key, DWORD i, char* name, DWORD* name_size, DWORD* type, BYTE* value, DWORD* value_size) noexcept;
/// A null value only answers the size it needs.
LONG RegQueryValueExA(HKEY key, const char* name, DWORD* type, BYTE* value, DWORD* value_size) noexcept;
/// Sets a text of size bytes; a NUL ends it earlier. Line ends are not allowed in it.
LONG RegSetValueExA(HKEY key, const char* name, DWORD type, const BYTE* value, DWORD size) noexcept;

} // namespace klv
