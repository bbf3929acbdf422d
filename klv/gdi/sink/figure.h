#pragma once

#include "klv/base/types.h"

#include <cstdint>
#include <span>
#include <variant>

/// Figures as they were called for, in logical units. Points and counts are the caller's: they hold for the
/// call only.
namespace klv::gdi {

/// LineTo: on from the current position, which moves to the end after the call.
struct line_to {
    POINT end;
};

struct polyline {
    std::span<const POINT> points;
};

/// PolyBezier: 3 n + 1 points.
struct beziers {
    std::span<const POINT> points;
};

/// Polygon and PolyPolygon: closed, filled together by the fill mode; counts are not negative.
struct polygons {
    const POINT* points;
    std::span<const INT> counts;
};

struct rectangle {
    RECT box;
};

/// Rectangle with corners that are quarters of a width x height ellipse.
struct rounded_rectangle {
    RECT box;
    INT width;
    INT height;
};

struct ellipse_in {
    RECT box;
};

/// EllipseRing: filled without an outline.
struct ellipse_ring {
    RECT outer;
    RECT inner;
};

/// Arc, Chord and Pie: from the ray through start to the ray through end, counter-clockwise as seen.
struct elliptic_arc {
    enum class closure : std::uint8_t { open, chord, pie };

    closure closed;
    RECT box;
    POINT start;
    POINT end;
};

using figure = std::variant<line_to, polyline, beziers, polygons, rectangle, rounded_rectangle, ellipse_in,
    ellipse_ring, elliptic_arc>;

} // namespace klv::gdi
