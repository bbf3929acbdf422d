#include "klv/gdi/state/mapping.h"

#include <algorithm>

namespace klv::gdi {

LONG saturate(std::int64_t v) { return static_cast<LONG>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX)); }

namespace {

/// value * numerator / denominator, rounded half away from zero. |value| is below 2^32, so that nothing
/// leaves 64 bits.
std::int64_t scale(std::int64_t value, LONG numerator, LONG denominator)
{
    const std::int64_t product = value * numerator;
    const std::int64_t divisor = denominator;
    const std::int64_t half = (divisor < 0 ? -divisor : divisor) / 2;
    return (product < 0 ? product - half : product + half) / divisor;
}

LONG map_coordinate(LONG v, LONG from_origin, LONG from_extent, LONG to_origin, LONG to_extent)
{
    const std::int64_t offset = std::int64_t{v} - from_origin;
    const std::int64_t scaled = from_extent == to_extent ? offset : scale(offset, to_extent, from_extent);
    return saturate(
        std::clamp<std::int64_t>(scaled, -(std::int64_t{1} << 33), std::int64_t{1} << 33) + to_origin);
}

} // namespace

POINT mapping::to_device(POINT p) const
{
    return {map_coordinate(p.x, window_origin.x, window_extent.cx, viewport_origin.x, viewport_extent.cx),
        map_coordinate(p.y, window_origin.y, window_extent.cy, viewport_origin.y, viewport_extent.cy)};
}

POINT mapping::to_logical(POINT p) const
{
    return {map_coordinate(p.x, viewport_origin.x, viewport_extent.cx, window_origin.x, window_extent.cx),
        map_coordinate(p.y, viewport_origin.y, viewport_extent.cy, window_origin.y, window_extent.cy)};
}

LONG mapping::width_to_device(LONG w) const
{
    return saturate(scale(w, viewport_extent.cx, window_extent.cx));
}
LONG mapping::height_to_device(LONG h) const
{
    return saturate(scale(h, viewport_extent.cy, window_extent.cy));
}

RECT mapping::to_device(const RECT& r) const
{
    const POINT a = to_device(POINT{r.left, r.top});
    const POINT b = to_device(POINT{r.right, r.bottom});
    return {a.x, a.y, b.x, b.y};
}

block mapping::to_device(const block& b) const
{
    const RECT r = to_device(
        RECT{b.x, b.y, saturate(std::int64_t{b.x} + b.width), saturate(std::int64_t{b.y} + b.height)});
    const auto extent = [](INT from, INT to) {
        return static_cast<INT>(std::clamp<std::int64_t>(std::int64_t{to} - from, -INT32_MAX, INT32_MAX));
    };
    return {r.left, r.top, extent(r.left, r.right), extent(r.top, r.bottom)};
}

} // namespace klv::gdi
