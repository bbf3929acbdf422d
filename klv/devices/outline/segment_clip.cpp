#include "klv/devices/outline/segment_clip.h"

#include <algorithm>

namespace klv {
namespace {

void clip_axis(segment_part& part, double from, double delta, double low, double high) noexcept
{
    if (delta == 0) {
        if (from < low || from > high)
            part = {1, 0};
        return;
    }
    const double a = (low - from) / delta;
    const double b = (high - from) / delta;
    part.first = std::max(part.first, std::min(a, b));
    part.last = std::min(part.last, std::max(a, b));
}

} // namespace

segment_part visible_part(const POINT& from, const POINT& to, const RECT& rect) noexcept
{
    segment_part part;
    clip_axis(part, from.x, static_cast<double>(to.x) - from.x, rect.left, rect.right);
    clip_axis(part, from.y, static_cast<double>(to.y) - from.y, rect.top, rect.bottom);
    if (part.empty())
        return {1, 0};
    return part;
}

} // namespace klv
