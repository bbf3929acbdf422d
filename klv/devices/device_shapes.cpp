#include "klv/devices/device.h"
#include "klv/devices/line/line_shape.h"
#include "klv/devices/outline/flatten.h"
#include "klv/devices/outline/point_list.h"
#include "klv/devices/outline/polygon_clip.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstring>
#include <limits>

/// Shapes as polygons and regions in device units.
namespace klv {
namespace {

// Collects the start of every segment; a closed contour's last, empty segment repeats its first point.
struct point_collector {
    LISTINFO& list;

    int segment(const POINT& from, const POINT&) noexcept { return list.AppendPoint(from); }
    static constexpr bool wants_corners() noexcept { return false; }
    void corner(const POINT&, const POINT&, const POINT&) noexcept { }
    void end_contour(int count) noexcept { list.AppendCount(count); }
};

template <class T> T* allocated_copy(std::span<const T> items) noexcept
{
    if (items.size_bytes() > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    auto* copy = static_cast<T*>(vMemAlloc(static_cast<std::uint32_t>(items.size_bytes())));
    if (copy)
        std::memcpy(copy, items.data(), items.size_bytes());
    return copy;
}

bool holds(const RECT& area, const POINT& point) noexcept
{
    return area.left <= point.x && point.x <= area.right && area.top <= point.y && point.y <= area.bottom;
}

HRGN region_by_contours(std::span<const POINT> points, std::span<const int> counts, int mode) noexcept
{
    HRGN region = CreateRectRgn(0, 0, 0, 0);
    const POINT* contour_points = points.data();
    for (const int count : counts) {
        HRGN contour = CreatePolygonRgn(contour_points, count, mode);
        contour_points += count;
        if (!contour)
            continue;
        CombineRgn(region, region, contour, RGN_XOR);
        DeleteObject(contour);
    }
    return region;
}

HRGN region_of(std::span<const POINT> points, std::span<const int> counts, vFILLMODE mode) noexcept
{
    if (counts.empty())
        return nullptr;
    const int polygon_mode = mode == vFILL_ALTERNATE ? ALTERNATE : WINDING;
    HRGN region = counts.size() == 1
        ? CreatePolygonRgn(points.data(), counts[0], polygon_mode)
        : CreatePolyPolygonRgn(points.data(), counts.data(), static_cast<int>(counts.size()), polygon_mode);
    return region ? region : region_by_contours(points, counts, polygon_mode);
}

} // namespace

int vDEVICE::ConvertShapeToPoints(
    const vSHAPE& shape, std::span<const POINT>& points, std::span<const int>& counts) const noexcept
{
    LISTINFO& list = GetListInfo();
    list.ClearPolygons();
    point_collector collector{list};
    const unit_mapping mapping = Mapping();
    TraverseShape(shape, mapping, collector);
    points = list.Points();
    counts = list.Counts();
    return list.NoPolygons();
}

int vDEVICE::GetShapeAsPoints(const vSHAPE& shape, POINT** points, int** counts) noexcept
{
    if (!points || !counts || *points || *counts)
        return 0;
    std::span<const POINT> list_points;
    std::span<const int> list_counts;
    const int contours = ConvertShapeToPoints(shape, list_points, list_counts);
    if (contours == 0)
        return 0;
    POINT* new_points = allocated_copy(list_points);
    int* new_counts = allocated_copy(list_counts);
    if (!new_points || !new_counts) {
        vMemFree(new_points);
        vMemFree(new_counts);
        return 0;
    }
    *points = new_points;
    *counts = new_counts;
    return contours;
}

HRGN vDEVICE::GetShapeAsRegion(const vSHAPE& shape, vFILLMODE mode) noexcept
{
    std::span<const POINT> points;
    std::span<const int> counts;
    ConvertShapeToPoints(shape, points, counts);
    return region_of(points, counts, mode);
}

HRGN vDEVICE::ClippingRegion(const vSHAPE& shape, const RECT& area) noexcept
{
    std::span<const POINT> points;
    std::span<const int> counts;
    ConvertShapeToPoints(shape, points, counts);
    if (std::all_of(points.begin(), points.end(), [&](const POINT& point) { return holds(area, point); }))
        return region_of(points, counts, fill_.Mode());
    static thread_local LISTINFO clipped;
    clipped.ClearPolygons();
    clip_polygons(points, counts, area, clipped);
    return region_of(clipped.Points(), clipped.Counts(), fill_.Mode());
}

void vDEVICE::LineShape(const vSHAPE& shape) noexcept { DrawOutline(*this, shape); }

} // namespace klv
