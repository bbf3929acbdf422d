#include "geometry/segment_grid.h"

#include <algorithm>
#include <cmath>

namespace klv {

bool segment::overlaps(const segment& other) const noexcept
{
    const auto apart = [](int a1, int a2, int b1, int b2) {
        return std::max(a1, a2) < std::min(b1, b2) || std::max(b1, b2) < std::min(a1, a2);
    };
    return !apart(from.x, to.x, other.from.x, other.to.x) && !apart(from.y, to.y, other.from.y, other.to.y);
}

segment_grid::segment_grid(std::span<const segment> segments)
    : segments_(segments)
    , seen_(segments.size(), 0)
{
    if (segments.empty())
        return;
    // Every segment ends where another begins.
    const auto x_of = [](const segment& s) { return s.from.x; };
    const auto y_of = [](const segment& s) { return s.from.y; };
    const auto [least_x, greatest_x] = std::ranges::minmax(segments, {}, x_of);
    const auto [least_y, greatest_y] = std::ranges::minmax(segments, {}, y_of);
    left_ = least_x.from.x;
    top_ = least_y.from.y;
    choose_cells(greatest_x.from.x - left_, greatest_y.from.y - top_);

    // Counted first, then filled in from the back of each cell.
    starts_.assign(std::size_t{side_} * side_ + 1, 0);
    for (const auto& s : segments) {
        for_each_row(s, [this](const cell_range& cells) {
            for (auto c = cells.first; c <= cells.last; ++c)
                ++starts_[cells.row * side_ + c];
        });
    }
    std::uint32_t total = 0;
    for (auto& start : starts_)
        start = total += start;
    members_.resize(total);
    for (std::uint32_t i = 0; i < segments.size(); ++i) {
        for_each_row(segments[i], [this, i](const cell_range& cells) {
            for (auto c = cells.first; c <= cells.last; ++c)
                members_[--starts_[cells.row * side_ + c]] = i;
        });
    }
}

// Small cells keep the neighbours few; long segments, which pass through many cells, ask for larger ones.
void segment_grid::choose_cells(double width, double height)
{
    constexpr double most_cells_in_row = 1024;
    constexpr double most_cells_of_segment = 16; // on the average
    double across = 0, down = 0;
    for (const auto& s : segments_) {
        across += std::abs(static_cast<double>(s.to.x) - s.from.x);
        down += std::abs(static_cast<double>(s.to.y) - s.from.y);
    }
    const auto count = static_cast<double>(segments_.size());
    const double crossings_at_one = across / std::max(width, 1.0) + down / std::max(height, 1.0);
    const double side
        = std::min(std::sqrt(count), most_cells_of_segment * count / std::max(crossings_at_one, 1.0));
    side_ = static_cast<std::uint32_t>(std::clamp(2 * side, 1.0, most_cells_in_row));
    cell_width_ = std::max(width / side_, 1.0);
    cell_height_ = std::max(height / side_, 1.0);
}

std::uint32_t segment_grid::column(double x) const
{
    return static_cast<std::uint32_t>(std::clamp((x - left_) / cell_width_, 0.0, side_ - 1.0));
}

std::uint32_t segment_grid::row(double y) const
{
    return static_cast<std::uint32_t>(std::clamp((y - top_) / cell_height_, 0.0, side_ - 1.0));
}

} // namespace klv
