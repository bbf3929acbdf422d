#pragma once

#include "klv/gdi/gdi.h"

#include <cstdint>

namespace klv::gdi {

/// A rectangle given by a corner and signed extents.
struct block {
    INT x = 0;
    INT y = 0;
    INT width = 0;
    INT height = 0;
};

/// Window (logical) to viewport (device). The scale is viewport extent over window extent.
struct mapping {
    INT mode = MM_TEXT;
    POINT window_origin{0, 0};
    SIZE window_extent{1, 1};
    POINT viewport_origin{0, 0};
    SIZE viewport_extent{1, 1};

    [[nodiscard]] bool is_identity() const
    {
        return window_extent == viewport_extent && window_origin == viewport_origin;
    }
    /// Rounded to the nearest, saturated at the ends of 32 bits.
    [[nodiscard]] POINT to_device(POINT p) const;
    [[nodiscard]] POINT to_logical(POINT p) const;
    /// Lengths: no origin; the sign is kept.
    [[nodiscard]] LONG width_to_device(LONG w) const;
    [[nodiscard]] LONG height_to_device(LONG h) const;
    /// Both corners, as they are (not ordered).
    [[nodiscard]] RECT to_device(const RECT& r) const;
    /// Its direction is kept.
    [[nodiscard]] block to_device(const block& b) const;
};

/// A 64-bit number at the nearer end of 32 bits when it does not fit.
[[nodiscard]] LONG saturate(std::int64_t v);

} // namespace klv::gdi
