#include "klv/platform/system/string_resources.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace klv {

namespace {

struct module_strings {
    HINSTANCE module;
    std::span<const string_resource> strings;
};

struct string_table {
    std::mutex guard;
    std::vector<module_strings> modules;
};

string_table& table()
{
    static string_table all;
    return all;
}

std::span<const string_resource> strings_of(HINSTANCE module) noexcept
{
    const std::scoped_lock lock(table().guard);
    const auto& modules = table().modules;
    const auto owner = std::ranges::find(modules, module, &module_strings::module);
    return owner == modules.end() ? std::span<const string_resource>() : owner->strings;
}

std::string_view find_string(HINSTANCE module, UINT id) noexcept
{
    const auto strings = strings_of(module);
    const auto found = std::ranges::find(strings, id, &string_resource::id);
    return found == strings.end() ? std::string_view() : found->text;
}

} // namespace

bool register_strings(HINSTANCE module, std::span<const string_resource> strings) noexcept
{
    const std::scoped_lock lock(table().guard);
    auto& modules = table().modules;
    const auto known = std::ranges::find(modules, module, &module_strings::module);
    if (known != modules.end()) {
        known->strings = strings;
        return true;
    }
    try {
        modules.push_back({module, strings});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

int LoadStringA(HINSTANCE module, UINT id, char* text, int size) noexcept
{
    if (!text || size <= 0)
        return 0;
    const std::size_t length = find_string(module, id).copy(text, static_cast<std::size_t>(size) - 1);
    text[length] = '\0';
    return static_cast<int>(length);
}

} // namespace klv
