#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/memory.h"
#include "platform/types.h"

namespace klv {

/// A straight edge of a contour.
struct segment {
    POINT from;
    POINT to;

    [[nodiscard]] bool overlaps(const segment& other) const noexcept;
};

/// Finds the segments near a segment without looking at all of them: a grid of about as many cells as there
/// are segments, each knowing the segments that pass through it. May throw std::bad_alloc.
class segment_grid {
public:
    explicit segment_grid(std::span<const segment> segments);

    /// Calls visit(index) once for each segment that shares a cell with segment i, itself included, in no
    /// particular order, until visit answers false.
    template <typename VISIT> bool visit_neighbours(std::uint32_t i, VISIT&& visit);

private:
    struct cell_range {
        std::uint32_t row;
        std::uint32_t first;
        std::uint32_t last;
    };

    template <typename VISIT> void for_each_row(const segment& s, VISIT&& visit) const;
    void choose_cells(double width, double height);
    [[nodiscard]] std::uint32_t column(double x) const;
    [[nodiscard]] std::uint32_t row(double y) const;

    std::span<const segment> segments_;
    std::uint32_t side_ = 1; // cells in a row, and rows
    double left_ = 0;
    double top_ = 0;
    double cell_width_ = 1;
    double cell_height_ = 1;
    std::vector<std::uint32_t, vALLOCATOR<std::uint32_t>> starts_; // of each cell in members_
    std::vector<std::uint32_t, vALLOCATOR<std::uint32_t>> members_;
    std::vector<std::uint32_t, vALLOCATOR<std::uint32_t>> seen_; // the last query that met the segment
};

template <typename VISIT> void segment_grid::for_each_row(const segment& s, VISIT&& visit) const
{
    const segment down = s.from.y <= s.to.y ? s : segment{s.to, s.from};
    const double dx = static_cast<double>(down.to.x) - down.from.x;
    const double dy = static_cast<double>(down.to.y) - down.from.y;
    const std::uint32_t last = row(down.to.y);
    for (std::uint32_t r = row(down.from.y); r <= last; ++r) {
        // The part of the segment in this row; one unit more each way takes care of rounding.
        const double a = std::max<double>(top_ + r * cell_height_ - 1, down.from.y);
        const double b = std::min<double>(top_ + (r + 1) * cell_height_ + 1, down.to.y);
        const double xa = dy == 0 ? down.from.x : down.from.x + dx * ((a - down.from.y) / dy);
        const double xb = dy == 0 ? down.to.x : down.from.x + dx * ((b - down.from.y) / dy);
        visit(cell_range{r, column(std::min(xa, xb) - 1), column(std::max(xa, xb) + 1)});
    }
}

template <typename VISIT> bool segment_grid::visit_neighbours(std::uint32_t i, VISIT&& visit)
{
    bool go_on = true;
    for_each_row(segments_[i], [&](const cell_range& cells) {
        const std::uint32_t base = cells.row * side_;
        if (!go_on)
            return;
        for (auto at = starts_[base + cells.first]; go_on && at < starts_[base + cells.last + 1]; ++at) {
            if (seen_[members_[at]] == i + 1)
                continue;
            seen_[members_[at]] = i + 1;
            go_on = visit(members_[at]);
        }
    });
    return go_on;
}

} // namespace klv
