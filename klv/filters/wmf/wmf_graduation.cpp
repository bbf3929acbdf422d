#include "klv/filters/wmf/wmf_graduation.h"

#include "klv/base/byte_reader.h"
#include "klv/filters/wmf/wmf_attributes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <string_view>

namespace klv {
namespace {

constexpr std::uint16_t rop2_exclusive_or = 7;
constexpr std::uint16_t rop2_not_exclusive_or = 10;

constexpr COLORREF black = 0x000000;
constexpr COLORREF white = 0xFFFFFF;

constexpr std::size_t fill_comment_size = 28;
constexpr std::string_view fill_comment_text("ZYNfill\0", 8);

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
    return vFILLSPEC(type, wmf_colour(from), wmf_colour(to), vANGLE(static_cast<short>(angle)),
        vFILL_ALTERNATE, vPOINT(0, 0));
}

bool is_mask(const vFILLSPEC& fill)
{
    const COLORREF colour = fill.Colour().PackedRGB();
    return fill.Type() == vFILL_SOLID && (colour == black || colour == white);
}

// The writer's C, M, Y, K bytes hold per cents; black is halved where the inks leave no room for it.
vCOLOUR read_comment_colour(byte_reader& in)
{
    constexpr int full_tint = 100 * 255;
    constexpr int per_cent_of_tint = 20000;
    constexpr int crowded = 600;
    const auto ink = [&in] { return in.u8() * full_tint / per_cent_of_tint; };
    int c = ink();
    int m = ink();
    int y = ink();
    int k = ink();
    if (c + m + y > crowded)
        k /= 2;
    c += k;
    m += k;
    y += k;
    const int top = std::max({255, c, m, y});
    const auto light = [top](int i) { return static_cast<unsigned char>(std::min(top - i, 255)); };
    return vCOLOUR(light(c), light(m), light(y));
}

vFILLTYPE fill_type_of_comment(std::uint8_t kind)
{
    switch (kind) {
    case 3:
        return vFILL_LINEAR;
    case 4:
        return vFILL_LINEAR_LOGARITHMIC;
    case 5:
        return vFILL_LINEAR_TWO_WAY;
    case 6:
        return vFILL_RADIAL;
    case 7:
        return vFILL_RADIAL_QUADRATIC;
    default:
        return vFILL_NONE;
    }
}

} // namespace

void wmf_graduation::comment(const vFILLSPEC& fill)
{
    fill_ = fill;
    comment_pending_ = true;
    comment_used_ = false;
}

void wmf_graduation::drawing_mode(std::uint16_t rop2)
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

void wmf_graduation::brush_created(COLORREF colour)
{
    if (stage_ == stage::strips && !comment_pending_ && colour_count_ < most_colours)
        colours_[colour_count_++] = colour;
}

void wmf_graduation::strip(const vPOINT& first_point)
{
    if (expects_first_point_)
        first_point_ = first_point;
    expects_first_point_ = false;
    last_point_ = first_point;
}

wmf_graduation::verdict wmf_graduation::judge(const vFILLSPEC& current)
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

vFILLSPEC wmf_graduation::fill_of_strips() const
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
short wmf_graduation::strip_angle() const
{
    const double dx = last_point_.x - first_point_.x;
    const double dy = first_point_.y - last_point_.y;
    const int degrees = static_cast<int>(std::atan2(dy, dx) * 180 / std::numbers::pi);
    return static_cast<short>(degrees < 0 ? degrees + 360 : degrees);
}

std::optional<vFILLSPEC> read_wmf_fill_comment(std::span<const std::uint8_t> comment)
{
    if (comment.size() != fill_comment_size
        || std::memcmp(comment.data(), fill_comment_text.data(), fill_comment_text.size() - 1) != 0)
        return std::nullopt;
    byte_reader in(comment.subspan(fill_comment_text.size()));
    const auto type = fill_type_of_comment(in.u8());
    in.skip(1);
    const auto angle = in.i16le();
    const auto from = read_comment_colour(in);
    const auto to = read_comment_colour(in);
    return vFILLSPEC(type, from, to, vANGLE(angle), vFILL_ALTERNATE, vPOINT(0, 0));
}

} // namespace klv
