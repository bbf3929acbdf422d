#include "klv/core/object.h"

#include "klv/base/memory.h"

#include <cstdint>
#include <limits>

namespace klv {

void* vOBJECT::operator new(std::size_t size) noexcept
{
    if (size > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    return vMemAlloc(static_cast<std::uint32_t>(size));
}

void vOBJECT::operator delete(void* block) noexcept { vMemFree(block); }

} // namespace klv
