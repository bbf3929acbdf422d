#pragma once

#include "klv/base/buffer.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

/// The bytes of a pixel, in the order in which they lie in memory. Alpha is 255 wherever there is a ground.
enum class pixel_order : int { bgra, rgba, bgr, rgb };

[[nodiscard]] constexpr int bytes_per_pixel(pixel_order order) noexcept
{
    return order == pixel_order::bgra || order == pixel_order::rgba ? 4 : 3;
}

/// Pixels in memory that someone else owns.
struct pixel_view {
    std::uint8_t* first = nullptr; ///< the pixel in the upper left corner
    std::ptrdiff_t stride
        = 0; ///< bytes from a row to the one below it; negative when rows lie bottom row first
    int width = 0; ///< pixels
    int height = 0;
    pixel_order order = pixel_order::bgra;

    [[nodiscard]] std::uint8_t* row(int y) const noexcept { return first + stride * y; }
};

/// An image that owns its pixels: rows from the top, without gaps.
class rendered_image {
public:
    /// False when memory is out or the size is not 1 to 32767 pixels either way; the image is then as it was.
    [[nodiscard]] bool resize(int width, int height, pixel_order order) noexcept;

    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }
    [[nodiscard]] pixel_order order() const noexcept { return order_; }
    /// Bytes from a row to the next.
    [[nodiscard]] std::size_t stride() const noexcept
    {
        return static_cast<std::size_t>(width_) * static_cast<std::size_t>(bytes_per_pixel(order_));
    }
    /// All rows, the top one first.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return bytes_.span(); }
    [[nodiscard]] std::span<const std::uint8_t> row(int y) const noexcept
    {
        return bytes().subspan(static_cast<std::size_t>(y) * stride(), stride());
    }
    [[nodiscard]] pixel_view view() noexcept
    {
        return {bytes_.data(), static_cast<std::ptrdiff_t>(stride()), width_, height_, order_};
    }

private:
    vBUFFER<std::uint8_t> bytes_;
    int width_ = 0;
    int height_ = 0;
    pixel_order order_ = pixel_order::bgra;
};

} // namespace klv
