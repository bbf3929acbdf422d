#include "klv/base/integer_root.h"
#include "klv/devices/line/line_engine.h"
#include "klv/devices/outline/segment_clip.h"

#include <algorithm>

/// The cutting of dashes: the pattern runs on along all segments of all contours of a shape.
namespace klv {
namespace {

// Shorter segments are cut from end to end; longer ones only where they can show.
constexpr int longest_uncut = 4096;

} // namespace

void LINEINFO::next_dash() noexcept
{
    do
        dash_index_ = (dash_index_ + 1) % pattern_length;
    while (pattern_[dash_index_] == 0);
    dash_rest_ = pattern_[dash_index_];
}

void LINEINFO::skip_pattern(std::int64_t distance) noexcept
{
    distance %= period_;
    while (distance >= dash_rest_) {
        distance -= dash_rest_;
        next_dash();
    }
    dash_rest_ -= distance;
    continuing_ = false;
}

void LINEINFO::round_cap_at(const POINT& at, const POINT& from, const POINT& to) noexcept
{
    AppendArc(*list_, at, CalcCircleSegments(from, to), circle_);
}

void LINEINFO::DottedLineSegment(const POINT& from, const POINT& to) noexcept
{
    const std::int64_t dx = std::int64_t{to.x} - from.x;
    const std::int64_t dy = std::int64_t{to.y} - from.y;
    const std::int64_t size = length(dx, dy);
    const bool round_caps = has_round_caps();
    if (size == 0) {
        if (round_caps && in_dash())
            round_cap_at(from, from, to);
        return;
    }
    // The point at a distance before the segment's end.
    const auto point_before_end = [&](std::int64_t distance) -> POINT {
        return {
            static_cast<LONG>(to.x - dx * distance / size), static_cast<LONG>(to.y - dy * distance / size)};
    };

    if (round_caps && in_dash() && list_->NoPolygons() == 0)
        round_cap_at(from, to, from);

    POINT start = from;
    std::int64_t rest = size;
    std::int64_t rest_unseen = 0; // at the end of the segment
    if (size > longest_uncut) {
        const segment_part seen = visible_part(from, to, reach_);
        const auto first = static_cast<std::int64_t>(seen.first * static_cast<double>(size));
        rest_unseen = size - static_cast<std::int64_t>(seen.last * static_cast<double>(size));
        const std::int64_t whole_periods = std::clamp<std::int64_t>(first, 0, size) / period_ * period_;
        if (whole_periods > 0) {
            rest -= whole_periods;
            start = point_before_end(rest);
            continuing_ = false;
        }
    }

    const line_offsets offsets = CalcLineCoefs(from, to, width_);
    while (rest >= dash_rest_) {
        if (rest <= rest_unseen) {
            skip_pattern(rest);
            return;
        }
        const POINT end = point_before_end(rest - dash_rest_);
        if (end != start) {
            const bool drawn = in_dash();
            if (drawn) {
                PartLineSegment(start, end, offsets);
                continuing_ = false;
            }
            if (round_caps)
                round_cap_at(end, drawn ? start : end, drawn ? end : start);
        }
        rest -= dash_rest_;
        next_dash();
        start = end;
    }
    if (!in_dash())
        continuing_ = false;
    else if (start != to)
        PartLineSegment(start, to, offsets);
    dash_rest_ -= rest;
}

} // namespace klv
