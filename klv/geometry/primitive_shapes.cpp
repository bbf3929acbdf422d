#include "klv/geometry/primitive_shapes.h"

#include "klv/base/angles.h"
#include "klv/base/wrapping.h"
#include "klv/core/integer_math.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace klv {

using namespace point_flags;

vRECTSHAPE::vRECTSHAPE(const vRECT& rect) noexcept
{
    const std::array<point_record, 4> points{{
        {rect.TopLeft(), start_line},
        {rect.TopRight(), line_to},
        {rect.BottomRight(), line_to},
        {rect.BottomLeft(), closing_line},
    }};
    assign_records(points);
}

// (a + b + 1) / 2 and the like, for any coordinates.
static int middle(int a, int b, int rounding) { return wrap_narrow((std::int64_t{a} + b + rounding) / 2); }

vELPSSHAPE::vELPSSHAPE(const vRECT& rect) noexcept
{
    // A control point lies this part of the diameter from the end of its quarter's axis.
    constexpr double control_distance = 0.27614;
    const int cx = middle(rect.Left(), rect.Right(), 1);
    const int cy = middle(rect.Top(), rect.Bottom(), 1);
    const int kx = truncate_wrapped(std::floor(control_distance * rect.Width()));
    const int ky = truncate_wrapped(std::floor(control_distance * rect.Height()));
    const int west = wrap_sub(cx, kx), east = wrap_add(cx, kx);
    const int north = wrap_sub(cy, ky), south = wrap_add(cy, ky);
    const std::array<point_record, 12> points{{
        {cx, rect.Top(), start_curve},
        {east, rect.Top(), control},
        {rect.Right(), north, control},
        {rect.Right(), cy, curve_to},
        {rect.Right(), south, control},
        {east, rect.Bottom(), control},
        {cx, rect.Bottom(), curve_to},
        {west, rect.Bottom(), control},
        {rect.Left(), south, control},
        {rect.Left(), cy, closing_curve},
        {rect.Left(), north, control},
        {west, rect.Top(), control},
    }};
    assign_records(points);
}

vROUNDRECTSHAPE::vROUNDRECTSHAPE(const vRECT& rect, const vSIZE& corner) noexcept
{
    const int hx = corner.Width() / 2;
    const int hy = corner.Height() / 2;
    const int left = rect.Left(), top = rect.Top(), right = rect.Right(), bottom = rect.Bottom();
    const int west = wrap_add(left, hx), east = wrap_sub(right, hx);
    const int north = wrap_add(top, hy), south = wrap_sub(bottom, hy);
    const int west_control = wrap_add(left, hx / 2), east_control = wrap_sub(right, hx / 2);
    const int north_control = wrap_add(top, hy / 2), south_control = wrap_sub(bottom, hy / 2);
    const std::array<point_record, 16> points{{
        {west, top, start_line},
        {east, top, curve_to},
        {east_control, top, control},
        {right, north_control, control},
        {right, north, line_to},
        {right, south, curve_to},
        {right, south_control, control},
        {east_control, bottom, control},
        {east, bottom, line_to},
        {west, bottom, curve_to},
        {west_control, bottom, control},
        {left, south_control, control},
        {left, south, line_to},
        {left, north, closing_curve},
        {left, north_control, control},
        {west_control, top, control},
    }};
    assign_records(points);
}

namespace {

constexpr double turn = 2 * pi;
constexpr unsigned least_corners = 3;
constexpr unsigned most_corners = 20;
constexpr int one_to_one = 65536;

unsigned corners(unsigned short wanted) { return std::clamp<unsigned>(wanted, least_corners, most_corners); }

struct radii {
    int x;
    int y;
};

// Places the corners of polygons and stars: angles run clockwise from the top.
class corner_circle {
public:
    corner_circle(const vRECT& rect, radii outer, unsigned count, bool rotated)
        : count_(count)
        , offset_(rotated ? turn / 2 / count : 0)
        , centre_(middle(rect.Left(), rect.Right(), 0), middle(rect.Top(), rect.Bottom(), 0))
    {
        int least = INT32_MAX, greatest = INT32_MIN;
        for (unsigned k = 0; k < count; ++k) {
            const int y = truncate_wrapped(std::cos(angle(k)) * outer.y);
            least = std::min(least, y);
            greatest = std::max(greatest, y);
        }
        const int correction
            = (wrap_add(wrap_sub(outer.y, greatest), wrap_sub(wrap_neg(outer.y), least))) / 2;
        centre_.y = wrap_sub(centre_.y, correction);
    }

    /// \param steps whole corners from the first
    [[nodiscard]] double angle(double steps) const { return steps * turn / count_ + offset_; }
    [[nodiscard]] vPOINT at(double theta, radii r) const
    {
        return {wrap_add(centre_.x, truncate_wrapped(std::sin(theta) * r.x)),
            wrap_sub(centre_.y, truncate_wrapped(std::cos(theta) * r.y))};
    }

private:
    unsigned count_;
    double offset_;
    vPOINT centre_;
};

// The points as one closed contour that fills rect.
void become_stretched(vSHAPE& shape, std::span<const vPOINT> points, const vRECT& rect)
{
    if (!shape.assign_polyline(points, 1))
        return;
    const auto factor = [](int wanted, int present) {
        return present == 0 ? one_to_one : MulDiv(one_to_one, wanted, present);
    };
    shape.Rescale(
        {factor(rect.Width(), shape.BoundBox().Width()), factor(rect.Height(), shape.BoundBox().Height())});
    const vPOINT move = rect.Centre() - shape.BoundBox().Centre();
    shape.Translate(move.x, move.y);
}

} // namespace

vPOLYGONSHAPE::vPOLYGONSHAPE(const vRECT& rect, unsigned short sides, int rotated) noexcept
{
    const unsigned count = corners(sides);
    const radii outer{rect.Width() / 2, rect.Height() / 2};
    const corner_circle circle(rect, outer, count, rotated != 0);
    std::array<vPOINT, most_corners> points;
    for (unsigned k = 0; k < count; ++k)
        points[k] = circle.at(circle.angle(k), outer);
    become_stretched(*this, std::span(points).first(count), rect);
}

vSTARSHAPE::vSTARSHAPE(const vRECT& rect, unsigned short points, int rotated, unsigned short innerPercent,
    int twoLevel, unsigned short secondPercent) noexcept
{
    const unsigned count = corners(points);
    const radii outer{std::max(2, rect.Width() / 2), std::max(2, rect.Height() / 2)};
    const auto part = [&](int percent) {
        return radii{std::max(1, MulDiv(outer.x, percent, 100)), std::max(1, MulDiv(outer.y, percent, 100))};
    };
    const radii inner = part(innerPercent);
    const radii second = part(secondPercent);
    const corner_circle circle(rect, outer, count, rotated != 0);

    std::array<vPOINT, std::size_t{4} * most_corners> corner;
    std::size_t n = 0;
    for (unsigned k = 0; k < count; ++k) {
        corner[n++] = circle.at(circle.angle(k), outer);
        if (twoLevel != 0) {
            corner[n++] = circle.at(circle.angle(k + 0.25), inner);
            corner[n++] = circle.at(circle.angle(k + 0.5), second);
            corner[n++] = circle.at(circle.angle(k + 0.75), inner);
        } else {
            corner[n++] = circle.at(circle.angle(k + 0.5), inner);
        }
    }
    become_stretched(*this, std::span(corner).first(n), rect);
}

} // namespace klv
