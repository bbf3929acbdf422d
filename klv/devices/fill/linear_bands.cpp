#include "klv/base/buffer.h"
#include "klv/base/muldiv.h"
#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstdlib>

/// Linear graduations: straight bands across the fill's angle.
namespace klv {
namespace {

constexpr int full_circle = 360;

// The sides between which the bands lie: they run from one end of `start` to the other, across `sweep`.
struct band_frame {
    POINT start_top;
    POINT start_bottom;
    POINT end_bottom;
};

POINT turned(const POINT& p, int sine, int cosine) noexcept
{
    return {static_cast<LONG>((std::int64_t{p.x} * cosine - std::int64_t{p.y} * sine) / trigonometric_scale),
        static_cast<LONG>((std::int64_t{p.x} * sine + std::int64_t{p.y} * cosine) / trigonometric_scale)};
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
        return static_cast<LONG>(
            (std::abs(a / trigonometric_scale) + std::abs(b / trigonometric_scale) + 1) / 2);
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
        static thread_local vBUFFER<std::uint32_t> row;
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

} // namespace klv
