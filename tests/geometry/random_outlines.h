#pragma once

#include "klv/geometry/planar/poly_polygon.h"
#include "klv/geometry/shape.h"

#include <cstdint>
#include <random>
#include <vector>

namespace klv {

/// Seeded contours that cross themselves and each other at random.
class random_outlines {
public:
    explicit random_outlines(std::uint32_t seed)
        : random_(seed)
    {
    }

    [[nodiscard]] int number(int from, int to) { return std::uniform_int_distribution(from, to)(random_); }
    /// \param range coordinates are from 0 to less than that; the smaller, the more points and edges coincide
    [[nodiscard]] std::vector<POINT> contour(int points, int range)
    {
        std::vector<POINT> result(static_cast<std::size_t>(points));
        for (auto& p : result)
            p = {number(0, range - 1), number(0, range - 1)};
        return result;
    }
    [[nodiscard]] poly_polygon contours(int most_contours, int most_points, int range)
    {
        poly_polygon result;
        for (int i = number(1, most_contours); i > 0; --i)
            result.append(contour(number(3, most_points), range));
        return result;
    }
    /// A closed shape of up to three contours.
    [[nodiscard]] vSHAPE shape(int most_points, int range)
    {
        const auto all = contours(3, most_points, range);
        return {all.points.data(), all.counts.data(), static_cast<int>(all.counts.size()), 1};
    }

private:
    std::mt19937 random_;
};

} // namespace klv
