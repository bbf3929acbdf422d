#pragma once

#include "klv/base/types.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/devices/unit_mapping.h"
#include "klv/geometry/point_record.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Outlines as straight pieces in device pixels: curves are halved until both control points lie close to
/// the chord, everything in 1/1024 pixel.
namespace klv {

/// A point in 1/1024 pixel; with 32-bit coordinates none is negative.
template <class Coordinate> struct fine_point {
    Coordinate x;
    Coordinate y;
};

inline constexpr int fine_bits = 10;
inline constexpr std::int32_t fine_scale = 1 << fine_bits;

/// Curves between 0 and this many pixels are divided in 32 bits; there two coordinates can be added, and
/// shifting truncates as a division does.
inline constexpr std::int32_t page_size = 1 << 20;

/// Sub-curves are halved no further at this depth, so that a curve gives at most 128 pieces.
inline constexpr int max_curve_depth = 8;

template <class Coordinate> fine_point<Coordinate> to_fine(const POINT& p) noexcept
{
    return {p.x * Coordinate{fine_scale}, p.y * Coordinate{fine_scale}};
}

/// A coordinate, or the sum of two, divided by 2 to a power, truncated toward zero.
constexpr std::int32_t divide_by_power(std::int32_t value, int power) noexcept { return value >> power; }
constexpr std::int64_t divide_by_power(std::int64_t value, int power) noexcept
{
    return value / (std::int64_t{1} << power);
}

template <class Coordinate> POINT to_pixels(fine_point<Coordinate> p) noexcept
{
    return {static_cast<LONG>(divide_by_power(p.x, fine_bits)),
        static_cast<LONG>(divide_by_power(p.y, fine_bits))};
}

/// Half way between two points.
template <class Coordinate>
fine_point<Coordinate> MidPoint(fine_point<Coordinate> a, fine_point<Coordinate> b) noexcept
{
    return {divide_by_power(a.x + b.x, 1), divide_by_power(a.y + b.y, 1)};
}

/// The chord of a curve, and how far off it control points may lie.
template <class Coordinate> class curve_chord {
public:
    curve_chord(fine_point<Coordinate> from, fine_point<Coordinate> to) noexcept
        : from_(from)
        , short_(is_near(to.x - from.x) && is_near(to.y - from.y))
        , x_((to.x - from.x) >> test_shift)
        , y_((to.y - from.y) >> test_shift)
        , limit_(3 * std::max(x_ < 0 ? -x_ : x_, y_ < 0 ? -y_ : y_))
    {
    }

    /// Whether a control point lies within three quarters of a pixel of the chord, or both it and the end
    /// of the curve within two pixels of its start.
    bool allows(fine_point<Coordinate> control) const noexcept
    {
        const Coordinate dx = control.x - from_.x;
        const Coordinate dy = control.y - from_.y;
        const std::int64_t cross = (dx >> test_shift) * y_ - (dy >> test_shift) * x_;
        return (cross < 0 ? -cross : cross) < limit_ || (short_ && is_near(dx) && is_near(dy));
    }

private:
    static constexpr int test_shift = 8; // quarter pixels
    static bool is_near(Coordinate d) noexcept { return -2 * fine_scale < d && d < 2 * fine_scale; }

    fine_point<Coordinate> from_;
    bool short_;
    std::int64_t x_;
    std::int64_t y_;
    std::int64_t limit_;
};

/// Whether control point b of a curve from a to c lies so close to the chord that it bends nothing.
template <class Coordinate>
bool IsBezierStraight(fine_point<Coordinate> a, fine_point<Coordinate> b, fine_point<Coordinate> c) noexcept
{
    return curve_chord<Coordinate>(a, c).allows(b);
}

/// Hands the pieces of a curve, in pixels, to segment(from, to) in order. \return the sum of its answers
template <class Coordinate, class Segment>
int DivideBezier(fine_point<Coordinate> p0, fine_point<Coordinate> p1, fine_point<Coordinate> p2,
    fine_point<Coordinate> p3, Segment& segment) noexcept
{
    using fine = fine_point<Coordinate>;
    // What is left of a sub-curve whose start has been reached.
    struct rest {
        fine p1, p2, p3;
        int depth;
    };
    std::array<rest, max_curve_depth> later;
    std::size_t waiting = 0;
    rest curve{p1, p2, p3, 1};
    POINT from = to_pixels(p0);
    int count = 0;
    for (;;) {
        const bool straight
            = IsBezierStraight(p0, curve.p1, curve.p3) && IsBezierStraight(p0, curve.p2, curve.p3);
        if (curve.depth < max_curve_depth && !straight) {
            const fine p01 = MidPoint(p0, curve.p1);
            const fine p12 = MidPoint(curve.p1, curve.p2);
            const fine p23 = MidPoint(curve.p2, curve.p3);
            const fine p012 = MidPoint(p01, p12);
            const fine p123 = MidPoint(p12, p23);
            later[waiting++] = {p123, p23, curve.p3, curve.depth + 1};
            curve = {p01, p012, MidPoint(p012, p123), curve.depth + 1};
            continue;
        }
        const POINT to = to_pixels(curve.p3);
        count += segment(from, to);
        if (waiting == 0)
            return count;
        from = to;
        p0 = curve.p3;
        curve = later[--waiting];
    }
}

/// The same for points in pixels.
template <class Segment>
int DivideBezier(
    const POINT& p0, const POINT& p1, const POINT& p2, const POINT& p3, Segment&& segment) noexcept
{
    const auto is_on_page
        = [](const POINT& p) { return 0 <= p.x && p.x < page_size && 0 <= p.y && p.y < page_size; };
    if (is_on_page(p0) && is_on_page(p1) && is_on_page(p2) && is_on_page(p3))
        return DivideBezier(to_fine<std::int32_t>(p0), to_fine<std::int32_t>(p1), to_fine<std::int32_t>(p2),
            to_fine<std::int32_t>(p3), segment);
    return DivideBezier(to_fine<std::int64_t>(p0), to_fine<std::int64_t>(p1), to_fine<std::int64_t>(p2),
        to_fine<std::int64_t>(p3), segment);
}

/// Whether the direction turns at b, on the way from a to c, by more than about 6 degrees. Two equal points
/// count as a turn.
bool DetectCorner(const POINT& a, const POINT& b, const POINT& c) noexcept;

/// Walks an outline. A sink has
///   int segment(from, to): takes a straight piece; the two points are equal where a contour ends,
///   bool wants_corners() and void corner(before, at, after): takes a turn between two segments,
///   void end_contour(count): takes the sum of what segment answered for the contour.
template <class Sink> class outline_traversal {
public:
    outline_traversal(const vSHAPE& shape, const unit_mapping& mapping, Sink& sink) noexcept
        : records_(shape.records())
        , closed_(shape.Closed() != 0)
        , mapping_(mapping)
        , sink_(sink)
    {
    }

    /// \return number of contours
    int run() noexcept
    {
        if (records_.size() == 2)
            return two_points();
        // A record is looked at only when the records its segment needs are there, so that an outline
        // that breaks off is drawn up to its last whole segment.
        while (at_ < records_.size() && step()) { }
        return contours_;
    }

private:
    POINT point(std::size_t i) const noexcept { return mapping_(records_[i].x(), records_[i].y()); }
    bool holds(std::size_t more) const noexcept { return records_.size() - at_ > more; }

    int two_points() noexcept
    {
        const POINT from = point(0);
        const POINT to = point(1);
        const int count = sink_.segment(from, to) + sink_.segment(to, to);
        sink_.end_contour(count);
        return 1;
    }

    bool step() noexcept
    {
        const std::uint8_t flags = records_[at_].flags();
        switch (flags) {
        case point_flags::start_line:
        case point_flags::start_curve:
            first_ = current_ = point(at_);
            if (!holds(1))
                return false;
            second_ = point(at_ + 1);
            return flags == point_flags::start_line ? line() : curve();
        case point_flags::line_to:
            if (!holds(1))
                return false;
            corner(point(at_ + 1));
            return line();
        case point_flags::curve_to:
            if (!holds(3))
                return false;
            corner(point(at_ + 1));
            return curve();
        case point_flags::closing_line:
            corner(first_);
            piece(first_);
            corner(second_);
            ++at_;
            end_contour();
            return true;
        case point_flags::closing_curve:
            if (!holds(2))
                return false;
            corner(point(at_ + 1));
            flatten(point(at_ + 1), point(at_ + 2), first_);
            corner(second_);
            at_ += 3;
            end_contour();
            return true;
        case point_flags::open_end:
            count_ += sink_.segment(current_, current_);
            ++at_;
            end_contour();
            return true;
        default:
            return false;
        }
    }

    bool line() noexcept
    {
        piece(point(at_ + 1));
        ++at_;
        return true;
    }

    bool curve() noexcept
    {
        if (!holds(3))
            return false;
        flatten(point(at_ + 1), point(at_ + 2), point(at_ + 3));
        at_ += 3;
        return true;
    }

    void piece(const POINT& to) noexcept
    {
        count_ += sink_.segment(current_, to);
        before_ = current_;
        current_ = to;
    }

    void flatten(const POINT& control1, const POINT& control2, const POINT& to) noexcept
    {
        count_ += DivideBezier(current_, control1, control2, to,
            [this](const POINT& a, const POINT& b) { return sink_.segment(a, b); });
        before_ = control2;
        current_ = to;
    }

    void corner(const POINT& after) noexcept
    {
        if (sink_.wants_corners() && DetectCorner(before_, current_, after))
            sink_.corner(before_, current_, after);
    }

    void end_contour() noexcept
    {
        ++contours_;
        if (closed_)
            count_ += sink_.segment(first_, first_);
        sink_.end_contour(count_);
        count_ = 0;
    }

    std::span<const point_record> records_;
    bool closed_;
    const unit_mapping& mapping_;
    Sink& sink_;
    std::size_t at_ = 0;
    int contours_ = 0;
    int count_ = 0;
    POINT first_{}; // of the contour
    POINT second_{};
    POINT before_{}; // the point that the outline came from to current_
    POINT current_{};
};

/// \return number of contours
template <class Sink> int TraverseShape(const vSHAPE& shape, const unit_mapping& mapping, Sink& sink) noexcept
{
    return outline_traversal<Sink>(shape, mapping, sink).run();
}

} // namespace klv
