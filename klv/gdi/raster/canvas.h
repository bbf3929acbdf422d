#pragma once

#include "klv/gdi/raster/paint_meter.h"
#include "klv/gdi/raster/painter.h"
#include "klv/gdi/raster/region.h"
#include "klv/gdi/raster/scan_converter.h"
#include "klv/gdi/raster/surface.h"

#include <cstdint>
#include <vector>

namespace klv::gdi {

/// Memory of the drawing calls of one thread, kept from call to call so that drawing allocates nothing once
/// it runs. What one stage leaves here the next may read; none of it outlives a call.
struct raster_scratch {
    scan_converter converter;
    std::vector<POINT> points; ///< of a figure, device units
    std::vector<fixed_point> path; ///< of a figure with curves

    struct {
        std::vector<fixed_point> path;
        std::vector<POINT> pixels;
        std::vector<fixed_point> disc; ///< offsets from the centre
        std::vector<fixed_point> moved_disc;
        std::int32_t disc_width = 0;
    } stroke;

    struct {
        op_tile tile;
        std::vector<std::uint32_t> row;
        std::vector<pixel_op> small;
    } brush;

    struct {
        std::vector<std::uint32_t> source;
        std::vector<std::uint32_t> row;
        std::vector<std::uint32_t> sums;
        std::vector<std::uint32_t> destination;
        std::vector<std::uint32_t> pattern;
        std::vector<std::int32_t> map;
        op_tile tile;
    } blit;

    std::vector<std::uint8_t> mask; ///< of a bar of a text
};

[[nodiscard]] raster_scratch& thread_scratch();

/// What a figure is painted on.
struct canvas {
    const surface& pixels; ///< its top is null when there is nothing to draw on
    const region& clip; ///< within the surface
    paint_meter* meter; ///< null when nobody counts
    /// Programs know pixels of 96 to the inch. On a surface whose pixels are finer, a pixel of a pattern and
    /// the width of a thin line are so many of them.
    std::int32_t common_pixel;
    raster_scratch& scratch;
};

} // namespace klv::gdi
