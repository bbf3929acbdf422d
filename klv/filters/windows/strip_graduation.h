#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/base/types.h"
#include "klv/core/point.h"

#include <array>
#include <cstdint>

namespace klv {

/// Turns the traces of a graduated fill back into one. The library's writers for the Windows formats draw a
/// graduation as strips in exclusive-or mode, the shape in black or white, and the strips again; a comment
/// before them may name the fill. The canvas tells this object of drawing modes, brushes and strips, and asks
/// it what to do with each figure.
class strip_graduation {
public:
    enum class verdict { draw, draw_in_fill, skip };

    /// The fill that a comment names for the next figure.
    void comment(const vFILLSPEC& fill);
    void drawing_mode(std::uint16_t rop2);
    void brush_created(COLORREF colour);
    /// The first point of a polygon drawn in exclusive-or mode.
    void strip(const vPOINT& first_point);

    /// True while figures are strips: nothing is drawn.
    bool silent() const { return exclusive_or_; }
    /// What to do with a figure under the current fill; for draw_in_fill the fill is fill().
    verdict judge(const vFILLSPEC& current);
    const vFILLSPEC& fill() const { return fill_; }

private:
    // Where a sequence of strips, mask and strips stands.
    enum class stage { none, strips, mask, strips_again };

    vFILLSPEC fill_of_strips() const;
    short strip_angle() const;

    static constexpr std::size_t most_colours = 500;
    std::array<COLORREF, most_colours> colours_{};
    std::size_t colour_count_ = 0;
    vPOINT first_point_;
    vPOINT last_point_;
    bool expects_first_point_ = false;
    bool exclusive_or_ = false;
    bool comment_pending_ = false;
    bool comment_used_ = false;
    stage stage_ = stage::none;
    vFILLSPEC fill_;
};

} // namespace klv
