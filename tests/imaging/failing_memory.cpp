// Apart from what allocates, so that the compiler can't see that delete frees what new returned.
#include "tests/imaging/failing_memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

long left_until_failure = -1;
long made = 0;

void* allocate(std::size_t size) noexcept
{
    ++made;
    if (left_until_failure >= 0 && left_until_failure-- == 0)
        return nullptr;
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

namespace klv::test {

void fail_allocation(long n) { left_until_failure = n; }
long allocations() { return made; }

} // namespace klv::test

void* operator new(std::size_t size)
{
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}
// Who asks so can do without: algorithms that run faster with a buffer.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
