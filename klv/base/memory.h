#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory_resource>
#include <new>

namespace klv {

/// What happens when memory is out, before null is answered: core defines it in the library, where it
/// releases the emergency reserve and sets the exception flag of vSYSTEM. A program or module without core
/// has none, and nothing happens there. A weak reference instead of a function that is installed, so that the
/// first failure is told however early it comes, and loading the library runs no code.
[[gnu::weak]] void vMemFailed(std::uint32_t n) noexcept;

/// Allocates n bytes. When memory is out, vMemFailed is called and the answer is null. An n of 0 gives a
/// block that may be freed.
[[nodiscard]] void* vMemAlloc(std::uint32_t n) noexcept;

/// Frees a block of vMemAlloc or vMemRealloc; null is allowed.
void vMemFree(void* block) noexcept;

/// Changes the size of a block, moving it where needed; a null block is allocated. On failure the answer is
/// null (reported as by vMemAlloc) and the old block stays valid.
[[nodiscard]] void* vMemRealloc(void* block, std::uint32_t n) noexcept;

/// The same as vMemRealloc.
[[nodiscard]] void* vMemShrink(void* block, std::uint32_t n) noexcept;

/// \return 1 for any pointer.
int vMemCheckPtr(const void* block) noexcept;

/// Which of the allocations after vMemFailAfter fail.
enum class memory_failure {
    none, ///< every allocation is tried
    once, ///< only the chosen one fails
    from_then_on, ///< the chosen one and all later ones fail
};

/// For tests: lets `count` more allocations of the calling thread pass and makes its next one fail (0: the
/// very next). Reallocations count as allocations. Each thread counts and fails for itself, so that a sweep
/// meets the same allocations in every run, whatever other threads do.
void vMemFailAfter(std::uint64_t count, memory_failure kind = memory_failure::once) noexcept;

/// For tests: ends what vMemFailAfter began on this thread.
void vMemNeverFail() noexcept;

/// For tests and measurements: the allocations that the calling thread tried so far.
[[nodiscard]] std::uint64_t vMemAllocations() noexcept;

/// Standard containers on vMemAlloc. Out of memory is std::bad_alloc here; the public operation that owns
/// the answer turns it into that answer.
template <class T> class vALLOCATOR {
public:
    using value_type = T;

    vALLOCATOR() noexcept = default;
    template <class U> vALLOCATOR(const vALLOCATOR<U>&) noexcept { }

    [[nodiscard]] T* allocate(std::size_t count)
    {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        if (count > std::numeric_limits<std::uint32_t>::max() / sizeof(T))
            throw std::bad_alloc();
        void* block = vMemAlloc(static_cast<std::uint32_t>(count * sizeof(T)));
        if (!block)
            throw std::bad_alloc();
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t) noexcept { vMemFree(block); }

    template <class U> friend bool operator==(const vALLOCATOR&, const vALLOCATOR<U>&) noexcept
    {
        return true;
    }
};

/// The same for the containers of std::pmr and for byte_writer.
[[nodiscard]] std::pmr::memory_resource* vMemResource() noexcept;

} // namespace klv
