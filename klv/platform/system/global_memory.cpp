#include "klv/platform/system/global_memory.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace klv {

namespace {

// Stands before the bytes of a block. Blocks are never moved while they keep their size, so the address of
// the bytes serves as the handle of fixed and movable ones alike.
struct alignas(std::max_align_t) block_header {
    std::size_t size;
    unsigned locks;
};

block_header* header_of(HGLOBAL block) noexcept { return reinterpret_cast<block_header*>(block) - 1; }

HGLOBAL handle_of(block_header* header) noexcept { return reinterpret_cast<HGLOBAL>(header + 1); }

std::size_t with_header(std::size_t size) noexcept
{
    return size > SIZE_MAX - sizeof(block_header) ? 0 : size + sizeof(block_header);
}

} // namespace

HGLOBAL GlobalAlloc(UINT flags, std::size_t size) noexcept
{
    const std::size_t whole = with_header(size);
    void* const memory = whole == 0 ? nullptr
        : (flags & GMEM_ZEROINIT)   ? std::calloc(1, whole)
                                    : std::malloc(whole);
    if (!memory)
        return nullptr;
    auto* const header = static_cast<block_header*>(memory);
    *header = {size, 0};
    return handle_of(header);
}

HGLOBAL GlobalReAlloc(HGLOBAL block, std::size_t size, UINT flags) noexcept
{
    const std::size_t whole = with_header(size);
    if (!block || whole == 0)
        return nullptr;
    const std::size_t old_size = header_of(block)->size;
    void* const memory = std::realloc(header_of(block), whole);
    if (!memory)
        return nullptr;
    auto* const header = static_cast<block_header*>(memory);
    header->size = size;
    if ((flags & GMEM_ZEROINIT) && size > old_size)
        std::memset(reinterpret_cast<char*>(header + 1) + old_size, 0, size - old_size);
    return handle_of(header);
}

HGLOBAL GlobalFree(HGLOBAL block) noexcept
{
    if (block)
        std::free(header_of(block));
    return nullptr;
}

void* GlobalLock(HGLOBAL block) noexcept
{
    if (!block)
        return nullptr;
    ++header_of(block)->locks;
    return block;
}

BOOL GlobalUnlock(HGLOBAL block) noexcept
{
    if (!block || header_of(block)->locks == 0)
        return FALSE;
    return --header_of(block)->locks > 0;
}

std::size_t GlobalSize(HGLOBAL block) noexcept { return block ? header_of(block)->size : 0; }

UINT DragQueryFileA(HDROP drop, UINT i, char* name, UINT size) noexcept
{
    constexpr UINT count_files = 0xFFFFFFFF;
    const auto block = reinterpret_cast<HGLOBAL>(drop);
    if (GlobalSize(block) < sizeof(DROPFILES))
        return 0;
    const auto* const bytes = reinterpret_cast<const char*>(drop);
    const DWORD offset = reinterpret_cast<const DROPFILES*>(drop)->pFiles;
    if (offset > GlobalSize(block))
        return 0;
    std::string_view rest(bytes + offset, GlobalSize(block) - offset);
    for (UINT file = 0;; ++file) {
        const std::string_view found = rest.substr(0, rest.find('\0'));
        if (found.empty())
            return i == count_files ? file : 0;
        if (file == i) {
            if (!name || size == 0)
                return static_cast<UINT>(found.size());
            const std::size_t length = found.copy(name, size - std::size_t{1});
            name[length] = '\0';
            return static_cast<UINT>(length);
        }
        rest.remove_prefix(std::min(found.size() + 1, rest.size()));
    }
}

} // namespace klv
