#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/filters/windows/canvas_core.h"
#include "klv/geometry/arc.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace klv {

/// The lines and figures of a canvas. Coordinates are the file's. A list of points is anything with size()
/// and operator[] that gives something with x and y, so that a decoder hands its bytes on as they are.
class canvas_figures {
public:
    explicit canvas_figures(canvas_core& core)
        : core_(core)
    {
    }

    void move_to(int x, int y);
    /// Segments that follow one another are drawn as one line, when finish_lines is called.
    void line_to(int x, int y);
    void finish_lines();

    template <class Points> void polygon(const Points& points)
    {
        take(points);
        draw_polygon();
    }
    template <class Points> void polyline(const Points& points)
    {
        take(points);
        draw_polyline();
    }
    /// Counts is a list of the polygons' sizes; the points of all follow one another. Points that are missing
    /// at the end are left out.
    template <class Counts, class Points> void poly_polygon(const Counts& counts, const Points& points);

    void rectangle(const RECT& box);
    void ellipse(const RECT& box);
    void round_rectangle(const RECT& box, int corner_width, int corner_height);
    /// The arc of the box's ellipse from the ray to start to the ray to end, counter-clockwise as seen.
    void arc(const RECT& box, const POINT& start, const POINT& end, ARCCLOSURE closure);

    /// Fills with the brush under a ternary raster operation without a source.
    void pattern_fill(const RECT& area, std::uint32_t operation);
    void fill(const RECT& area, COLORREF colour);

private:
    using point_list = std::vector<vPOINT, vALLOCATOR<vPOINT>>;
    using count_list = std::vector<std::int32_t, vALLOCATOR<std::int32_t>>;

    template <class Points> void take(const Points& points)
    {
        points_.clear();
        append(points, 0, points.size());
    }
    template <class Points> void append(const Points& points, std::size_t from, std::size_t count);
    void begin_polygons();
    void end_of_one_polygon(std::size_t first);
    void draw_polygon();
    void draw_polyline();
    void draw_points(bool closed);
    void draw_polygons();
    template <class Draw> void draw_figure(Draw draw);

    /// Of a shape.
    static constexpr std::size_t most_points = 65535;

    canvas_core& core_;
    point_list lines_; ///< of line segments not yet drawn
    point_list points_;
    count_list counts_;
    vSHAPE shape_;
};

// Appends count points, as many as there are, in picture units.
template <class Points> void canvas_figures::append(const Points& points, std::size_t from, std::size_t count)
{
    const std::size_t end = from + std::min(count, points.size() - from);
    const std::size_t first = points_.size();
    points_.resize(first + (end - from));
    for (std::size_t i = from; i < end; ++i) {
        const auto p = points[i];
        points_[first + (i - from)] = core_.map(p.x, p.y);
    }
}

template <class Counts, class Points>
void canvas_figures::poly_polygon(const Counts& counts, const Points& points)
{
    // What the strips of a graduation are made of is never more than one polygon.
    if (core_.graduation.silent())
        return;
    constexpr std::size_t documented_polygons = 255;
    const std::size_t polygons
        = core_.policy.reads_all_polygons ? counts.size() : std::min(counts.size(), documented_polygons);
    begin_polygons();
    std::size_t next = 0;
    for (std::size_t i = 0; i < polygons; ++i) {
        const std::size_t count = counts[i];
        if (points_.size() + count > most_points)
            draw_polygons();
        const std::size_t first = points_.size();
        append(points, next, count);
        next += points_.size() - first;
        end_of_one_polygon(first);
    }
    draw_polygons();
}

} // namespace klv
