#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

/// Error-diffusion dithering (Floyd and Steinberg, 1976) of 24-bit lines to the fixed colours of a depth:
/// black and white, the 16 standard colours, or a cube of 6 x 6 x 6 colours. Lines run from left to right and
/// come one after the other, in either order of the image.
class dib_ditherer {
public:
    /// Makes ready for lines of width pixels in 1, 4 or 8 bits. False when memory is out.
    [[nodiscard]] bool start(std::int32_t width, std::uint16_t bits) noexcept;

    /// The colours that the indices mean.
    [[nodiscard]] std::span<const RGBQUAD> colours() const noexcept { return colours_; }

    /// Turns the next line of pixels (blue, green, red) into one index a byte.
    void dither_line(const std::uint8_t* pixels, std::uint8_t* indices) noexcept;

private:
    std::int32_t width_ = 0;
    std::span<const RGBQUAD> colours_;
    // What the pixels of a line have got from the line before: three errors a pixel, with room for one pixel
    // before the first.
    vBUFFER<std::int16_t> current_;
    vBUFFER<std::int16_t> next_;
    vBUFFER<std::uint8_t> greys_;
};

} // namespace klv
