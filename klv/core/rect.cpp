#include "klv/core/rect.h"

#include "klv/base/wrapping.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace klv {

namespace {

// The second and third of four values in rising order.
std::pair<int, int> middle_two(int a, int b, int c, int d) noexcept
{
    std::array<int, 4> values = {a, b, c, d};
    std::sort(values.begin(), values.end());
    return {values[1], values[2]};
}

int half_rounded_up(int change) noexcept { return wrap_narrow((std::abs(std::int64_t{change}) + 1) >> 1); }

// Moves low down and high up by half of a positive change, the other way for a negative one.
void spread(int change, int& low, int& high) noexcept
{
    const int half = half_rounded_up(change);
    const int outward = change < 0 ? wrap_neg(half) : half;
    low = wrap_sub(low, outward);
    high = wrap_add(high, outward);
}

int outside_by(int value, int low, int high) noexcept
{
    if (value < low)
        return wrap_sub(low, value);
    return value > high ? wrap_sub(value, high) : 0;
}

} // namespace

int vRECT::Intersect(const vRECT& o) noexcept
{
    const auto [left, right] = middle_two(Left(), Right(), o.Left(), o.Right());
    const auto [top, bottom] = middle_two(Top(), Bottom(), o.Top(), o.Bottom());
    const vRECT candidate(left, top, right, bottom);
    if (!(o ^ candidate.Centre()))
        return 0;
    *this = candidate;
    return 1;
}

void vRECT::AdjustWidth(int dx) noexcept { spread(dx, top_left_.x, bottom_right_.x); }
void vRECT::AdjustHeight(int dy) noexcept { spread(dy, top_left_.y, bottom_right_.y); }

vRECT vRECT::Expand(int dx, int dy) noexcept
{
    AdjustWidth(dx);
    AdjustHeight(dy);
    return *this;
}

void vRECT::EncompassBezierCurve(
    const vBEZPOINT& p0, const vBEZPOINT& p1, const vBEZPOINT& p2, const vBEZPOINT& p3) noexcept
{
    const bool is_cubic = p0.CurveTo() && !p0.Control() && p1.Control() && p2.Control() && !p3.Control();
    if (!is_cubic)
        return;
    EncompassPoint(p0);
    EncompassPoint(p3);
    // The curve stays within the hull of its four points.
    if ((*this ^ p1) && (*this ^ p2))
        return;
    std::array<vPOINT, 4> extremes;
    const int count = CalculateMaximaMinima(p0, p1, p2, p3, extremes);
    for (int i = 0; i < count; ++i)
        EncompassPoint(extremes[static_cast<std::size_t>(i)]);
}

int vRECT::DistFrom(const vPOINT& p) const noexcept
{
    return wrap_add(outside_by(p.x, Left(), Right()), outside_by(p.y, Top(), Bottom()));
}

int vRECT::BoundaryPoint(const vPOINT& p) const noexcept
{
    return (*this ^ p) && (p.x == Left() || p.x == Right() || p.y == Top() || p.y == Bottom());
}

void vRECT::capture(vPOINT& p) const noexcept
{
    p.x = std::min(std::max(p.x, Left()), wrap_sub(Right(), 1));
    p.y = std::min(std::max(p.y, Top()), wrap_sub(Bottom(), 1));
}

vRECT vRECT::Mirror(double cx, double cy, int horizontal, int vertical) const noexcept
{
    vRECT mirrored = *this;
    if (vertical) {
        const int twice = truncate_wrapped(2 * cy);
        mirrored.Top(wrap_sub(twice, Bottom()));
        mirrored.Bottom(wrap_sub(twice, Top()));
    }
    if (horizontal) {
        const int twice = truncate_wrapped(2 * cx);
        mirrored.Left(wrap_sub(twice, Right()));
        mirrored.Right(wrap_sub(twice, Left()));
    }
    return mirrored;
}

vRECT vRECT::Mirror(const vPOINT& c, int horizontal, int vertical) const noexcept
{
    return Mirror(static_cast<double>(c.x), static_cast<double>(c.y), horizontal, vertical);
}

int vRECT::RotateCentre(const vPOINT& centre, double angle, double aspect) noexcept
{
    MoveToCentre(vPOINT(Centre(), centre, angle, aspect));
    return 1;
}

int vRECT::Rescale(const vPOINT& f) noexcept
{
    const double fx = f.x / vREAL::scale;
    const double fy = f.y / vREAL::scale;
    const auto [left, right] = std::minmax({truncate_wrapped(Left() * fx), truncate_wrapped(Right() * fx)});
    const auto [top, bottom] = std::minmax({truncate_wrapped(Top() * fy), truncate_wrapped(Bottom() * fy)});
    *this = vRECT(left, top, right, bottom);
    return 1;
}

int vRECT::MoveTo(const vPOINT& top_left) noexcept
{
    *this = vRECT(top_left, Width(), Height());
    return 1;
}

void vRECT::MoveToCentre(const vPOINT& c) noexcept { MoveTo(c - vPOINT(Width() / 2, Height() / 2)); }

vRECT vRECT::RectToPercent(const vRECT& inner, int scale) const noexcept
{
    const double width = Width();
    const double height = Height();
    const auto across
        = [&](int x) { return truncate_wrapped(static_cast<double>(wrap_sub(x, Left())) / width * scale); };
    const auto down
        = [&](int y) { return truncate_wrapped(static_cast<double>(wrap_sub(y, Top())) / height * scale); };
    return {across(inner.Left()), down(inner.Top()), across(inner.Right()), down(inner.Bottom())};
}

vRECT vRECT::PercentToRect(const vRECT& p, int from_top, int scale) const noexcept
{
    const auto part = [scale](int percent, int size) {
        return scale == 0 ? 0 : wrap_narrow(std::int64_t{percent} * size / scale);
    };
    const int left = wrap_add(Left(), part(p.Left(), Width()));
    const int right = wrap_add(Left(), part(p.Right(), Width()));
    if (from_top)
        return {left, wrap_add(Top(), part(p.Top(), Height())), right,
            wrap_add(Top(), part(p.Bottom(), Height()))};
    return {left, wrap_sub(Bottom(), part(p.Bottom(), Height())), right,
        wrap_sub(Bottom(), part(p.Top(), Height()))};
}

} // namespace klv
