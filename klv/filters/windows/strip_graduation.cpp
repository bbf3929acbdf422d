#include "klv/filters/windows/strip_graduation.h"

#include "klv/base/angles.h"
#include "klv/filters/windows/windows_attributes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace klv {
namespace {

constexpr std::uint16_t rop2_exclusive_or = 7;
constexpr std::uint16_t rop2_not_exclusive_or = 10;

constexpr COLORREF black = 0x000000;
constexpr COLORREF white = 0xFFFFFF;

using channels = std::array<int, 3>;

channels channels_of(COLORREF colour)
{
    return {static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
        static_cast<int>(colour >> 16 & 0xFF)};
}

// How the middle strip's colour lies between the first and the last one's.
struct ramp {
    bool monotonic = true; ///< in every channel between them
    bool slow_start = false; ///< in some channel in the first third of the way
    bool fast_start = false; ///< in some channel in the last third
};

ramp measure_ramp(COLORREF first, COLORREF middle, COLORREF last)
{
    const auto a = channels_of(first);
    const auto m = channels_of(middle);
    const auto b = channels_of(last);
    ramp result;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int way = std::abs(b[i] - a[i]);
        const int half = std::abs(m[i] - a[i]);
        result.monotonic = result.monotonic && std::min(a[i], b[i]) <= m[i] && m[i] <= std::max(a[i], b[i]);
        result.slow_start = result.slow_start || half * 3 < way;
        result.fast_start = result.fast_start || half * 3 > way * 2;
    }
    return result;
}

vFILLSPEC graduated(vFILLTYPE type, COLORREF from, COLORREF to, int angle)
{
    return vFILLSPEC(type, colour_of(from), colour_of(to), vANGLE(static_cast<short>(angle)), vFILL_ALTERNATE,
        vPOINT(0, 0));
}

bool is_mask(const vFILLSPEC& fill)
{
    const COLORREF colour = fill.Colour().PackedRGB();
    return fill.Type() == vFILL_SOLID && (colour == black || colour == white);
}

} // namespace

void strip_graduation::comment(const vFILLSPEC& fill)
{
    fill_ = fill;
    comment_pending_ = true;
    comment_used_ = false;
}

void strip_graduation::drawing_mode(std::uint16_t rop2)
{
    if (rop2 == rop2_exclusive_or || rop2 == rop2_not_exclusive_or) {
        exclusive_or_ = true;
        if (comment_pending_)
            return;
        if (stage_ == stage::none || stage_ == stage::strips) {
            stage_ = stage::strips;
            expects_first_point_ = true;
        } else {
            stage_ = stage::strips_again;
            colour_count_ = 0;
        }
        return;
    }

    const bool leaving = exclusive_or_;
    exclusive_or_ = false;
    if (!comment_pending_) {
        const bool strips_drawn = stage_ == stage::strips || stage_ == stage::mask;
        stage_ = strips_drawn ? stage::mask : stage::none;
        if (!strips_drawn)
            colour_count_ = 0;
    }
    if (leaving && comment_used_) {
        comment_pending_ = false;
        comment_used_ = false;
    }
}

void strip_graduation::brush_created(COLORREF colour)
{
    if (stage_ == stage::strips && !comment_pending_ && colour_count_ < most_colours)
        colours_[colour_count_++] = colour;
}

void strip_graduation::strip(const vPOINT& first_point)
{
    if (expects_first_point_)
        first_point_ = first_point;
    expects_first_point_ = false;
    last_point_ = first_point;
}

strip_graduation::verdict strip_graduation::judge(const vFILLSPEC& current)
{
    if (comment_pending_) {
        comment_used_ = true;
        return verdict::draw_in_fill;
    }
    // Exclusive-or mode without strips was used for something else.
    if (stage_ != stage::mask || colour_count_ == 0)
        return verdict::draw;
    if (!is_mask(current))
        return verdict::skip;
    fill_ = fill_of_strips();
    return verdict::draw_in_fill;
}

vFILLSPEC strip_graduation::fill_of_strips() const
{
    const COLORREF first = colours_[0];
    const COLORREF middle = colours_[colour_count_ / 2];
    const COLORREF last = colours_[colour_count_ - 1];
    const int angle = strip_angle();
    const auto way = measure_ramp(first, middle, last);
    if (!way.monotonic)
        return graduated(vFILL_LINEAR_TWO_WAY, first, middle, angle);
    if (way.slow_start)
        return graduated(vFILL_LINEAR_LOGARITHMIC, last, first, angle);
    if (way.fast_start)
        return graduated(vFILL_LINEAR_LOGARITHMIC, first, last, (angle + 180) % 360);
    return graduated(vFILL_LINEAR, first, last, angle);
}

// Counter-clockwise as seen, in whole degrees; y grows downwards.
short strip_graduation::strip_angle() const
{
    const double dx = last_point_.x - first_point_.x;
    const double dy = first_point_.y - last_point_.y;
    const int degrees = static_cast<int>(to_degrees(std::atan2(dy, dx)));
    return static_cast<short>(degrees < 0 ? degrees + 360 : degrees);
}

} // namespace klv
