#pragma once

#include "klv/core/object.h"

#include <cstdint>

namespace klv {

class oIMGCONTEXT;
class vDEVICE;

/// A handle on the process-wide cache of rendered images. The first handle makes the cache and the last one
/// deletes it; without a handle images are drawn directly. Threads may draw at the same time, each its own
/// images.
class vIMAGECACHE : public vOBJECT {
public:
    vIMAGECACHE() noexcept;
    vIMAGECACHE(const vIMAGECACHE&) noexcept;
    vIMAGECACHE& operator=(const vIMAGECACHE&) noexcept { return *this; }
    ~vIMAGECACHE();

    /// The device on which the caller is to render the image next, or null when the image is complete: call
    /// it until it answers null. A rendered image is at most limit pixels on its longer side (below 0: 1200).
    static vDEVICE* Draw(
        std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept;
    static void Clear(std::uint32_t id) noexcept;
    static void ClearAll() noexcept;
    /// Locked items are never evicted. Answer 1, or 0 when nothing has that number.
    static int LockItem(std::uint32_t id, int lock) noexcept;
    static int LockItemImage(std::uint32_t id, std::uint32_t image, int lock) noexcept;
    static int QyItemIsLocked(std::uint32_t id) noexcept;
};

} // namespace klv
