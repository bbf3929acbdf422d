#include "klv/devices/outline/polygon_clip.h"

#include "klv/base/buffer.h"
#include "klv/base/muldiv.h"

#include <cstdint>
#include <utility>

namespace klv {
namespace {

// One side of the rectangle: the points whose coordinate, times the sign, is at most the limit are in.
struct half_plane {
    LONG POINT::*along;
    LONG POINT::*across;
    int sign;
    std::int64_t limit;

    bool holds(const POINT& p) const noexcept { return std::int64_t{p.*along} * sign <= limit; }
    // Where the segment from a to b, with one end in and one out, meets the side.
    POINT meeting(const POINT& a, const POINT& b) const noexcept
    {
        const std::int64_t at = limit * sign;
        POINT result{};
        result.*along = static_cast<LONG>(at);
        result.*across = static_cast<LONG>(a.*across
            + mul_div(std::int64_t{b.*across} - a.*across, at - a.*along, std::int64_t{b.*along} - a.*along));
        return result;
    }
};

// False when memory is out.
bool clip_side(const vBUFFER<POINT>& in, const half_plane& side, vBUFFER<POINT>& out) noexcept
{
    out.clear();
    for (std::size_t i = 0; i < in.size(); ++i) {
        const POINT& from = in[i];
        const POINT& to = in[i + 1 < in.size() ? i + 1 : 0];
        if (side.holds(from) && !out.push_back(from))
            return false;
        if (side.holds(from) != side.holds(to) && !out.push_back(side.meeting(from, to)))
            return false;
    }
    return true;
}

} // namespace

void clip_polygons(
    std::span<const POINT> points, std::span<const int> counts, const RECT& rect, LISTINFO& out) noexcept
{
    const half_plane sides[]
        = {{&POINT::x, &POINT::y, -1, -std::int64_t{rect.left}}, {&POINT::x, &POINT::y, 1, rect.right},
            {&POINT::y, &POINT::x, -1, -std::int64_t{rect.top}}, {&POINT::y, &POINT::x, 1, rect.bottom}};
    vBUFFER<POINT> polygon;
    vBUFFER<POINT> cut;
    std::size_t start = 0;
    for (const int count : counts) {
        const auto size = static_cast<std::size_t>(count);
        bool whole = polygon.assign(points.subspan(start, size));
        start += size;
        for (const half_plane& side : sides) {
            whole = whole && clip_side(polygon, side, cut);
            polygon.swap(cut);
        }
        int appended = 0;
        for (const POINT& point : polygon)
            appended += whole ? out.AppendPoint(point) : 0;
        out.AppendCount(appended);
    }
}

} // namespace klv
