#pragma once

#include "klv/base/types.h"
#include "klv/filters/windows/canvas_core.h"

#include <cstddef>
#include <cstdint>

namespace klv {

/// The objects of a canvas, and what selecting one of them makes the picture draw with.
class canvas_attributes {
public:
    /// \param numbers how many object numbers the format has
    canvas_attributes(canvas_core& core, std::size_t numbers)
        : core_(core)
        , objects_(numbers)
    {
    }

    /// Each object's sizes are scaled by the mapping at hand. The format's decoder puts the result into
    /// objects(), by its order or by its number.
    [[nodiscard]] canvas_pen make_pen(std::uint16_t style, int width, COLORREF colour) const;
    [[nodiscard]] canvas_brush make_brush(std::uint16_t style, COLORREF colour, std::uint16_t hatch);
    /// Fills in what follows from the file's sizes.
    [[nodiscard]] canvas_font make_font(canvas_font font) const;

    [[nodiscard]] canvas_object_table& objects() { return objects_; }
    /// Numbers that name nothing change nothing.
    void select(std::size_t number);
    void select_palette(std::size_t number);
    /// The selected palette; null before a file selects one.
    [[nodiscard]] const canvas_colour_table& palette() const { return palette_; }

    void set_winding(bool winding);
    /// Pens and fonts follow the mapping, where the policy says so.
    void mapping_rescaled();
    /// Pen, brush and font of the state, after another one came back.
    void record_all();

    [[nodiscard]] text_size size_of(const canvas_font& font) const;

private:
    [[nodiscard]] int scaled_width(const canvas_pen& pen) const;
    void record_pen();
    void record_brush();
    void record_font();
    void record_pattern(const canvas_pattern_brush& pattern);

    canvas_core& core_;
    canvas_object_table objects_;
    canvas_colour_table palette_;
};

} // namespace klv
