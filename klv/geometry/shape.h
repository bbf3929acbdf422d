#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/core/bezpoint.h"
#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/geometry/outline_walk.h"
#include "klv/geometry/point_record.h"

#include <cstdint>
#include <span>
#include <utility>

namespace klv {

class IDistort;
class vDEVICE;
class vSTREAM;

/// The sense of a contour, on a surface whose y grows downwards.
enum vWINDING_DIRECTION : std::int32_t {
    vWINDING_NONE = 0, ///< no area
    vWINDING_CLOCKWISE = 1, ///< positive signed area
    vWINDING_ANTICLOCKWISE = 2,
};

/// A vector outline: contours of points joined by straight lines and cubic bezier curves, each contour open
/// or closed. At most 65535 point records, control points included.
///
/// The points are the shape's own, except after reading from a memory stream: then the shape uses the
/// stream's bytes, and must not outlive the stream, until its first change takes a copy. A copied shape
/// always owns its points.
class vSHAPE : public vOBJECT {
public:
    static constexpr std::size_t max_points = 65535;
    static constexpr int default_smooth_a = 50;
    static constexpr int default_smooth_b = 3500;

    /// One contour of count points, or an empty shape when points is null. With smooth and at least 9
    /// points, curves are fitted to them with the two tolerances. A shape whose memory can't be had is
    /// empty.
    explicit vSHAPE(unsigned short count = 0, const vPOINT* points = nullptr, int closed = 1, int smooth = 0,
        int smoothA = default_smooth_a, int smoothB = default_smooth_b) noexcept;
    /// Contour i has the next counts[i] of the points. Contours of fewer than two points are left out, and
    /// so is everything from the first contour on that would pass max_points.
    vSHAPE(const POINT* points, const int* counts, int contours, int closed) noexcept;
    /// Reads the stream form, without copying where the stream has its bytes in memory.
    explicit vSHAPE(vSTREAM& in) noexcept;
    vSHAPE(const vSHAPE& other) noexcept;
    vSHAPE(vSHAPE&& other) noexcept;
    vSHAPE& operator=(const vSHAPE& other) noexcept;
    vSHAPE& operator=(vSHAPE&& other) noexcept;
    ~vSHAPE() { release(); }

    // Queries

    [[nodiscard]] unsigned short NoPoint() const noexcept { return static_cast<unsigned short>(count_); }
    /// Record i; i is not checked.
    [[nodiscard]] vBEZPOINT operator[](std::size_t i) const noexcept { return records_[i].bez_point(); }
    /// The last record; of an empty shape a point without flags.
    [[nodiscard]] vBEZPOINT GetLastPoint() const noexcept
    {
        return count_ == 0 ? vBEZPOINT() : (*this)[count_ - 1];
    }
    [[nodiscard]] const vRECT& BoundBox() const noexcept { return box_; }
    /// 1 when no contour is open.
    [[nodiscard]] int Closed() const noexcept { return closed_; }
    [[nodiscard]] int NoOfContours() const noexcept;
    /// Copies the on-curve points of contour n to out, which must have room for them. \param closed receives
    /// the segment flags of the contour's last point. \return the number of points, 0 without contour n
    int GetNthContour(int n, vPOINT* out, int& closed) const noexcept;
    /// The points in memory that the caller frees with vMemFree; null, and n = 0, when there are none.
    vPOINT* GetShapeAsPoints(int& n, int withControls) const noexcept;
    /// The flattened outline (defined with the devices). Both pointers must point to null; the caller frees
    /// both arrays with vMemFree. \return the number of contours
    int GetShapeAsPoints(POINT** points, int** counts) const noexcept;
    /// The inside, even-odd, as a region that the caller deletes (defined with the devices).
    [[nodiscard]] HRGN GetShapeAsRegion() const noexcept;
    [[nodiscard]] int IsValid() const noexcept;
    void AssertValid() const { }
    /// True for exactly four straight edges at right angles, whatever their direction.
    [[nodiscard]] int IsRectangular() const noexcept;
    /// The sense of the shape when it is one closed convex polygon, else vWINDING_NONE.
    [[nodiscard]] vWINDING_DIRECTION IsSingleClosedConvexPolygon() const noexcept;
    /// The area of a closed shape, holes taken out; 32-bit arithmetic.
    [[nodiscard]] int Area() const noexcept;
    [[nodiscard]] int Perimeter() const noexcept;
    /// Stores the sense of flattened contour n. \return 0 when there is none
    int Direction(vWINDING_DIRECTION* out, int n) const noexcept;
    /// Whether the point lies in the shape's region.
    [[nodiscard]] int Intersect(const vPOINT& point) const noexcept;
    /// Whether the outline passes within tolerance of the point.
    [[nodiscard]] int PointNearPath(const vPOINT& point, unsigned int tolerance) const noexcept;
    /// The two shapes' regions combined, for the caller to delete; null when nothing results. \param mode
    /// as the platform's CombineRgn
    [[nodiscard]] HRGN CombineShapes(const vSHAPE& other, int mode) const noexcept;
    /// Equal but for a translation; flags are not compared.
    bool operator==(const vSHAPE& other) const noexcept;

    // Editing; none of these adjusts the flags of neighbouring points. Each answers 1 when done.

    int AppendPoint(const vBEZPOINT& point) noexcept;
    int InsertPoint(unsigned short i, const vBEZPOINT& point) noexcept;
    int DeletePoint(unsigned short i) noexcept;
    /// Opens the outline at on-curve point i, leaving a gap.
    int SplitPoint(unsigned short i, unsigned int gap) noexcept;
    /// Makes the segments at point i curves that pass smoothly through it.
    int MakePointAutoCurve(unsigned short i) noexcept;
    /// Makes the segments at point i straight.
    int MakePointVertex(unsigned short i) noexcept;
    /// Appends a point that a curve joins to the open contour at the end of the shape; without one the point
    /// begins a contour, which is whole when the next one is appended.
    /// \param close whether a curve closes the contour from this point to its first
    /// \param smooth whether the outline passes smoothly through the point that was last before, and when
    /// closing through both ends of the closing curve
    int AppendAutoCurvePoint(const vPOINT& point, int close, int smooth) noexcept;
    void CloseAllContours(int close) noexcept;
    void AddShape(const vSHAPE& other) noexcept;

    // Transforms

    void Translate(const int& dx, const int& dy) noexcept;
    /// \param scale 16.16 factors. \return 0 for points borrowed from a stream
    int Rescale(const vPOINT& scale) noexcept;
    /// \param degrees counter-clockwise as seen. \param aspect counts for quarter turns only. \return 0 for
    /// points borrowed from a stream and when nothing turns
    int Rotate(const vPOINT& centre, double degrees, double aspect) noexcept;
    /// Passes each point through the distortion.
    int Distort(IDistort* distort) noexcept;
    /// Fits curves to the contours of a straight-edged shape of at least 8 points; any other is left alone,
    /// with the answer 0.
    /// \param toleranceA greatest mean of the squared distances of points from their curve
    /// \param toleranceB greatest squared distance of a point from its curve
    int Smooth(int toleranceA = default_smooth_a, int toleranceB = default_smooth_b) noexcept;

    // Areas. Shapes are taken by the even-odd rule and come out as polygons, outlines in direction 2 and
    // holes in direction 1. Each answers 0 and leaves the shape as it was when either shape is open, memory
    // is out or the result would have more than max_points.

    int Union(const vSHAPE& other) noexcept;
    int Intersection(const vSHAPE& other) noexcept;
    /// Turns a closed shape into its complement: every contour runs the other way, within a frame around
    /// everything that travels with the shape's copies and is no part of its points. An open shape stays as
    /// it is. Negating again gives the shape back. Union and Intersection heed the frame; nothing else sees
    /// it, and stream forms leave it out.
    void Negate() noexcept;
    /// Whether the shape stands for everything outside its contours.
    [[nodiscard]] bool negated() const noexcept { return framed_; }

    /// Moves the outline of a closed shape, taken by the even-odd rule, inwards, or outwards for a negative
    /// distance: outlines become smaller and holes larger. Corners keep their mitres; with bevel, those
    /// longer than one and a half distances are cut. Spikes under 45 degrees that would all but vanish are
    /// cut off first. Every point of the result is at least the distance less one unit from the old outline,
    /// less two where coordinates pass 2^28; what contours that cross leave between them counts as nothing
    /// where it is thinner than a quarter of a unit. The result is a polygon, and empty when nothing is left;
    /// an open shape stays as it is. \return 1; 0, the shape as it was, when memory is out or the result
    /// would have more than max_points
    int Shrink(int distance, int bevel) noexcept;
    /// Moves the edges of a closed convex polygon outwards, so far that a box or an ellipse with the half
    /// axes dx and dy fits between the old and the new: vertical edges by dx, level ones by dy. Vertices are
    /// rounded to nearest. \return 0, the shape as it was, for any other shape and when memory is out
    int Expand(unsigned int dx, unsigned int dy) noexcept;

    /// Draws the shape with the device's DrawShape (defined with the devices).
    void Draw(vDEVICE& device) const noexcept;

    /// The stream form: box, count, capacity, closed, point records.
    vSTREAM& operator>>(vSTREAM& out) const noexcept;
    vSTREAM& operator<<(vSTREAM& in) noexcept;

    // The library's own ways in and out, without a call for each point.

    [[nodiscard]] std::span<const point_record> records() const noexcept { return {records_, count_}; }
    [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
    [[nodiscard]] bool borrowed() const noexcept { return stream_ != nullptr; }
    /// Empties the shape and keeps its memory.
    void clear() noexcept;
    /// Makes room for so many records in all, without changing the capacity that streams see.
    [[nodiscard]] bool reserve(std::size_t points) noexcept;
    /// Becomes one straight-edged contour. \return false, the shape empty, when memory is out or the points
    /// are more than max_points
    bool assign_polyline(std::span<const vPOINT> points, int closed) noexcept;
    /// Becomes straight-edged contours, as the constructor of a poly-polygon says.
    bool assign_polypolygon(
        std::span<const vPOINT> points, std::span<const std::int32_t> counts, int closed) noexcept;
    /// Becomes these records as they are.
    bool assign_records(std::span<const point_record> records) noexcept;
    bool append_records(std::span<const vBEZPOINT> points) noexcept;
    /// Replaces every point by map(point), control points too. \return false when memory is out
    template <typename MAP> bool map_points(MAP&& map);

private:
    static constexpr std::uint16_t capacity_step = 100;
    static constexpr std::size_t smallest_smoothed = 9;

    template <typename P>
    bool assign_contours(
        std::span<const P> points, std::span<const std::int32_t> counts, int closed) noexcept;
    template <typename P> vRECT write_contour(std::span<const P> points, int closed) noexcept;
    /// Room for so many more records, in memory of the shape's own; the capacity that streams see grows in
    /// steps.
    [[nodiscard]] bool Allocate(std::size_t more = 1) noexcept;
    /// Allocate for an operation that changes or removes records.
    [[nodiscard]] bool allocate_for_change() noexcept;
    /// Room for so many records in all, in memory of the shape's own.
    [[nodiscard]] bool own(std::size_t room) noexcept;
    void release() noexcept;
    void take(vSHAPE& other) noexcept;
    [[nodiscard]] bool insert_records(std::size_t i, std::span<const point_record> records) noexcept;
    void erase_records(std::size_t i, std::size_t n) noexcept;
    [[nodiscard]] std::span<point_record> own_records() noexcept { return {points_.data(), count_}; }
    [[nodiscard]] std::size_t before(std::size_t i) const noexcept { return (i == 0 ? count_ : i) - 1; }
    void CalculateBoundingBox() noexcept;
    void settle_after_edit(std::uint8_t new_flags) noexcept;
    void forget_walk() noexcept { walk_ = outline_walk(); }

    bool read_header(vSTREAM& in) noexcept;
    bool borrow_records(vSTREAM& in) noexcept;
    void read_records(vSTREAM& in) noexcept;

    vRECT box_;
    std::int32_t closed_ = 1;
    bool framed_ = false; // the contours are taken out of a frame around everything
    std::uint16_t capacity_ = capacity_step;
    std::uint32_t count_ = 0;
    const point_record* records_ = nullptr; // in points_ or in the stream
    vBUFFER<point_record> points_; // room only, count_ says how much of it is in use
    vSTREAM* stream_ = nullptr;
    mutable outline_walk walk_; // covers the first walk_.walked() records
};

inline vSTREAM& operator<<(vSTREAM& out, const vSHAPE& shape) { return shape >> out; }
inline vSTREAM& operator>>(vSTREAM& in, vSHAPE& shape) { return shape << in; }

template <typename MAP> bool vSHAPE::map_points(MAP&& map)
{
    if (!own(count_))
        return false;
    for (std::size_t i = 0; i < count_; ++i)
        points_.data()[i].set_point(map(points_.data()[i].point()));
    forget_walk();
    CalculateBoundingBox();
    return true;
}

} // namespace klv
