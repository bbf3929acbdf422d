#include "devices/graduated_fill.h"

#include "core/buffer.h"
#include "core/integer_math.h"
#include "devices/device.h"
#include "devices/numbers.h"
#include "platform/gdi/gdi.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace klv {
namespace {

constexpr int sine_scale = 25600;
constexpr int full_circle = 360;
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

// ---- Radial --------------------------------------------------------------------------------------------

namespace {

struct ring_polygons {
    static constexpr int most_vertices = 40;
    std::array<POINT, 2 * most_vertices> points;
    std::array<int, 2> counts;
    int vertices;

    explicit ring_polygons(int radius) noexcept
        : points{}
        , counts{}
        , vertices(radius < 50   ? 12
                  : radius < 100 ? 18
                  : radius < 300 ? 30
                                 : most_vertices)
    {
        counts = {vertices, vertices};
    }

    // One circle, as the first or the second polygon.
    void circle(int which, const POINT& centre, int radius) noexcept
    {
        const int step = full_circle / vertices;
        for (int i = 0; i < vertices; ++i) {
            const auto angle = static_cast<short>(i * step);
            points[static_cast<std::size_t>(which * vertices + i)]
                = {static_cast<LONG>(centre.x + mul_div(radius, Cos(angle), sine_scale)),
                    static_cast<LONG>(centre.y + mul_div(radius, Sin(angle), sine_scale))};
        }
    }
};

struct radial_bands {
    POINT centre;
    int radius;
    int band;
};

radial_bands plan_radial(const gradation& colours, const RECT& rect) noexcept
{
    const POINT centre{static_cast<LONG>((std::int64_t{rect.left} + 1 + rect.right) / 2),
        static_cast<LONG>((std::int64_t{rect.top} + 1 + rect.bottom) / 2)};
    const int radius = vDEVICE::CalcDist(centre, {rect.left, rect.top});
    const int steps
        = std::max(1, std::min(colours.colour_steps(), radius / colours.least_band(clipped_band)));
    const int band = radius / steps;
    constexpr int least_band = 3;
    return {centre, radius, band < least_band ? 2 : band};
}

void paint_rings(band_painter& painter, const gradation& colours, radial_bands bands) noexcept
{
    ring_polygons ring(bands.radius);
    bands.radius += bands.band;
    SetPolyFillMode(painter.dc(), ALTERNATE);
    for (int r = 0; r <= bands.radius; r += bands.band) {
        painter.colour(colours.at_radius(r, bands.radius));
        ring.circle(0, bands.centre, r);
        if (r > bands.band) {
            ring.circle(1, bands.centre, r - bands.band);
            PolyPolygon(painter.dc(), ring.points.data(), ring.counts.data(), 2);
        } else {
            Polygon(painter.dc(), ring.points.data(), ring.vertices);
        }
    }
}

void paint_discs(band_painter& painter, const gradation& colours, const radial_bands& bands) noexcept
{
    const POINT& c = bands.centre;
    for (int r = bands.radius; r > 0; r -= bands.band) {
        painter.colour(colours.at_radius(r, bands.radius));
        Ellipse(painter.dc(), c.x - r, c.y - r, c.x + r, c.y + r);
    }
}

} // namespace

void NewRadialFill(vDEVICE& device, const RECT& rect) noexcept
{
    const gradation colours(device);
    band_painter painter(device);
    const radial_bands bands = plan_radial(colours, rect);
    if (device.DeviceType() == vDEV_DISPLAY)
        paint_rings(painter, colours, bands);
    else
        paint_discs(painter, colours, bands);
}

// ---- Linear --------------------------------------------------------------------------------------------

namespace {

// The sides between which the bands lie: they run from one end of `start` to the other, across `sweep`.
struct band_frame {
    POINT start_top;
    POINT start_bottom;
    POINT end_bottom;
};

POINT turned(const POINT& p, int sine, int cosine) noexcept
{
    return {static_cast<LONG>((std::int64_t{p.x} * cosine - std::int64_t{p.y} * sine) / sine_scale),
        static_cast<LONG>((std::int64_t{p.x} * sine + std::int64_t{p.y} * cosine) / sine_scale)};
}

band_frame plan_linear(const RECT& rect, int angle) noexcept
{
    if (angle == 0 || angle > full_circle)
        return {{rect.left, rect.top}, {rect.left, rect.bottom}, {rect.right, rect.bottom}};
    const int sine = Sin(static_cast<short>(angle % full_circle));
    const int cosine = Cos(static_cast<short>(angle % full_circle));
    const std::int64_t width = std::int64_t{rect.right} - rect.left + 1;
    const std::int64_t height = std::int64_t{rect.bottom} - rect.top + 1;
    const auto half = [](std::int64_t a, std::int64_t b) {
        return static_cast<LONG>((std::abs(a / sine_scale) + std::abs(b / sine_scale) + 1) / 2);
    };
    const LONG half_width = half(height * sine, width * cosine);
    const LONG half_height = half(width * sine, height * cosine);
    const POINT centre{
        static_cast<LONG>(rect.left + (width + 1) / 2), static_cast<LONG>(rect.top + (height + 1) / 2)};
    return {centre + turned({-half_width, -half_height}, sine, cosine),
        centre + turned({-half_width, half_height}, sine, cosine),
        centre + turned({half_width, half_height}, sine, cosine)};
}

// Whether the bands are upright, and the surface shows every colour as it is.
bool can_paint_as_row(vDEVICE& device, HDC dc, const band_frame& frame) noexcept
{
    constexpr int palette_colours = 256;
    return frame.start_top.x == frame.start_bottom.x && frame.start_bottom.y == frame.end_bottom.y
        && device.GetNoColours() > palette_colours && GetROP2(dc) == R2_COPYPEN;
}

// Upright bands are one row of pixels, stretched over the height: the surface is written row by row, where
// painting band after band would touch every row once for each of them.
class band_row {
public:
    // The part of the frame that shows.
    band_row(HDC dc, const band_frame& frame) noexcept
    {
        RECT clip{};
        if (GetClipBox(dc, &clip) == ERROR_REGION)
            return;
        const auto [left, right] = std::minmax(frame.start_top.x, frame.end_bottom.x);
        const auto [top, bottom] = std::minmax(frame.start_top.y, frame.start_bottom.y);
        area_ = {std::max(left, clip.left), std::max(top, clip.top), std::min(right, clip.right),
            std::min(bottom, clip.bottom)};
    }

    bool prepare() noexcept
    {
        return area_.left < area_.right && area_.top < area_.bottom
            && pixels().resize(static_cast<std::size_t>(area_.right - area_.left));
    }

    void band(int from, int to, COLORREF colour) noexcept
    {
        const auto [low, high] = std::minmax(from, to);
        const auto pixel = static_cast<std::uint32_t>(GetBValue(colour))
            | std::uint32_t{GetGValue(colour)} << 8 | std::uint32_t{GetRValue(colour)} << 16;
        for (int x = std::max<int>(low, area_.left); x < std::min<int>(high, area_.right); ++x)
            pixels()[static_cast<std::size_t>(x - area_.left)] = pixel;
    }

    void paint(HDC dc) noexcept
    {
        const int width = area_.right - area_.left;
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, width, 1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        StretchDIBits(dc, area_.left, area_.top, width, area_.bottom - area_.top, 0, 0, width, 1,
            pixels().data(), &info, DIB_RGB_COLORS, SRCCOPY);
    }

private:
    static vBUFFER<std::uint32_t>& pixels() noexcept
    {
        static vBUFFER<std::uint32_t> row;
        return row;
    }
    RECT area_{};
};

} // namespace

void NewLinearFill(vDEVICE& device, const RECT& rect) noexcept
{
    const gradation colours(device);
    band_painter painter(device);
    const band_frame frame = plan_linear(rect, fill_angle(device));
    const POINT sweep = frame.end_bottom - frame.start_bottom;
    const int reach = vDEVICE::CalcDist(frame.end_bottom, frame.start_bottom);
    const int type = device.FillSpec().Type();
    const int steps = colours.colour_steps() * (type == vFILL_LINEAR ? 1 : 2);
    const int n = std::max(2, std::min(steps, reach / colours.least_band(clipped_band)));

    band_row row(painter.dc(), frame);
    const bool as_row = can_paint_as_row(device, painter.dc(), frame) && row.prepare();
    POINT offset{0, 0};
    for (int k = 0; k <= n; ++k) {
        const POINT next{static_cast<LONG>(mul_div(sweep.x, k + 1, n + 1)),
            static_cast<LONG>(mul_div(sweep.y, k + 1, n + 1))};
        const POINT band[] = {frame.start_top + offset, frame.start_top + next, frame.start_bottom + next,
            frame.start_bottom + offset};
        if (as_row) {
            row.band(band[0].x, band[1].x, colours.of_band(k, n));
        } else {
            painter.colour(colours.of_band(k, n));
            Polygon(painter.dc(), band, 4);
        }
        offset = next;
    }
    if (as_row)
        row.paint(painter.dc());
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
