#include "klv/gdi/state/device_points.h"

namespace klv::gdi {

namespace {

std::vector<POINT>& shared_points()
{
    static std::vector<POINT> buffer;
    return buffer;
}

} // namespace

std::span<const POINT> to_device_points(const drawing_context& dc, std::span<const POINT> points)
{
    if (dc.state.map.is_identity())
        return points;
    auto& out = shared_points();
    out.clear();
    for (const POINT& p : points)
        out.push_back(dc.state.map.to_device(p));
    return out;
}

std::span<const POINT> to_device_points(const drawing_context& dc, POINT first, std::span<const POINT> points)
{
    auto& out = shared_points();
    out.clear();
    out.push_back(dc.state.map.to_device(first));
    for (const POINT& p : points)
        out.push_back(dc.state.map.to_device(p));
    return out;
}

} // namespace klv::gdi
