#pragma once

#include "devices/numbers.h"
#include "devices/unit_mapping.h"
#include "geometry/point_record.h"
#include "geometry/shape.h"
#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Outlines as straight pieces in device pixels: curves are halved until both control points lie close to
/// the chord, everything in 1/1024 pixel.
namespace klv {

/// A point in 1/1024 pixel.
struct fine_point {
    std::int64_t x;
    std::int64_t y;
};

inline constexpr int fine_bits = 10;

/// Sub-curves are halved no further at this depth, so that a curve gives at most 128 pieces.
inline constexpr int max_curve_depth = 8;

inline fine_point to_fine(const POINT& p) noexcept
{
    constexpr std::int64_t scale = std::int64_t{1} << fine_bits;
    return {p.x * scale, p.y * scale};
}

inline POINT to_pixels(const fine_point& p) noexcept
{
    constexpr std::int64_t scale = std::int64_t{1} << fine_bits;
    return {static_cast<LONG>(p.x / scale), static_cast<LONG>(p.y / scale)};
}

/// Half way between two points, truncated toward zero.
inline fine_point MidPoint(const fine_point& a, const fine_point& b) noexcept
{
    return {(a.x + b.x) / 2, (a.y + b.y) / 2};
}

/// Whether control point b lies so close to the chord from a to c that the curve may be drawn as the chord:
/// within three quarters of a pixel, or both b and c within two pixels of a.
inline bool IsBezierStraight(const fine_point& a, const fine_point& b, const fine_point& c) noexcept
{
    constexpr std::int64_t near_start = std::int64_t{2} << fine_bits;
    constexpr int test_shift = 8; // quarter pixels
    const auto is_near = [](std::int64_t d) { return -near_start < d && d < near_start; };

    const fine_point control{b.x - a.x, b.y - a.y};
    const fine_point chord{c.x - a.x, c.y - a.y};
    if (is_near(control.x) && is_near(control.y) && is_near(chord.x) && is_near(chord.y))
        return true;

    const std::int64_t ux = control.x >> test_shift;
    const std::int64_t uy = control.y >> test_shift;
    const std::int64_t vx = chord.x >> test_shift;
    const std::int64_t vy = chord.y >> test_shift;
    const std::int64_t cross = ux * vy - uy * vx;
    const std::int64_t longest = std::max(vx < 0 ? -vx : vx, vy < 0 ? -vy : vy);
    return (cross < 0 ? -cross : cross) < 3 * longest;
}

/// Hands the pieces of a curve, in pixels, to segment(from, to) in order. \return the sum of its answers
template <class Segment>
int DivideBezier(const fine_point& p0, const fine_point& p1, const fine_point& p2, const fine_point& p3,
    Segment&& segment, int depth = 1) noexcept
{
    if (depth >= max_curve_depth || (IsBezierStraight(p0, p1, p3) && IsBezierStraight(p0, p2, p3)))
        return segment(to_pixels(p0), to_pixels(p3));

    const fine_point p01 = MidPoint(p0, p1);
    const fine_point p12 = MidPoint(p1, p2);
    const fine_point p23 = MidPoint(p2, p3);
    const fine_point p012 = MidPoint(p01, p12);
    const fine_point p123 = MidPoint(p12, p23);
    const fine_point middle = MidPoint(p012, p123);
    const int left = DivideBezier(p0, p01, p012, middle, segment, depth + 1);
    return left + DivideBezier(middle, p123, p23, p3, segment, depth + 1);
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
        count_ += DivideBezier(to_fine(current_), to_fine(control1), to_fine(control2), to_fine(to),
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
