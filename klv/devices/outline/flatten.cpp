#include "klv/devices/outline/flatten.h"

#include "klv/base/integer_root.h"

#include <cmath>

namespace klv {
namespace {

// cos 173.8 degrees * 1000: directions that turn by less are one line.
constexpr std::int64_t straight_on = -994;
// Above this the product of two squares would not fit, so the roots are multiplied instead.
constexpr std::int64_t exact_product_limit = 10000;

} // namespace

bool DetectCorner(const POINT& a, const POINT& b, const POINT& c) noexcept
{
    const std::int64_t ux = std::int64_t{b.x} - a.x;
    const std::int64_t uy = std::int64_t{b.y} - a.y;
    const std::int64_t vx = std::int64_t{b.x} - c.x;
    const std::int64_t vy = std::int64_t{b.y} - c.y;
    const std::int64_t dot = ux * vx + uy * vy;
    const std::int64_t u2 = ux * ux + uy * uy;
    const std::int64_t v2 = vx * vx + vy * vy;
    const std::int64_t lengths = u2 > exact_product_limit || v2 > exact_product_limit
        ? std::int64_t{integer_root(u2)} * integer_root(v2) + 1
        : integer_root(u2 * v2);
    if (u2 == 0 || v2 == 0 || lengths == 0)
        return true;
    // |dot| <= 2^58, so a thousandth is compared instead of multiplying by a thousand.
    const double cosine = static_cast<double>(dot) * 1000.0 / static_cast<double>(lengths);
    return std::trunc(cosine) >= static_cast<double>(straight_on);
}

} // namespace klv
