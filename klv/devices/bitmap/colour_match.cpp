#include "klv/devices/bitmap/colour_match.h"

#include "klv/core/integer_math.h"

#include <algorithm>
#include <cmath>

namespace klv {
namespace {

constexpr int full = 255;
// A tolerance of t reaches (t + 10) / 110 of the way to black and to white.
constexpr int least_reach = 10;
constexpr int whole_reach = 110;

} // namespace

colour_match::colour_match(const RGBQUAD& key, int tolerance) noexcept
    : key_(key)
    , exact_(tolerance <= 0)
{
    if (exact_)
        return;
    const int t = std::min(tolerance, 100);
    red_green_ = plane(key.rgbRed, key.rgbGreen, t);
    red_blue_ = plane(key.rgbRed, key.rgbBlue, t);
    blue_green_ = plane(key.rgbBlue, key.rgbGreen, t);
}

colour_match::plane::plane(int key1, int key2, int tolerance) noexcept
{
    const int reach = tolerance + least_reach;
    const auto towards_black = [reach](int k) { return k - MulDiv(k, reach, whole_reach); };
    const auto towards_white = [reach](int k) { return k + MulDiv(full - k, reach, whole_reach); };
    const double low1 = towards_black(key1);
    const double low2 = towards_black(key2);
    const double high1 = towards_white(key1);
    const double high2 = towards_white(key2);

    // The side corners stand off the key across the mean of the directions to the two end corners.
    const double angle_up = std::atan2(high2 - key2, high1 - key1);
    const double angle_down = std::atan2(key2 - low2, key1 - low1);
    const double across = (angle_up + angle_down) / 2 + std::acos(0.0);
    const double side1 = reach * std::cos(across);
    const double side2 = reach * std::sin(across);

    include_edge(low1, low2, key1 + side1, key2 + side2);
    include_edge(key1 + side1, key2 + side2, high1, high2);
    include_edge(high1, high2, key1 - side1, key2 - side2);
    include_edge(key1 - side1, key2 - side2, low1, low2);
    include(key1, key2);
}

void colour_match::plane::include(double x, int y) noexcept
{
    if (y < 0 || y > full)
        return;
    const auto value = static_cast<std::uint8_t>(std::clamp(static_cast<int>(std::lround(x)), 0, full));
    row& r = rows_[static_cast<std::size_t>(y)];
    r.least = std::min(r.least, value);
    r.greatest = std::max(r.greatest, value);
}

void colour_match::plane::include_edge(double x0, double y0, double x1, double y1) noexcept
{
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    const int first = static_cast<int>(std::ceil(y0));
    const int last = static_cast<int>(std::floor(y1));
    for (int y = first; y <= last; ++y)
        include(y1 == y0 ? x0 : x0 + (x1 - x0) * (y - y0) / (y1 - y0), y);
    include(x0, static_cast<int>(std::lround(y0)));
    include(x1, static_cast<int>(std::lround(y1)));
}

} // namespace klv
