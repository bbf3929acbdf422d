#include "klv/base/saturating.h"
#include "klv/base/vec2.h"
#include "klv/geometry/planar/exact.h"
#include "klv/geometry/shape.h"

#include <cmath>

namespace klv {

namespace {

// An edge of a convex polygon, and how far from it the line lies that it moves to.
class moved_edge {
public:
    /// \param outward 1 when the polygon runs in direction 1, else -1
    moved_edge(const vPOINT& from, const offset& along, int outward, double dx, double dy)
        : along_{static_cast<double>(along.x), static_cast<double>(along.y)}
    {
        // The point of the ellipse around 0 where its tangent runs along the edge, on the outer side.
        const double reach = std::hypot(dx * along_.y, dy * along_.x);
        const vec2 touch = reach > 0
            ? vec2{outward * dx * dx * along_.y / reach, -outward * dy * dy * along_.x / reach}
            : vec2{0, 0};
        start_ = {from.x + touch.x, from.y + touch.y};
    }

    /// Where the two lines cross; for lines side by side, where this one's edge has moved its start.
    [[nodiscard]] vec2 cross(const moved_edge& before) const
    {
        const double turn = before.along_.x * along_.y - before.along_.y * along_.x;
        if (turn == 0)
            return start_;
        const double t = ((before.start_.x - start_.x) * before.along_.y
                             - (before.start_.y - start_.y) * before.along_.x)
            / -turn;
        return {start_.x + t * along_.x, start_.y + t * along_.y};
    }

private:
    vec2 along_;
    vec2 start_;
};

} // namespace

int vSHAPE::Expand(unsigned int dx, unsigned int dy) noexcept
{
    const auto direction = IsSingleClosedConvexPolygon();
    if (direction == vWINDING_NONE)
        return 0;
    const std::size_t n = count_;
    const auto edge_at = [this, n](std::size_t i) {
        return offset::between(records_[i % n].point(), records_[(i + 1) % n].point());
    };
    // A repeated point takes the edge that follows its twins. There is one: the polygon turns somewhere.
    const auto moved = [&](std::size_t i) {
        while (edge_at(i).x == 0 && edge_at(i).y == 0)
            ++i;
        return moved_edge(
            records_[i % n].point(), edge_at(i), direction == vWINDING_CLOCKWISE ? 1 : -1, dx, dy);
    };

    vSHAPE result;
    if (!result.reserve(n))
        return 0;
    result.closed_ = closed_;
    std::size_t last = n - 1;
    while (edge_at(last).x == 0 && edge_at(last).y == 0)
        --last;
    moved_edge before = moved(last);
    for (std::size_t i = 0; i < n; ++i) {
        const moved_edge after = moved(i);
        const vec2 vertex = after.cross(before);
        result.points_.data()[i]
            = point_record({round_saturated(vertex.x), round_saturated(vertex.y)}, records_[i].flags());
        if (edge_at(i).x != 0 || edge_at(i).y != 0)
            before = after;
    }
    result.count_ = static_cast<std::uint32_t>(n);
    result.capacity_ = static_cast<std::uint16_t>(
        std::min((n + capacity_step - 1) / capacity_step * capacity_step, max_points));
    result.CalculateBoundingBox();
    *this = std::move(result);
    return 1;
}

} // namespace klv
