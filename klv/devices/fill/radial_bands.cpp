#include "klv/base/muldiv.h"
#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <array>

/// Radial graduations: rings or discs about the middle of a rectangle.
namespace klv {
namespace {

constexpr int full_circle = 360;

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
                = {static_cast<LONG>(centre.x + mul_div(radius, Cos(angle), trigonometric_scale)),
                    static_cast<LONG>(centre.y + mul_div(radius, Sin(angle), trigonometric_scale))};
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

RECT disc_box(const POINT& centre, int radius) noexcept
{
    return {centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius};
}

void paint_discs(band_painter& painter, const gradation& colours, const radial_bands& bands) noexcept
{
    const HDC dc = painter.dc();
    // Where a disc hides what lies below, all that will be seen of it is what the next leaves of it.
    const bool hides = GetROP2(dc) == R2_COPYPEN;
    for (int r = bands.radius; r > 0; r -= bands.band) {
        painter.colour(colours.at_radius(r, bands.radius));
        const RECT disc = disc_box(bands.centre, r);
        if (hides)
            EllipseRing(dc, disc, disc_box(bands.centre, std::max(0, r - bands.band)));
        else
            Ellipse(dc, disc.left, disc.top, disc.right, disc.bottom);
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

} // namespace klv
