#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/geometry/shape.h"

#include <span>

namespace klv {

/// A shape's outline as polygons, empty when memory is out. Contours may repeat their first point at the end.
class flat_outline {
public:
    explicit flat_outline(const vSHAPE& shape) noexcept;
    flat_outline(const flat_outline&) = delete;
    flat_outline& operator=(const flat_outline&) = delete;
    ~flat_outline()
    {
        vMemFree(points_);
        vMemFree(counts_);
    }

    [[nodiscard]] std::span<const POINT> points() const noexcept { return {points_, total_}; }
    [[nodiscard]] std::span<const int> counts() const noexcept
    {
        return {counts_, static_cast<std::size_t>(contours_)};
    }

    /// Calls visit(contour) for each contour's points; stops when it answers true, and answers that.
    template <typename VISIT> bool any_contour(VISIT&& visit) const
    {
        std::size_t at = 0;
        for (const int count : counts()) {
            const auto contour = points().subspan(at, static_cast<std::size_t>(count));
            at += contour.size();
            if (visit(contour))
                return true;
        }
        return false;
    }

private:
    void copy_polygons(const vSHAPE& shape) noexcept;

    POINT* points_ = nullptr;
    int* counts_ = nullptr;
    int contours_ = 0;
    std::size_t total_ = 0;
};

} // namespace klv
