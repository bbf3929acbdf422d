#include "klv/base/saturating.h"
#include "klv/base/vec2.h"
#include "klv/base/wrapping.h"
#include "klv/geometry/curves/auto_curve.h"
#include "klv/geometry/shape.h"

#include <array>
#include <cmath>

// The tangent at a point of a smooth curve is taken from the circle through it and its neighbours, as a three
// point (Bessel-like) estimate; the control points then lie where a cubic follows that circle best, at
// (1 - |cos|) / |sin| of half the radius.
namespace klv {

namespace {

// A point of the perpendicular bisector of the chord from p along u; the middle is an integer.
vec2 chord_middle(const vPOINT& p, const vec2& u)
{
    return {p.x + std::trunc((u.x + 1) / 2), p.y + std::trunc((u.y + 1) / 2)};
}

// The centre of the circle through point, point + u and point + w, which are not in line.
vec2 circle_centre(const vPOINT& point, const vec2& u, const vec2& w)
{
    const vec2 m1 = chord_middle(point, u);
    const vec2 m2 = chord_middle(point, w);
    vec2 c{};
    if (u.y == 0) {
        c.x = m1.x;
        c.y = m2.y - w.x / w.y * (c.x - m2.x);
    } else if (w.y == 0) {
        c.x = m2.x;
        c.y = m1.y - u.x / u.y * (c.x - m1.x);
    } else {
        const double slope1 = -u.x / u.y;
        const double slope2 = -w.x / w.y;
        c.x = (slope1 * m1.x - m1.y - slope2 * m2.x + m2.y) / (slope1 - slope2);
        c.y = m1.y + slope1 * (c.x - m1.x);
    }
    return {std::trunc(c.x + 0.5), std::trunc(c.y + 0.5)};
}

// The unit vector across the radius r.
vec2 unit_tangent(const vec2& r)
{
    if (r.y == 0)
        return {0, r.x >= 1 ? 1.0 : -1.0};
    const double sign = r.y > 0 ? 1 : -1;
    const double slope = sign * r.x / r.y;
    const double length = std::sqrt(slope * slope + 1);
    return {sign / length, -slope / length};
}

} // namespace

vPOINT CalculateControlPointVector(const vPOINT& prev, const vPOINT& point, const vPOINT& next) noexcept
{
    const vec2 u = vec2::between(point, prev);
    const vec2 w = vec2::between(point, next);
    const double turn = cross(u, w);
    if (turn == 0) {
        const vec2 chord = vec2::between(next, prev);
        return {truncate_saturated(chord.x / 6), truncate_saturated(chord.y / 6)};
    }
    const double angle = std::acos(dot(u, w) / (length(u) * length(w)));
    const vec2 centre = circle_centre(point, u, w);
    const vec2 radius{centre.x - point.x, centre.y - point.y};
    const double reach = (1 - std::fabs(std::cos(angle))) / std::fabs(std::sin(angle)) * length(radius) * 0.5;
    const vec2 tangent = unit_tangent(radius);
    const vPOINT v(truncate_saturated(reach * tangent.x + 0.5), truncate_saturated(reach * tangent.y + 0.5));
    return turn <= 0 ? vPOINT(wrap_neg(v.x), wrap_neg(v.y)) : v;
}

int vSHAPE::MakePointAutoCurve(unsigned short index) noexcept
{
    std::size_t i = index;
    if (i >= count_ || records_[i].flags() == point_flags::open_end
        || records_[before(i)].flags() == point_flags::open_end)
        return 0;
    constexpr std::size_t most_controls = 4;
    if (count_ + most_controls > max_points || !own(count_ + most_controls))
        return 0;

    const auto make_curve = [&](std::size_t from, std::size_t to) {
        point_record* const points = points_.data();
        points[from].set_flags(static_cast<std::uint8_t>(
            (points[from].flags() & ~point_flags::line_to) | point_flags::curve_to));
        const std::array controls{point_record(points[from].point(), point_flags::control),
            point_record(points[to].point(), point_flags::control)};
        return insert_records(from + 1, controls);
    };
    const std::size_t p = before(i);
    if (records_[p].has(point_flags::line_to)) {
        if (!make_curve(p, i))
            return 0;
        i += p < i ? 2 : 0;
    }
    if (records_[i].has(point_flags::line_to) && !make_curve(i, i + 1 < count_ ? i + 1 : 0))
        return 0;

    // A lone malformed outline may still lack the neighbours that the smooth tangent needs.
    if (count_ < 3)
        return 0;
    const std::size_t previous3 = i >= 3 ? i - 3 : count_ - 3 + i;
    const std::size_t next3 = i + 3 < count_ ? i + 3 : i + 3 - count_;
    point_record* const points = points_.data();
    const std::size_t incoming = before(i);
    const std::size_t outgoing = i + 1 < count_ ? i + 1 : 0;
    const vPOINT at = points[i].point();
    const vPOINT tangent = CalculateControlPointVector(points[previous3].point(), at, points[next3].point());
    points[incoming] = point_record(at + tangent, point_flags::control);
    points[outgoing] = point_record(at - tangent, point_flags::control);

    // A neighbour that was a vertex keeps its control on itself; a third of the way makes the curve even.
    const auto ease = [&](std::size_t far_control, std::size_t end, std::size_t near_control) {
        const vPOINT e = points[end].point();
        if (points[far_control].point() != e)
            return;
        const vPOINT d = points[near_control].point() - e;
        points[far_control].set_point(e + vPOINT(d.x / 3, d.y / 3));
    };
    ease(i + 2 < count_ ? i + 2 : i + 2 - count_, next3, outgoing);
    ease(i >= 2 ? i - 2 : count_ - 2 + i, previous3, incoming);
    forget_walk();
    CalculateBoundingBox();
    return 1;
}

namespace {

// A control point that lies on the end of its curve goes a third of the way to the other one.
vPOINT eased(const vPOINT& control, const vPOINT& end, const vPOINT& other)
{
    const vPOINT d = other - end;
    return control == end ? end + vPOINT(d.x / 3, d.y / 3) : control;
}

// An open contour, and the point that a curve joins to its end.
class contour_extension {
public:
    contour_extension(std::span<point_record> contour, const vPOINT& point)
        : contour_(contour)
        , point_(point)
        , leaving_(end())
        , arriving_(point)
        , closing_leaving_(point)
        , closing_arriving_(start())
    {
    }

    // Lets the outline pass smoothly through what is its last point so far.
    void smooth_end()
    {
        const std::size_t last = contour_.size() - 1;
        if (last == 0)
            return;
        const bool curve = last >= 3 && contour_[last - 1].has(point_flags::control);
        const vPOINT tangent
            = CalculateControlPointVector(contour_[last - (curve ? 3 : 1)].point(), end(), point_);
        leaving_ = end() - tangent;
        if (curve)
            contour_[last - 1].set_point(end() + tangent);
    }

    // Lets it pass smoothly through the new point and, on closing, through the first one.
    void smooth_closing()
    {
        const vPOINT tangent = CalculateControlPointVector(end(), point_, start());
        arriving_ = point_ + tangent;
        closing_leaving_ = point_ - tangent;
        if (contour_.size() == 1)
            return;
        const bool curve = contour_.size() > 3 && contour_[0].has(point_flags::curve_to);
        const vPOINT start_tangent
            = CalculateControlPointVector(point_, start(), contour_[curve ? 3 : 1].point());
        closing_arriving_ = start() + start_tangent;
        if (curve)
            contour_[1].set_point(start() - start_tangent);
    }

    // The records that come after the contour's: controls, the point, and the controls of a closing curve.
    [[nodiscard]] std::array<point_record, 5> records(bool close) const
    {
        const vPOINT leaving = eased(leaving_, end(), arriving_);
        const vPOINT closing_leaving = eased(closing_leaving_, point_, closing_arriving_);
        return {point_record(leaving, point_flags::control),
            point_record(eased(arriving_, point_, leaving), point_flags::control),
            point_record(point_, close ? point_flags::closing_curve : point_flags::open_end),
            point_record(closing_leaving, point_flags::control),
            point_record(eased(closing_arriving_, start(), closing_leaving), point_flags::control)};
    }

private:
    [[nodiscard]] vPOINT start() const { return contour_.front().point(); }
    [[nodiscard]] vPOINT end() const { return contour_.back().point(); }

    std::span<point_record> contour_;
    vPOINT point_;
    vPOINT leaving_; // the controls of the curve to the point
    vPOINT arriving_;
    vPOINT closing_leaving_; // the controls of the curve from there to the start
    vPOINT closing_arriving_;
};

} // namespace

int vSHAPE::AppendAutoCurvePoint(const vPOINT& point, int close, int smooth) noexcept
{
    const auto is_open = [](const point_record& r) {
        return r.flags() == point_flags::open_end || r.has(point_flags::first);
    };
    if (count_ == 0 || !is_open(records_[count_ - 1]))
        return AppendPoint({point, point_flags::start_curve});
    constexpr std::size_t most_added = 5;
    if (count_ + most_added > max_points || !own(count_ + most_added))
        return 0;

    std::size_t start = count_ - 1;
    while (start > 0 && !records_[start].has(point_flags::first))
        --start;
    const auto contour = own_records().subspan(start);
    contour_extension extension(contour, point);
    if (smooth != 0) {
        extension.smooth_end();
        if (close != 0)
            extension.smooth_closing();
    }
    contour.back().set_flags(contour.size() == 1 ? point_flags::start_curve : point_flags::curve_to);
    const auto added = extension.records(close != 0);
    if (!insert_records(count_, std::span(added).first(close != 0 ? most_added : most_added - 2)))
        return 0;
    CalculateBoundingBox();
    return 1;
}

int vSHAPE::MakePointVertex(unsigned short index) noexcept
{
    std::size_t i = index;
    if (i >= count_ || !allocate_for_change())
        return 0;
    const auto make_line = [&](std::size_t from) {
        auto& record = points_.data()[from];
        record.set_flags(
            static_cast<std::uint8_t>((record.flags() & ~point_flags::curve_to) | point_flags::line_to));
    };
    const std::size_t p = before(i);
    if (records_[p].has(point_flags::control) && p >= 2) {
        make_line(p - 2);
        erase_records(p - 1, 2);
        i -= p < i ? 2 : 0;
    }
    if (records_[i].has(point_flags::curve_to) && i + 2 < count_) {
        make_line(i);
        erase_records(i + 1, 2);
    }
    forget_walk();
    CalculateBoundingBox();
    return 1;
}

} // namespace klv
