#pragma once

#include "klv/gdi/raster/surface.h"

#include <cstdint>
#include <span>

namespace klv::gdi {

/// Reads out.size() pixels of row y from x on, one 32-bit number each. All must lie inside the surface.
void load_pixels(const surface& s, std::int32_t x, std::int32_t y, std::span<std::uint32_t> out);
void store_pixels(const surface& s, std::int32_t x, std::int32_t y, std::span<const std::uint32_t> in);

[[nodiscard]] std::uint32_t read_pixel(const surface& s, std::int32_t x, std::int32_t y);

} // namespace klv::gdi
