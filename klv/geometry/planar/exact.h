#pragma once

#include "klv/base/types.h"

#include <cstdint>

/// Exact arithmetic on points of any 32-bit coordinates: signs that decide how outlines run are never left
/// to rounding.
namespace klv {

/// Holds products of coordinate differences (66 bits) and their sums.
__extension__ using wide = __int128;
__extension__ using unsigned_wide = unsigned __int128;

/// A difference of two points; 33 bits a coordinate.
struct offset {
    std::int64_t x;
    std::int64_t y;

    static offset between(const POINT& from, const POINT& to)
    {
        return {std::int64_t{to.x} - from.x, std::int64_t{to.y} - from.y};
    }
    offset operator-() const { return {-x, -y}; }
};

[[nodiscard]] inline wide cross(const offset& a, const offset& b)
{
    return wide{a.x} * b.y - wide{a.y} * b.x;
}
[[nodiscard]] inline wide dot(const offset& a, const offset& b) { return wide{a.x} * b.x + wide{a.y} * b.y; }

template <typename T> [[nodiscard]] int sign_of(T value) { return (value > 0) - (value < 0); }

/// Twice the signed area of a contour's triangles; positive for direction 1.
template <typename POINTS> [[nodiscard]] wide doubled_area(const POINTS& contour)
{
    wide sum = 0;
    for (std::size_t i = 2; i < contour.size(); ++i)
        sum += cross(offset::between(contour[0], contour[i - 1]), offset::between(contour[0], contour[i]));
    return sum;
}

/// A number of [0, 1]: n / d with 0 <= n <= d, of at most 68 bits.
struct fraction {
    wide n;
    wide d;

    static fraction of(wide n, wide d) { return d < 0 ? fraction{-n, -d} : fraction{n, d}; }

    /// To within 4e-16.
    [[nodiscard]] double rounded() const { return to_double(n) / to_double(d); }

    bool operator<(const fraction& o) const { return product(n, o.d) < product(o.n, d); }
    bool operator==(const fraction& o) const { return product(n, o.d) == product(o.n, d); }

private:
    struct double_wide {
        unsigned_wide high;
        std::uint64_t low;
        bool operator==(const double_wide& o) const { return high == o.high && low == o.low; }
        bool operator<(const double_wide& o) const
        {
            return high < o.high || (high == o.high && low < o.low);
        }
    };

    // Both below 2^68: the product's upper part is below 2^72.
    static double_wide product(wide a, wide b)
    {
        const auto x = static_cast<unsigned_wide>(a), y = static_cast<unsigned_wide>(b);
        const auto low_of = [](unsigned_wide v) { return static_cast<std::uint64_t>(v); };
        const unsigned_wide low = unsigned_wide{low_of(x)} * low_of(y);
        const unsigned_wide middle = (x >> 64) * low_of(y) + (y >> 64) * low_of(x) + (low >> 64);
        return {((x >> 64) * (y >> 64) << 64) + middle, low_of(low)};
    }

    static double to_double(wide v)
    {
        const auto narrow = static_cast<std::int64_t>(v);
        return narrow == v ? static_cast<double>(narrow) : static_cast<double>(v);
    }
};

} // namespace klv
