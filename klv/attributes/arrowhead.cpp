#include "klv/attributes/arrowhead.h"

#include "klv/attributes/detail/arrowhead_tables.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/angles.h"
#include "klv/core/integer_math.h"

#include <cmath>

namespace klv {

void vARROWHEAD::Set(const vSHAPE& outline, const vSHAPE& clipOutline, std::int32_t penNumerator,
    std::int32_t hollow, std::int32_t referenceWidth) noexcept
{
    outline_ = outline;
    clip_outline_ = clipOutline;
    pen_numerator_ = penNumerator;
    hollow_ = hollow;
    reference_width_ = referenceWidth;
}

int vARROWHEAD::PenWidth(int lineWidth) const noexcept
{
    return MulDiv(pen_numerator_, lineWidth, reference_width_);
}

vSHAPE vARROWHEAD::PlacedOutline(const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept
{
    return placed(outline_, end, from, lineWidth);
}

vSHAPE vARROWHEAD::PlacedClipOutline(const vPOINT& end, const vPOINT& from, int lineWidth) const noexcept
{
    return placed(clip_outline_, end, from, lineWidth);
}

vSHAPE vARROWHEAD::placed(
    const vSHAPE& shape, const vPOINT& end, const vPOINT& from, int line_width) const noexcept
{
    constexpr int one_to_one = 65536;
    vSHAPE result(shape);
    const int scale = MulDiv(one_to_one, line_width, reference_width_);
    result.Rescale({scale, scale});
    result.Translate(end.x, end.y);
    // The outline expects the line from positive x, which is angle 180 of the line's own direction.
    const double direction
        = std::atan2(static_cast<double>(end.y) - from.y, static_cast<double>(end.x) - from.x);
    result.Rotate(end, 180 - to_degrees(direction), 1.0);
    return result;
}

vARROWHEAD vLINESPEC::arrayArrowheads[number_of_arrowheads];

namespace {

vSHAPE closed_polygon(std::span<const vPOINT> points)
{
    vSHAPE shape;
    shape.assign_polyline(points, 1);
    return shape;
}

} // namespace

int vLINESPEC::ArrowheadsInitialised() noexcept
{
    static const int filled = [] {
        for (unsigned i = 0; i < number_of_arrowheads; ++i) {
            const auto& design = arrowhead_designs[i];
            arrayArrowheads[i].Set(closed_polygon(design.outline), closed_polygon(design.clip_outline),
                arrowhead_pen_numerator, design.hollow ? 1 : 0, arrowhead_reference_width);
        }
        return 1;
    }();
    return filled;
}

const vARROWHEAD* vLINESPEC::GetArrowhead(unsigned int i) noexcept
{
    return ArrowheadsInitialised() && i < number_of_arrowheads ? &arrayArrowheads[i] : nullptr;
}

} // namespace klv
