#include "klv/gdi/state/screen.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/state/objects.h"

namespace klv {

namespace gdi {

screen& the_screen()
{
    static screen instance;
    return instance;
}

std::recursive_mutex& screen_mutex()
{
    static std::recursive_mutex mutex;
    return mutex;
}

const surface& screen::target()
{
    if (pixels_.top == nullptr) {
        pixels_ = memory_.make(width, height, bits, false);
        pixels_.table = table;
    }
    return pixels_;
}

namespace {

// Scroll bar, desktop, captions, menu, window, frame, texts, borders, workspace, highlight, buttons, grey
// text, inactive caption text, button highlight, dark shadow, light, tip text and tip background.
constexpr COLORREF interface_colours[]
    = {RGB(192, 192, 192), RGB(0, 128, 128), RGB(0, 0, 128), RGB(128, 128, 128), RGB(192, 192, 192),
        RGB(255, 255, 255), RGB(0, 0, 0), RGB(0, 0, 0), RGB(0, 0, 0), RGB(255, 255, 255), RGB(192, 192, 192),
        RGB(192, 192, 192), RGB(128, 128, 128), RGB(0, 0, 128), RGB(255, 255, 255), RGB(192, 192, 192),
        RGB(128, 128, 128), RGB(128, 128, 128), RGB(0, 0, 0), RGB(192, 192, 192), RGB(255, 255, 255),
        RGB(0, 0, 0), RGB(223, 223, 223), RGB(0, 0, 0), RGB(255, 255, 225)};

constexpr INT largest_screen_side = 1 << 15;

} // namespace

} // namespace gdi

using namespace gdi;

BOOL SetScreenSize(INT width, INT height) noexcept
{
    if (width <= 0 || height <= 0 || width > largest_screen_side || height > largest_screen_side)
        return FALSE;
    const std::lock_guard lock(screen_mutex());
    auto& s = the_screen();
    s.width = width;
    s.height = height;
    s.reset();
    return TRUE;
}

BOOL SetScreenDepth(INT bits) noexcept
{
    return guarded([&]() -> BOOL {
        if (bits != 8 && bits != 16 && bits != 24 && bits != 32)
            return FALSE;
        const std::lock_guard lock(screen_mutex());
        auto& s = the_screen();
        s.table = bits == 8 ? default_colour_table(bits) : nullptr;
        if (s.table)
            s.table->of_screen = true;
        s.bits = bits;
        s.realised = 0;
        s.reset();
        return TRUE;
    });
}

INT GetSystemMetrics(INT index) noexcept
{
    switch (index) {
    case SM_CXSCREEN:
        return the_screen().width;
    case SM_CYSCREEN:
        return the_screen().height;
    default:
        return 0;
    }
}

COLORREF GetSysColor(INT index) noexcept
{
    if (index < 0 || static_cast<std::size_t>(index) >= std::size(interface_colours))
        return 0;
    return interface_colours[index];
}

} // namespace klv
