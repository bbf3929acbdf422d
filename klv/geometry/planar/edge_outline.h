#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/geometry/planar/exact.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

template <typename T> using geometry_list = std::vector<T, vALLOCATOR<T>>;

/// Whether a lies above b, or left of it at the same height.
[[nodiscard]] inline bool higher(const POINT& a, const POINT& b)
{
    return a.y < b.y || (a.y == b.y && a.x < b.x);
}

/// Contours as cycles of edges: edge i runs from point i to the point that follows it in its contour. No edge
/// has length zero and none goes straight back over the one before: repeated points and spikes without area
/// are left out, and contours that are nothing else.
class edge_outline {
public:
    struct contour {
        std::uint32_t first;
        std::uint32_t count; // 3 or more
        std::uint32_t top; // its topmost point, of these the leftmost
    };

    /// May throw std::bad_alloc.
    edge_outline(std::span<const POINT> points, std::span<const int> counts);

    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(points_.size()); }
    [[nodiscard]] const POINT& operator[](std::uint32_t i) const { return points_[i]; }
    [[nodiscard]] std::span<const POINT> points() const { return points_; }
    [[nodiscard]] std::span<const contour> contours() const { return contours_; }
    [[nodiscard]] std::uint32_t contour_of(std::uint32_t edge) const { return contour_of_[edge]; }
    [[nodiscard]] std::uint32_t following(std::uint32_t i) const
    {
        const auto& c = contours_[contour_of_[i]];
        return i + 1 == c.first + c.count ? c.first : i + 1;
    }
    [[nodiscard]] std::uint32_t preceding(std::uint32_t i) const
    {
        const auto& c = contours_[contour_of_[i]];
        return i == c.first ? c.first + c.count - 1 : i - 1;
    }
    /// Where edge i ends.
    [[nodiscard]] const POINT& end(std::uint32_t i) const { return points_[following(i)]; }
    /// From the start of edge i to its end.
    [[nodiscard]] offset direction(std::uint32_t i) const { return offset::between(points_[i], end(i)); }

private:
    void add_contour(std::span<const POINT> points);

    geometry_list<POINT> points_;
    geometry_list<contour> contours_;
    geometry_list<std::uint32_t> contour_of_;
};

} // namespace klv
