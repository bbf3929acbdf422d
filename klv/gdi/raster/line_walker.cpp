#include "klv/gdi/raster/line_walker.h"

#include <algorithm>
#include <cmath>

namespace klv::gdi {

namespace {

// Within these limits every product below fits in 64 bits.
constexpr double far_limit = 1 << 28;

std::int64_t floor_div(std::int64_t a, std::int64_t b)
{
    const std::int64_t q = a / b;
    return q * b > a ? q - 1 : q;
}

bool is_far(const POINT& p)
{
    return std::abs(double{1} * p.x) > far_limit || std::abs(double{1} * p.y) > far_limit;
}

/// Cuts a line to the square of the limits (Liang and Barsky). False when nothing is left.
bool cut_far_line(POINT& from, POINT& to)
{
    const double x = from.x;
    const double y = from.y;
    const double dx = double{1} * to.x - x;
    const double dy = double{1} * to.y - y;
    double enter = 0;
    double leave = 1;
    const auto cut = [&](double delta, double distance) {
        if (delta == 0)
            return distance >= 0;
        const double t = distance / delta;
        if (delta < 0)
            enter = std::max(enter, t);
        else
            leave = std::min(leave, t);
        return enter < leave;
    };
    if (!cut(-dx, x + far_limit) || !cut(dx, far_limit - x) || !cut(-dy, y + far_limit)
        || !cut(dy, far_limit - y))
        return false;
    const auto at = [&](double t) {
        return POINT{static_cast<LONG>(std::lround(x + t * dx)), static_cast<LONG>(std::lround(y + t * dy))};
    };
    to = leave < 1 ? at(leave) : to;
    from = enter > 0 ? at(enter) : from;
    return true;
}

} // namespace

line_walker::line_walker(POINT from, POINT to, const box& clip)
{
    if ((is_far(from) || is_far(to)) && !cut_far_line(from, to))
        return;
    const std::int64_t dx = std::int64_t{to.x} - from.x;
    const std::int64_t dy = std::int64_t{to.y} - from.y;
    steep_ = std::abs(dy) > std::abs(dx);
    const std::int64_t major_delta = steep_ ? dy : dx;
    const std::int64_t major_start = steep_ ? from.y : from.x;
    const std::int64_t low = steep_ ? clip.y1 : clip.x1;
    const std::int64_t high = steep_ ? clip.y2 : clip.x2;
    minor_start_ = steep_ ? from.x : from.y;
    minor_delta_ = steep_ ? dx : dy;
    direction_ = major_delta < 0 ? -1 : 1;
    length_ = std::abs(major_delta);
    if (length_ == 0)
        return;
    if (direction_ > 0) {
        first_ = std::max<std::int64_t>(0, low - major_start);
        end_ = std::min(length_, high - major_start);
    } else {
        first_ = std::max<std::int64_t>(0, major_start - (high - 1));
        end_ = std::min(length_, major_start - low + 1);
    }
    clip_minor(steep_ ? clip.x1 : clip.y1, steep_ ? clip.x2 : clip.y2);
    if (first_ >= end_)
        return;

    major_ = major_start + direction_ * first_;
    divisor_ = 2 * length_;
    const std::int64_t numerator = 2 * minor_delta_ * first_ + length_ - 1;
    const std::int64_t offset = floor_div(numerator, divisor_);
    minor_ = minor_start_ + offset;
    error_ = numerator - offset * divisor_;
    minor_step_ = floor_div(2 * minor_delta_, divisor_);
    error_step_ = 2 * minor_delta_ - minor_step_ * divisor_;
}

std::int64_t line_walker::minor_at(std::int64_t step) const
{
    return minor_start_ + floor_div(2 * minor_delta_ * step + length_ - 1, 2 * length_);
}

// The minor coordinate never turns back, so the steps inside [low, high) are one stretch; its ends are
// found by halving.
void line_walker::clip_minor(std::int64_t low, std::int64_t high)
{
    const auto first_step_where = [this](auto condition) {
        std::int64_t a = first_;
        std::int64_t b = end_;
        while (a < b) {
            const std::int64_t middle = a + (b - a) / 2;
            if (condition(minor_at(middle)))
                b = middle;
            else
                a = middle + 1;
        }
        return a;
    };
    const auto inside = [&](std::int64_t v) { return v >= low && v < high; };
    if (first_ >= end_ || (inside(minor_start_) && inside(minor_start_ + minor_delta_)))
        return;
    if (minor_delta_ >= 0) {
        const std::int64_t enters = first_step_where([&](std::int64_t v) { return v >= low; });
        end_ = first_step_where([&](std::int64_t v) { return v >= high; });
        first_ = enters;
    } else {
        const std::int64_t enters = first_step_where([&](std::int64_t v) { return v < high; });
        end_ = first_step_where([&](std::int64_t v) { return v < low; });
        first_ = enters;
    }
}

} // namespace klv::gdi
