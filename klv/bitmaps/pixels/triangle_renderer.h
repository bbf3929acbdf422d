#pragma once

#include "klv/bitmaps/pixels/resample.h"

#include <cstdint>

namespace klv {

/// A corner of a triangle: where it lies in the target, in pixels, and which place of the source belongs
/// there, each axis from 0 to 1.
struct texture_vertex {
    double x;
    double y;
    double u;
    double v;
};

enum class sampling { nearest, interpolated };

/// Fills triangles of a target with a source picture. Target and source have the same channels; a target
/// pixel belongs to a triangle when its centre does, so that triangles with a common edge neither leave a
/// gap nor overlap.
class triangle_renderer {
public:
    /// \param across,down how often the source is repeated from 0 to 1, at least 1
    triangle_renderer(const pixel_rows& source, const mutable_pixel_rows& target, sampling how,
        std::int32_t across, std::int32_t down)
        : source_(source)
        , target_(target)
        , how_(how)
        , across_(across)
        , down_(down)
    {
    }

    void RenderTriangle(texture_vertex a, texture_vertex b, texture_vertex c) const;

private:
    void fill_row(std::int32_t y, double left, double right, const texture_vertex& origin, double u_of_x,
        double v_of_x, double u_of_y, double v_of_y) const;
    void put_nearest(double u, double v, std::uint8_t* pixel) const;
    void put_interpolated(double u, double v, std::uint8_t* pixel) const;

    pixel_rows source_;
    mutable_pixel_rows target_;
    sampling how_;
    std::int32_t across_;
    std::int32_t down_;
};

} // namespace klv
