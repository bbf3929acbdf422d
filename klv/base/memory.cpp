#include "klv/base/memory.h"

#include <algorithm>
#include <cstdlib>

namespace klv {

namespace {

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

struct failure_plan {
    std::uint64_t allocations = 0; ///< so far
    std::uint64_t first_to_fail = never;
    memory_failure kind = memory_failure::none;
};
constinit thread_local failure_plan plan;

bool chosen_to_fail() noexcept
{
    const std::uint64_t number = plan.allocations++;
    if (number < plan.first_to_fail) [[likely]]
        return false;
    if (plan.kind == memory_failure::once)
        vMemNeverFail();
    return true;
}

void* reported(void* block, std::uint32_t n) noexcept
{
    if (!block && vMemFailed)
        vMemFailed(n);
    return block;
}

class library_memory final : public std::pmr::memory_resource {
    void* do_allocate(std::size_t size, std::size_t alignment) override
    {
        if (alignment > alignof(std::max_align_t) || size > std::numeric_limits<std::uint32_t>::max())
            throw std::bad_alloc();
        void* block = vMemAlloc(static_cast<std::uint32_t>(size));
        if (!block)
            throw std::bad_alloc();
        return block;
    }
    void do_deallocate(void* block, std::size_t, std::size_t) override { vMemFree(block); }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override
    {
        return this == &other;
    }
};

} // namespace

// malloc and realloc may answer null for no bytes at all, which must not read as "out of memory".
void* vMemAlloc(std::uint32_t n) noexcept
{
    return reported(chosen_to_fail() ? nullptr : std::malloc(std::max(n, std::uint32_t{1})), n);
}

void vMemFree(void* block) noexcept { std::free(block); }

void* vMemRealloc(void* block, std::uint32_t n) noexcept
{
    return reported(chosen_to_fail() ? nullptr : std::realloc(block, std::max(n, std::uint32_t{1})), n);
}

void* vMemShrink(void* block, std::uint32_t n) noexcept { return vMemRealloc(block, n); }

int vMemCheckPtr(const void*) noexcept { return 1; }

void vMemFailAfter(std::uint64_t count, memory_failure kind) noexcept
{
    plan.first_to_fail = kind == memory_failure::none ? never : plan.allocations + count;
    plan.kind = kind;
}

void vMemNeverFail() noexcept { vMemFailAfter(0, memory_failure::none); }

std::uint64_t vMemAllocations() noexcept { return plan.allocations; }

std::pmr::memory_resource* vMemResource() noexcept
{
    // Never destroyed: objects of static lifetime may still give memory back while the process ends.
    alignas(library_memory) static std::byte place[sizeof(library_memory)];
    static auto* const resource = ::new (place) library_memory;
    return resource;
}

} // namespace klv
