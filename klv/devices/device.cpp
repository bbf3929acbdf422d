#include "klv/devices/device.h"

#include "klv/devices/font_detail.h"
#include "klv/devices/line/line_engine.h"
#include "klv/devices/outline/point_list.h"
#include "klv/devices/screen.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <atomic>

namespace klv {
namespace {

constexpr std::uint16_t least_transform_dpi = 10;
constexpr int metafile_units_per_inch = 2540;
constexpr int most_colour_bits = 30;

constinit std::atomic<vDEVICE*> last_device = nullptr;
constinit std::atomic<int> fast_update = 0;

int colours_of(HDC dc) noexcept
{
    const int bits = GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES);
    return 1 << std::clamp(bits, 0, most_colour_bits);
}

} // namespace

// ---- Construction --------------------------------------------------------------------------------------

vDEVICE::vDEVICE(HDC dc) noexcept
    : font_ratio_(short{1})
    , dc_(dc)
{
    if (dc_) {
        saved_dc_ = SaveDC(dc_);
        HRGN clip = CreateRectRgn(0, 0, 0, 0);
        if (GetClipRgn(dc_, clip) == 1)
            clip_ = clip;
        else
            DeleteObject(clip);
        DescribeContext(dc_);
        if (native_metafile_)
            ResetNativeContext(dc_);
        else
            TakeOverMapping(dc_);
    }
    SelectDefaultFont();
}

vDEVICE::vDEVICE(const vDEVICE& other)
    : vDEVICE()
{
    *this = other;
}

vDEVICE& vDEVICE::operator=(const vDEVICE& other)
{
    if (this == &other)
        return *this;
    if (saved_dc_ != 0)
        RestoreDC(dc_, saved_dc_);
    saved_dc_ = 0;
    uses_palette_ = other.uses_palette_;
    native_metafile_ = other.native_metafile_;
    grad_quality_ = other.grad_quality_;
    colours_ = other.colours_;
    font_ratio_ = other.font_ratio_;
    log_units_horz_ = other.log_units_horz_;
    dev_units_horz_ = other.dev_units_horz_;
    log_units_vert_ = other.log_units_vert_;
    dev_units_vert_ = other.dev_units_vert_;
    origin_ = other.origin_;
    dc_ = other.dc_;
    dc_references_ = other.dc_references_;
    max_x_transform_dpi_ = other.max_x_transform_dpi_;
    max_y_transform_dpi_ = other.max_y_transform_dpi_;
    line_stack_ = other.line_stack_;
    fill_stack_ = other.fill_stack_;
    font_stack_ = other.font_stack_;
    CopyClips(other);
    line_ = other.line_;
    fill_ = other.fill_;
    line_colour_ = other.line_colour_;
    fill_colour_from_ = other.fill_colour_from_;
    fill_colour_to_ = other.fill_colour_to_;
    display_mode_ = other.display_mode_;
    separation_colour_ = other.separation_colour_;
    show_other_spots_ = other.show_other_spots_;
    hide_dark_ = other.hide_dark_;
    line_visible_ = other.line_visible_;
    fill_visible_ = other.fill_visible_;
    plate_ = other.plate_;
    vDEVICE::FontSpec(other.vDEVICE::FontSpec());
    return *this;
}

vDEVICE::~vDEVICE()
{
    vDEVICE* self = this;
    last_device.compare_exchange_strong(self, nullptr);
    FreeFonts();
    ForgetClips();
    GetListInfo().ClearPolygons();
    if (native_metafile_)
        GetScreen().EnablePalette(1);
    if (saved_dc_ != 0)
        RestoreDC(dc_, saved_dc_);
}

void vDEVICE::DescribeContext(HDC dc) noexcept
{
    colours_ = colours_of(dc);
    native_metafile_ = GetDeviceCaps(dc, TECHNOLOGY) == DT_METAFILE;
}

void vDEVICE::ResetNativeContext(HDC dc) noexcept
{
    log_units_horz_ = dev_units_horz_ = metafile_units_per_inch;
    log_units_vert_ = dev_units_vert_ = metafile_units_per_inch;
    uses_palette_ = false;
    GetScreen().EnablePalette(0);
    SetBkColor(dc, RGB(255, 255, 255));
    SetBkMode(dc, OPAQUE);
    SelectObject(dc, GetStockObject(WHITE_BRUSH));
    SetROP2(dc, R2_COPYPEN);
    SelectObject(dc, GetStockObject(SYSTEM_FONT));
    SetTextAlign(dc, 0);
    SetTextCharacterExtra(dc, 0);
    SelectObject(dc, GetStockObject(BLACK_PEN));
    SetPolyFillMode(dc, ALTERNATE);
    SetTextColor(dc, RGB(0, 0, 0));
}

// ---- Context -------------------------------------------------------------------------------------------

vDEV_TYPE vDEVICE::DeviceType() const noexcept
{
    if (!dc_)
        return vDEV_DISPLAY;
    switch (GetDeviceCaps(dc_, TECHNOLOGY)) {
    case DT_PLOTTER:
    case DT_RASPRINTER:
        return vDEV_PRINTER;
    case DT_METAFILE:
        return vDEV_METAFILE;
    default:
        return vDEV_DISPLAY;
    }
}

HDC vDEVICE::GetWinDC() noexcept
{
    HDCAddRef();
    return dc_;
}

int vDEVICE::ReleaseWinDC() noexcept
{
    HDCReleaseRef();
    return 1;
}

HDC vDEVICE::ActivateDC() noexcept
{
    HDC dc = GetWinDC();
    last_device = this;
    constexpr int no_palette = -1;
    if (uses_palette_ && dc && colours_ <= 256 && GetScreen().Valid()
        && GetDeviceCaps(dc, SIZEPALETTE) != no_palette)
        GetScreen().UpdatePalette(dc);
    return dc;
}

vDEVICE* vDEVICE::LastDevice() noexcept { return last_device; }

int vDEVICE::GetNoColours() const noexcept { return colours_; }

std::uint16_t vDEVICE::maxXTransformDPI() const noexcept { return max_x_transform_dpi_; }

void vDEVICE::maxXTransformDPI(std::uint16_t dpi) noexcept
{
    max_x_transform_dpi_ = std::max(dpi, least_transform_dpi);
}

std::uint16_t vDEVICE::maxYTransformDPI() const noexcept { return max_y_transform_dpi_; }

void vDEVICE::maxYTransformDPI(std::uint16_t dpi) noexcept
{
    max_y_transform_dpi_ = std::max(dpi, least_transform_dpi);
}

// ---- Process-wide state --------------------------------------------------------------------------------

void vDEVICE::FastUpdate(int on) noexcept { fast_update = on; }

int vDEVICE::FastUpdate() noexcept { return fast_update; }

LINEINFO& vDEVICE::GetLineInfo() noexcept
{
    static thread_local LINEINFO line;
    return line;
}

LISTINFO& vDEVICE::GetListInfo() noexcept
{
    static thread_local LISTINFO list;
    return list;
}

} // namespace klv
