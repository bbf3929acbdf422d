#pragma once

#include "klv/base/types.h"
#include "klv/core/bezpoint.h"
#include "klv/core/object.h"
#include "klv/core/point.h"

#include <algorithm>
#include <cstdint>

namespace klv {

class vDEVICE;

/// A rectangle in logical units, left, top, right, bottom; y grows downwards. Nothing keeps it normalised
/// unless an operation says so; all edges belong to it. Arithmetic wraps modulo 2^32.
class vRECT : public vOBJECT {
public:
    constexpr vRECT() noexcept = default;
    constexpr vRECT(const int& left, const int& top, const int& right, const int& bottom) noexcept
        : top_left_(left, top)
        , bottom_right_(right, bottom)
    {
    }
    constexpr vRECT(const vPOINT& top_left, const vPOINT& bottom_right) noexcept
        : top_left_(top_left)
        , bottom_right_(bottom_right)
    {
    }
    constexpr vRECT(const vPOINT& top_left, const int& width, const int& height) noexcept
        : top_left_(top_left)
        , bottom_right_(top_left + vPOINT(width, height))
    {
    }
    constexpr vRECT(const RECT& r) noexcept
        : vRECT(r.left, r.top, r.right, r.bottom)
    {
    }
    constexpr operator RECT() const noexcept { return {Left(), Top(), Right(), Bottom()}; }

    [[nodiscard]] constexpr int Left() const noexcept { return top_left_.x; }
    [[nodiscard]] constexpr int Top() const noexcept { return top_left_.y; }
    [[nodiscard]] constexpr int Right() const noexcept { return bottom_right_.x; }
    [[nodiscard]] constexpr int Bottom() const noexcept { return bottom_right_.y; }
    constexpr void Left(int value) noexcept { top_left_.x = value; }
    constexpr void Top(int value) noexcept { top_left_.y = value; }
    constexpr void Right(int value) noexcept { bottom_right_.x = value; }
    constexpr void Bottom(int value) noexcept { bottom_right_.y = value; }

    [[nodiscard]] constexpr vPOINT TopLeft() const noexcept { return top_left_; }
    [[nodiscard]] constexpr vPOINT TopRight() const noexcept { return {Right(), Top()}; }
    [[nodiscard]] constexpr vPOINT BottomLeft() const noexcept { return {Left(), Bottom()}; }
    [[nodiscard]] constexpr vPOINT BottomRight() const noexcept { return bottom_right_; }
    constexpr void TopLeft(const vPOINT& p) noexcept { Left(p.x), Top(p.y); }
    constexpr void TopRight(const vPOINT& p) noexcept { Right(p.x), Top(p.y); }
    constexpr void BottomLeft(const vPOINT& p) noexcept { Left(p.x), Bottom(p.y); }
    constexpr void BottomRight(const vPOINT& p) noexcept { Right(p.x), Bottom(p.y); }

    /// Negative for an inverted rectangle.
    [[nodiscard]] constexpr int Width() const noexcept { return wrap_sub(Right(), Left()); }
    [[nodiscard]] constexpr int Height() const noexcept { return wrap_sub(Bottom(), Top()); }
    [[nodiscard]] constexpr vPOINT Centre() const noexcept
    {
        return {wrap_add(Left(), Width() / 2), wrap_add(Top(), Height() / 2)};
    }

    constexpr bool operator==(const vRECT& o) const noexcept
    {
        return top_left_ == o.top_left_ && bottom_right_ == o.bottom_right_;
    }

    [[nodiscard]] constexpr vRECT operator+(const vPOINT& d) const noexcept
    {
        return {top_left_ + d, bottom_right_ + d};
    }
    [[nodiscard]] constexpr vRECT operator-(const vPOINT& d) const noexcept
    {
        return {top_left_ - d, bottom_right_ - d};
    }
    /// The box of both; nothing counts as empty.
    [[nodiscard]] constexpr vRECT operator+(const vRECT& o) const noexcept
    {
        return {std::min(Left(), o.Left()), std::min(Top(), o.Top()), std::max(Right(), o.Right()),
            std::max(Bottom(), o.Bottom())};
    }
    /// \return 1 when the rectangles overlap or touch
    [[nodiscard]] constexpr int operator&(const vRECT& o) const noexcept
    {
        return Left() <= o.Right() && Top() <= o.Bottom() && Right() >= o.Left() && Bottom() >= o.Top();
    }
    /// The intersection; (0, 0, 0, 0) where & does not hold.
    [[nodiscard]] constexpr vRECT operator^(const vRECT& o) const noexcept
    {
        if (!(*this & o))
            return {};
        return {std::max(Left(), o.Left()), std::max(Top(), o.Top()), std::min(Right(), o.Right()),
            std::min(Bottom(), o.Bottom())};
    }
    /// \return 1 when p lies inside or on an edge
    [[nodiscard]] constexpr int operator^(const vPOINT& p) const noexcept
    {
        return Left() <= p.x && p.x <= Right() && Top() <= p.y && p.y <= Bottom();
    }
    [[nodiscard]] constexpr int Intersect(const vPOINT& p) const noexcept { return *this ^ p; }

    /// Becomes the box between the middle two of the four x and y values when the centre of that box lies in
    /// o. \return 1 when it did, else 0 and nothing changes
    int Intersect(const vRECT& o) noexcept;
    /// Moves each side out by half of |dx| or |dy|, rounded up (in, for a negative one).
    vRECT Expand(int dx, int dy) noexcept;
    constexpr void EncompassPoint(const vPOINT& p) noexcept
    {
        Left(std::min(Left(), p.x)), Top(std::min(Top(), p.y));
        Right(std::max(Right(), p.x)), Bottom(std::max(Bottom(), p.y));
    }
    /// Grows to hold the cubic from p0 to p3; points without the flags of a cubic are ignored.
    void EncompassBezierCurve(
        const vBEZPOINT& p0, const vBEZPOINT& p1, const vBEZPOINT& p2, const vBEZPOINT& p3) noexcept;
    /// Distance from p to the nearer edges, horizontal plus vertical (city-block).
    /// \return logical units; 0 inside and on the edges
    [[nodiscard]] int DistFrom(const vPOINT& p) const noexcept;
    /// \return 1 when p lies on an edge
    [[nodiscard]] int BoundaryPoint(const vPOINT& p) const noexcept;
    /// Moves p into the rectangle, right and bottom excluded.
    void capture(vPOINT& p) const noexcept;
    /// The rectangle mirrored at the vertical (horizontal nonzero) and the horizontal line (vertical
    /// nonzero) through the centre.
    [[nodiscard]] vRECT Mirror(double cx, double cy, int horizontal, int vertical) const noexcept;
    [[nodiscard]] vRECT Mirror(const vPOINT& c, int horizontal, int vertical) const noexcept;
    /// Moves the rectangle so that its centre turns about `centre` by angle degrees; the size stays.
    int RotateCentre(const vPOINT& centre, double angle, double aspect) noexcept;
    /// Multiplies by f.x / 65536 and f.y / 65536 and normalises.
    int Rescale(const vPOINT& f) noexcept;
    int MoveTo(const vPOINT& top_left) noexcept;
    void MoveToCentre(const vPOINT& c) noexcept;
    /// inner in units of 1/scale of this rectangle. This rectangle must not be empty.
    [[nodiscard]] vRECT RectToPercent(const vRECT& inner, int scale) const noexcept;
    /// The inverse of RectToPercent; measured up from the bottom edge when from_top is 0. scale must not be
    /// 0.
    [[nodiscard]] vRECT PercentToRect(const vRECT& p, int from_top, int scale) const noexcept;

    void Draw(vDEVICE& device) const;
    /// \return in out, the box of the distorted rectangle
    void DistortBbox(IDistort* distort, vRECT& out) const noexcept;

private:
    void AdjustWidth(int dx) noexcept;
    void AdjustHeight(int dy) noexcept;

    vPOINT top_left_;
    vPOINT bottom_right_;
};

inline int vPOINT::operator^(const vRECT& r) const noexcept { return r ^ *this; }

} // namespace klv
