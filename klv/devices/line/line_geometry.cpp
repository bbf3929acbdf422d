#include "klv/devices/line/line_geometry.h"

#include "klv/base/integer_root.h"
#include "klv/devices/outline/coordinates.h"

#include <cmath>
#include <cstdlib>
#include <span>

namespace klv {
namespace {

constexpr unsigned all_octants = 0xFF;

// Mitre points of longer segments are not computed: their products would not fit 64 bits. No surface
// is large enough to show the difference.
constexpr int longest_mitred = 1 << 22;

struct octant_pair {
    unsigned flat; // the direction is nearer to the x axis
    unsigned steep;
};

void append_polygon(LISTINFO& list, std::span<const POINT> points) noexcept
{
    int count = 0;
    for (const POINT& point : points)
        count += list.AppendPoint(point);
    list.AppendCount(count);
}

std::int64_t floor_divide(std::int64_t a, std::int64_t b) noexcept
{
    const std::int64_t quotient = a / b;
    return quotient - (a % b != 0 && (a < 0) != (b < 0));
}

// base + numerator / denominator, rounded to the nearest, halves away from zero.
LONG rounded_sum(LONG base, std::int64_t numerator, std::int64_t denominator) noexcept
{
    if (denominator < 0) {
        numerator = -numerator;
        denominator = -denominator;
    }
    std::int64_t whole = floor_divide(numerator, denominator);
    const std::int64_t rest = numerator - whole * denominator;
    const std::int64_t other = denominator - rest;
    if (rest > other || (rest == other && base + whole >= 0))
        ++whole;
    return clamp_coordinate(base + whole);
}

// The corner between two segments, measured from the corner point.
struct corner_vectors {
    std::int64_t ux, uy; // back along the incoming segment, y upwards
    std::int64_t vx, vy; // back along the outgoing segment, y upwards
    std::int64_t cross;

    corner_vectors(const POINT& p0, const POINT& p1, const POINT& p2) noexcept
        : ux(std::int64_t{p0.x} - p1.x)
        , uy(std::int64_t{p1.y} - p0.y)
        , vx(std::int64_t{p1.x} - p2.x)
        , vy(std::int64_t{p2.y} - p1.y)
        , cross(vx * uy - ux * vy)
    {
    }

    bool allows_mitre(int width) const noexcept
    {
        return is_longer(ux, uy, width) && is_longer(vx, vy, width);
    }

    // Where the incoming edge through p1 + in meets the outgoing edge through p1 + out.
    POINT meeting(const POINT& p1, const POINT& in, const POINT& out) const noexcept
    {
        const std::int64_t c1 = line_constant(in, ux, uy);
        const std::int64_t c2 = line_constant(out, vx, vy);
        return {rounded_sum(p1.x, ux * c2 - vx * c1, cross), rounded_sum(p1.y, vy * c1 - uy * c2, cross)};
    }

private:
    static bool is_longer(std::int64_t x, std::int64_t y, int width) noexcept
    {
        const std::int64_t longest = std::max(std::abs(x), std::abs(y));
        return longest > width && longest < longest_mitred;
    }

    static std::int64_t line_constant(const POINT& on, std::int64_t x, std::int64_t y) noexcept
    {
        // The line runs through (on + (x, -y)) and on; or backwards, which has the same constant.
        return on.x * (on.y - y) - (on.x + x) * on.y;
    }
};

} // namespace

line_offsets CalcLineCoefs(const POINT& p, const POINT& q, int width) noexcept
{
    const std::int64_t dx = std::int64_t{q.x} - p.x;
    const std::int64_t dy = std::int64_t{q.y} - p.y;
    line_offsets offsets{};
    if (dx == 0) {
        offsets.a.x = width >> 1;
        offsets.b.x = width - offsets.a.x;
    } else if (dy == 0) {
        offsets.a.y = width >> 1;
        offsets.b.y = width - offsets.a.y;
    } else {
        const std::int64_t size = length(dx, dy);
        const auto across_x = static_cast<LONG>((width * std::abs(dy) + size / 2) / size);
        const auto across_y = static_cast<LONG>((width * std::abs(dx) + size / 2) / size);
        offsets.a = {across_x >> 1, across_y >> 1};
        offsets.b = {across_x - offsets.a.x, across_y - offsets.a.y};
    }
    if (dy < 0) {
        offsets.a.x = -offsets.a.x;
        offsets.b.x = -offsets.b.x;
    }
    if (dx > 0) {
        offsets.a.y = -offsets.a.y;
        offsets.b.y = -offsets.b.y;
    }
    return offsets;
}

unsigned CalcCircleSegments(const POINT& a, const POINT& b) noexcept
{
    constexpr int too_short = 3;
    const int dx = b.x - a.x;
    const int dy = b.y - a.y;
    if (std::abs(dx) < too_short && std::abs(dy) < too_short)
        return all_octants;
    if (dx == 0)
        return dy < 1 ? 0x0F : 0xF0;
    if (dy == 0)
        return dx < 1 ? 0x3C : 0xC3;

    constexpr octant_pair left_up{0x3E, 0x1F};
    constexpr octant_pair left_down{0x7C, 0xF8};
    constexpr octant_pair right_up{0xC7, 0x8F};
    constexpr octant_pair right_down{0xE3, 0xF1};
    const octant_pair& half = dx < 1 ? (dy < 1 ? left_up : left_down) : (dy < 1 ? right_up : right_down);
    return std::abs(dy) < std::abs(dx) ? half.flat : half.steep;
}

circle_table::circle_table(int width) noexcept
{
    const double diameter = width - 1;
    // Half of cos and sin of 11.25, 22.5, 33.75 and 45 degrees.
    constexpr double halves[][2] = {{0.4904, 0.0975}, {0.4619, 0.1913}, {0.4157, 0.2778}, {0.3535, 0.3535}};
    points_[0] = {(width - 1) >> 1, 0};
    for (std::size_t i = 1; i < size; ++i)
        points_[i] = {
            static_cast<LONG>(diameter * halves[i - 1][0]), static_cast<LONG>(diameter * halves[i - 1][1])};
}

namespace {

POINT on_octant(const POINT& p, unsigned octant) noexcept
{
    switch (octant) {
    case 0:
        return {p.x, -p.y};
    case 1:
        return {p.y, -p.x};
    case 2:
        return {-p.y, -p.x};
    case 3:
        return {-p.x, -p.y};
    case 4:
        return {-p.x, p.y};
    case 5:
        return {-p.y, p.x};
    case 6:
        return {p.y, p.x};
    default:
        return {p.x, p.y};
    }
}

} // namespace

void AppendArc(LISTINFO& list, const POINT& centre, unsigned octants, const circle_table& circle) noexcept
{
    constexpr unsigned octant_count = 8;
    const auto bit = [](unsigned k) { return 1U << (k % octant_count); };
    for (unsigned k = 0; k < octant_count; ++k)
        if (octants & bit(k))
            octants |= bit(k + 4);

    int count = 0;
    POINT first{};
    for (unsigned k = 0; k < octant_count; ++k) {
        if (!(octants & bit(k)))
            continue;
        for (std::size_t i = 0; i < circle_table::size; ++i) {
            const std::size_t entry = k % 2 == 0 ? i : circle_table::size - 1 - i;
            const POINT point = centre + on_octant(circle[entry], k);
            if (count == 0)
                first = point;
            count += list.AppendPoint(point);
        }
    }
    if (count != 0)
        count += list.AppendPoint(first);
    list.AppendCount(count);
}

void AppendJoin(LISTINFO& list, const POINT& p0, const POINT& p1, const POINT& p2, int width, line_join join,
    const circle_table& circle) noexcept
{
    const corner_vectors corner(p0, p1, p2);
    if (corner.cross == 0)
        return;
    if (join == line_join::round) {
        AppendArc(list, p1, CalcCircleSegments(p0, p1) & CalcCircleSegments(p2, p1), circle);
        return;
    }

    const line_offsets in = CalcLineCoefs(p0, p1, width);
    const line_offsets out = CalcLineCoefs(p1, p2, width);
    const bool turns_left = corner.cross > 0;
    const POINT outer_from = p1 + (turns_left ? out.a : in.a);
    const POINT outer_to = p1 + (turns_left ? in.a : out.a);
    const POINT inner_from = p1 - (turns_left ? out.b : in.b);
    const POINT inner_to = p1 - (turns_left ? in.b : out.b);
    if (join == line_join::mitre && corner.allows_mitre(width)) {
        const POINT outer = corner.meeting(p1, in.a, out.a);
        const POINT inner = corner.meeting(p1, {-in.b.x, -in.b.y}, {-out.b.x, -out.b.y});
        const POINT points[] = {outer_from, outer, outer_to, inner_from, inner, inner_to, outer_from};
        append_polygon(list, points);
    } else {
        const POINT points[] = {outer_from, outer_to, inner_from, inner_to, outer_from};
        append_polygon(list, points);
    }
}

} // namespace klv
