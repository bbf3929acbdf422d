#pragma once

#include "klv/base/types.h"
#include "klv/devices/outline/point_list.h"

#include <array>

/// The pieces of a thick line, in device pixels: edges, joins and round ends.
namespace klv {

/// The two sides of a segment: its edges run through p + a and p - b. The two parts add up to the width.
struct line_offsets {
    POINT a;
    POINT b;
};

line_offsets CalcLineCoefs(const POINT& p, const POINT& q, int width) noexcept;

/// The octants of a circle about b that lie away from a, as bits: bit k stands for k * 45 to (k + 1) * 45
/// degrees, counter-clockwise from the positive x axis as seen.
unsigned CalcCircleSegments(const POINT& a, const POINT& b) noexcept;

/// Points of one octant of the circle that a line of some width ends in, 11.25 degrees apart.
class circle_table {
public:
    circle_table() = default;
    explicit circle_table(int width) noexcept;
    const POINT& operator[](std::size_t i) const noexcept { return points_[i]; }
    static constexpr std::size_t size = 5;

private:
    std::array<POINT, size> points_{};
};

/// Adds the polygon of the chosen octants, each with its opposite one.
void AppendArc(LISTINFO& list, const POINT& centre, unsigned octants, const circle_table& circle) noexcept;

enum class line_join { round, mitre, bevel };

/// Adds the polygon that joins the segments p0 to p1 and p1 to p2. A mitre needs both segments to be
/// longer than the width in x or y, else it becomes a bevel. Segments in one direction get nothing.
/// \param circle used by round joins only
void AppendJoin(LISTINFO& list, const POINT& p0, const POINT& p1, const POINT& p2, int width, line_join join,
    const circle_table& circle) noexcept;

} // namespace klv
