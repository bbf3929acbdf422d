#include "klv/gdi/raster/raster_sink.h"

#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/figure_painter.h"
#include "klv/gdi/raster/flood.h"
#include "klv/gdi/raster/inks.h"
#include "klv/gdi/raster/pixel_rows.h"
#include "klv/gdi/state/palette.h"
#include "klv/gdi/state/screen.h"

#include <algorithm>

namespace klv::gdi {

// ---- What is drawn on ----------------------------------------------------------------------------------

/// Its top is null when there is nothing to draw on. The screen's pixels are made when they are first asked
/// for.
const surface& raster_sink::target(const drawing_state& state)
{
    if (place_ == place::screen)
        return the_screen().target();
    if (!state.bitmap->stock)
        return state.bitmap->pixels;
    if (own_pixel_.top == nullptr) {
        own_pixel_ = state.bitmap->pixels;
        own_pixel_.top = own_bytes_;
    }
    return own_pixel_;
}

const region& raster_sink::visible(const drawing_state& state)
{
    const surface& s = target(state);
    const SIZE size{s.width, s.height};
    if (!visible_valid_ || visible_size_ != size) {
        visible_ = region(s.bounds());
        if (state.clipped)
            visible_.intersect(visible_, state.clip);
        visible_valid_ = true;
        visible_size_ = size;
    }
    return visible_;
}

canvas raster_sink::open(const drawing_state& state)
{
    return {target(state), visible(state), meter().get(), common_pixel(), thread_scratch()};
}

const surface* raster_sink::pixels(const drawing_state& state) { return &target(state); }

void raster_sink::select(const drawing_state&, const gdi_object& object)
{
    if (object.kind == object_kind::bitmap)
        visible_valid_ = false;
}

void raster_sink::change_clip(const drawing_state&, const clip_change&) { visible_valid_ = false; }

void raster_sink::restore(const drawing_state&, INT) { visible_valid_ = false; }

UINT raster_sink::realise_palette(const drawing_state& state) { return realise_on_screen(*state.palette); }

// ---- Questions -----------------------------------------------------------------------------------------

UINT raster_sink::type() const { return place_ == place::screen ? OBJ_DC : OBJ_MEMDC; }

surface raster_sink::format(const drawing_state& state)
{
    if (place_ == place::memory) {
        surface like = state.bitmap->pixels;
        like.top = nullptr;
        return like;
    }
    surface like;
    like.bits = the_screen().bits;
    like.masks = like.bits == 16 ? masks_555 : masks_888;
    like.table = the_screen().table;
    return like;
}

rgb raster_sink::nearest(const drawing_state& state, rgb colour)
{
    // Depths that show every colour need no pixels, so that asking does not make the screen's.
    if (place_ == place::screen && the_screen().bits >= 24)
        return colour;
    const surface& s = target(state);
    return s.top == nullptr ? colour : colour_of(s, pixel_of(s, colour));
}

INT raster_sink::capability(const drawing_state& state, INT index)
{
    constexpr INT driver_version = 0x0400;
    constexpr INT every_curve = 0x1FF;
    constexpr INT every_line = 0xFE;
    constexpr INT every_polygon = 0xFF;
    constexpr INT aspect = 36;
    constexpr INT diagonal_aspect = 51;
    constexpr INT palette_colour_bits = 18;
    const screen& s = the_screen();
    const SIZE bitmap = state.bitmap ? SIZE{state.bitmap->pixels.width, state.bitmap->pixels.height} : SIZE{};
    const INT width = std::max<INT>(s.width, bitmap.cx);
    const INT height = std::max<INT>(s.height, bitmap.cy);
    const int bits = state.bitmap ? state.bitmap->pixels.bits : s.bits.load();
    const bool has_palette = s.bits == 8;
    const auto millimetres = [dpi = dots_per_inch()](INT pixels) {
        return static_cast<INT>((std::int64_t{pixels} * 254 + dpi * 5) / (std::int64_t{dpi} * 10));
    };
    switch (index) {
    case DRIVERVERSION:
        return driver_version;
    case TECHNOLOGY:
        return DT_RASDISPLAY;
    case HORZSIZE:
        return millimetres(width);
    case VERTSIZE:
        return millimetres(height);
    case HORZRES:
        return width;
    case VERTRES:
        return height;
    case BITSPIXEL:
        return bits;
    case PLANES:
        return 1;
    case NUMBRUSHES:
    case NUMPENS:
        return -1;
    case NUMCOLORS:
        return bits > 8 ? -1 : bits == 8 ? static_cast<INT>(static_entries) : 1 << bits;
    case CURVECAPS:
        return every_curve;
    case LINECAPS:
        return every_line;
    case POLYGONALCAPS:
        return every_polygon;
    case CLIPCAPS:
        return 1;
    case RASTERCAPS:
        return RC_BITBLT | RC_DI_BITMAP | RC_DIBTODEV | RC_STRETCHBLT | RC_STRETCHDIB
            | (has_palette ? RC_PALETTE : 0);
    case ASPECTX:
    case ASPECTY:
        return aspect;
    case ASPECTXY:
        return diagonal_aspect;
    case LOGPIXELSX:
    case LOGPIXELSY:
        return dots_per_inch();
    case SIZEPALETTE:
        return has_palette ? 256 : 0;
    case NUMRESERVED:
        return has_palette ? static_cast<INT>(static_entries) : 0;
    case COLORRES:
        return has_palette ? palette_colour_bits : bits;
    default:
        return 0;
    }
}

// ---- Pixels --------------------------------------------------------------------------------------------

COLORREF raster_sink::get_pixel(const drawing_state& state, POINT at)
{
    const surface& s = target(state);
    const POINT p = state.map.to_device(at);
    if (s.top == nullptr || !visible(state).contains(p.x, p.y))
        return CLR_INVALID;
    return to_colorref(colour_of(s, read_pixel(s, p.x, p.y)));
}

COLORREF raster_sink::set_pixel(const drawing_state& state, POINT at, COLORREF colour)
{
    const surface& s = target(state);
    const POINT p = state.map.to_device(at);
    if (s.top == nullptr || !visible(state).contains(p.x, p.y))
        return CLR_INVALID;
    const std::uint32_t pixel = pixel_of(s, resolve_colour(state, colour));
    store_pixels(s, p.x, p.y, {&pixel, 1});
    return to_colorref(colour_of(s, pixel));
}

bool raster_sink::flood(const drawing_state& state, POINT from, COLORREF colour, UINT type)
{
    const canvas on = open(state);
    const surface& s = on.pixels;
    const POINT start = state.map.to_device(from);
    if (s.top == nullptr || !on.clip.contains(start.x, start.y))
        return false;
    const std::uint32_t pixel = pixel_of(s, resolve_colour(state, colour));
    const bool while_equal = type == FLOODFILLSURFACE;
    if ((read_pixel(s, start.x, start.y) == pixel) != while_equal)
        return false;
    region area = connected_pixels(s, on.clip.extents(), pixel, while_equal, start.x, start.y);
    area.intersect(area, on.clip);
    brush_painter painter(on, brush_of(state, *state.brush), state.rop2);
    if (painter.visible())
        draw_region(area, painter.sink());
    return true;
}

// ---- Figures -------------------------------------------------------------------------------------------

void raster_sink::draw(const drawing_state& state, const figure& what)
{
    const canvas on = open(state);
    std::visit(figure_painter(on, state), what);
}

} // namespace klv::gdi
