#include "klv/geometry/outline_walk.h"

namespace klv {

void outline_walk::advance(std::span<const point_record> records)
{
    for (std::size_t i = walked_; i < records.size(); ++i)
        step(records, i);
    walked_ = static_cast<std::uint32_t>(records.size());
}

void outline_walk::assume_polygons(std::size_t records, const vRECT& box, std::size_t open_ends)
{
    *this = outline_walk();
    walked_ = static_cast<std::uint32_t>(records);
    box_ = box;
    open_ends_ = static_cast<std::uint32_t>(open_ends);
}

void outline_walk::step(std::span<const point_record> records, std::size_t i)
{
    const auto flags = records[i].flags();
    if (flags == point_flags::open_end)
        ++open_ends_;
    if (rejected_)
        return;

    if (controls_due_ > 0) {
        rejected_ = (flags & point_flags::control) == 0;
        if (--controls_due_ == 0 && closes_ && !rejected_)
            enclose_curve(records, i - 2, contour_start_);
        return;
    }

    switch (flags) {
    case point_flags::start_line:
    case point_flags::start_curve:
        rejected_ = !expecting_start_;
        expecting_start_ = false;
        contour_start_ = static_cast<std::uint32_t>(i);
        break;
    case point_flags::line_to:
    case point_flags::curve_to:
        rejected_ = expecting_start_;
        break;
    case point_flags::open_end:
    case point_flags::closing_line:
    case point_flags::closing_curve:
        rejected_ = expecting_start_;
        expecting_start_ = true;
        break;
    default:
        rejected_ = true;
    }
    if (rejected_)
        return;

    const vPOINT point = records[i].point();
    if (i == 0)
        box_ = vRECT(point, point);
    box_.EncompassPoint(point);
    if (curve_due_)
        enclose_curve(records, i - 3, i);
    const bool curve_leaves = (flags & point_flags::curve_to) != 0;
    closes_ = curve_leaves && (flags & point_flags::last) != 0;
    curve_due_ = curve_leaves && !closes_;
    controls_due_ = curve_leaves ? 2 : 0;
}

void outline_walk::enclose_curve(std::span<const point_record> records, std::size_t start, std::size_t end)
{
    box_.EncompassBezierCurve(records[start].bez_point(), records[start + 1].bez_point(),
        records[start + 2].bez_point(), records[end].bez_point());
}

} // namespace klv
