#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"
#include "klv/gdi/state/screen.h"
#include "klv/gdi/state/stock.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace gdi {

drawing_context::drawing_context(context_kind k)
    : gdi_object(kind_id)
    , context(k)
{
    state.pen = std::static_pointer_cast<pen_object>(stock_object(BLACK_PEN));
    state.brush = std::static_pointer_cast<brush_object>(stock_object(WHITE_BRUSH));
    state.font = stock_object(SYSTEM_FONT);
    state.palette = std::static_pointer_cast<palette_object>(stock_object(DEFAULT_PALETTE));
    if (k == context_kind::memory)
        state.bitmap = stock_bitmap();
}

drawing_context::~drawing_context()
{
    if (state.bitmap)
        state.bitmap->selected_into = nullptr;
}

const surface& drawing_context::target()
{
    return context == context_kind::screen ? the_screen().target() : state.bitmap->pixels;
}

const region& drawing_context::effective_clip()
{
    const surface& s = target();
    const SIZE size{s.width, s.height};
    if (!clip_valid_ || clip_size_ != size) {
        effective_clip_ = region(s.bounds());
        if (state.clipped)
            effective_clip_.intersect(effective_clip_, state.clip);
        clip_valid_ = true;
        clip_size_ = size;
    }
    return effective_clip_;
}

namespace {

HDC new_context(context_kind kind)
{
    auto dc = std::make_shared<drawing_context>(kind);
    return handle_of<HDC>(register_object(dc));
}

HDC new_screen_context(const char* driver)
{
    if (driver == nullptr || std::strcmp(driver, "DISPLAY") != 0)
        return nullptr;
    return guarded([] { return new_context(context_kind::screen); });
}

int depth(const drawing_context& dc)
{
    return dc.context == context_kind::screen ? the_screen().bits : dc.state.bitmap->pixels.bits;
}

void restore(drawing_context& dc, std::size_t level)
{
    auto& from = dc.saved[level];
    if (dc.state.bitmap != from.bitmap) {
        dc.state.bitmap->selected_into = nullptr;
        if (!from.bitmap->stock)
            from.bitmap->selected_into = handle_of<HDC>(dc.token);
    }
    dc.state = std::move(from);
    dc.saved.resize(level);
    dc.clip_changed();
}

} // namespace

} // namespace gdi

using namespace gdi;

HDC CreateDCA(const char* driver, const char*, const char*, const void*) noexcept
{
    return new_screen_context(driver);
}
HDC CreateICA(const char* driver, const char*, const char*, const void*) noexcept
{
    return new_screen_context(driver);
}

HDC CreateCompatibleDC(HDC like) noexcept
{
    const auto* from = find_context(like);
    if (like != nullptr && from == nullptr)
        return nullptr;
    const HDC made = guarded([] { return new_context(context_kind::memory); });
    if (auto* dc = find_context(made); dc != nullptr && from != nullptr) {
        dc->dots_per_inch_x = from->dots_per_inch_x;
        dc->dots_per_inch_y = from->dots_per_inch_y;
    }
    return made;
}

BOOL DeleteDC(HDC dc) noexcept { return find_context(dc) != nullptr && remove_object(token_of(dc)); }

HDC GetDC(HWND) noexcept
{
    return guarded([] { return new_context(context_kind::screen); });
}

INT ReleaseDC(HWND, HDC dc) noexcept { return DeleteDC(dc); }

INT SaveDC(HDC handle) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return 0;
        dc->saved.push_back(dc->state);
        return static_cast<INT>(dc->saved.size());
    });
}

BOOL RestoreDC(HDC handle, INT saved) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return FALSE;
    const auto count = static_cast<INT>(dc->saved.size());
    const INT level = saved < 0 ? count + saved : saved - 1;
    if (level < 0 || level >= count)
        return FALSE;
    restore(*dc, static_cast<std::size_t>(level));
    return TRUE;
}

INT GetDeviceCaps(HDC handle, INT index) noexcept
{
    constexpr INT driver_version = 0x0400;
    constexpr INT every_curve = 0x1FF;
    constexpr INT every_line = 0xFE;
    constexpr INT every_polygon = 0xFF;
    const auto* dc = find_context(handle);
    if (dc == nullptr)
        return 0;
    const auto& s = the_screen();
    const surface none;
    const surface& bitmap = dc->state.bitmap ? dc->state.bitmap->pixels : none;
    const INT width = std::max(s.width, bitmap.width);
    const INT height = std::max(s.height, bitmap.height);
    const int bits = depth(*dc);
    const bool has_palette = dc->context == context_kind::screen ? bits == 8 : s.bits == 8;
    const auto millimetres = [](INT pixels, INT dpi) {
        return static_cast<INT>((std::int64_t{pixels} * 254 + dpi * 5) / (std::int64_t{dpi} * 10));
    };
    switch (index) {
    case DRIVERVERSION:
        return driver_version;
    case TECHNOLOGY:
        return DT_RASDISPLAY;
    case HORZSIZE:
        return millimetres(width, dc->dots_per_inch_x);
    case VERTSIZE:
        return millimetres(height, dc->dots_per_inch_y);
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
        return 36;
    case ASPECTXY:
        return 51;
    case LOGPIXELSX:
        return dc->dots_per_inch_x;
    case LOGPIXELSY:
        return dc->dots_per_inch_y;
    case SIZEPALETTE:
        return has_palette ? 256 : 0;
    case NUMRESERVED:
        return has_palette ? static_cast<INT>(static_entries) : 0;
    case COLORRES:
        return has_palette ? 18 : bits;
    default:
        return 0;
    }
}

INT Escape(HDC, INT, INT, const char*, void*) noexcept { return 0; }

BOOL SetDeviceResolution(HDC handle, INT dots_per_inch) noexcept
{
    constexpr INT highest = 100000;
    auto* dc = find_context(handle);
    if (dc == nullptr || dots_per_inch <= 0 || dots_per_inch > highest)
        return FALSE;
    dc->dots_per_inch_x = dots_per_inch;
    dc->dots_per_inch_y = dots_per_inch;
    return TRUE;
}

INT ThinnestLine(HDC handle) noexcept
{
    const auto* dc = find_context(handle);
    return dc ? dc->pixels_of_common_pixel() : 1;
}

BOOL GdiFlush() noexcept { return TRUE; }

} // namespace klv
