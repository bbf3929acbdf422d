#pragma once

#include "klv/base/types.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

/// Seeded closed outlines for measuring what is done to shapes, and checking it. None crosses itself but
/// where rounding to integers makes it. All run around the origin, with y growing downwards in the sense
/// that turns right.
namespace klv::outlines {

using outline = std::vector<POINT>;

inline constexpr double radius = 1e6;

class random_numbers {
public:
    explicit random_numbers(std::uint32_t seed)
        : state_(seed)
    {
    }
    /// From -1 to 1.
    double next()
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(state_ >> 33) / 1073741824.0 - 1;
    }

private:
    std::uint64_t state_;
};

inline POINT polar(double angle, double r)
{
    return {static_cast<int>(std::lround(r * std::cos(angle))),
        static_cast<int>(std::lround(r * std::sin(angle)))};
}

inline double angle_of(std::size_t i, std::size_t n)
{
    return 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n);
}

/// A coastline: the radius is a fractal, rough at every scale down to neighbouring points.
inline outline coast(std::size_t n, std::uint32_t seed)
{
    constexpr double roughness = 0.55; // how the displacement shrinks when the step is halved
    random_numbers random(seed);
    std::size_t steps = 1;
    while (steps < n)
        steps *= 2;
    std::vector<double> r(steps, radius);
    double displacement = 0.3 * radius;
    for (std::size_t step = steps; step > 1; step /= 2, displacement *= roughness) {
        for (std::size_t i = step / 2; i < steps; i += step) {
            const double middle = (r[i - step / 2] + r[(i + step / 2) % steps]) / 2;
            r[i] = middle + displacement * random.next();
        }
    }
    outline points(n);
    for (std::size_t i = 0; i < n; ++i)
        points[i] = polar(angle_of(i, n), r[i * steps / n]);
    return points;
}

/// The same outline with every point moved by up to distance: the two cross about once in two edges.
inline outline shaken(outline points, double distance, std::uint32_t seed)
{
    random_numbers random(seed);
    for (auto& p : points) {
        p.x += static_cast<int>(distance * random.next());
        p.y += static_cast<int>(distance * random.next());
    }
    return points;
}

inline outline scaled(outline points, double factor)
{
    for (auto& p : points) {
        p.x = static_cast<int>(std::lround(p.x * factor));
        p.y = static_cast<int>(std::lround(p.y * factor));
    }
    return points;
}

/// A smooth outline with a few bays.
inline outline blob(std::size_t n, std::uint32_t seed)
{
    random_numbers random(seed);
    constexpr int harmonics = 8;
    double amplitude[harmonics], phase[harmonics];
    for (int h = 0; h < harmonics; ++h) {
        amplitude[h] = 0.1 * radius * random.next();
        phase[h] = std::numbers::pi * random.next();
    }
    outline points(n);
    for (std::size_t i = 0; i < n; ++i) {
        double r = radius;
        for (int h = 0; h < harmonics; ++h)
            r += amplitude[h] * std::cos((h + 2) * angle_of(i, n) + phase[h]);
        points[i] = polar(angle_of(i, n), r);
    }
    return points;
}

/// Spikes of long edges from an inner circle, their lengths and places a little uneven.
inline outline star(std::size_t n, std::uint32_t seed)
{
    random_numbers random(seed);
    outline points(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double angle = angle_of(i, n) + 0.3 * angle_of(1, n) * random.next();
        points[i] = polar(angle, (i % 2 == 0 ? 2.0 : 1.0) * radius * (1 + 0.02 * random.next()));
    }
    return points;
}

/// A comb of so many long teeth that point to the right, each tooth and gap 2 units of pitch wide, all a
/// little aslant. It stands with its back at the left of where the teeth of the same comb laid down would be.
inline outline comb(std::size_t teeth)
{
    constexpr int pitch = 1009;
    const int length = pitch * 4 * (static_cast<int>(teeth) + 2);
    const auto place = [&](int x, int y) { return POINT{x - y / 40, y + x / 50}; };
    outline points{place(-5 * pitch, -2 * pitch)};
    for (int i = 0; i < static_cast<int>(teeth); ++i) {
        const int y = i * 4 * pitch;
        points.insert(points.end(),
            {place(-2 * pitch, y), place(length, y), place(length, y + 2 * pitch),
                place(-2 * pitch, y + 2 * pitch)});
    }
    points.push_back(place(-5 * pitch, length));
    return points;
}

/// The outline with x and y exchanged, running in the same sense as before.
inline outline laid_down(outline points)
{
    for (auto& p : points)
        std::swap(p.x, p.y);
    std::reverse(points.begin(), points.end());
    return points;
}

} // namespace klv::outlines
