#pragma once

#include "klv/base/types.h"

#include <cstddef>

/// Global memory blocks: memory apart from the library's allocator, handed between owners by handle.
namespace klv {

inline constexpr UINT GMEM_FIXED = 0x0000;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr UINT GMEM_SHARE = 0x2000;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

/// \return the block, or null. The handle of a fixed block is its address.
[[nodiscard]] HGLOBAL GlobalAlloc(UINT flags, std::size_t size) noexcept;
/// Changes the size; new bytes are zero with GMEM_ZEROINIT. On failure the answer is null and the block
/// stays.
[[nodiscard]] HGLOBAL GlobalReAlloc(HGLOBAL block, std::size_t size, UINT flags) noexcept;
/// \return null when the block is freed, else the handle
HGLOBAL GlobalFree(HGLOBAL block) noexcept;
/// The address of the bytes until the matching unlock; null when it is no block.
void* GlobalLock(HGLOBAL block) noexcept;
/// \return TRUE while locks are left
BOOL GlobalUnlock(HGLOBAL block) noexcept;
[[nodiscard]] std::size_t GlobalSize(HGLOBAL block) noexcept;

/// What a file-drop block begins with; the NUL-terminated names follow, and one more NUL.
struct DROPFILES {
    DWORD pFiles; ///< offset of the file names
    POINT pt; ///< where the files were dropped
    BOOL fNC; ///< nonzero when pt is outside the client area, in screen coordinates
    BOOL fWide; ///< nonzero for 16-bit names
};
static_assert(sizeof(DROPFILES) == 20);

/// Copies the name of the i-th file, NUL-terminated and cut to size; with a null name answers its length.
/// With i = 0xFFFFFFFF answers the number of files.
UINT DragQueryFileA(HDROP drop, UINT i, char* name, UINT size) noexcept;

} // namespace klv
