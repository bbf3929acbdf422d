#pragma once

#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/geometry/shape.h"

#include <cstdint>
#include <span>

namespace klv {

// Contours here are runs of flattened points that close without repeating the first one. Areas are 32-bit
// and wrap.

/// Twice-signed triangles halved toward zero; positive for clockwise as seen.
[[nodiscard]] std::int32_t TriangleArea(const POINT& a, const POINT& b, const POINT& c) noexcept;
/// The sum of the triangles that fan out from the first point, or of their magnitudes.
[[nodiscard]] std::int32_t ContourArea(std::span<const POINT> contour, bool absolute_terms) noexcept;
[[nodiscard]] vWINDING_DIRECTION ContourDirection(std::span<const POINT> contour) noexcept;
[[nodiscard]] vWINDING_DIRECTION TriangleDirection(const POINT& a, const POINT& b, const POINT& c) noexcept;
/// The direction from one point to another in whole degrees, -180 to 180, by way of hundredths: halves of
/// these round up twice.
[[nodiscard]] int EdgeAngle(const POINT& from, const POINT& to) noexcept;
void ReverseContour(std::span<POINT> contour) noexcept;

/// Even-odd test against all contours together.
/// \param counts lengths of the contours, which follow each other in points
[[nodiscard]] bool PointInPolyPolygon(
    std::span<const POINT> points, std::span<const int> counts, const POINT& p) noexcept;

/// Whether a contour of the poly-polygon bounds a hole: a sample point just inside it lies outside the
/// whole. \param contour one of the contours of points
[[nodiscard]] bool ContourIsHole(
    std::span<const POINT> points, std::span<const int> counts, std::span<const POINT> contour) noexcept;

} // namespace klv
