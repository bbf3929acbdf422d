#include "klv/geometry/planar/flat_outline.h"

#include <algorithm>
#include <utility>

namespace klv {

namespace {

// Flattening limits coordinates to those of devices.
bool reaches_beyond_devices(const vRECT& box)
{
    constexpr int farthest = 1 << 27;
    return box.Left() < -farthest || box.Top() < -farthest || box.Right() > farthest
        || box.Bottom() > farthest;
}

bool is_polygons(const vSHAPE& shape)
{
    return shape.IsValid() && std::ranges::none_of(shape.records(), [](const point_record& r) {
        return r.has(point_flags::curve_to);
    });
}

} // namespace

flat_outline::flat_outline(const vSHAPE& shape) noexcept
{
    if (reaches_beyond_devices(shape.BoundBox()) && is_polygons(shape))
        copy_polygons(shape);
    else
        contours_ = shape.GetShapeAsPoints(&points_, &counts_);
    for (const int count : counts())
        total_ += static_cast<std::size_t>(count);
}

// Polygons are flat as they are.
void flat_outline::copy_polygons(const vSHAPE& shape) noexcept
{
    const auto records = shape.records();
    const auto room_for = [](std::size_t count, std::size_t size) {
        return vMemAlloc(static_cast<std::uint32_t>(count * size));
    };
    points_ = static_cast<POINT*>(room_for(records.size(), sizeof(POINT)));
    counts_ = static_cast<int*>(room_for(static_cast<std::size_t>(shape.NoOfContours()), sizeof(int)));
    if (points_ == nullptr || counts_ == nullptr)
        return;
    int count = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        points_[i] = {records[i].x(), records[i].y()};
        ++count;
        if (records[i].has(point_flags::last))
            counts_[contours_++] = std::exchange(count, 0);
    }
}

} // namespace klv
