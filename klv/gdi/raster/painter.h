#pragma once

#include "klv/gdi/raster/paint_meter.h"
#include "klv/gdi/raster/spans.h"
#include "klv/gdi/raster/surface.h"

#include <cstdint>
#include <vector>

namespace klv::gdi {

/// Any of the sixteen operations of a known pen pixel P on a destination pixel D comes down to
/// D = (D & and_bits) ^ xor_bits.
struct pixel_op {
    std::uint32_t and_bits;
    std::uint32_t xor_bits;
};

/// The operation of a mix mode (R2_BLACK to R2_WHITE) for pen pixels of the given value; bits outside
/// used are left alone by the modes that keep D and cleared by those that don't.
[[nodiscard]] pixel_op make_pixel_op(INT rop2, std::uint32_t pixel, std::uint32_t used);
inline constexpr pixel_op keep_pixel{0xFFFFFFFF, 0};

/// Paints spans with one pixel value. The spans must lie inside the surface.
class solid_painter final : public span_sink {
public:
    solid_painter(const surface& s, pixel_op op, paint_meter* meter);
    void draw(std::span<const span> spans) override
    {
        paint_meter::count(meter_, spans, 1);
        paint_(surface_, op_, spans);
    }

private:
    using paint_function = void (*)(const surface&, pixel_op, std::span<const span>);
    static paint_function choose(const surface& s, pixel_op op);

    surface surface_;
    pixel_op op_;
    paint_function paint_;
    paint_meter* meter_;
};

/// A small picture of operations that repeats over the surface, from its upper left corner on.
struct op_tile {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<pixel_op> ops; ///< row by row

    [[nodiscard]] const pixel_op* row(std::int32_t y) const;
    [[nodiscard]] std::int32_t column(std::int32_t x) const;
};

/// Paints spans with a tile, which must outlive it.
class tile_painter final : public span_sink {
public:
    tile_painter(const surface& s, const op_tile& tile, paint_meter* meter);
    void draw(std::span<const span> spans) override
    {
        constexpr unsigned cost = 3;
        paint_meter::count(meter_, spans, cost);
        paint_(surface_, tile_, spans);
    }

private:
    using paint_function = void (*)(const surface&, const op_tile&, std::span<const span>);
    static paint_function choose(const surface& s);

    surface surface_;
    const op_tile& tile_;
    paint_function paint_;
    paint_meter* meter_;
};

} // namespace klv::gdi
