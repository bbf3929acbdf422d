#include "klv/base/wrapping.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace klv {

int vSHAPE::AppendPoint(const vBEZPOINT& point) noexcept
{
    if (!Allocate())
        return 0;
    points_.data()[count_++] = point_record(point);
    settle_after_edit(point.GetFlags());
    return 1;
}

int vSHAPE::InsertPoint(unsigned short i, const vBEZPOINT& point) noexcept
{
    const std::array record{point_record(point)};
    if (i > count_ || !insert_records(i, record))
        return 0;
    settle_after_edit(point.GetFlags());
    return 1;
}

int vSHAPE::DeletePoint(unsigned short i) noexcept
{
    if (i >= count_ || !allocate_for_change())
        return 0;
    erase_records(i, 1);
    CalculateBoundingBox();
    return 1;
}

void vSHAPE::settle_after_edit(std::uint8_t new_flags) noexcept
{
    walk_.advance(records());
    if ((new_flags & point_flags::last) != 0)
        closed_ = (new_flags & point_flags::segment) != 0 && walk_.open_ends() == 0;
    if (count_ < 2)
        box_ = vRECT(records_[0].point(), records_[0].point());
    else
        CalculateBoundingBox();
}

bool vSHAPE::insert_records(std::size_t i, std::span<const point_record> records) noexcept
{
    if (!Allocate(records.size()))
        return false;
    point_record* const at = points_.data() + i;
    std::memmove(static_cast<void*>(at + records.size()), at, (count_ - i) * point_record::size);
    std::memcpy(static_cast<void*>(at), records.data(), records.size_bytes());
    count_ += static_cast<std::uint32_t>(records.size());
    forget_walk();
    return true;
}

// The records must be the shape's own.
void vSHAPE::erase_records(std::size_t i, std::size_t n) noexcept
{
    point_record* const at = points_.data() + i;
    std::memmove(static_cast<void*>(at), at + n, (count_ - i - n) * point_record::size);
    count_ -= static_cast<std::uint32_t>(n);
    forget_walk();
}

void vSHAPE::CloseAllContours(int close) noexcept
{
    if (!allocate_for_change())
        return;
    point_record* out = points_.data();
    for (std::size_t i = 0; i < count_; ++i) {
        point_record record = points_.data()[i];
        std::size_t controls = 0;
        if (close != 0 && record.flags() == point_flags::open_end) {
            record.set_flags(point_flags::closing_line);
        } else if (close == 0 && record.flags() == point_flags::closing_line) {
            record.set_flags(point_flags::open_end);
        } else if (close == 0 && record.flags() == point_flags::closing_curve) {
            record.set_flags(point_flags::open_end);
            controls = std::min<std::size_t>(2, count_ - i - 1);
        }
        *out++ = record;
        i += controls;
    }
    count_ = static_cast<std::uint32_t>(out - points_.data());
    forget_walk();
    CalculateBoundingBox();
    closed_ = close != 0;
}

int vSHAPE::SplitPoint(unsigned short i, unsigned int gap) noexcept
{
    if (i >= count_)
        return 0;
    const std::size_t p = before(i);
    if (records_[i].flags() == point_flags::open_end || records_[p].flags() == point_flags::open_end)
        return 0;

    std::size_t start = i;
    while (start > 0 && !records_[start].has(point_flags::first))
        --start;
    std::size_t end = i;
    while (end + 1 < count_ && !records_[end].has(point_flags::last))
        ++end;

    const vPOINT at = records_[i].point();
    const vPOINT previous = records_[p].point();
    const auto distance = static_cast<std::int32_t>(gap);
    const vPOINT step(
        previous.x > at.x ? distance : wrap_neg(distance), previous.y > at.y ? distance : wrap_neg(distance));
    const std::array end_point{point_record(at + step, point_flags::open_end)};
    const bool contour_closes = records_[end].has(point_flags::segment);
    if (!insert_records(i, end_point))
        return 0;

    point_record* const points = points_.data();
    const auto change_flags = [&](std::size_t at_index, std::uint8_t set, std::uint8_t cleared) {
        auto& record = points[at_index];
        record.set_flags(static_cast<std::uint8_t>((record.flags() & ~cleared) | set));
    };
    if (contour_closes) {
        // What followed the split point comes first; the contour's old closing segment joins it to what
        // went before, which ends at the new point.
        ++end;
        if (start >= i)
            ++start;
        change_flags(start, 0, point_flags::first);
        change_flags(end, 0, point_flags::last);
        const std::size_t controls = points[end].has(point_flags::curve_to) ? 2 : 0;
        const std::size_t stop = std::min<std::size_t>(end + 1 + controls, count_);
        std::rotate(points + std::min<std::size_t>(start, i), points + i + 1, points + stop);
        change_flags(std::min<std::size_t>(start, i), point_flags::first, 0);
    } else {
        change_flags(i + 1U, point_flags::first, 0);
    }
    closed_ = 0;
    forget_walk();
    CalculateBoundingBox();
    return 1;
}

void vSHAPE::AddShape(const vSHAPE& other) noexcept
{
    const std::size_t added = other.count_;
    if (count_ + added > max_points || !own(count_ + added))
        return;
    if (added != 0)
        std::memmove(static_cast<void*>(points_.data() + count_), other.records_, added * point_record::size);
    count_ += static_cast<std::uint32_t>(added);
    capacity_ = count_ == 0 ? capacity_step : static_cast<std::uint16_t>(count_);
    CalculateBoundingBox();
}

} // namespace klv
