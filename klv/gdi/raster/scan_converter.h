#pragma once

#include "klv/base/types.h"
#include "klv/gdi/raster/spans.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv::gdi {

enum class fill_rule : std::uint8_t { even_odd, non_zero };

/// Sixteenths of a pixel. Pixel (x, y) covers 16 x to 16 x + 16; its centre is at 16 x + 8.
using fixed = std::int32_t;
inline constexpr fixed fixed_one = 16;
inline constexpr fixed fixed_half = fixed_one / 2;

struct fixed_point {
    fixed x;
    fixed y;
};

/// Turns polygons into spans. A pixel belongs to the inside when its centre does; a centre on an edge
/// belongs to what lies right of it or below it, so that abutting polygons neither overlap nor leave a gap.
///
/// Edges are sorted by their first row; an active list, kept in order of x, is stepped from row to row:
/// O(n log n) for the sort at most, then one step per edge and row. Steps are exact for edges of less than
/// 4096 rows and off by less than 2^-18 pixels for the longest. Corners outside of +-2^21 pixels are cut
/// off there. The buffers are kept from call to call.
class scan_converter {
public:
    /// Starts over. Only spans inside clip come out.
    void begin(const box& clip);
    /// A closed polygon of whole pixel corners.
    void add_polygon(std::span<const POINT> corners);
    void add_polygon(std::span<const fixed_point> corners);
    void run(fill_rule rule, span_sink& sink);

private:
    // x holds 32 bits of fraction and is biased so that its whole part is the first pixel whose centre is
    // not left of the edge.
    struct edge {
        std::int64_t x;
        std::int64_t step; ///< from row to row
        std::int32_t end_row;
        std::int32_t winding;

        [[nodiscard]] std::int32_t pixel() const { return static_cast<std::int32_t>(x >> 32); }
    };
    struct starting_edge : edge {
        std::int32_t first_row;
    };

    void add_edge(fixed x0, fixed y0, fixed x1, fixed y1);
    void add_far_edge(double x0, double y0, double x1, double y1);
    void add_far_polygon(std::span<const POINT> corners);
    void sort_edges();
    void fill_between(edge& a, edge& b, std::int32_t y, std::int32_t end_row, span_batch& out) const;
    void fill_triangle(span_batch& out);
    void fill_pair(std::int32_t y, std::int32_t end_row, span_batch& out);
    std::int32_t fill_ring(std::int32_t y, std::int32_t end_row, span_batch& out);
    template <fill_rule Rule> void run_rows(span_batch& out);
    template <fill_rule Rule> void emit_row(std::int32_t y, span_batch& out) const;
    void step_active(std::int32_t next_row);
    void activate(std::size_t first, std::size_t end);
    void merge(std::span<const starting_edge> starting);

    box clip_{};
    std::vector<starting_edge> edges_;
    std::vector<starting_edge> sorted_;
    std::vector<std::uint32_t> row_starts_;
    std::vector<edge> active_;
};

} // namespace klv::gdi
