#pragma once

#include "klv/gdi/raster/rop3.h"
#include "klv/gdi/state/dc.h"

#include <cstdint>

namespace klv::gdi {

/// One axis of a block copy: where destination and source lie, and whether they run against each other.
struct blit_axis {
    std::int32_t to = 0;
    std::int32_t to_size = 0; ///< at least 1
    std::int32_t from = 0;
    std::int32_t from_size = 0; ///< at least 1
    bool mirrored = false;

    /// From signed extents; unequal signs mirror. False when one is 0.
    bool set(
        std::int32_t to_start, std::int32_t to_extent, std::int32_t from_start, std::int32_t from_extent);

    [[nodiscard]] bool scaled() const { return to_size != from_size; }
    [[nodiscard]] bool shrinks() const { return to_size < from_size; }
    /// The source pixel under the centre of a destination pixel.
    [[nodiscard]] std::int64_t nearest(std::int32_t at) const;
    /// The source pixels that a destination pixel stands for, when shrinking.
    void range(std::int32_t at, std::int64_t& first, std::int64_t& end) const;
    /// Cuts [low, high) of the destination to what the source, [0, source_size), can serve.
    void cut(std::int32_t source_size, std::int32_t& low, std::int32_t& high) const;
};

/// A copy onto a context's surface.
struct blit {
    blit_axis x;
    blit_axis y;
    const surface* source = nullptr;
    rgb source_background = 0xFFFFFF; ///< decides what becomes 1 on a monochrome destination
    rop3 operation{0x00CC0020};
};

/// Copies, stretches and mirrors through the clip region. Shrinking joins pixels as the context's stretch
/// mode says.
void run_blit(drawing_context& dc, const blit& job);
/// Fills a device box by an operation without source.
void run_pattern_blit(drawing_context& dc, const box& area, rop3 operation);

} // namespace klv::gdi
