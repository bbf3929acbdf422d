#include "klv/gdi/raster/brush_painter.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/dither.h"
#include "klv/gdi/raster/pixel_rows.h"

#include <algorithm>
#include <array>

namespace klv::gdi {

namespace {

constexpr std::array<std::array<std::uint8_t, 8>, 6> hatches{{
    {0x00, 0x00, 0x00, 0xFF, 0x00, 0x00, 0x00, 0x00}, // horizontal
    {0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08}, // vertical
    {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01}, // falling
    {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80}, // rising
    {0x08, 0x08, 0x08, 0xFF, 0x08, 0x08, 0x08, 0x08}, // cross
    {0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81}, // diagonal cross
}};

op_tile& shared_tile()
{
    static op_tile tile;
    return tile;
}

void set_size(op_tile& tile, std::int32_t width, std::int32_t height)
{
    tile.width = width;
    tile.height = height;
    tile.ops.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

/// Whether the surface has to mix other colours to show this one.
bool needs_dither(const surface& s, rgb colour, COLORREF asked)
{
    return s.has_table() && asked >> 24 == 0 && colour_of(s, pixel_of(s, colour)) != colour;
}

void make_dither_tile(const surface& s, rgb colour, INT rop2, op_tile& tile)
{
    set_size(tile, dither_size, dither_size);
    const dither_pattern& pattern = dither(*s.table, colour);
    const std::uint32_t used = used_bits(s);
    std::transform(pattern.begin(), pattern.end(), tile.ops.begin(),
        [&](std::uint8_t index) { return make_pixel_op(rop2, index, used); });
}

void make_hatch_tile(drawing_context& dc, const brush_object& brush, INT rop2, op_tile& tile)
{
    const surface& s = dc.target();
    const std::uint32_t used = used_bits(s);
    const auto op_of
        = [&](COLORREF c) { return make_pixel_op(rop2, pixel_of(s, resolve_colour(dc, c)), used); };
    const pixel_op line = op_of(brush.log.lbColor);
    const pixel_op gap = dc.state.background_mode == OPAQUE ? op_of(dc.state.background_colour) : keep_pixel;
    const auto& rows = hatches[brush.log.lbHatch % hatches.size()];
    set_size(tile, 8, 8);
    for (std::size_t i = 0; i < tile.ops.size(); ++i)
        tile.ops[i] = (rows[i / 8] >> (7 - i % 8) & 1) != 0 ? line : gap;
}

/// The pixel of the target for each index of a tile with a colour table.
std::array<std::uint32_t, 256> map_indices(drawing_context& dc, const brush_object& brush)
{
    const surface& s = dc.target();
    const surface& tile = brush.tile->pixels;
    std::array<std::uint32_t, 256> pixels{};
    for (unsigned i = 0; i < tile.table->count; ++i) {
        rgb colour = to_rgb(tile.table->entries[i]);
        if (tile.monochrome)
            colour = resolve_colour(dc, i == 0 ? dc.state.text_colour : dc.state.background_colour);
        else if (brush.palette_indices)
            colour = resolve_colour(dc, PALETTEINDEX(colour));
        pixels[i] = pixel_of(s, colour);
    }
    return pixels;
}

void make_bitmap_tile(drawing_context& dc, const brush_object& brush, INT rop2, op_tile& tile)
{
    const surface& s = dc.target();
    const surface& from = brush.tile->pixels;
    const std::uint32_t used = used_bits(s);
    const bool indexed = from.has_table();
    const auto map = indexed ? map_indices(dc, brush) : std::array<std::uint32_t, 256>{};
    set_size(tile, from.width, from.height);
    static std::vector<std::uint32_t> row;
    row.resize(static_cast<std::size_t>(from.width));
    auto op = tile.ops.begin();
    for (std::int32_t y = 0; y < from.height; ++y) {
        load_pixels(from, 0, y, row);
        for (const std::uint32_t p : row)
            *op++ = make_pixel_op(rop2, indexed ? map[p] : pixel_of(s, colour_of(from, p)), used);
    }
}

void magnify(op_tile& tile, INT factor)
{
    if (factor == 1)
        return;
    static std::vector<pixel_op> small;
    small.assign(tile.ops.begin(), tile.ops.end());
    const auto width = static_cast<std::size_t>(tile.width);
    const auto by = static_cast<std::size_t>(factor);
    set_size(tile, tile.width * factor, tile.height * factor);
    for (std::size_t i = 0; i < tile.ops.size(); ++i)
        tile.ops[i] = small[i / (width * by) / by * width + i % (width * by) / by];
}

} // namespace

bool make_brush_tile(drawing_context& dc, const brush_object& brush, INT rop2, op_tile& tile)
{
    const surface& s = dc.target();
    tile.origin_x = dc.state.brush_origin.x;
    tile.origin_y = dc.state.brush_origin.y;
    if (brush.log.lbStyle == BS_HATCHED) {
        make_hatch_tile(dc, brush, rop2, tile);
        magnify(tile, dc.pixels_of_common_pixel());
    } else if (brush.tile) {
        make_bitmap_tile(dc, brush, rop2, tile);
        magnify(tile, dc.pixels_of_common_pixel());
    } else if (brush.log.lbStyle == BS_SOLID) {
        const rgb colour = resolve_colour(dc, brush.log.lbColor);
        if (needs_dither(s, colour, brush.log.lbColor)) {
            make_dither_tile(s, colour, rop2, tile);
        } else {
            set_size(tile, 1, 1);
            tile.ops[0] = make_pixel_op(rop2, pixel_of(s, colour), used_bits(s));
        }
    } else {
        return false;
    }
    return true;
}

brush_painter::brush_painter(drawing_context& dc, const brush_object& brush, INT rop2)
{
    const surface& s = dc.target();
    if (s.top == nullptr || rop2 == R2_NOP)
        return;
    if (brush.log.lbStyle == BS_SOLID) {
        const rgb colour = resolve_colour(dc, brush.log.lbColor);
        if (!needs_dither(s, colour, brush.log.lbColor)) {
            sink_ = &solid_.emplace(s, make_pixel_op(rop2, pixel_of(s, colour), used_bits(s)));
            return;
        }
    }
    op_tile& tile = shared_tile();
    if (make_brush_tile(dc, brush, rop2, tile))
        sink_ = &tile_.emplace(s, tile);
}

} // namespace klv::gdi
