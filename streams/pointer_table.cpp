#include "streams/pointer_table.h"

#include <functional>
#include <new>
#include <unordered_map>
#include <vector>

#include "core/memory.h"
#include "core/object.h"

namespace klv {

namespace {

// The token of objects[i] is i + 1.
struct pointer_table {
    std::vector<const vOBJECT*, vALLOCATOR<const vOBJECT*>> objects;
    std::unordered_map<const vOBJECT*, std::uint32_t, std::hash<const vOBJECT*>,
        std::equal_to<const vOBJECT*>, vALLOCATOR<std::pair<const vOBJECT* const, std::uint32_t>>>
        tokens;
};

pointer_table& table()
{
    static pointer_table instance;
    return instance;
}

} // namespace

std::uint32_t token_of(const vOBJECT* object) noexcept
{
    if (!object)
        return 0;
    try {
        auto& [objects, tokens] = table();
        if (const auto known = tokens.find(object); known != tokens.end())
            return known->second;
        objects.push_back(object);
        const auto token = static_cast<std::uint32_t>(objects.size());
        tokens.emplace(object, token);
        return token;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

vOBJECT* pointer_of(std::uint32_t token) noexcept
{
    const auto& objects = table().objects;
    return token == 0 || token > objects.size() ? nullptr : const_cast<vOBJECT*>(objects[token - 1]);
}

} // namespace klv
