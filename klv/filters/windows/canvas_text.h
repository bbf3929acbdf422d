#pragma once

#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/filters/windows/canvas_attributes.h"
#include "klv/filters/windows/canvas_core.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace klv {

/// The text of a canvas, drawn in the selected font and the text colour.
class canvas_text {
public:
    canvas_text(canvas_core& core, const canvas_attributes& attributes)
        : core_(core)
        , attributes_(attributes)
    {
    }

    /// Characters of the font's character set, at a point of the file.
    /// \param advances the distance from each character to the next in the file's units, or fewer than there
    /// are characters for the font's own.
    void draw(std::string_view characters, const POINT& at, std::span<const std::int32_t> advances = {});
    /// The same in UTF-16. What the font's character set does not hold becomes a question mark.
    void draw(std::u16string_view characters, const POINT& at, std::span<const std::int32_t> advances = {});

private:
    struct placed_run;

    void draw_measured(std::string_view characters, vPOINT point, std::span<const std::int32_t> advances);
    void draw_runs(const placed_run& text, std::span<const std::int32_t> advances, bool font_fits);
    void draw_run(std::string_view characters, const vPOINT& baseline);

    canvas_core& core_;
    const canvas_attributes& attributes_;
    std::string bytes_; ///< of UTF-16 text
};

} // namespace klv
