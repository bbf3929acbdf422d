#pragma once

#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/geometry/shape.h"

#include <cstdint>

namespace klv {

class vCOLOUR;
class vDEVICE;

/// The outline at the end of an open line, and the outline kept free of the line's own stroke. Both are
/// drawn for a line of the reference width whose end is the origin and which comes from positive x.
class vARROWHEAD : public vOBJECT {
public:
    vARROWHEAD() = default;

    void Set(const vSHAPE& outline, const vSHAPE& clipOutline, std::int32_t penNumerator, std::int32_t hollow,
        std::int32_t referenceWidth) noexcept;

    [[nodiscard]] const vSHAPE& Outline() const noexcept { return outline_; }
    [[nodiscard]] const vSHAPE& ClipOutline() const noexcept { return clip_outline_; }
    /// Outlined instead of filled.
    [[nodiscard]] bool Hollow() const noexcept { return hollow_ != 0; }
    /// Width of the outline's own pen for a line of the given width, both in the same units.
    [[nodiscard]] int PenWidth(int lineWidth) const noexcept;

    /// The outlines scaled to the line's width and turned and moved to its end.
    /// \param end where the line ends \param from the point that it comes from
    [[nodiscard]] vSHAPE PlacedOutline(const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept;
    [[nodiscard]] vSHAPE PlacedClipOutline(
        const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept;

    /// Takes the placed clip outline out of the device's clip area (defined with the devices).
    void Clip(vDEVICE& device, const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept;
    /// Draws the placed outline in the line's colour (defined with the devices).
    void Draw(vDEVICE& device, const vPOINT& end, const vPOINT& from, int lineWidth,
        const vCOLOUR& colour) const noexcept;

private:
    [[nodiscard]] vSHAPE placed(
        const vSHAPE& shape, const vPOINT& end, const vPOINT& from, int line_width) const noexcept;

    vSHAPE outline_;
    vSHAPE clip_outline_;
    std::int32_t pen_numerator_ = 0;
    std::int32_t hollow_ = 0;
    std::int32_t reference_width_ = 0;
};

} // namespace klv
