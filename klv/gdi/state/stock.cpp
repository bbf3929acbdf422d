#include "klv/gdi/state/stock.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/state/brush.h"
#include "klv/gdi/state/palette.h"
#include "klv/gdi/state/pen.h"
#include "klv/gdi/text/font.h"

#include <array>
#include <mutex>

namespace klv {

namespace gdi {

namespace {

std::shared_ptr<gdi_object> make_brush(UINT style, COLORREF colour)
{
    return std::make_shared<brush_object>(LOGBRUSH{style, colour, 0});
}

std::shared_ptr<gdi_object> make_pen(UINT style, COLORREF colour)
{
    return std::make_shared<pen_object>(LOGPEN{style, {0, 0}, colour});
}

std::shared_ptr<gdi_object> make_default_palette()
{
    const auto table = default_colour_table(8);
    std::vector<PALETTEENTRY> entries;
    const auto add = [&](std::size_t i) {
        const RGBQUAD& q = table->entries[i];
        entries.push_back({q.rgbRed, q.rgbGreen, q.rgbBlue, 0});
    };
    for (std::size_t i = 0; i < 10; ++i)
        add(i);
    for (std::size_t i = 246; i < 256; ++i)
        add(i);
    return std::make_shared<palette_object>(std::move(entries));
}

std::shared_ptr<gdi_object> make_stock(INT index)
{
    switch (index) {
    case WHITE_BRUSH:
        return make_brush(BS_SOLID, RGB(255, 255, 255));
    case LTGRAY_BRUSH:
        return make_brush(BS_SOLID, RGB(192, 192, 192));
    case GRAY_BRUSH:
        return make_brush(BS_SOLID, RGB(128, 128, 128));
    case DKGRAY_BRUSH:
        return make_brush(BS_SOLID, RGB(64, 64, 64));
    case BLACK_BRUSH:
        return make_brush(BS_SOLID, RGB(0, 0, 0));
    case NULL_BRUSH:
        return make_brush(BS_NULL, 0);
    case WHITE_PEN:
        return make_pen(PS_SOLID, RGB(255, 255, 255));
    case BLACK_PEN:
        return make_pen(PS_SOLID, RGB(0, 0, 0));
    case NULL_PEN:
        return make_pen(PS_NULL, 0);
    case DEFAULT_PALETTE:
        return make_default_palette();
    case OEM_FIXED_FONT:
    case ANSI_FIXED_FONT:
    case ANSI_VAR_FONT:
    case SYSTEM_FONT:
    case DEVICE_DEFAULT_FONT:
    case SYSTEM_FIXED_FONT:
    case DEFAULT_GUI_FONT:
        return make_stock_font(index);
    default:
        return nullptr;
    }
}

/// Every index of GetStockObject, then the bitmap that a fresh memory context draws on.
constexpr std::size_t stock_bitmap_index = DEFAULT_GUI_FONT + 1;

std::shared_ptr<gdi_object> make_stock_bitmap()
{
    auto made = new_bitmap(1, 1, 1, false);
    if (!made)
        throw std::bad_alloc();
    made->pixels.table = default_colour_table(1);
    made->pixels.monochrome = true;
    return made;
}

/// Made when they are first asked for, for all threads.
std::shared_ptr<gdi_object> stock_at(std::size_t index)
{
    static std::mutex mutex;
    static std::array<std::shared_ptr<gdi_object>, stock_bitmap_index + 1> made;
    const std::lock_guard lock(mutex);
    auto& slot = made[index];
    if (!slot) {
        auto object = index == stock_bitmap_index ? make_stock_bitmap() : make_stock(static_cast<INT>(index));
        if (object) {
            object->stock = true;
            register_object(object);
        }
        slot = std::move(object);
    }
    return slot;
}

} // namespace

std::shared_ptr<gdi_object> stock_object(INT index)
{
    return index < 0 || index > DEFAULT_GUI_FONT ? nullptr : stock_at(static_cast<std::size_t>(index));
}

std::shared_ptr<bitmap_object> stock_bitmap()
{
    return std::static_pointer_cast<bitmap_object>(stock_at(stock_bitmap_index));
}

} // namespace gdi

HGDIOBJ GetStockObject(INT index) noexcept
{
    return gdi::guarded([&]() -> HGDIOBJ {
        const auto object = gdi::stock_object(index);
        return object ? gdi::handle_of<HGDIOBJ>(object->token) : nullptr;
    });
}

} // namespace klv
