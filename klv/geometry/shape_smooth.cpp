#include "klv/geometry/curves/curve_fit.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <new>
#include <vector>

namespace klv {

int vSHAPE::Smooth(int toleranceA, int toleranceB) noexcept
try {
    constexpr std::size_t fewest_points = 8;
    constexpr std::uint8_t curved = point_flags::curve_to | point_flags::control;
    if (count_ < fewest_points
        || std::ranges::any_of(records(), [](const point_record& r) { return r.has(curved); }))
        return 0;

    const fit_tolerance tolerance{static_cast<double>(toleranceA), static_cast<double>(toleranceB)};
    std::vector<vPOINT, vALLOCATOR<vPOINT>> contour;
    std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>> fitted;
    for (const auto& record : records()) {
        contour.push_back(record.point());
        if (!record.has(point_flags::last))
            continue;
        const std::size_t start = fitted.size();
        fit_curves(contour, tolerance, fitted);
        contour.clear();
        fitted[start].First(1);
        fitted.back().Last(1);
        fitted.back().LineTo(record.flags() & point_flags::segment);
    }
    if (fitted.size() > max_points)
        return 0;
    vSHAPE result;
    if (!result.append_records(fitted))
        return 0;
    *this = std::move(result);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

} // namespace klv
