#include "klv/core/bezpoint.h"

#include "klv/base/wrapping.h"

#include <cmath>

namespace klv {

namespace {

struct roots {
    double t[2];
    int count = 0;

    void add(double value) noexcept
    {
        if (value > 0 && value < 1)
            t[count++] = value;
    }
};

// Where the derivative of a cubic with the control values c0 to c3 is 0.
roots turning_points(std::int32_t c0, std::int32_t c1, std::int32_t c2, std::int32_t c3) noexcept
{
    const auto times3 = [](std::int32_t v) { return wrap_mul(v, 3); };
    const std::int32_t a = wrap_sub(wrap_add(wrap_sub(c3, times3(c2)), times3(c1)), c0);
    const std::int32_t b = wrap_add(wrap_sub(times3(c2), wrap_mul(c1, 6)), times3(c0));
    const std::int64_t A = times3(a);
    const std::int64_t B = wrap_mul(b, 2);
    const std::int64_t C = times3(wrap_sub(c1, c0));

    roots found;
    if (A == 0) {
        found.add(-static_cast<double>(C) / static_cast<double>(B));
        return found;
    }
    const auto discriminant = static_cast<std::int64_t>(
        static_cast<std::uint64_t>(B * B) - 4 * static_cast<std::uint64_t>(A * C));
    const double twice_a = 2.0 * static_cast<double>(A);
    if (discriminant > 0) {
        const double root = std::sqrt(static_cast<double>(discriminant));
        found.add((-static_cast<double>(B) + root) / twice_a);
        found.add((-static_cast<double>(B) - root) / twice_a);
    } else if (discriminant == 0) {
        found.add(-static_cast<double>(B) / twice_a);
    }
    return found;
}

} // namespace

vPOINT CalculateParametricPoint(
    double t, const vPOINT& p0, const vPOINT& p1, const vPOINT& p2, const vPOINT& p3) noexcept
{
    const double u = 1 - t;
    const double w3 = t * t * t;
    const double w2 = 3 * t * t * u;
    const double w1 = 3 * t * u * u;
    const double w0 = u * u * u;
    return {truncate_wrapped(w3 * p3.x + w2 * p2.x + w1 * p1.x + w0 * p0.x),
        truncate_wrapped(w3 * p3.y + w2 * p2.y + w1 * p1.y + w0 * p0.y)};
}

int CalculateMaximaMinima(
    const vPOINT& p0, const vPOINT& p1, const vPOINT& p2, const vPOINT& p3, std::span<vPOINT, 4> out) noexcept
{
    int written = 0;
    for (const roots& found :
        {turning_points(p0.y, p1.y, p2.y, p3.y), turning_points(p0.x, p1.x, p2.x, p3.x)})
        for (int i = 0; i < found.count; ++i)
            out[static_cast<std::size_t>(written++)] = CalculateParametricPoint(found.t[i], p0, p1, p2, p3);
    return written;
}

} // namespace klv
