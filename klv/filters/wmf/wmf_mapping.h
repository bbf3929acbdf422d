#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <algorithm>
#include <cstdint>

namespace klv {

/// How a metafile's coordinates become the picture's: from a window onto a viewport, each with an origin
/// and an extent of 16 bits.
class wmf_mapping {
public:
    vPOINT window_org;
    vPOINT viewport_org;

    /// \param detail picture units for each unit of the viewport, so that rounding to whole picture units
    /// loses nothing of what the file says. 1 is the documented mapping.
    wmf_mapping(const vPOINT& extent, int detail)
        : detail_(detail)
        , window_ext_(extent)
        , viewport_ext_(extent)
    {
        update();
    }

    const vPOINT& window_ext() const { return window_ext_; }
    const vPOINT& viewport_ext() const { return viewport_ext_; }
    int detail() const { return detail_; }

    /// Extents of zero would map nothing anywhere and are ignored.
    void window_ext(const vPOINT& extent) { set_extent(window_ext_, extent); }
    void viewport_ext(const vPOINT& extent) { set_extent(viewport_ext_, extent); }

    /// A point as the viewport has it, not limited to any range.
    vPOINT map(int x, int y) const
    {
        return {round_to(scale_x(x - window_org.x)) + viewport_org.x * detail_,
            round_to(scale_y(y - window_org.y)) + viewport_org.y * detail_};
    }
    /// A width or height, with its sign.
    int map_width(int width) const { return round_to(scale_x(width)); }
    int map_height(int height) const { return round_to(scale_y(height)); }

    /// The viewport in picture units.
    vRECT viewport() const
    {
        const vPOINT origin(viewport_org.x * detail_, viewport_org.y * detail_);
        return vRECT(origin, viewport_ext_.x * detail_, viewport_ext_.y * detail_);
    }

private:
    void set_extent(vPOINT& which, const vPOINT& extent)
    {
        if (extent.x == 0 || extent.y == 0)
            return;
        which = extent;
        update();
    }
    void update()
    {
        x_numerator_ = static_cast<double>(viewport_ext_.x) * detail_;
        y_numerator_ = static_cast<double>(viewport_ext_.y) * detail_;
        x_denominator_ = window_ext_.x;
        y_denominator_ = window_ext_.y;
    }

    // The products are below 2^53 and the quotients differ from a half by more than their rounding, so this
    // is the platform's multiply and divide with its rounding half away from zero.
    double scale_x(int x) const { return x * x_numerator_ / x_denominator_; }
    double scale_y(int y) const { return y * y_numerator_ / y_denominator_; }
    static int round_to(double v)
    {
        constexpr double limit = 1 << 30;
        return static_cast<int>(std::clamp(v < 0 ? v - 0.5 : v + 0.5, -limit, limit));
    }

    int detail_;
    vPOINT window_ext_;
    vPOINT viewport_ext_;
    double x_numerator_ = 1;
    double y_numerator_ = 1;
    double x_denominator_ = 1;
    double y_denominator_ = 1;
};

} // namespace klv
