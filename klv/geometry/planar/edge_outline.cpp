#include "klv/geometry/planar/edge_outline.h"

#include "klv/geometry/planar/poly_polygon.h"

#include <algorithm>

namespace klv {

namespace {

bool turns_back(const POINT& a, const POINT& b, const POINT& c)
{
    const offset in = offset::between(a, b), out = offset::between(b, c);
    return cross(in, out) == 0 && dot(in, out) < 0;
}

} // namespace

edge_outline::edge_outline(std::span<const POINT> points, std::span<const int> counts)
{
    points_.reserve(points.size());
    for_each_contour(points, counts, [this](std::span<const POINT> part) { add_contour(part); });
    contour_of_.resize(points_.size());
    for (std::uint32_t c = 0; c < contours_.size(); ++c)
        std::fill_n(contour_of_.begin() + contours_[c].first, contours_[c].count, c);
}

void edge_outline::add_contour(std::span<const POINT> points)
{
    const std::size_t first = points_.size();
    const auto count = [&] { return points_.size() - first; };
    const auto from_end = [&](std::size_t i) -> const POINT& { return points_[points_.size() - i]; };
    for (const POINT& p : points) {
        while (count() >= 2 && turns_back(from_end(2), from_end(1), p))
            points_.pop_back();
        if (count() == 0 || !(from_end(1) == p))
            points_.push_back(p);
    }

    // The same where the end meets the beginning.
    std::size_t begin = first;
    const auto left = [&] { return points_.size() - begin; };
    while (left() >= 2) {
        if (from_end(1) == points_[begin]
            || (left() >= 3 && turns_back(from_end(2), from_end(1), points_[begin])))
            points_.pop_back();
        else if (left() >= 3 && turns_back(from_end(1), points_[begin], points_[begin + 1]))
            ++begin;
        else
            break;
    }
    if (left() < 3) {
        points_.resize(first);
        return;
    }
    points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(first),
        points_.begin() + static_cast<std::ptrdiff_t>(begin));

    const auto top
        = std::min_element(points_.begin() + static_cast<std::ptrdiff_t>(first), points_.end(), higher);
    contours_.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(count()),
        static_cast<std::uint32_t>(top - points_.begin())});
}

} // namespace klv
