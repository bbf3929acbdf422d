#pragma once

#include "klv/gdi/raster/canvas.h"
#include "klv/gdi/raster/framed_box.h"
#include "klv/gdi/raster/stroker.h"
#include "klv/gdi/sink/figure.h"
#include "klv/gdi/state/drawing_state.h"

namespace klv::gdi {

/// Turns a figure into spans: its inside in the selected brush, then its outline in the selected pen.
class figure_painter {
public:
    figure_painter(const canvas& on, const drawing_state& state)
        : on_(on)
        , state_(state)
        , scratch_(on.scratch)
    {
    }

    void operator()(const line_to& what);
    void operator()(const polyline& what);
    void operator()(const beziers& what);
    void operator()(const polygons& what);
    void operator()(const rectangle& what);
    void operator()(const rounded_rectangle& what);
    void operator()(const ellipse_in& what);
    void operator()(const ellipse_ring& what);
    void operator()(const elliptic_arc& what);

private:
    template <class Produce> void fill_selected(Produce produce);
    template <class Visit> void for_each(const polygons& what, Visit visit);
    [[nodiscard]] std::span<const POINT> to_device(std::span<const POINT> points);
    [[nodiscard]] stroker pen() const;
    void stroke_path(std::span<const fixed_point> path, bool closed);
    void outline_rectangle(const framed_box& frame, stroker& outline);
    void draw_inside_frame(const box& outer, std::int32_t width);
    void draw_rounded(const RECT& logical, std::int32_t corner_width, std::int32_t corner_height);
    void outline_rounded(const framed_box& frame, std::int32_t corner_width, std::int32_t corner_height);

    const canvas& on_;
    const drawing_state& state_;
    raster_scratch& scratch_;
};

} // namespace klv::gdi
