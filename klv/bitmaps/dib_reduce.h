#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/bitmaps/pixels/dib_dither.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

/// Reduces the 24-bit lines of an image to 1, 4 or 8 bits in two passes: it looks at the lines, then turns
/// them into indices. An image of no more colours than the depth has keeps them exactly; another one is
/// dithered to the fixed colours of the depth.
class dib_reducer {
public:
    dib_reducer(std::int32_t width, std::uint16_t bits) noexcept;

    /// First pass, in any order. \return false when no further line needs to be looked at
    bool look_at(const std::uint8_t* pixels) noexcept;
    /// Between the passes. False when memory is out.
    [[nodiscard]] bool start() noexcept;
    /// Second pass: the next line, upwards or downwards, into a line in the layout of a bitmap.
    void reduce_line(const std::uint8_t* pixels, std::uint8_t* line) noexcept;

    /// The colours that the indices mean, once started.
    [[nodiscard]] std::span<const RGBQUAD> colours() const noexcept;

private:
    [[nodiscard]] bool note(std::uint32_t colour) noexcept;
    void find_exactly(const std::uint8_t* pixels) noexcept;
    [[nodiscard]] std::size_t slot_of(std::uint32_t colour) const noexcept;

    std::int32_t width_;
    std::uint16_t bits_;
    bool exact_ = true;

    // The colours found, in the order of their appearance, and their places in a table with open addressing
    // that is more than twice as large.
    static constexpr int slot_bits = 10;
    static constexpr std::uint32_t no_colour = 0xFFFFFFFF;
    struct found_colour {
        std::uint32_t colour = no_colour;
        std::uint8_t index = 0;
    };
    std::array<found_colour, 1 << slot_bits> slots_{};
    std::array<RGBQUAD, 256> found_{};
    std::size_t found_count_ = 0;

    dib_ditherer ditherer_;
    vBUFFER<std::uint8_t> indices_;
};

} // namespace klv
