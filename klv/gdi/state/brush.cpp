#include "klv/gdi/state/brush.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/dib_source.h"
#include "klv/gdi/raster/pixel_rows.h"
#include "klv/gdi/state/screen.h"
#include "klv/platform/system/global_memory.h"

namespace klv {

namespace gdi {

INT brush_object::describe(INT size, void* buffer) const
{
    return copy_description(&log, sizeof log, size, buffer);
}

namespace {

std::shared_ptr<colour_table> copy_table(const colour_table& from)
{
    std::unique_lock<std::recursive_mutex> lock;
    if (from.of_screen)
        lock = std::unique_lock(screen_mutex());
    auto copy = std::make_shared<colour_table>(from);
    copy->of_screen = false;
    return copy;
}

std::shared_ptr<bitmap_object> copy_pixels(const surface& s)
{
    auto copy = new_bitmap(s.width, s.height, s.bits, false);
    if (!copy)
        return nullptr;
    std::vector<std::uint32_t> row(static_cast<std::size_t>(s.width));
    for (std::int32_t y = 0; y < s.height; ++y) {
        load_pixels(s, 0, y, row);
        store_pixels(copy->pixels, 0, y, row);
    }
    copy->pixels.masks = s.masks;
    copy->pixels.monochrome = s.monochrome;
    if (s.table)
        copy->pixels.table = copy_table(*s.table);
    return copy;
}

HBRUSH make_tiled_brush(UINT style, std::shared_ptr<bitmap_object> tile, bool palette_indices)
{
    if (!tile)
        return nullptr;
    auto brush = std::make_shared<brush_object>(LOGBRUSH{style, 0, 0});
    brush->tile = std::move(tile);
    brush->palette_indices = palette_indices;
    return handle_of<HBRUSH>(register_object(brush));
}

} // namespace

} // namespace gdi

using namespace gdi;

HBRUSH CreateSolidBrush(COLORREF colour) noexcept
{
    return guarded([&] { return make_object<HBRUSH, brush_object>(LOGBRUSH{BS_SOLID, colour, 0}); });
}

HBRUSH CreateHatchBrush(INT style, COLORREF colour) noexcept
{
    if (style < HS_HORIZONTAL || style > HS_DIAGCROSS)
        return nullptr;
    return guarded([&] {
        return make_object<HBRUSH, brush_object>(
            LOGBRUSH{BS_HATCHED, colour, static_cast<std::uintptr_t>(style)});
    });
}

HBRUSH CreatePatternBrush(HBITMAP bitmap) noexcept
{
    return guarded([&]() -> HBRUSH {
        const auto* from = find<bitmap_object>(bitmap);
        return from == nullptr ? nullptr : make_tiled_brush(BS_PATTERN, copy_pixels(from->pixels), false);
    });
}

HBRUSH CreateDIBPatternBrushPt(const void* packed, UINT usage) noexcept
{
    return guarded([&]() -> HBRUSH {
        dib_source source;
        if (packed == nullptr || !source.open_packed(packed, usage, std::nullopt))
            return nullptr;
        return make_tiled_brush(BS_DIBPATTERN, copy_pixels(source.pixels()), usage == DIB_PAL_COLORS);
    });
}

HBRUSH CreateDIBPatternBrush(HGLOBAL packed, UINT usage) noexcept
{
    const void* bytes = GlobalLock(packed);
    const HBRUSH brush = CreateDIBPatternBrushPt(bytes, usage);
    if (bytes != nullptr)
        GlobalUnlock(packed);
    return brush;
}

HBRUSH CreateBrushIndirect(const LOGBRUSH* brush) noexcept
{
    if (brush == nullptr)
        return nullptr;
    switch (brush->lbStyle) {
    case BS_SOLID:
        return CreateSolidBrush(brush->lbColor);
    case BS_NULL:
        return static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    case BS_HATCHED:
        return CreateHatchBrush(static_cast<INT>(brush->lbHatch & 0xFFFF), brush->lbColor);
    case BS_PATTERN:
        return CreatePatternBrush(reinterpret_cast<HBITMAP>(brush->lbHatch));
    case BS_DIBPATTERN:
        return CreateDIBPatternBrush(reinterpret_cast<HGLOBAL>(brush->lbHatch), brush->lbColor & 0xFFFF);
    case BS_DIBPATTERNPT:
        return CreateDIBPatternBrushPt(
            reinterpret_cast<const void*>(brush->lbHatch), brush->lbColor & 0xFFFF);
    default:
        return nullptr;
    }
}

} // namespace klv
