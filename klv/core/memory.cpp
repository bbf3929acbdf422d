#include "klv/core/memory.h"

#include "klv/core/system.h"

#include <algorithm>
#include <cstdlib>

namespace klv {

namespace {

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

// Each thread counts its own allocations: a test lets nobody else's fail, and no counter is contended.
struct allocation_count {
    std::uint64_t tried = 0;
    std::uint64_t first_to_fail = never;
    memory_failure kind = memory_failure::none;
};
constinit thread_local allocation_count allocations;

bool chosen_to_fail() noexcept
{
    allocation_count& count = allocations;
    const std::uint64_t number = count.tried++;
    if (number < count.first_to_fail) [[likely]]
        return false;
    if (count.kind == memory_failure::once)
        vMemNeverFail();
    return true;
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

void* vMemAlloc(std::uint32_t n) noexcept
{
    // malloc may answer null for no bytes at all, which must not read as "out of memory".
    void* block = chosen_to_fail() ? nullptr : std::malloc(std::max(n, std::uint32_t{1}));
    if (!block)
        vSYSTEM::NewFailureException(n);
    return block;
}

void vMemFree(void* block) noexcept { std::free(block); }

void* vMemRealloc(void* block, std::uint32_t n) noexcept
{
    void* moved = chosen_to_fail() ? nullptr : std::realloc(block, std::max(n, std::uint32_t{1}));
    if (!moved)
        vSYSTEM::NewFailureException(n);
    return moved;
}

void* vMemShrink(void* block, std::uint32_t n) noexcept { return vMemRealloc(block, n); }

int vMemCheckPtr(const void*) noexcept { return 1; }

void vMemFailAfter(std::uint64_t count, memory_failure kind) noexcept
{
    allocations.first_to_fail = kind == memory_failure::none ? never : allocations.tried + count;
    allocations.kind = kind;
}

void vMemNeverFail() noexcept
{
    allocations.first_to_fail = never;
    allocations.kind = memory_failure::none;
}

std::uint64_t vMemAllocations() noexcept { return allocations.tried; }

std::pmr::memory_resource* vMemResource() noexcept
{
    // Never destroyed: objects of static lifetime may still give memory back while the process ends.
    alignas(library_memory) static std::byte place[sizeof(library_memory)];
    static auto* const resource = ::new (place) library_memory;
    return resource;
}

} // namespace klv
