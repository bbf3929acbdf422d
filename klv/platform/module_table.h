#pragma once

#include "klv/base/types.h"

#include <span>

/// Optional libraries by name. A name ("LTKRN80N.DLL", any letter case, a missing extension counts as .dll)
/// stands for symbols registered in this process, for a shared object beside the library, or for nothing.
namespace klv {

struct module_symbol {
    const char* name;
    FARPROC function;
};

/// \return the module, to be freed once for each load; null when the name stands for nothing
[[nodiscard]] HINSTANCE LoadLibraryA(const char* name) noexcept;
/// \return the function of that exact name, or null
[[nodiscard]] FARPROC GetProcAddress(HINSTANCE module, const char* name) noexcept;
/// \return TRUE when the module was loaded
BOOL FreeLibrary(HINSTANCE module) noexcept;
/// The module that is loaded under this name, without counting; null asks for the program.
[[nodiscard]] HINSTANCE GetModuleHandleA(const char* name) noexcept;
/// Writes the module's file name, NUL-terminated and cut to size; null asks for the program.
/// \return the characters written, without the NUL
DWORD GetModuleFileNameA(HINSTANCE module, char* name, DWORD size) noexcept;

/// The module that this code belongs to: the library, or the program that it is linked into.
[[nodiscard]] HINSTANCE library_instance() noexcept;

/// Lets name stand for symbols of this process. The symbols are not copied and must outlive the entry.
/// \return false when memory is out
bool RegisterModule(const char* name, std::span<const module_symbol> symbols) noexcept;
/// Lets name stand for a shared object: a path, or a file name beside the library.
/// \return false when memory is out
bool MapModule(const char* name, const char* file) noexcept;
/// Ends what RegisterModule or MapModule began; modules in use stay valid until they are freed.
void UnregisterModule(const char* name) noexcept;

} // namespace klv
