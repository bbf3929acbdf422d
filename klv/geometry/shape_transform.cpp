#include "klv/base/angles.h"
#include "klv/base/wrapping.h"
#include "klv/geometry/distort.h"
#include "klv/geometry/matrix.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace klv {

namespace {

// [0, 360); NaN and infinities turn nothing.
double whole_turns_removed(double degrees)
{
    if (!std::isfinite(degrees))
        return 0;
    double angle = std::fmod(degrees, 360.0);
    if (angle < 0)
        angle += 360.0;
    return angle < 360.0 ? angle : 0.0;
}

std::int32_t scaled(std::int32_t coordinate, double factor) { return truncate_wrapped(coordinate * factor); }

// x becomes x cos + y sin, y becomes -x sin + y cos, about the centre.
oMATRIX rotation(const vPOINT& centre, double degrees)
{
    const double angle = to_radians(static_cast<double>(static_cast<float>(degrees)));
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    oMATRIX matrix;
    matrix.Translate(-static_cast<double>(centre.x), -static_cast<double>(centre.y));
    matrix.Combine(oMATRIX({c, s, 0, -s, c, 0}));
    matrix.Translate(centre.x, centre.y);
    return matrix;
}

// An exact quarter, half or three-quarter turn.
class quarter_turns {
public:
    quarter_turns(const vPOINT& centre, int quarters, double aspect)
        : centre_(centre)
        , quarters_(quarters)
        , aspect_(aspect)
    {
    }
    vPOINT operator()(const vPOINT& p) const
    {
        const vPOINT d = p - centre_;
        if (quarters_ == 2)
            return centre_ - d;
        const vPOINT turned(truncate_wrapped(d.y / aspect_), truncate_wrapped(d.x * aspect_));
        return quarters_ == 1 ? centre_ + vPOINT(turned.x, wrap_neg(turned.y))
                              : centre_ + vPOINT(wrap_neg(turned.x), turned.y);
    }

private:
    vPOINT centre_;
    int quarters_;
    double aspect_;
};

vRECT normalised(const vPOINT& a, const vPOINT& b)
{
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

} // namespace

void vSHAPE::Translate(const int& dx, const int& dy) noexcept
{
    const vPOINT d(dx, dy);
    if (!own(count_))
        return;
    for (auto& record : own_records())
        record.set_point(record.point() + d);
    box_ = box_ + d;
    forget_walk();
}

int vSHAPE::Rescale(const vPOINT& scale) noexcept
{
    if (borrowed())
        return 0;
    const double fx = scale.x / vREAL::scale;
    const double fy = scale.y / vREAL::scale;
    for (auto& record : own_records())
        record.set_point(scaled(record.x(), fx), scaled(record.y(), fy));
    box_.Rescale(scale);
    forget_walk();
    return 1;
}

int vSHAPE::Rotate(const vPOINT& centre, double degrees, double aspect) noexcept
{
    const double angle = whole_turns_removed(degrees);
    if (borrowed() || angle == 0)
        return 0;
    if (angle != 90 && angle != 180 && angle != 270) {
        oMATRIX matrix = rotation(centre, angle);
        return Distort(&matrix);
    }
    const quarter_turns turn(centre, static_cast<int>(angle / 90), aspect);
    for (auto& record : own_records())
        record.set_point(turn(record.point()));
    box_ = normalised(turn(box_.TopLeft()), turn(box_.BottomRight()));
    forget_walk();
    return 1;
}

int vSHAPE::Distort(IDistort* distort) noexcept
{
    if (distort == nullptr || !own(count_))
        return 0;
    std::array<vPOINT, 64> points;
    for (auto rest = own_records(); !rest.empty();) {
        const auto part = rest.first(std::min(rest.size(), points.size()));
        std::ranges::transform(part, points.begin(), [](const point_record& r) { return r.point(); });
        distort->Transform(points.data(), static_cast<std::int32_t>(part.size()));
        for (std::size_t i = 0; i < part.size(); ++i)
            part[i].set_point(points[i]);
        rest = rest.subspan(part.size());
    }
    forget_walk();
    CalculateBoundingBox();
    return 1;
}

} // namespace klv
