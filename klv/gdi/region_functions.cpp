#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/canvas.h"
#include "klv/gdi/raster/curves.h"
#include "klv/gdi/state/region_object.h"

#include <algorithm>
#include <cstring>

namespace klv {

using namespace gdi;

namespace {

HRGN make_region(region area)
{
    return handle_of<HRGN>(register_object(std::make_shared<region_object>(std::move(area))));
}

/// Joins a region with another as a mode (RGN_AND to RGN_COPY) says. False for another mode.
bool combine(region& result, const region& first, const region& second, INT mode)
{
    switch (mode) {
    case RGN_AND:
        result.intersect(first, second);
        return true;
    case RGN_OR:
        result.unite(first, second);
        return true;
    case RGN_XOR:
        result.exclusive_or(first, second);
        return true;
    case RGN_DIFF:
        result.subtract(first, second);
        return true;
    case RGN_COPY:
        result = first;
        return true;
    default:
        return false;
    }
}

constexpr box everything{-(1 << 30), -(1 << 30), 1 << 30, 1 << 30};

} // namespace

HRGN CreateRectRgn(INT left, INT top, INT right, INT bottom) noexcept
{
    return guarded([&] {
        const box b = ordered_box(left, top, right, bottom);
        return make_region(is_empty(b) ? region() : region(b));
    });
}

HRGN CreateEllipticRgn(INT left, INT top, INT right, INT bottom) noexcept
{
    return guarded([&] {
        region_builder rows;
        const box area = ordered_box(left, top, right, bottom);
        fill_rounded_box(area, INT32_MAX, INT32_MAX, area, rows);
        return make_region(rows.take());
    });
}

HRGN CreatePolygonRgn(const POINT* points, INT count, INT mode) noexcept
{
    return CreatePolyPolygonRgn(points, &count, 1, mode);
}

HRGN CreatePolyPolygonRgn(const POINT* points, const INT* counts, INT polygons, INT mode) noexcept
{
    return guarded([&]() -> HRGN {
        if (points == nullptr || counts == nullptr || polygons <= 0 || mode < ALTERNATE || mode > WINDING)
            return nullptr;
        if (std::any_of(counts, counts + polygons, [](INT n) { return n < 0; }))
            return nullptr;
        auto& converter = thread_scratch().converter;
        converter.begin(everything);
        for (INT i = 0; i < polygons; ++i) {
            const auto count = static_cast<std::size_t>(counts[i]);
            converter.add_polygon(std::span(points, count));
            points += count;
        }
        region_builder rows;
        converter.run(mode == WINDING ? fill_rule::non_zero : fill_rule::even_odd, rows);
        return make_region(rows.take());
    });
}

INT CombineRgn(HRGN result, HRGN first, HRGN second, INT mode) noexcept
{
    return guarded([&]() -> INT {
        auto* to = find<region_object>(result);
        const auto* a = find<region_object>(first);
        const auto* b = find<region_object>(second);
        if (to == nullptr || a == nullptr || (b == nullptr && mode != RGN_COPY))
            return ERROR_REGION;
        // Without a second region only RGN_COPY is left, which reads the first alone.
        if (!combine(to->area, a->area, b == nullptr ? a->area : b->area, mode))
            return ERROR_REGION;
        return complexity(to->area);
    });
}

INT GetRgnBox(HRGN handle, RECT* out) noexcept
{
    const auto* r = find<region_object>(handle);
    if (r == nullptr || out == nullptr)
        return ERROR_REGION;
    const box& b = r->area.extents();
    *out = r->area.empty() ? RECT{0, 0, 0, 0} : RECT{b.x1, b.y1, b.x2, b.y2};
    return complexity(r->area);
}

INT OffsetRgn(HRGN handle, INT x, INT y) noexcept
{
    auto* r = find<region_object>(handle);
    if (r == nullptr)
        return ERROR_REGION;
    r->area.move(x, y);
    return complexity(r->area);
}

BOOL PtInRegion(HRGN handle, INT x, INT y) noexcept
{
    const auto* r = find<region_object>(handle);
    return r != nullptr && r->area.contains(x, y);
}

BOOL EqualRgn(HRGN first, HRGN second) noexcept
{
    const auto* a = find<region_object>(first);
    const auto* b = find<region_object>(second);
    return a != nullptr && b != nullptr && a->area == b->area;
}

DWORD GetRegionData(HRGN handle, DWORD size, RGNDATA* data) noexcept
{
    const auto* r = find<region_object>(handle);
    if (r == nullptr)
        return 0;
    const auto boxes = r->area.boxes();
    const auto rect_bytes = static_cast<DWORD>(boxes.size() * sizeof(RECT));
    const auto needed = static_cast<DWORD>(sizeof(RGNDATAHEADER)) + rect_bytes;
    if (data == nullptr)
        return needed;
    if (size < needed)
        return 0;
    const box& b = r->area.extents();
    data->rdh = {sizeof(RGNDATAHEADER), RDH_RECTANGLES, static_cast<DWORD>(boxes.size()), rect_bytes,
        {b.x1, b.y1, b.x2, b.y2}};
    static_assert(sizeof(box) == sizeof(RECT));
    if (rect_bytes != 0)
        std::memcpy(reinterpret_cast<char*>(data) + sizeof(RGNDATAHEADER), boxes.data(), rect_bytes);
    return needed;
}

} // namespace klv
