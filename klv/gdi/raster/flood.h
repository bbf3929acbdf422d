#pragma once

#include "klv/gdi/raster/region.h"
#include "klv/gdi/raster/surface.h"

#include <cstdint>

namespace klv::gdi {

/// The pixels inside bounds that are connected with (x, y), side by side, and all equal to a pixel value, or
/// all different from it. Every row of the surface is read once.
[[nodiscard]] region connected_pixels(const surface& s, const box& bounds, std::uint32_t pixel,
    bool while_equal, std::int32_t x, std::int32_t y);

} // namespace klv::gdi
