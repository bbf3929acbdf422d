#include "klv/devices/outline/point_list.h"

#include "klv/core/integer_math.h"
#include "klv/devices/outline/coordinates.h"

#include <utility>

namespace klv {

int LINESEG::CalcIntersect(int y) const noexcept
{
    if (dx == 0)
        return top.x;
    const std::int64_t run = std::int64_t{dx} * (std::int64_t{y} - top.y);
    const std::int64_t half = dx < 0 ? -(std::int64_t{dy} / 2) : std::int64_t{dy} / 2;
    return static_cast<int>(top.x + (run + half) / dy);
}

int LISTINFO::AppendCount(int count) noexcept
{
    polygon_start_ = true;
    if (count <= 0 || points_.empty())
        return 0;
    if (count == 1) {
        const POINT only = points_.back();
        count += append(points_, only);
    }
    return append(counts_, count);
}

int LISTINFO::AppendLineSeg(const POINT& from, const POINT& to) noexcept
{
    if (from.y == to.y)
        return 0;
    LINESEG edge{from, to, 0, 0, 0};
    if (from.y > to.y) {
        std::swap(edge.top, edge.bottom);
        edge.direction = 1;
    }
    edge.dy = edge.bottom.y - edge.top.y;
    edge.dx = edge.bottom.x - edge.top.x;
    return append(segments_, edge);
}

void LISTINFO::RotatePoints(const POINT& centre, int degrees) noexcept
{
    const double sine = Sin(static_cast<short>(degrees)) / double{trigonometric_scale};
    const double cosine = Cos(static_cast<short>(degrees)) / double{trigonometric_scale};
    for (POINT& point : points_) {
        const double dx = point.x - static_cast<double>(centre.x) - 0.25;
        const double dy = point.y - static_cast<double>(centre.y) - 0.25;
        point.x = truncated(dx * cosine + dy * sine + centre.x + 0.5);
        point.y = truncated(dy * cosine - dx * sine + centre.y + 0.5);
    }
}

void LISTINFO::ClearPoints() noexcept
{
    points_.clear();
    polygon_start_ = true;
    failed_ = false;
}

void LISTINFO::ClearCounts() noexcept
{
    counts_.clear();
    failed_ = false;
}

void LISTINFO::ClearLineSegs() noexcept { segments_.clear(); }

void LISTINFO::Release() noexcept
{
    points_ = {};
    counts_ = {};
    segments_ = {};
    polygon_start_ = true;
    failed_ = false;
}

} // namespace klv
