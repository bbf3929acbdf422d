#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

namespace klv {

/// A non-horizontal edge, kept top end first.
struct LINESEG {
    POINT top;
    POINT bottom;
    int direction; ///< 0 when the edge was given top first, 1 when bottom first
    int dy; ///< bottom.y - top.y, above 0
    int dx; ///< bottom.x - top.x

    /// Whether the edge crosses the line y: its top end belongs to it, its bottom end does not.
    bool Intersect(int y) const noexcept { return top.y <= y && y < bottom.y; }
    /// x at line y, rounded half away from the top end.
    int CalcIntersect(int y) const noexcept;
};

/// Polygons under construction: points, the number of points of each finished polygon, and edges. The
/// arrays keep their room when they are emptied, so that drawing in a steady state allocates nothing.
/// When memory runs out the list reads as empty until it is cleared.
class LISTINFO {
public:
    explicit LISTINFO(bool keep_duplicates = false) noexcept
        : keep_duplicates_(keep_duplicates)
    {
    }

    /// Adds a point to the current polygon. \return 1; 0 when it repeats the point before it and
    /// duplicates are dropped, or when memory is out
    int AppendPoint(const POINT& point) noexcept
    {
        if (!keep_duplicates_ && !polygon_start_ && !points_.empty() && points_.back() == point)
            return 0;
        polygon_start_ = false;
        return append(points_, point);
    }
    /// Ends a polygon of count points. A single point is repeated.
    int AppendCount(int count) noexcept;
    /// Adds an edge; horizontal ones are ignored. \return 1 when it was added
    int AppendLineSeg(const POINT& from, const POINT& to) noexcept;

    /// Turns every point of the finished polygons about a centre, in the sense of vSHAPE::Rotate.
    void RotatePoints(const POINT& centre, int degrees) noexcept;

    void ClearPoints() noexcept;
    void ClearCounts() noexcept;
    void ClearLineSegs() noexcept;
    /// Empties points and counts.
    void ClearPolygons() noexcept
    {
        ClearPoints();
        ClearCounts();
    }
    /// Returns the room of the arrays.
    void Release() noexcept;

    std::span<const POINT> Points() const noexcept { return failed_ ? std::span<const POINT>{} : points_; }
    std::span<const int> Counts() const noexcept { return failed_ ? std::span<const int>{} : counts_; }
    std::span<const LINESEG> LineSegs() const noexcept { return segments_; }
    /// Number of finished polygons.
    int NoPolygons() const noexcept { return static_cast<int>(Counts().size()); }

private:
    template <class T> using array = std::vector<T, vALLOCATOR<T>>;

    template <class T> int append(array<T>& to, const T& value) noexcept
    {
        try {
            to.push_back(value);
            return 1;
        } catch (const std::bad_alloc&) {
            failed_ = true;
            return 0;
        }
    }

    array<POINT> points_;
    array<int> counts_;
    array<LINESEG> segments_;
    bool polygon_start_ = true;
    bool keep_duplicates_;
    bool failed_ = false;
};

} // namespace klv
