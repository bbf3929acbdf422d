#pragma once

#include "klv/attributes/font_spec.h"
#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/filters/windows/canvas_objects.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace klv {

/// Measures of a font at a size in picture units.
struct text_measures {
    double em = 0; ///< character height
    double expansion = 1; ///< of the widths, against those of the face as it comes
    double ascent = 0;
    double descent = 0;
    std::array<double, 256> advance{}; ///< of each byte value

    double width(std::string_view text) const;
};

/// The size that a metafile asks of a font, in picture units.
struct text_size {
    int height = 0; ///< negative for a character height, positive for a cell height
    int width = 0; ///< average character width; 0 for the face's own
    friend bool operator==(const text_size&, const text_size&) = default;
};

/// Measures the fonts that a metafile selects, on a context of its own that is made when it is needed.
class text_measurer {
public:
    text_measurer() = default;
    text_measurer(const text_measurer&) = delete;
    text_measurer& operator=(const text_measurer&) = delete;
    ~text_measurer();

    const text_measures& measure(const canvas_font& font, const text_size& size);

private:
    void load(const canvas_font& font);

    HDC dc_ = nullptr;
    HFONT font_ = nullptr;
    canvas_font loaded_;
    bool is_loaded_ = false;
    text_size measured_;
    text_measures unit_; ///< for a character height of 1
    double cell_ = 1; ///< cell height for a character height of 1
    double average_ = 0; ///< average character width likewise
    text_measures scaled_;
};

/// The recorded picture's font that is realised with the character height `em` and that expansion.
vFONTSPEC measured_font(const canvas_font& font, double em, double expansion);

/// Where the baseline of a text begins, from its reference point and alignment (TA_ values).
vPOINT baseline_start(const vPOINT& reference, std::uint16_t align, int escapement,
    const text_measures& measures, double width);

/// The point `distance` along a baseline.
vPOINT along_baseline(const vPOINT& start, int escapement, double distance);

} // namespace klv
