#include "klv/platform/system/handle_token.h"

#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

namespace klv {

namespace {

// Token n stands for pointers[n - 1]; a released token's place is null until it is used again.
struct token_table {
    std::mutex guard;
    std::vector<const void*> pointers;
    std::vector<std::uint32_t> released;
    std::unordered_map<const void*, std::uint32_t> tokens;
};

token_table& table()
{
    static token_table the_table;
    return the_table;
}

} // namespace

std::uint32_t token_of(const void* pointer) noexcept
{
    if (!pointer)
        return 0;
    try {
        token_table& t = table();
        const std::scoped_lock lock(t.guard);
        if (const auto known = t.tokens.find(pointer); known != t.tokens.end())
            return known->second;
        if (t.released.empty()) {
            t.pointers.push_back(nullptr);
            t.released.push_back(static_cast<std::uint32_t>(t.pointers.size()));
        }
        const std::uint32_t token = t.released.back();
        t.tokens.emplace(pointer, token);
        t.released.pop_back();
        t.pointers[token - 1] = pointer;
        return token;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void* pointer_of(std::uint32_t token) noexcept
{
    token_table& t = table();
    const std::scoped_lock lock(t.guard);
    const auto& pointers = t.pointers;
    return token == 0 || token > pointers.size() ? nullptr : const_cast<void*>(pointers[token - 1]);
}

void release_token(const void* pointer) noexcept
{
    token_table& t = table();
    const std::scoped_lock lock(t.guard);
    const auto known = t.tokens.find(pointer);
    if (known == t.tokens.end())
        return;
    try {
        t.released.push_back(known->second);
    } catch (const std::bad_alloc&) {
        // The number is not used again.
    }
    t.pointers[known->second - 1] = nullptr;
    t.tokens.erase(known);
}

} // namespace klv
