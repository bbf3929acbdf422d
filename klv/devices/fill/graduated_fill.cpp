#include "klv/devices/fill/graduated_fill.h"

#include "klv/base/integer_root.h"
#include "klv/base/muldiv.h"
#include "klv/base/saturating.h"
#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace klv {
namespace {

constexpr int logarithm_steps = 256;
constexpr int coarse_logarithm_steps = 64;

std::uint8_t blend_channel(int from, int to, std::int64_t step, std::int64_t steps) noexcept
{
    const std::int64_t value = steps == 0 ? from : from + mul_div(to - from, step, steps);
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(value, 0, 255));
}

COLORREF blend(COLORREF from, COLORREF to, std::int64_t step, std::int64_t steps) noexcept
{
    return RGB(blend_channel(GetRValue(from), GetRValue(to), step, steps),
        blend_channel(GetGValue(from), GetGValue(to), step, steps),
        blend_channel(GetBValue(from), GetBValue(to), step, steps));
}

} // namespace

// ---- Colour steps --------------------------------------------------------------------------------------

int vDEVICE::GetColourRange(COLORREF from, COLORREF to) const noexcept
{
    const int difference = std::max({std::abs(GetRValue(from) - GetRValue(to)),
        std::abs(GetGValue(from) - GetGValue(to)), std::abs(GetBValue(from) - GetBValue(to))});
    return (difference + 1) / (grad_quality_ == vGRAD_FULL ? 2 : 4);
}

COLORREF vDEVICE::rgb_blend(COLORREF from, COLORREF to, int step, int steps) noexcept
{
    return blend(from, to, step, steps);
}

int vDEVICE::CalcDist(const POINT& a, const POINT& b) noexcept
{
    const std::int64_t dx = std::abs(std::int64_t{a.x} - b.x);
    const std::int64_t dy = std::abs(std::int64_t{a.y} - b.y);
    return dx == 0 || dy == 0
        ? saturated(dx + dy)
        : saturated(length(std::min<std::int64_t>(dx, INT32_MAX), std::min<std::int64_t>(dy, INT32_MAX)));
}

gradation::gradation(const vDEVICE& device) noexcept
    : type_(device.FillSpec().Type())
    , from_(device.FillSpec().ColourFrom().PackedRGB())
    , to_(device.FillSpec().ColourTo().PackedRGB())
    , colour_steps_(device.GetColourRange(from_, to_))
    , full_quality_(device.GetGradQuality() == vGRAD_FULL)
{
}

COLORREF gradation::at_radius(double radius, double whole) const noexcept
{
    // Larger radii are brought down, so that their squares fit.
    constexpr double largest = 1 << 24;
    const double scale = whole > largest ? largest / whole : 1.0;
    const auto r = static_cast<std::int64_t>(radius * scale);
    const auto all = std::max<std::int64_t>(1, static_cast<std::int64_t>(whole * scale));
    return type_ == vFILL_RADIAL_QUADRATIC ? blend(from_, to_, r * r, all * all) : blend(from_, to_, r, all);
}

COLORREF gradation::of_band(int k, int n) const noexcept
{
    if (type_ == vFILL_LINEAR_LOGARITHMIC) {
        const auto position = static_cast<short>(mul_div(k, logarithm_steps, n));
        return blend(from_, to_, std::lround(RealLog(position) * logarithm_steps), logarithm_steps);
    }
    const int step = type_ == vFILL_LINEAR_TWO_WAY ? n - std::abs(2 * k - n) : k;
    return blend(from_, to_, step, n);
}

COLORREF gradation::of_cut_band(int k, int n) const noexcept
{
    if (type_ != vFILL_LINEAR_LOGARITHMIC)
        return of_band(k, n);
    const auto position = static_cast<short>(mul_div(k, logarithm_steps, n));
    return blend(from_, to_, Log(position), coarse_logarithm_steps);
}

COLORREF gradation::of_box(int k, int n) const noexcept { return blend(to_, from_, k, n); }

int fill_angle(const vDEVICE& device) noexcept
{
    return static_cast<int>(device.FillSpec().Angle().Double());
}

// ---- Painting ------------------------------------------------------------------------------------------

band_painter::band_painter(vDEVICE& device) noexcept
    : device_(device)
    , dc_(device.ActivateDC())
    , old_pen_(SelectObject(dc_, GetStockObject(NULL_PEN)))
    , old_brush_(SelectObject(dc_, GetStockObject(NULL_BRUSH)))
    , old_mode_(SetPolyFillMode(dc_, device.FillSpec().Mode() == vFILL_ALTERNATE ? ALTERNATE : WINDING))
{
}

band_painter::~band_painter()
{
    SetPolyFillMode(dc_, old_mode_);
    SelectObject(dc_, old_brush_);
    SelectObject(dc_, old_pen_);
    if (brush_)
        DeleteObject(brush_);
    device_.ReleaseWinDC();
}

void band_painter::colour(COLORREF colour) noexcept
{
    HBRUSH next = device_.CreateBrush(vCOLOUR(GetRValue(colour), GetGValue(colour), GetBValue(colour)));
    SelectObject(dc_, next);
    if (brush_)
        DeleteObject(brush_);
    brush_ = next;
}

void GradFill(vDEVICE& device, const vSHAPE& shape) noexcept
{
    const int type = device.FillSpec().Type();
    const bool radial = type == vFILL_RADIAL || type == vFILL_RADIAL_QUADRATIC;
    if (device.RecordsNatively()) {
        if (radial)
            RadialFillByPolygons(device, shape);
        else if (type == vFILL_BOX)
            BoxFillByPolygons(device, shape);
        else
            LinearFillByPolygons(device, shape);
        return;
    }

    const active_dc dc(device);
    vRECT box = shape.BoundBox();
    device.LPtoDP(box);
    const RECT rect{std::min(box.Left(), box.Right()), std::min(box.Top(), box.Bottom()),
        std::max(box.Left(), box.Right()), std::max(box.Top(), box.Bottom())};
    device.PushClipArea();
    device.ClipArea(shape, RGN_AND);
    if (radial)
        NewRadialFill(device, rect);
    else if (type == vFILL_BOX)
        NewBoxFill(device, rect);
    else
        NewLinearFill(device, rect);
    device.PopClipArea();
}

// ---- Box -----------------------------------------------------------------------------------------------

int box_steps(const gradation& colours, const RECT& rect) noexcept
{
    const std::int64_t width = std::int64_t{rect.right} - rect.left;
    const auto fitting = static_cast<int>(width / 2 / colours.least_band(cut_band));
    return std::max(1, std::min(colours.colour_steps(), fitting));
}

RECT nested_box(const RECT& rect, int k, int n) noexcept
{
    const double step_x = (static_cast<double>(rect.right) - rect.left) / (2 * n - 1);
    const double step_y = (static_cast<double>(rect.bottom) - rect.top) / (2 * n - 1);
    const auto dx = static_cast<LONG>(k * step_x);
    const auto dy = static_cast<LONG>(k * step_y);
    return {rect.left + dx, rect.top + dy, rect.right - dx, rect.bottom - dy};
}

void NewBoxFill(vDEVICE& device, const RECT& rect) noexcept
{
    const gradation colours(device);
    band_painter painter(device);
    const int n = box_steps(colours, rect);
    for (int k = 0; k < n; ++k) {
        const RECT box = nested_box(rect, k, n);
        const POINT corners[]
            = {{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}};
        painter.colour(colours.of_box(k, n));
        Polygon(painter.dc(), corners, 4);
    }
}

} // namespace klv
