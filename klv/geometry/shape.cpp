#include "klv/geometry/shape.h"

#include "klv/streams/stream.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace {

std::uint16_t limited_capacity(std::size_t capacity)
{
    return static_cast<std::uint16_t>(std::min(capacity, vSHAPE::max_points));
}

} // namespace

vSHAPE::vSHAPE(
    unsigned short count, const vPOINT* points, int closed, int smooth, int smoothA, int smoothB) noexcept
{
    if (points != nullptr && count != 0)
        assign_polyline({points, count}, closed);
    closed_ = closed;
    capacity_ = count == 0 ? capacity_step : count;
    if (smooth != 0 && count_ >= smallest_smoothed)
        Smooth(smoothA, smoothB);
}

vSHAPE::vSHAPE(const POINT* points, const int* counts, int contours, int closed) noexcept
{
    closed_ = closed;
    if (points == nullptr || counts == nullptr || contours <= 0)
        return;
    const std::span<const std::int32_t> lengths(counts, static_cast<std::size_t>(contours));
    std::size_t total = 0;
    for (const auto length : lengths)
        total += length > 0 ? static_cast<std::size_t>(length) : 0;
    assign_contours(std::span<const POINT>(points, total), lengths, closed);
}

vSHAPE::vSHAPE(const vSHAPE& other) noexcept
    : vOBJECT(other)
{
    *this = other;
}

vSHAPE::vSHAPE(vSHAPE&& other) noexcept
    : vOBJECT(other)
{
    take(other);
}

vSHAPE& vSHAPE::operator=(const vSHAPE& other) noexcept
{
    if (this == &other)
        return *this;
    clear();
    box_ = other.box_;
    closed_ = other.closed_;
    framed_ = other.framed_;
    capacity_ = other.capacity_;
    if (other.count_ == 0)
        return *this;
    if (!reserve(other.count_)) {
        clear();
        return *this;
    }
    std::memcpy(static_cast<void*>(points_.data()), other.records_, other.records().size_bytes());
    count_ = other.count_;
    capacity_ = std::max(capacity_, static_cast<std::uint16_t>(count_));
    walk_ = other.walk_;
    return *this;
}

vSHAPE& vSHAPE::operator=(vSHAPE&& other) noexcept
{
    if (this == &other)
        return *this;
    release();
    take(other);
    return *this;
}

// The other shape is left empty. This one has nothing to lose.
void vSHAPE::take(vSHAPE& other) noexcept
{
    box_ = other.box_;
    closed_ = other.closed_;
    framed_ = std::exchange(other.framed_, false);
    capacity_ = other.capacity_;
    count_ = std::exchange(other.count_, 0);
    records_ = std::exchange(other.records_, nullptr);
    points_ = std::move(other.points_);
    stream_ = std::exchange(other.stream_, nullptr);
    walk_ = std::exchange(other.walk_, outline_walk());
    other.box_ = vRECT();
    other.closed_ = 1;
    other.capacity_ = capacity_step;
}

void vSHAPE::clear() noexcept
{
    release();
    box_ = vRECT();
    closed_ = 1;
    framed_ = false;
    capacity_ = capacity_step;
}

bool vSHAPE::reserve(std::size_t points) noexcept
{
    if (stream_ != nullptr)
        return own(points);
    if (!points_.reserve(points))
        return false;
    records_ = points_.data();
    return true;
}

bool vSHAPE::own(std::size_t room) noexcept
{
    room = std::max<std::size_t>(room, count_);
    if (stream_ != nullptr) {
        vBUFFER<point_record> copy;
        if (!copy.reserve(room) || !copy.append(records()))
            return false;
        const auto count = count_;
        release();
        count_ = count;
        points_ = std::move(copy);
        capacity_ = limited_capacity((count_ / capacity_step + 1) * capacity_step);
    } else if (room > points_.capacity()) {
        // Half as much again, so that appending is linear in the whole.
        const std::size_t wanted = std::min(points_.capacity() + points_.capacity() / 2, max_points);
        if (!points_.reserve(std::max(room, wanted)))
            return false;
    }
    records_ = points_.data();
    return true;
}

bool vSHAPE::Allocate(std::size_t more) noexcept
{
    const std::size_t needed = count_ + more;
    if (needed > max_points || !own(needed))
        return false;
    std::size_t capacity = capacity_;
    if (capacity == 0)
        capacity = (count_ / capacity_step + 1) * capacity_step;
    while (capacity < needed)
        capacity += capacity_step;
    capacity_ = limited_capacity(capacity);
    return true;
}

bool vSHAPE::allocate_for_change() noexcept { return count_ == max_points ? own(count_) : Allocate(); }

// Gives a stream its bytes back. The shape is empty then; memory of its own it keeps.
void vSHAPE::release() noexcept
{
    if (stream_ != nullptr)
        stream_->ReleaseStream();
    stream_ = nullptr;
    records_ = points_.data();
    count_ = 0;
    forget_walk();
}

template <typename P> vRECT vSHAPE::write_contour(std::span<const P> points, int closed) noexcept
{
    point_record* out = points_.data() + count_;
    std::int32_t left = points[0].x, right = left, top = points[0].y, bottom = top;
    for (const auto& p : points) {
        out++->set(p.x, p.y, point_flags::line_to);
        left = std::min<std::int32_t>(left, p.x);
        right = std::max<std::int32_t>(right, p.x);
        top = std::min<std::int32_t>(top, p.y);
        bottom = std::max<std::int32_t>(bottom, p.y);
    }
    points_.data()[count_].set_flags(point_flags::start_line);
    count_ += static_cast<std::uint32_t>(points.size());
    if (points.size() > 1)
        out[-1].set_flags(closed != 0 ? point_flags::closing_line : point_flags::open_end);
    return {left, top, right, bottom};
}

template <typename P>
bool vSHAPE::assign_contours(
    std::span<const P> points, std::span<const std::int32_t> counts, int closed) noexcept
{
    clear();
    closed_ = closed;
    const std::size_t room = std::min(points.size(), max_points);
    if (room == 0)
        return true;
    if (!reserve(room))
        return false;
    capacity_ = static_cast<std::uint16_t>(room);

    std::size_t contours = 0;
    std::size_t at = 0;
    bool fits = true;
    for (const auto length : counts) {
        const auto n = length > 0 ? static_cast<std::size_t>(length) : 0;
        fits = n <= points.size() - at && n <= max_points - count_;
        if (!fits)
            break;
        if (n >= 2) {
            const vRECT box = write_contour(points.subspan(at, n), closed);
            box_ = contours++ == 0 ? box : box_ + box;
        }
        at += n;
    }
    walk_.assume_polygons(count_, box_, closed != 0 ? 0 : contours);
    return fits;
}

bool vSHAPE::assign_polyline(std::span<const vPOINT> points, int closed) noexcept
{
    clear();
    closed_ = closed;
    if (points.size() > max_points || !reserve(points.size()))
        return false;
    if (points.empty())
        return true;
    capacity_ = static_cast<std::uint16_t>(points.size());
    const vRECT box = write_contour(points, closed);
    if (count_ < 2)
        return true; // no contour yet, and no box
    box_ = box;
    walk_.assume_polygons(count_, box_, closed != 0 ? 0 : 1);
    return true;
}

bool vSHAPE::assign_polypolygon(
    std::span<const vPOINT> points, std::span<const std::int32_t> counts, int closed) noexcept
{
    return assign_contours(points, counts, closed);
}

bool vSHAPE::assign_records(std::span<const point_record> records) noexcept
{
    clear();
    if (records.size() > max_points || !reserve(records.size()))
        return false;
    if (records.empty())
        return true;
    std::memcpy(static_cast<void*>(points_.data()), records.data(), records.size_bytes());
    count_ = static_cast<std::uint32_t>(records.size());
    capacity_ = static_cast<std::uint16_t>(count_);
    CalculateBoundingBox();
    return true;
}

bool vSHAPE::append_records(std::span<const vBEZPOINT> points) noexcept
{
    if (points.empty())
        return true;
    if (!Allocate(points.size()))
        return false;
    for (const auto& p : points)
        points_.data()[count_++] = point_record(p);
    CalculateBoundingBox();
    return true;
}

void vSHAPE::CalculateBoundingBox() noexcept
{
    walk_.advance(records());
    if (!walk_.valid())
        return;
    box_ = walk_.box();
    closed_ = walk_.open_ends() == 0;
}

int vSHAPE::NoOfContours() const noexcept
{
    return static_cast<int>(
        std::ranges::count_if(records(), [](const point_record& r) { return r.has(point_flags::last); }));
}

int vSHAPE::GetNthContour(int n, vPOINT* out, int& closed) const noexcept
{
    int contour = 0;
    int copied = 0;
    for (const auto& record : records()) {
        if (record.has(point_flags::control))
            continue;
        if (contour == n) {
            out[copied++] = record.point();
            closed = record.flags() & point_flags::segment;
        }
        if (record.has(point_flags::last) && contour++ == n)
            break;
    }
    return copied;
}

vPOINT* vSHAPE::GetShapeAsPoints(int& n, int withControls) const noexcept
{
    n = 0;
    if (count_ == 0)
        return nullptr;
    auto* const points = static_cast<vPOINT*>(vMemAlloc(count_ * static_cast<std::uint32_t>(sizeof(vPOINT))));
    if (points == nullptr)
        return nullptr;
    for (const auto& record : records()) {
        if (withControls != 0 || !record.has(point_flags::control))
            new (points + n++) vPOINT(record.point());
    }
    return points;
}

int vSHAPE::IsValid() const noexcept
{
    walk_.advance(records());
    return walk_.valid();
}

bool vSHAPE::operator==(const vSHAPE& other) const noexcept
{
    if (box_.Width() != other.box_.Width() || box_.Height() != other.box_.Height() || closed_ != other.closed_
        || count_ != other.count_ || stream_ != other.stream_)
        return false;
    const vPOINT move = other.box_.TopLeft() - box_.TopLeft();
    return std::ranges::equal(records(), other.records(),
        [&](const point_record& a, const point_record& b) { return a.point() + move == b.point(); });
}

} // namespace klv
