#pragma once

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/pixel_converter.h"
#include "klv/gdi/raster/rop3.h"

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

/// A copy onto a canvas.
struct blit {
    blit_axis x;
    blit_axis y;
    const surface* source = nullptr;
    copy_colours colours;
    brush_ink brush; ///< the pattern of operations that use one
    INT stretch_mode = 0; ///< BLACKONWHITE to HALFTONE: how shrinking joins pixels
    rop3 operation{SRCCOPY};
};

/// Copies, stretches and mirrors through the clip region.
void run_blit(const canvas& on, const blit& job);
/// Fills a device box by an operation without source.
void run_pattern_blit(const canvas& on, const box& area, const brush_ink& brush, rop3 operation);

} // namespace klv::gdi
