#include "klv/core/point.h"

#include "klv/base/angles.h"
#include "klv/core/integer_math.h"

#include <cmath>
#include <optional>

namespace klv {

namespace {

struct rotation {
    double sine;
    double cosine;
};

// Quarter turns are exact, so that a picture turned by 90 degrees keeps its whole coordinates.
std::optional<rotation> quarter_turn(double degrees) noexcept
{
    constexpr double micro = 1000000.0;
    constexpr double largest = 9.0e18 / micro;
    if (!(std::abs(degrees) < largest))
        return std::nullopt;
    if (static_cast<std::int64_t>(degrees * micro) % 90000000 != 0)
        return std::nullopt;
    switch (static_cast<std::int64_t>(degrees) % 360) {
    case 0:
        return rotation{0, 1};
    case 90:
    case -270:
        return rotation{1, 0};
    case 180:
    case -180:
        return rotation{0, -1};
    case 270:
    case -90:
        return rotation{-1, 0};
    default:
        return std::nullopt;
    }
}

rotation rotation_by(double degrees) noexcept
{
    if (const auto exact = quarter_turn(degrees))
        return *exact;
    const double radians = to_radians(degrees);
    return {std::sin(radians), std::cos(radians)};
}

} // namespace

vPOINT::vPOINT(const vPOINT& p, const vPOINT& centre, double angle, double aspect) noexcept
    : vPOINT(p)
{
    if (angle == 0.0 && aspect == 1.0)
        return;
    const auto [sine, cosine] = rotation_by(angle);
    const vPOINT d = p - centre;
    x = round_wrapped(d.x * cosine + d.y * sine / aspect + centre.x);
    y = round_wrapped(-(d.x * sine * aspect) + d.y * cosine + centre.y);
}

int vPOINT::DiagDist() const noexcept { return klv::Sqrt(wrap_add(wrap_mul(x, x), wrap_mul(y, y))); }

} // namespace klv
