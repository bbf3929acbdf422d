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

void set_size(op_tile& tile, std::int32_t width, std::int32_t height)
{
    tile.width = width;
    tile.height = height;
    tile.ops.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

/// Whether the surface has to mix other colours to show this one.
bool needs_dither(const surface& s, const brush_ink& brush)
{
    return s.has_table() && brush.may_mix && colour_of(s, pixel_of(s, brush.colour)) != brush.colour;
}

void make_dither_tile(const surface& s, rgb colour, INT rop2, op_tile& tile)
{
    set_size(tile, dither_size, dither_size);
    const dither_pattern& pattern = dither(*s.table, colour);
    const std::uint32_t used = used_bits(s);
    std::transform(pattern.begin(), pattern.end(), tile.ops.begin(),
        [&](std::uint8_t index) { return make_pixel_op(rop2, index, used); });
}

void make_hatch_tile(const surface& s, const brush_ink& brush, INT rop2, op_tile& tile)
{
    const std::uint32_t used = used_bits(s);
    const auto op_of = [&](rgb c) { return make_pixel_op(rop2, pixel_of(s, c), used); };
    const pixel_op line = op_of(brush.colour);
    const pixel_op gap = brush.gaps ? op_of(*brush.gaps) : keep_pixel;
    const auto& rows = hatches[brush.hatch % hatches.size()];
    set_size(tile, 8, 8);
    for (std::size_t i = 0; i < tile.ops.size(); ++i)
        tile.ops[i] = (rows[i / 8] >> (7 - i % 8) & 1) != 0 ? line : gap;
}

/// The pixel of a surface for each index of a tile with a colour table.
std::array<std::uint32_t, 256> map_indices(const surface& s, const brush_ink& brush)
{
    const surface& tile = *brush.tile;
    std::array<std::uint32_t, 256> pixels{};
    for (unsigned i = 0; i < tile.table->count; ++i) {
        rgb colour = to_rgb(tile.table->entries[i]);
        if (tile.monochrome)
            colour = i == 0 ? brush.zero : brush.one;
        else if (brush.palette)
            colour = palette_colour(*brush.palette, colour & 0xFFFF);
        pixels[i] = pixel_of(s, colour);
    }
    return pixels;
}

void make_bitmap_tile(const canvas& on, const brush_ink& brush, INT rop2, op_tile& tile)
{
    const surface& s = on.pixels;
    const surface& from = *brush.tile;
    const std::uint32_t used = used_bits(s);
    const bool indexed = from.has_table();
    const auto map = indexed ? map_indices(s, brush) : std::array<std::uint32_t, 256>{};
    set_size(tile, from.width, from.height);
    auto& row = on.scratch.brush.row;
    row.resize(static_cast<std::size_t>(from.width));
    auto op = tile.ops.begin();
    for (std::int32_t y = 0; y < from.height; ++y) {
        load_pixels(from, 0, y, row);
        for (const std::uint32_t p : row)
            *op++ = make_pixel_op(rop2, indexed ? map[p] : pixel_of(s, colour_of(from, p)), used);
    }
}

void magnify(op_tile& tile, std::int32_t factor, std::vector<pixel_op>& small)
{
    if (factor == 1)
        return;
    small.assign(tile.ops.begin(), tile.ops.end());
    const auto width = static_cast<std::size_t>(tile.width);
    const auto by = static_cast<std::size_t>(factor);
    set_size(tile, tile.width * factor, tile.height * factor);
    for (std::size_t i = 0; i < tile.ops.size(); ++i)
        tile.ops[i] = small[i / (width * by) / by * width + i % (width * by) / by];
}

} // namespace

bool make_brush_tile(const canvas& on, const brush_ink& brush, INT rop2, op_tile& tile)
{
    const surface& s = on.pixels;
    switch (brush.what) {
    case brush_ink::kind::none:
        return false;
    case brush_ink::kind::hatched:
        make_hatch_tile(s, brush, rop2, tile);
        magnify(tile, on.common_pixel, on.scratch.brush.small);
        return true;
    case brush_ink::kind::tiled:
        make_bitmap_tile(on, brush, rop2, tile);
        magnify(tile, on.common_pixel, on.scratch.brush.small);
        return true;
    case brush_ink::kind::solid:
        if (needs_dither(s, brush)) {
            make_dither_tile(s, brush.colour, rop2, tile);
        } else {
            set_size(tile, 1, 1);
            tile.ops[0] = make_pixel_op(rop2, pixel_of(s, brush.colour), used_bits(s));
        }
        return true;
    }
    return false;
}

brush_painter::brush_painter(const canvas& on, const brush_ink& brush, INT rop2)
{
    const surface& s = on.pixels;
    if (s.top == nullptr || rop2 == R2_NOP)
        return;
    if (brush.what == brush_ink::kind::solid && !needs_dither(s, brush)) {
        sink_ = &solid_.emplace(s, make_pixel_op(rop2, pixel_of(s, brush.colour), used_bits(s)), on.meter);
        return;
    }
    op_tile& tile = on.scratch.brush.tile;
    if (make_brush_tile(on, brush, rop2, tile))
        sink_ = &tile_.emplace(s, tile, on.meter);
}

void clipped_output::fill(const box& area)
{
    const box visible = intersection(area, bounds());
    if (is_empty(visible))
        return;
    span_batch spans(sink());
    for (std::int32_t y = visible.y1; y < visible.y2; ++y)
        spans.add(y, visible.x1, visible.x2);
    spans.flush();
}

} // namespace klv::gdi
