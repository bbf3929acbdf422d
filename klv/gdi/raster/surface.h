#pragma once

#include "klv/gdi/raster/region.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace klv::gdi {

/// A colour as 0x00rrggbb, which is also the pixel of a 24- or 32-bit surface without masks.
using rgb = std::uint32_t;

[[nodiscard]] constexpr rgb to_rgb(COLORREF c)
{
    return (c & 0xFFU) << 16 | (c & 0xFF00U) | (c >> 16 & 0xFFU);
}
[[nodiscard]] constexpr COLORREF to_colorref(rgb c) { return to_rgb(c); }

/// The colours of a surface of at most 8 bits. Bitmaps compatible with the screen share the screen's.
struct colour_table {
    std::array<RGBQUAD, 256> entries{};
    unsigned count = 0;
    /// Tells the contents: no two tables, and no two states of one, have the same.
    std::uint32_t version = 0;
    /// The screen's: realising a palette changes it, from any thread.
    bool of_screen = false;

    /// Call after changing entries.
    void changed();
};

[[nodiscard]] constexpr rgb to_rgb(const RGBQUAD& q)
{
    return std::uint32_t{q.rgbRed} << 16 | std::uint32_t{q.rgbGreen} << 8 | q.rgbBlue;
}
[[nodiscard]] constexpr RGBQUAD to_quad(rgb c)
{
    return {static_cast<BYTE>(c & 0xFFU), static_cast<BYTE>(c >> 8 & 0xFFU),
        static_cast<BYTE>(c >> 16 & 0xFFU), 0};
}

/// A palette to look indices up in; without one they stay as they are.
using palette_view = std::optional<std::span<const PALETTEENTRY>>;
/// The colour of a palette's entry, black beyond its end.
[[nodiscard]] rgb palette_colour(std::span<const PALETTEENTRY> palette, std::size_t index);

/// Where the channels of a 16- or 32-bit pixel lie.
struct channel_masks {
    std::uint32_t red = 0x00FF0000;
    std::uint32_t green = 0x0000FF00;
    std::uint32_t blue = 0x000000FF;
    friend bool operator==(const channel_masks&, const channel_masks&) = default;
};
inline constexpr channel_masks masks_888{0x00FF0000, 0x0000FF00, 0x000000FF};
inline constexpr channel_masks masks_555{0x7C00, 0x03E0, 0x001F};

/// Pixels in memory: rows of bytes from the top row on. 1-bit pixels start at a byte's top bit, 4-bit ones
/// in its upper half; wider pixels are little-endian, blue lowest unless the masks say otherwise.
struct surface {
    std::uint8_t* top = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from a row to the next below; negative for bottom-up bitmaps
    std::int32_t width = 0;
    std::int32_t height = 0;
    int bits = 0; ///< 1, 4, 8, 16, 24 or 32
    channel_masks masks;
    std::shared_ptr<colour_table> table; ///< at most 8 bits only
    /// A 1-bit surface without colours of its own: copies give it the text and background colours.
    bool monochrome = false;

    [[nodiscard]] std::uint8_t* row(std::int32_t y) const { return top + y * stride; }
    [[nodiscard]] box bounds() const { return {0, 0, width, height}; }
    [[nodiscard]] bool has_table() const { return bits <= 8; }
};

/// Bytes of a row of a bitmap without padding; 64 bits so that no size from a file overflows.
[[nodiscard]] constexpr std::uint64_t packed_row_bytes(std::uint64_t width, unsigned bits)
{
    return (width * bits + 7) / 8;
}
/// Bytes of a row padded to 4, as DIBs have them.
[[nodiscard]] constexpr std::uint64_t dib_row_bytes(std::uint64_t width, unsigned bits)
{
    return (width * bits + 31) / 32 * 4;
}

/// The zero-filled memory of a surface, its rows padded to 4 bytes.
class surface_memory {
public:
    /// The description of fresh pixels, this memory's from now on. \return one without pixels when the sizes
    /// are impossible or memory is out.
    [[nodiscard]] surface make(std::int32_t width, std::int32_t height, int bits, bool bottom_up);
    /// The lowest address of the pixels.
    [[nodiscard]] std::uint8_t* first() const { return bytes_.get(); }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
};

/// The default colours of a surface of 1, 4 or 8 bits (the 20 static colours at both ends for 8).
std::shared_ptr<colour_table> default_colour_table(int bits);

/// Index of the nearest entry by squared distance, the lowest of equals.
[[nodiscard]] unsigned nearest_index(const colour_table& table, rgb colour);
/// The pixel value that shows colour, or the nearest to it.
[[nodiscard]] std::uint32_t pixel_of(const surface& s, rgb colour);
[[nodiscard]] rgb colour_of(const surface& s, std::uint32_t pixel);
/// The bits of a pixel that mean something.
[[nodiscard]] std::uint32_t used_bits(const surface& s);

} // namespace klv::gdi
