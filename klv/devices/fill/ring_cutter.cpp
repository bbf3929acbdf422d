#include "klv/core/integer_math.h"
#include "klv/devices/fill/band_cutter.h"
#include "klv/devices/fill/outline_edges.h"
#include "klv/devices/outline/coordinates.h"

#include <algorithm>
#include <cmath>

/// Rings: the polar counterpart of the strips. A ring is divided at the radius of every corner, crossing
/// and tangent point of the outline, so that inside each part an edge passes from the inner to the outer
/// radius, or misses it.
namespace klv {
namespace {

constexpr double whole_turn = 360;
constexpr double half_turn = 180;
constexpr int arc_step = 5;

struct polar {
    double radius;
    double angle;
};

polar to_polar(const POINT& centre, double x, double y) noexcept
{
    polar result{};
    CartesianToPolar(vPOINT(centre), x, y, &result.radius, &result.angle);
    return result;
}

POINT on_circle(const POINT& centre, double radius, double angle) noexcept
{
    double x = 0;
    double y = 0;
    PolarToCartesian(vPOINT(centre), radius, angle, &x, &y);
    return {truncated(x), truncated(y)};
}

// Where the line through an edge is nearest to the centre, as a fraction of the edge.
double foot_of(const POINT& centre, const POINT& from, const POINT& to) noexcept
{
    const double dx = static_cast<double>(to.x) - from.x;
    const double dy = static_cast<double>(to.y) - from.y;
    return ((static_cast<double>(centre.x) - from.x) * dx + (static_cast<double>(centre.y) - from.y) * dy)
        / (dx * dx + dy * dy);
}

cut_array<double> ring_breaks(const POINT& centre, double inner, double outer, const cut_outline& outline,
    std::span<const POINT> crossings, std::span<const double> tangents)
{
    cut_array<double> breaks{inner, outer};
    const auto add = [&](double radius) {
        if (inner < radius && radius < outer)
            breaks.push_back(radius);
    };
    for (const POINT& point : outline.points)
        add(to_polar(centre, point.x, point.y).radius);
    for (const POINT& point : crossings)
        add(to_polar(centre, point.x, point.y).radius);
    for (const double radius : tangents)
        add(radius);
    std::sort(breaks.begin(), breaks.end());
    breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
    return breaks;
}

// A piece of an edge along which the distance from the centre only grows.
struct outward_piece {
    double x0, y0; // nearer end
    double x1, y1;
    double radius0;
    double radius1;
    int direction; // +1 when the outline runs outwards here

    double angle_at(const POINT& centre, double radius) const noexcept
    {
        // |start + t * delta| = radius, for t in 0 to 1.
        const double sx = x0 - centre.x;
        const double sy = y0 - centre.y;
        const double dx = x1 - x0;
        const double dy = y1 - y0;
        const double a = dx * dx + dy * dy;
        const double b = sx * dx + sy * dy;
        const double c = sx * sx + sy * sy - radius * radius;
        const double root = std::sqrt(std::max(0.0, b * b - a * c));
        const double t = a == 0 ? 0 : std::clamp((root - b) / a, 0.0, 1.0);
        return to_polar(centre, x0 + t * dx, y0 + t * dy).angle;
    }
};

void append_piece(cut_array<outward_piece>& pieces, const POINT& centre, double x0, double y0, double x1,
    double y1, double inner, double outer)
{
    outward_piece piece{x0, y0, x1, y1, std::hypot(x0 - centre.x, y0 - centre.y),
        std::hypot(x1 - centre.x, y1 - centre.y), 1};
    if (piece.radius0 > piece.radius1)
        piece = {x1, y1, x0, y0, piece.radius1, piece.radius0, -1};
    if (piece.radius0 < outer && piece.radius1 > inner)
        pieces.push_back(piece);
}

cut_array<outward_piece> ring_pieces(
    const POINT& centre, double inner, double outer, const cut_outline& outline)
{
    cut_array<outward_piece> pieces;
    for_each_edge(outline, [&](const POINT& from, const POINT& to) {
        const double foot = foot_of(centre, from, to);
        if (foot <= 0 || foot >= 1) {
            append_piece(pieces, centre, from.x, from.y, to.x, to.y, inner, outer);
            return;
        }
        const double x = from.x + foot * (static_cast<double>(to.x) - from.x);
        const double y = from.y + foot * (static_cast<double>(to.y) - from.y);
        append_piece(pieces, centre, from.x, from.y, x, y, inner, outer);
        append_piece(pieces, centre, x, y, to.x, to.y, inner, outer);
    });
    std::sort(pieces.begin(), pieces.end(),
        [](const outward_piece& a, const outward_piece& b) { return a.radius0 < b.radius0; });
    return pieces;
}

angle_pair pair_of(const outward_piece& piece, const POINT& centre, double inner, double outer) noexcept
{
    angle_pair pair{piece.angle_at(centre, inner), piece.angle_at(centre, outer), piece.direction};
    // Edges that pass 0 degrees between the radii keep their two angles together.
    if (pair.inner - pair.outer > half_turn)
        pair.outer += whole_turn;
    else if (pair.outer - pair.inner > half_turn)
        pair.inner += whole_turn;
    return pair;
}

// The pair that follows pair i, a turn further when it is the first one.
angle_pair following(std::span<const angle_pair> pairs, std::size_t i) noexcept
{
    angle_pair next = pairs[(i + 1) % pairs.size()];
    if (i + 1 == pairs.size()) {
        next.inner += whole_turn;
        next.outer += whole_turn;
    }
    return next;
}

// The widest gap, whose middle is the safest place to ask whether it is inside.
std::size_t widest_gap(std::span<const angle_pair> pairs) noexcept
{
    std::size_t best = 0;
    double widest = -1;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const angle_pair next = following(pairs, i);
        const double gap = std::min(next.inner - pairs[i].inner, next.outer - pairs[i].outer);
        if (gap > widest) {
            widest = gap;
            best = i;
        }
    }
    return best;
}

POINT middle_of_gap(
    const POINT& centre, double inner, double outer, const angle_pair& a, const angle_pair& b) noexcept
{
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    PolarToCartesian(vPOINT(centre), inner, (a.inner + b.inner) / 2, &x0, &y0);
    PolarToCartesian(vPOINT(centre), outer, (a.outer + b.outer) / 2, &x1, &y1);
    return {truncated((x0 + x1) / 2), truncated((y0 + y1) / 2)};
}

int append_sectors(const POINT& centre, double inner, double outer, const cut_outline& outline,
    std::span<const angle_pair> pairs, LISTINFO& out) noexcept
{
    const std::size_t start = widest_gap(pairs);
    int winding
        = PointInPoly(outline, middle_of_gap(centre, inner, outer, pairs[start], following(pairs, start)));
    int sectors = 0;
    for (std::size_t step = 0; step < pairs.size(); ++step) {
        const std::size_t i = (start + step) % pairs.size();
        if (step != 0)
            winding = outline.alternate ? !winding : winding + pairs[i].direction;
        if (winding != 0)
            sectors += AppendArcPoly(centre, inner, outer, pairs[i], following(pairs, i), out);
    }
    return sectors;
}

} // namespace

void GetTangents(const POINT& centre, const cut_outline& outline, cut_array<double>& out)
{
    for_each_edge(outline, [&](const POINT& from, const POINT& to) {
        const double foot = foot_of(centre, from, to);
        if (foot <= 0 || foot >= 1)
            return;
        const double x = from.x + foot * (static_cast<double>(to.x) - from.x);
        const double y = from.y + foot * (static_cast<double>(to.y) - from.y);
        out.push_back(std::hypot(x - centre.x, y - centre.y));
    });
}

int AppendArcPoly(const POINT& centre, double inner, double outer, const angle_pair& a, const angle_pair& b,
    LISTINFO& out) noexcept
{
    if (inner == outer)
        return 0;
    int count = out.AppendPoint(on_circle(centre, inner, a.inner));
    count += out.AppendPoint(on_circle(centre, outer, a.outer));
    for (int angle = (static_cast<int>(a.outer / arc_step) + 1) * arc_step; angle < b.outer;
         angle += arc_step)
        count += out.AppendPoint(on_circle(centre, outer, angle));
    count += out.AppendPoint(on_circle(centre, outer, b.outer));
    count += out.AppendPoint(on_circle(centre, inner, b.inner));
    for (int angle = static_cast<int>(b.inner / arc_step) * arc_step; angle > a.inner; angle -= arc_step)
        count += out.AppendPoint(on_circle(centre, inner, angle));
    out.AppendCount(count);
    return 1;
}

int GetRadialFillPolygons(const POINT& centre, double inner, double outer, const cut_outline& outline,
    std::span<const POINT> crossings, std::span<const double> tangents, LISTINFO& out)
{
    const cut_array<double> breaks = ring_breaks(centre, inner, outer, outline, crossings, tangents);
    const cut_array<outward_piece> pieces = ring_pieces(centre, inner, outer, outline);
    cut_array<outward_piece> active;
    cut_array<angle_pair> pairs;
    std::size_t next = 0;
    int sectors = 0;
    for (std::size_t part = 0; part + 1 < breaks.size(); ++part) {
        const double a = breaks[part];
        const double b = breaks[part + 1];
        const double middle = (a + b) / 2;
        std::erase_if(active, [middle](const outward_piece& piece) { return piece.radius1 < middle; });
        for (; next < pieces.size() && pieces[next].radius0 <= middle; ++next)
            if (pieces[next].radius1 >= middle)
                active.push_back(pieces[next]);

        pairs.clear();
        for (const outward_piece& piece : active)
            pairs.push_back(pair_of(piece, centre, a, b));
        if (pairs.empty())
            pairs.push_back({0, 0, 0});
        std::sort(pairs.begin(), pairs.end(),
            [](const angle_pair& p, const angle_pair& q) { return p.inner + p.outer < q.inner + q.outer; });
        sectors += append_sectors(centre, a, b, outline, pairs, out);
    }
    return sectors;
}

} // namespace klv
