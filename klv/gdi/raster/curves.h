#pragma once

#include "klv/gdi/raster/scan_converter.h"
#include "klv/gdi/raster/spans.h"

#include <vector>

namespace klv::gdi {

/// Hands the rows of a box whose corners are quarters of a width x height ellipse to a sink, exactly by
/// pixel centres. Sizes of at least the box's own make it an ellipse. Rows and runs are cut to clip.
void fill_rounded_box(
    const box& area, std::int32_t width, std::int32_t height, const box& clip, span_sink& sink);
/// The rows of an ellipse without those of another that lies inside it.
void fill_ellipse_ring(const box& outer, const box& inner, const box& clip, span_sink& sink);
/// The border of the same, one pixel wide and connected, each pixel once.
void outline_rounded_box(
    const box& area, std::int32_t width, std::int32_t height, const box& clip, span_sink& sink);

/// An ellipse in sixteenths of a pixel.
struct ellipse {
    double centre_x;
    double centre_y;
    double radius_x;
    double radius_y;

    /// Angle (radians, from the right, growing downwards) at which the ray through a point leaves.
    [[nodiscard]] double angle_of(double x, double y) const;
    [[nodiscard]] fixed_point at(double angle) const;
    /// Appends points from an angle over a sweep (either sign), both ends included.
    void append_arc(double from, double sweep, std::vector<fixed_point>& out) const;
};

/// Appends a cubic from the point already at the end of out.
void append_bezier(const fixed_point (&control)[4], std::vector<fixed_point>& out);

} // namespace klv::gdi
