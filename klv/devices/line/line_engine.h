#pragma once

#include "klv/base/types.h"
#include "klv/devices/line/line_geometry.h"
#include "klv/devices/outline/point_list.h"

#include <array>
#include <cstdint>

namespace klv {

class vDEVICE;

/// How the line being drawn reaches the surface.
enum class line_method {
    polygons = 1, ///< quadrilaterals, joins and caps, filled together
    pen = 2, ///< the platform's thin pen
    squares = 3, ///< a square at every pixel, in colours that a pen would not show truly
};

/// The state of the line being drawn; one instance serves the process. It is the sink of an outline
/// traversal from Init to Term: it cuts the dashes and turns the pieces into polygons, pen strokes or
/// squares, which appear on the device at the end of each contour.
class LINEINFO {
public:
    /// Takes over the device's current line and selects what it is drawn with.
    void Init(vDEVICE& device) noexcept;
    void Term() noexcept;

    // The sink of TraverseShape.
    int segment(const POINT& from, const POINT& to) noexcept;
    bool wants_corners() const noexcept { return dashed_ || width_ > widest_without_corners; }
    void corner(const POINT& before, const POINT& at, const POINT& after) noexcept
    {
        CornerSegment(before, at, after);
    }
    void end_contour(int) noexcept { EndOfContour(); }

    int Width() const noexcept { return width_; }
    line_method Method() const noexcept { return method_; }

private:
    static constexpr int widest_without_corners = 3;
    static constexpr std::size_t pattern_length = 6;

    void StraightLineSegment(const POINT& from, const POINT& to) noexcept;
    void DottedLineSegment(const POINT& from, const POINT& to) noexcept;
    void CornerSegment(const POINT& before, const POINT& at, const POINT& after) noexcept;
    void EndOfContour() noexcept;
    void ThickLineSegment(const POINT& from, const POINT& to, const line_offsets& offsets) noexcept;
    void PartLineSegment(const POINT& from, const POINT& to, const line_offsets& offsets) noexcept;
    void LineDDA(const POINT& from, const POINT& to) noexcept;

    void take_dashes(vDEVICE& device) noexcept;
    line_method choose_method(vDEVICE& device) const noexcept;
    void select_objects(vDEVICE& device) noexcept;
    void select_pen(HPEN pen) noexcept;
    void select_brush(HBRUSH brush) noexcept;

    bool in_dash() const noexcept { return !dashed_ || dash_index_ % 2 == 0; }
    bool has_round_caps() const noexcept { return cap_ == round_cap && method_ == line_method::polygons; }
    void next_dash() noexcept;
    void skip_pattern(std::int64_t distance) noexcept;
    void round_cap_at(const POINT& at, const POINT& towards_from, const POINT& towards_to) noexcept;
    void pen_segment(const POINT& from, const POINT& to) noexcept;
    void end_pen_run() noexcept;
    void paint_polygons() noexcept;
    void paint_pen_runs() noexcept;

    static constexpr int round_cap = 0;

    vDEVICE* device_ = nullptr;
    LISTINFO* list_ = nullptr; // where the pieces are gathered
    HDC dc_ = nullptr;
    HGDIOBJ saved_pen_ = nullptr;
    HGDIOBJ saved_brush_ = nullptr;
    HPEN created_pen_ = nullptr;
    HBRUSH created_brush_ = nullptr;
    COLORREF colour_ = 0;

    int width_ = 1; // device pixels, at least 1
    bool dashed_ = false;
    line_join join_ = line_join::bevel;
    int cap_ = 1;
    line_method method_ = line_method::pen;
    circle_table circle_;

    std::array<int, pattern_length> pattern_{};
    std::int64_t period_ = 0; // sum of the pattern
    std::size_t dash_index_ = 0; // even elements are drawn, odd ones are gaps
    std::int64_t dash_rest_ = 0; // what is left of the current element

    RECT reach_{}; // where anything drawn can show, for passing over what lies outside
    bool continuing_ = false; // the next piece starts at the last one's end edge
    POINT edge_a_{}; // end edge of the last piece
    POINT edge_b_{};
    int run_points_ = 0; // of the pen run under construction
    POINT run_end_{};
};

} // namespace klv
