#pragma once

#include "klv/gdi/raster/surface.h"
#include "klv/gdi/state/objects.h"

#include <memory>

namespace klv::gdi {

/// A bitmap: a surface and the memory it stands on.
struct bitmap_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::bitmap;
    bitmap_object()
        : gdi_object(kind_id)
    {
    }
    INT describe(INT size, void* buffer) const override;

    /// Selected into a context, or no longer. The stock bitmap can be in many.
    void take(HDC by)
    {
        if (!stock)
            selected_into = by;
    }
    void release()
    {
        if (!stock)
            selected_into = nullptr;
    }

    surface_memory memory;
    surface pixels;
    bool section = false; ///< made by CreateDIBSection: bits can be reached from outside
    bool top_down = false;
    HDC selected_into = nullptr; ///< a bitmap is selected into one context at a time
};

/// Zero-filled bitmap with rows padded to 4 bytes; null when the sizes are impossible or memory is out.
std::shared_ptr<bitmap_object> new_bitmap(std::int32_t width, std::int32_t height, int bits, bool bottom_up);

} // namespace klv::gdi
