#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

/// Rows of pixels that someone else owns, byte channels side by side. The stride may be negative.
struct pixel_rows {
    const std::uint8_t* first = nullptr;
    std::ptrdiff_t stride = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 3; ///< bytes per pixel, 1 to 4

    [[nodiscard]] const std::uint8_t* row(std::int32_t y) const { return first + stride * y; }
};

struct mutable_pixel_rows {
    std::uint8_t* first = nullptr;
    std::ptrdiff_t stride = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 3;

    [[nodiscard]] std::uint8_t* row(std::int32_t y) const { return first + stride * y; }
};

/// Reduces by whole factors: each target pixel is the rounded mean of factor_x x factor_y source pixels.
/// The source is target.width * factor_x wide and target.height * factor_y high. It may be a band of a larger
/// picture, so that the whole of it never has to be in memory: bands give what one call would give.
/// A 4-channel source may be reduced into a 3-channel target, which leaves the fourth byte out.
/// Factors from 1 to 16. False when sizes, channels or factors do not fit, or memory is out.
bool reduce_box(const pixel_rows& source, const mutable_pixel_rows& target, std::int32_t factor_x,
    std::int32_t factor_y) noexcept;

/// Scales to any size: the mean of the covered area along an axis that shrinks, linear interpolation between
/// pixel centres along one that grows. Source and target have the same channels, or 4 and 3.
/// False when a size is 0, channels do not fit or memory is out.
bool resample_smooth(const pixel_rows& source, const mutable_pixel_rows& target) noexcept;

/// Scales by taking the source pixel under the centre of each target pixel.
bool resample_nearest(const pixel_rows& source, const mutable_pixel_rows& target) noexcept;

} // namespace klv
