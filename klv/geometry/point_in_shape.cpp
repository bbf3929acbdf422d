#include "klv/core/point.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/flat_outline.h"
#include "klv/geometry/shape.h"

namespace klv {

namespace {

bool lies_on_edge(const POINT& p, const POINT& a, const POINT& b)
{
    const vRECT box(std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y));
    if (!(box ^ vPOINT(p)))
        return false;
    // Inside the box the differences to a are no longer than the edge's own, so that comparing the two
    // slopes' products, up to 2^64, modulo 2^64 is exact but for the sign that the box fixes.
    const auto dx = [](const POINT& to, const POINT& from) {
        return static_cast<std::uint64_t>(std::int64_t{to.x} - from.x);
    };
    const auto dy = [](const POINT& to, const POINT& from) {
        return static_cast<std::uint64_t>(std::int64_t{to.y} - from.y);
    };
    return dx(p, a) * dy(b, a) == dy(p, a) * dx(b, a);
}

} // namespace

int vPOINT::operator^(const vSHAPE& shape) const noexcept
{
    if (!(shape.BoundBox() ^ *this))
        return 0;
    const flat_outline outline(shape);
    const POINT p = *this;
    const bool on_outline = outline.any_contour([&](std::span<const POINT> contour) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            if (lies_on_edge(p, contour[i], contour[i + 1 == contour.size() ? 0 : i + 1]))
                return true;
        }
        return false;
    });
    return on_outline || PointInPolyPolygon(outline.points(), outline.counts(), p);
}

} // namespace klv
