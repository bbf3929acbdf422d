#pragma once

#include "klv/core/rect.h"
#include "klv/geometry/point_record.h"

#include <cstdint>
#include <span>

namespace klv {

/// Walks the point records of an outline in order and knows, after each of them, whether what it has seen
/// is a valid outline and which rectangle holds it. It can go on where it stopped, so that a shape built
/// point by point costs no more than one walk.
class outline_walk {
public:
    /// Walks on over records[walked()..]; the records before must be the ones walked before.
    void advance(std::span<const point_record> records);
    /// The state of a walk over records that are known to be straight-edged, valid contours inside box.
    void assume_polygons(std::size_t records, const vRECT& box, std::size_t open_ends);

    /// True when the records walked so far are whole contours.
    [[nodiscard]] bool valid() const
    {
        return walked_ >= 2 && !rejected_ && expecting_start_ && controls_due_ == 0;
    }
    /// Holds the outline, curves by their true extremes. Meaningful while valid().
    [[nodiscard]] const vRECT& box() const { return box_; }
    /// Ends of open contours among the records walked, valid or not.
    [[nodiscard]] std::size_t open_ends() const { return open_ends_; }
    [[nodiscard]] std::size_t walked() const { return walked_; }

private:
    void step(std::span<const point_record> records, std::size_t i);
    void enclose_curve(std::span<const point_record> records, std::size_t start, std::size_t end);

    vRECT box_;
    std::uint32_t walked_ = 0;
    std::uint32_t open_ends_ = 0;
    std::uint32_t contour_start_ = 0;
    std::uint8_t controls_due_ = 0;
    bool curve_due_ = false; // the next on-curve record ends a curve
    bool closes_ = false; // the control records due belong to a closing curve
    bool expecting_start_ = true;
    bool rejected_ = false;
};

} // namespace klv
