#include "klv/devices/device.h"
#include "klv/devices/fill/band_cutter.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <new>

/// Graduated fills on native metafiles: every band is cut to the shape and recorded as polygons.
namespace klv {
namespace {

// A shape's outline in device pixels and what cutting needs of it. Memory running out throws.
struct prepared_shape {
    cut_array<POINT> points;
    cut_array<int> counts;
    cut_array<POINT> crossings;
    cut_outline outline{};
    RECT box{};

    prepared_shape(const vDEVICE& device, const vSHAPE& shape)
    {
        std::span<const POINT> flat;
        std::span<const int> flat_counts;
        device.ConvertShapeToPoints(shape, flat, flat_counts);
        points.assign(flat.begin(), flat.end());
        counts.assign(flat_counts.begin(), flat_counts.end());
        outline = {points, counts, device.FillSpec().Mode() == vFILL_ALTERNATE};
        GetLineIntersections(outline, crossings);
        vRECT bounds = shape.BoundBox();
        device.LPtoDP(bounds);
        box = {std::min(bounds.Left(), bounds.Right()), std::min(bounds.Top(), bounds.Bottom()),
            std::max(bounds.Left(), bounds.Right()), std::max(bounds.Top(), bounds.Bottom())};
    }
    POINT centre() const noexcept
    {
        return {box.left + (box.right - box.left) / 2, box.top + (box.bottom - box.top) / 2};
    }
};

void paint(band_painter& painter, LISTINFO& polygons, COLORREF colour) noexcept
{
    const std::span<const int> counts = polygons.Counts();
    if (counts.empty())
        return;
    painter.colour(colour);
    PolyPolygon(painter.dc(), polygons.Points().data(), counts.data(), static_cast<int>(counts.size()));
}

double aspect_of(const vDEVICE& device) noexcept
{
    const double x = static_cast<double>(device.DevUnitsPerHorzInch()) / device.LogUnitsPerHorzInch();
    const double y = static_cast<double>(device.DevUnitsPerVertInch()) / device.LogUnitsPerVertInch();
    return x / y;
}

void fill_linear(vDEVICE& device, const vSHAPE& shape)
{
    const gradation colours(device);
    const int angle = fill_angle(device);
    vSHAPE turned(shape);
    if (angle != 0)
        turned.Rotate(shape.BoundBox().Centre(), -angle, aspect_of(device));
    const prepared_shape prepared(device, turned);
    vPOINT logical_centre = shape.BoundBox().Centre();
    device.LPtoDP(logical_centre);

    const int type = device.FillSpec().Type();
    const int width = prepared.box.right - prepared.box.left;
    const int steps = colours.colour_steps() * (type == vFILL_LINEAR_TWO_WAY ? 2 : 1);
    const int n = std::max(2, std::min(steps, width / colours.least_band(cut_band)));
    const double strip = static_cast<double>(width) / n;
    band_painter painter(device);
    LISTINFO polygons;
    for (int k = 0; k <= n; ++k) {
        polygons.ClearPolygons();
        const int x0 = prepared.box.left + static_cast<int>(k * strip);
        const int x1 = prepared.box.left + static_cast<int>((k + 1) * strip);
        GetLinearFillPolygons(x0, x1, prepared.outline, prepared.crossings, polygons);
        if (angle != 0)
            polygons.RotatePoints(logical_centre, angle);
        paint(painter, polygons, colours.of_cut_band(k, n));
    }
}

void fill_radial(vDEVICE& device, const vSHAPE& shape)
{
    const gradation colours(device);
    const prepared_shape prepared(device, shape);
    const POINT centre = prepared.centre();
    cut_array<double> tangents;
    GetTangents(centre, prepared.outline, tangents);
    double radius = 0;
    for (const POINT& point : prepared.points)
        radius = std::max(radius,
            std::hypot(static_cast<double>(point.x) - centre.x, static_cast<double>(point.y) - centre.y));

    const int fitting = static_cast<int>(radius / colours.least_band(cut_band)) + 1;
    const int n = std::max(2, std::min(colours.colour_steps(), fitting));
    band_painter painter(device);
    LISTINFO polygons;
    for (int k = 0; k <= n; ++k) {
        polygons.ClearPolygons();
        const double inner = k * radius / n;
        const double outer = (k + 1) * radius / n;
        GetRadialFillPolygons(centre, inner, outer, prepared.outline, prepared.crossings, tangents, polygons);
        paint(painter, polygons, colours.at_radius(inner, radius));
    }
}

// The part of an outline inside a rectangle: the strip, cut a second time after exchanging x and y.
void cut_rectangle(const prepared_shape& prepared, const RECT& rect, LISTINFO& out)
{
    LISTINFO strip;
    GetLinearFillPolygons(rect.left, rect.right, prepared.outline, prepared.crossings, strip);
    cut_array<POINT> exchanged;
    for (const POINT& point : strip.Points())
        exchanged.push_back({point.y, point.x});
    // The pieces don't overlap, so no crossings and either fill mode.
    LISTINFO cut;
    GetLinearFillPolygons(rect.top, rect.bottom, {exchanged, strip.Counts(), true}, {}, cut);
    std::size_t at = 0;
    for (const int count : cut.Counts()) {
        int added = 0;
        for (int i = 0; i < count; ++i, ++at)
            added += out.AppendPoint({cut.Points()[at].y, cut.Points()[at].x});
        out.AppendCount(added);
    }
}

void fill_box(vDEVICE& device, const vSHAPE& shape)
{
    const gradation colours(device);
    const prepared_shape prepared(device, shape);
    const RECT& box = prepared.box;
    band_painter painter(device);
    LISTINFO polygons;
    const int n = box_steps(colours, box);
    for (int k = 0; k < n; ++k) {
        polygons.ClearPolygons();
        cut_rectangle(prepared, nested_box(box, k, n), polygons);
        paint(painter, polygons, colours.of_box(k, n));
    }
}

template <class Fill> void without_throwing(Fill&& fill) noexcept
{
    try {
        fill();
    } catch (const std::bad_alloc&) {
        // The bands recorded so far stay.
    }
}

} // namespace

void LinearFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept
{
    without_throwing([&] { fill_linear(device, shape); });
}

void RadialFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept
{
    without_throwing([&] { fill_radial(device, shape); });
}

void BoxFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept
{
    without_throwing([&] { fill_box(device, shape); });
}

} // namespace klv
