#include "klv/platform/system/profile.h"

#include "klv/platform/system/ini_file.h"
#include "klv/platform/system/settings.h"

#include <mutex>
#include <new>
#include <string>
#include <string_view>

namespace klv {

namespace {

// Held from reading the file to writing it.
constinit std::mutex file_guard;

ini_file profile() { return ini_file(settings_file("profile.ini")); }

DWORD copy_text(std::string_view text, char* out, DWORD size) noexcept
{
    if (!out || size == 0)
        return 0;
    const std::size_t length = text.copy(out, size - std::size_t{1});
    out[length] = '\0';
    return static_cast<DWORD>(length);
}

} // namespace

DWORD GetProfileStringA(
    const char* section, const char* key, const char* fallback, char* value, DWORD size) noexcept
{
    const std::string_view otherwise = fallback ? fallback : "";
    if (!section || !key)
        return copy_text(otherwise, value, size);
    try {
        const ini_file file = profile();
        const std::string* const found = file.find(section, key);
        return copy_text(found ? *found : otherwise, value, size);
    } catch (const std::bad_alloc&) {
        return copy_text(otherwise, value, size);
    }
}

BOOL WriteProfileStringA(const char* section, const char* key, const char* value) noexcept
{
    if (!section || !key)
        return FALSE;
    try {
        const std::scoped_lock lock(file_guard);
        ini_file file = profile();
        if (value)
            file.set(section, key, value);
        else
            file.remove(section, key);
        return file.save();
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

} // namespace klv
