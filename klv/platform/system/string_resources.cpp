#include "klv/platform/system/string_resources.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace klv {

namespace {

struct module_string {
    HINSTANCE module;
    string_resource string;
};

struct string_table {
    std::mutex guard;
    std::vector<module_string> strings;
};

string_table& table()
{
    static string_table all;
    return all;
}

// The caller holds the guard.
module_string* find_string(HINSTANCE module, UINT id) noexcept
{
    auto& strings = table().strings;
    const auto found = std::ranges::find_if(
        strings, [&](const module_string& each) { return each.module == module && each.string.id == id; });
    return found == strings.end() ? nullptr : &*found;
}

} // namespace

bool register_strings(HINSTANCE module, std::span<const string_resource> strings) noexcept
try {
    const std::scoped_lock lock(table().guard);
    for (const auto& string : strings) {
        if (auto* const known = find_string(module, string.id))
            known->string = string;
        else
            table().strings.push_back({module, string});
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

int LoadStringA(HINSTANCE module, UINT id, char* text, int size) noexcept
{
    if (!text || size <= 0)
        return 0;
    const std::scoped_lock lock(table().guard);
    const auto* const found = find_string(module, id);
    const std::size_t length = found ? found->string.text.copy(text, static_cast<std::size_t>(size) - 1) : 0;
    text[length] = '\0';
    return static_cast<int>(length);
}

} // namespace klv
