#pragma once

#include "klv/bitmaps/pixels/resample.h"
#include "klv/rendering/pixels.h"

namespace klv {

class oMEMDIB;

[[nodiscard]] constexpr bool has_alpha(pixel_order order) noexcept { return bytes_per_pixel(order) == 4; }

[[nodiscard]] inline pixel_rows read_only(const mutable_pixel_rows& rows) noexcept
{
    return {rows.first, rows.stride, rows.width, rows.height, rows.channels};
}

/// Some rows of pixels.
[[nodiscard]] inline pixel_view rows_of(const pixel_view& all, int first, int count) noexcept
{
    return {all.row(first), all.stride, all.width, count, all.order};
}

/// Reduces samples, blue first, to pixels in their order. \param with_alpha the fourth byte of the samples is
/// their alpha; otherwise pixels that have an alpha are opaque. False when memory is out.
[[nodiscard]] bool put_samples(
    const mutable_pixel_rows& samples, int per_axis, bool with_alpha, const pixel_view& into) noexcept;

/// Copies a bitmap of the same size, opaque. False when its lines can't be had.
[[nodiscard]] bool put_bitmap(const oMEMDIB& bitmap, const pixel_view& into) noexcept;

} // namespace klv
