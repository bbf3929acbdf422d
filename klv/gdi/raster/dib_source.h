#pragma once

#include "klv/gdi/raster/surface.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv::gdi {

/// A bitmap's information header in one form, whichever of its forms it was given in.
struct dib_layout {
    std::int32_t width = 0;
    std::int32_t height = 0; ///< rows, never negative
    bool top_down = false;
    int bits = 0;
    DWORD compression = 0;
    std::uint32_t image_bytes = 0; ///< as announced, may be 0
    unsigned colours = 0; ///< entries of the colour table in use, at most 256
    std::size_t table_offset = 0; ///< from the header's start
    std::size_t table_entry_size = 0;
    std::size_t bits_offset = 0; ///< where the pixels of a packed bitmap start
    channel_masks masks;

    /// False for a header that describes nothing we can show.
    bool read(const void* header, UINT usage);
    [[nodiscard]] std::size_t row_bytes() const
    {
        return static_cast<std::size_t>(
            dib_row_bytes(static_cast<std::uint64_t>(width), static_cast<unsigned>(bits)));
    }
};

/// The colours of a header's table.
void read_colour_table(const void* header, const dib_layout& layout, UINT usage, const palette_view& palette,
    colour_table& table);

/// Caller's bitmap data as a surface to read from. Compressed ones are unpacked first.
class dib_source {
public:
    /// lines, when not negative, is the number of rows that bits holds; they form the surface then.
    bool open(const BITMAPINFO* info, const void* bits, UINT usage, const palette_view& palette,
        std::int32_t lines = -1);
    bool open_packed(const void* packed, UINT usage, const palette_view& palette);

    [[nodiscard]] const surface& pixels() const { return pixels_; }
    [[nodiscard]] const dib_layout& layout() const { return layout_; }

private:
    bool unpack(std::span<const std::uint8_t> bytes);

    dib_layout layout_;
    surface pixels_;
    std::vector<std::uint8_t> unpacked_;
};

} // namespace klv::gdi
