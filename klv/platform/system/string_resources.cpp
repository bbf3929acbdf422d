#include "klv/platform/system/string_resources.h"

#include <algorithm>
#include <new>
#include <vector>

namespace klv {

namespace {

struct module_strings {
    HINSTANCE module;
    std::span<const string_resource> strings;
};

std::vector<module_strings>& all_strings()
{
    static std::vector<module_strings> list;
    return list;
}

std::string_view find_string(HINSTANCE module, UINT id) noexcept
{
    const auto owner = std::ranges::find(all_strings(), module, &module_strings::module);
    if (owner == all_strings().end())
        return {};
    const auto found = std::ranges::find(owner->strings, id, &string_resource::id);
    return found == owner->strings.end() ? std::string_view() : found->text;
}

} // namespace

bool register_strings(HINSTANCE module, std::span<const string_resource> strings) noexcept
{
    const auto known = std::ranges::find(all_strings(), module, &module_strings::module);
    if (known != all_strings().end()) {
        known->strings = strings;
        return true;
    }
    try {
        all_strings().push_back({module, strings});
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
