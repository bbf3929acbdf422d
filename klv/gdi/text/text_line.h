#pragma once

#include "klv/gdi/text/text_run.h"

namespace klv::gdi {

/// Where a string stands in device pixels: the left end of its baseline and the directions of the baseline
/// and of its descenders.
class text_placement {
public:
    /// Moves the reference point to the left end of the baseline.
    text_placement(POINT reference, std::uint32_t align, const realised_font& font, pixels length);

    /// The pixel at a distance along the baseline and a depth below it.
    [[nodiscard]] POINT at(double distance, double depth) const
    {
        return from(start_x_, start_y_, distance, depth);
    }
    /// The same, counted from another point than the baseline's start.
    [[nodiscard]] POINT along(POINT start, double distance) const
    {
        return from(start.x, start.y, distance, 0);
    }

private:
    [[nodiscard]] POINT from(double x, double y, double distance, double depth) const;

    double cosine_;
    double sine_;
    double start_x_ = 0;
    double start_y_ = 0;
};

/// A text that is ready to be drawn: its font at the state's scale, its characters with their distances, and
/// where they stand.
class text_line {
public:
    text_line(const drawing_state& state, selected_font selected, POINT at, std::string_view text,
        const LONG* advances);

    [[nodiscard]] const font_object& object() const { return *selected_.object; }
    [[nodiscard]] realised_font& font() const { return *selected_.font; }
    [[nodiscard]] const text_run& run() const { return run_; }
    [[nodiscard]] pixels length() const { return length_; }
    [[nodiscard]] const text_placement& place() const { return place_; }
    /// The current position that TA_UPDATECP leaves behind it, logical.
    [[nodiscard]] POINT end_position(const drawing_state& state) const;

private:
    selected_font selected_;
    text_run run_;
    pixels length_;
    POINT reference_;
    text_placement place_;
};

} // namespace klv::gdi
