#include "klv/gdi/state/stock.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"

#include <array>

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

} // namespace

std::shared_ptr<gdi_object> stock_object(INT index)
{
    static std::array<std::shared_ptr<gdi_object>, DEFAULT_GUI_FONT + 1> made;
    if (index < 0 || static_cast<std::size_t>(index) >= made.size())
        return nullptr;
    auto& slot = made[static_cast<std::size_t>(index)];
    if (!slot) {
        slot = make_stock(index);
        if (slot) {
            slot->stock = true;
            register_object(slot);
        }
    }
    return slot;
}

std::shared_ptr<bitmap_object> stock_bitmap()
{
    static std::shared_ptr<bitmap_object> made;
    if (!made) {
        made = new_bitmap(1, 1, 1, false);
        if (!made)
            throw std::bad_alloc();
        made->pixels.table = default_colour_table(1);
        made->pixels.monochrome = true;
        made->stock = true;
        register_object(made);
    }
    return made;
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
