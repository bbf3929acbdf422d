#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <algorithm>
#include <cmath>

namespace klv {

/// x' = m11 x + m21 y + dx, y' = m12 x + m22 y + dy: from world coordinates to those of the window.
struct world_transform {
    double m11 = 1;
    double m12 = 0;
    double m21 = 0;
    double m22 = 1;
    double dx = 0;
    double dy = 0;

    [[nodiscard]] bool is_identity() const { return *this == world_transform(); }
    friend bool operator==(const world_transform&, const world_transform&) = default;
};

/// How a file's coordinates become the picture's: through a world transform (the identity unless a file sets
/// one), then from a window onto a viewport, each with an origin and an extent.
class canvas_mapping {
public:
    vPOINT window_org;
    vPOINT viewport_org;

    /// \param detail picture units for each unit of the viewport, so that rounding to whole picture units
    /// loses nothing of what the file says. 1 is the documented mapping.
    canvas_mapping(const vPOINT& extent, int detail)
        : detail_(detail)
        , window_ext_(extent)
        , viewport_ext_(extent)
    {
        update();
    }

    const vPOINT& window_ext() const { return window_ext_; }
    const vPOINT& viewport_ext() const { return viewport_ext_; }
    int detail() const { return detail_; }
    const world_transform& world() const { return world_; }

    /// Extents of zero would map nothing anywhere and are ignored.
    void window_ext(const vPOINT& extent) { set_extent(window_ext_, extent); }
    void viewport_ext(const vPOINT& extent) { set_extent(viewport_ext_, extent); }
    void world(const world_transform& transform)
    {
        world_ = transform;
        turned_ = !transform.is_identity();
    }

    /// A point as the viewport has it, limited only to the range of 32 bits.
    vPOINT map(double x, double y) const
    {
        if (turned_) {
            const double world_x = x;
            x = world_.m11 * world_x + world_.m21 * y + world_.dx;
            y = world_.m12 * world_x + world_.m22 * y + world_.dy;
        }
        return {placed(scale_x(x - window_org.x), viewport_org.x),
            placed(scale_y(y - window_org.y), viewport_org.y)};
    }
    /// A width or height along its own axis, with its sign.
    int map_width(double width) const
    {
        return round_to(scale_x(turned_ ? width * std::hypot(world_.m11, world_.m12) : width));
    }
    int map_height(double height) const
    {
        return round_to(scale_y(turned_ ? height * std::hypot(world_.m21, world_.m22) : height));
    }

    /// The viewport in picture units.
    vRECT viewport() const
    {
        const vPOINT origin(
            round_to(double{1} * viewport_org.x * detail_), round_to(double{1} * viewport_org.y * detail_));
        return vRECT(origin, round_to(x_numerator_), round_to(y_numerator_));
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

    // For coordinates of 16 bits the products are below 2^53 and the quotients differ from a half by more
    // than their rounding, so this is the platform's multiply and divide with its rounding half away from
    // zero.
    double scale_x(double x) const { return x * x_numerator_ / x_denominator_; }
    double scale_y(double y) const { return y * y_numerator_ / y_denominator_; }
    static int round_to(double v)
    {
        constexpr double limit = 1 << 30;
        return static_cast<int>(std::clamp(v < 0 ? v - 0.5 : v + 0.5, -limit, limit));
    }
    int placed(double distance, int origin) const
    {
        constexpr double limit = 2147483647.0;
        return static_cast<int>(std::clamp(round_to(distance) + double{1} * origin * detail_, -limit, limit));
    }

    int detail_;
    bool turned_ = false;
    world_transform world_;
    vPOINT window_ext_;
    vPOINT viewport_ext_;
    double x_numerator_ = 1;
    double y_numerator_ = 1;
    double x_denominator_ = 1;
    double y_denominator_ = 1;
};

} // namespace klv
