#include "klv/platform/system/registry.h"

#include "klv/platform/system/ini_file.h"
#include "klv/platform/system/settings.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

HKEY__ registry_current_user;
HKEY__ registry_local_machine;

namespace {

// An open key is an entry of this table; a key's section in the file is its path.
struct open_key {
    std::unique_ptr<HKEY__> handle;
    std::string path;
};

// Of the open keys and of the file, from reading it to writing it.
constinit std::mutex guard;

std::vector<open_key>& open_keys()
{
    static std::vector<open_key> keys;
    return keys;
}

ini_file registry() { return ini_file(settings_file("registry.ini")); }

// Empty for a handle that is no key.
std::string path_of(HKEY key)
{
    if (key == HKEY_CURRENT_USER)
        return "HKEY_CURRENT_USER";
    if (key == HKEY_LOCAL_MACHINE)
        return "HKEY_LOCAL_MACHINE";
    for (const open_key& known : open_keys())
        if (known.handle.get() == key)
            return known.path;
    return {};
}

LONG open(HKEY parent, const char* path, bool create, HKEY* key, DWORD* disposition)
{
    if (!key || !path)
        return ERROR_INVALID_PARAMETER;
    std::string full = path_of(parent);
    if (full.empty())
        return ERROR_INVALID_HANDLE;
    if (*path)
        full = full + '\\' + path;
    const bool exists = registry().has_section(full);
    if (!exists && !create)
        return ERROR_FILE_NOT_FOUND;
    open_keys().push_back({std::make_unique<HKEY__>(), full});
    *key = open_keys().back().handle.get();
    if (disposition)
        *disposition = exists ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    return ERROR_SUCCESS;
}

// Copies a value with its NUL; size comes in as the room and goes out as what is needed.
LONG copy_value(const std::string& text, DWORD* type, BYTE* value, DWORD* size) noexcept
{
    if (type)
        *type = REG_SZ;
    if (!size)
        return value ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
    const auto needed = static_cast<DWORD>(text.size() + 1);
    const bool fits = *size >= needed;
    *size = needed;
    if (!value)
        return ERROR_SUCCESS;
    if (!fits)
        return ERROR_MORE_DATA;
    std::memcpy(value, text.c_str(), needed);
    return ERROR_SUCCESS;
}

template <class Work> LONG guarded(Work work) noexcept
{
    try {
        const std::scoped_lock lock(guard);
        return work();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

} // namespace

LONG RegOpenKeyA(HKEY parent, const char* path, HKEY* key) noexcept
{
    return guarded([&] { return open(parent, path, false, key, nullptr); });
}

LONG RegCreateKeyA(HKEY parent, const char* path, HKEY* key, DWORD* disposition) noexcept
{
    return guarded([&] { return open(parent, path, true, key, disposition); });
}

LONG RegCloseKey(HKEY key) noexcept
{
    const std::scoped_lock lock(guard);
    const bool closed
        = std::erase_if(open_keys(), [key](const open_key& known) { return known.handle.get() == key; }) != 0;
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG RegEnumValueA(
    HKEY key, DWORD i, char* name, DWORD* name_size, DWORD* type, BYTE* value, DWORD* value_size) noexcept
{
    return guarded([&] {
        if (!name || !name_size)
            return ERROR_INVALID_PARAMETER;
        const std::string path = path_of(key);
        if (path.empty())
            return ERROR_INVALID_HANDLE;
        const auto entries = registry().entries(path);
        if (i >= entries.size())
            return ERROR_NO_MORE_ITEMS;
        const auto& [found_name, found_value] = entries[i];
        if (*name_size <= found_name.size())
            return ERROR_MORE_DATA;
        std::memcpy(name, found_name.c_str(), found_name.size() + 1);
        *name_size = static_cast<DWORD>(found_name.size());
        return copy_value(found_value, type, value, value_size);
    });
}

LONG RegQueryValueExA(HKEY key, const char* name, DWORD* type, BYTE* value, DWORD* value_size) noexcept
{
    return guarded([&] {
        const std::string path = path_of(key);
        if (path.empty())
            return ERROR_INVALID_HANDLE;
        const ini_file file = registry();
        const std::string* const found = file.find(path, name ? name : "");
        return found ? copy_value(*found, type, value, value_size) : ERROR_FILE_NOT_FOUND;
    });
}

LONG RegSetValueExA(HKEY key, const char* name, DWORD type, const BYTE* value, DWORD size) noexcept
{
    return guarded([&] {
        if (!name || !*name || type != REG_SZ || (!value && size > 0))
            return ERROR_INVALID_PARAMETER;
        const std::string path = path_of(key);
        if (path.empty())
            return ERROR_INVALID_HANDLE;
        std::string_view text(reinterpret_cast<const char*>(value), size);
        text = text.substr(0, text.find('\0'));
        if (text.find_first_of("\r\n") != std::string_view::npos)
            return ERROR_INVALID_PARAMETER;
        ini_file file = registry();
        file.set(path, name, text);
        return file.save() ? ERROR_SUCCESS : ERROR_WRITE_FAULT;
    });
}

} // namespace klv
