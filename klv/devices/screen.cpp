#include "klv/devices/screen.h"

#include "klv/gdi/gdi.h"

#include <cstddef>
#include <numeric>

namespace klv {
namespace {

constexpr int palette_colours = 256;
constexpr LONG pattern_side = 8;
constexpr LONG pixels_per_metre = 4000;
constexpr UINT gdi_error = 0xFFFFFFFF;

screen_pattern make_pattern()
{
    screen_pattern pattern{};
    pattern.header.biSize = sizeof(BITMAPINFOHEADER);
    pattern.header.biWidth = pattern_side;
    pattern.header.biHeight = pattern_side;
    pattern.header.biPlanes = 1;
    pattern.header.biBitCount = 8;
    pattern.header.biSizeImage = static_cast<DWORD>(pattern.pixels.size());
    pattern.header.biXPelsPerMeter = pixels_per_metre;
    pattern.header.biYPelsPerMeter = pixels_per_metre;
    pattern.header.biClrUsed = palette_colours;
    pattern.header.biClrImportant = palette_colours;
    std::iota(pattern.palette_indices.begin(), pattern.palette_indices.end(), std::uint16_t{0});
    return pattern;
}

} // namespace

HPALETTE vSCREEN::palette_ = nullptr;
palette_256 vSCREEN::log_palette_;
int vSCREEN::valid_ = 0;
std::mutex vSCREEN::palette_mutex_;

// Never destroyed: devices that outlive the program's other statics still ask it.
vSCREEN& vDEVICE::GetScreen() noexcept
{
    alignas(vSCREEN) static std::byte place[sizeof(vSCREEN)];
    static vSCREEN* const screen = ::new (place) vSCREEN;
    return *screen;
}

vSCREEN::vSCREEN() noexcept
    : vDEVICE(nullptr)
{
    Constructor();
}

vSCREEN::~vSCREEN() { Destructor(); }

void vSCREEN::Constructor() noexcept
{
    const HDC dc = GetWinDC();
    DescribeContext(dc);
    Create256Palette();
    pattern_ = make_pattern();
    palette_in_use_ = 0;
    EnablePalette(1);
    valid_ = 1;
    // Units are read when first asked for; here before there is more than one thread to ask.
    static_cast<void>(Mapping());
    ReleaseWinDC();
}

void vSCREEN::Destructor() noexcept
{
    valid_ = 0;
    if (screen_dc_)
        ReleaseDC(nullptr, screen_dc_);
    screen_dc_ = nullptr;
    screen_dc_references_ = 0;
}

void vSCREEN::ReInitialize() noexcept
{
    Destructor();
    Constructor();
}

HDC vSCREEN::GetWinDC() noexcept
{
    const std::scoped_lock lock(dc_mutex_);
    if (!screen_dc_) {
        screen_dc_ = GetDC(nullptr);
        SetROP2(screen_dc_, draw_mode_ == vDRAW_XOR ? R2_XORPEN : R2_COPYPEN);
        SelectClip(screen_dc_);
    }
    ++screen_dc_references_;
    return screen_dc_;
}

int vSCREEN::ReleaseWinDC() noexcept
{
    const std::scoped_lock lock(dc_mutex_);
    if (screen_dc_references_ > 0 && --screen_dc_references_ == 0) {
        ReleaseDC(nullptr, screen_dc_);
        screen_dc_ = nullptr;
    }
    return 1;
}

void vSCREEN::EnablePalette(int enabled) noexcept
{
    if (GetNoColours() != palette_colours)
        return;
    palette_in_use_ = enabled ? 1 : 0;
    UpdatePalette(GetWinDC());
    ReleaseWinDC();
}

int vSCREEN::UpdatePalette(HDC dc) const noexcept
{
    if (!palette_in_use_)
        return 0;
    SelectPalette(dc, palette_, FALSE);
    return RealizePalette(dc) != gdi_error;
}

void vSCREEN::Create256Palette() noexcept
{
    const std::lock_guard lock(palette_mutex_);
    if (palette_)
        return;
    log_palette_ = make_screen_palette(levels_for_gamma(gamma_tenths_from_registry()));
    palette_ = CreatePalette(log_palette_.log_palette());
}

COLORREF vSCREEN::Colour(vSCREENCOLOUR colour) const noexcept
{
    switch (colour) {
    case vSCREEN_WHITE:
        return RGB(255, 255, 255);
    case vSCREEN_LIGHT_GREY:
        return RGB(224, 224, 224);
    case vSCREEN_GREY:
        return RGB(192, 192, 192);
    case vSCREEN_DARK_GREY:
        return RGB(128, 128, 128);
    case vSCREEN_BLACK:
        return RGB(0, 0, 0);
    }
    return GetSysColor(colour);
}

void vSCREEN::DrawMode(vDRAWMODE mode) noexcept
{
    const std::scoped_lock lock(dc_mutex_);
    draw_mode_ = mode;
    if (screen_dc_)
        SetROP2(screen_dc_, mode == vDRAW_XOR ? R2_XORPEN : R2_COPYPEN);
}

vSIZE vSCREEN::Size() const noexcept
{
    return {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
}

} // namespace klv
