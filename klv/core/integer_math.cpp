#include "klv/core/integer_math.h"

#include "klv/base/angles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace klv {

namespace {

// 25600 times the sine of 0 to 90 degrees, rounded.
constexpr std::array<std::int16_t, 91> sines = {0, 447, 893, 1340, 1786, 2231, 2676, 3120, 3563, 4005, 4445,
    4885, 5323, 5759, 6193, 6626, 7056, 7485, 7911, 8335, 8756, 9174, 9590, 10003, 10412, 10819, 11222, 11622,
    12018, 12411, 12800, 13185, 13566, 13943, 14315, 14684, 15047, 15406, 15761, 16111, 16455, 16795, 17130,
    17459, 17783, 18102, 18415, 18723, 19025, 19321, 19611, 19895, 20173, 20445, 20711, 20970, 21223, 21470,
    21710, 21943, 22170, 22390, 22603, 22810, 23009, 23201, 23387, 23565, 23736, 23900, 24056, 24205, 24347,
    24481, 24608, 24728, 24840, 24944, 25041, 25130, 25211, 25285, 25351, 25409, 25460, 25503, 25538, 25565,
    25584, 25596, 25600};

int sine(int degrees) noexcept
{
    if (degrees < 0)
        return -sine(-degrees);
    const int m = degrees % 360;
    if (m > 180)
        return -sine(360 - m);
    return sines[static_cast<std::size_t>(m <= 90 ? m : 180 - m)];
}

// The grading curve: four runs of entries, each for values `1 << shift` apart from `from` on. The last
// entry of the later runs is only the upper end of an interpolation.
constexpr std::uint16_t grades_from_0[] = {0, 1, 2, 3, 4, 5, 5, 6};
constexpr std::uint16_t grades_from_8[] = {7, 8, 10, 11, 12, 14, 15, 16, 17, 18, 19, 20, 21};
constexpr std::uint16_t grades_from_32[] = {21, 23, 24, 26, 27, 29, 30, 32, 33};
constexpr std::uint16_t grades_from_64[] = {
    33, 35, 37, 39, 41, 43, 44, 46, 47, 49, 50, 51, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 62, 63, 64, 64};
constexpr int last_graded = 263;

struct grade_run {
    int from;
    int shift;
    std::span<const std::uint16_t> grades;
};
constexpr grade_run grade_runs[]
    = {{64, 3, grades_from_64}, {32, 2, grades_from_32}, {8, 1, grades_from_8}, {0, 0, grades_from_0}};

const grade_run& run_of(int v) noexcept
{
    return *std::find_if(
        std::begin(grade_runs), std::end(grade_runs), [v](const grade_run& run) { return v >= run.from; });
}

} // namespace

short Sin(short degrees) noexcept { return static_cast<short>(sine(degrees)); }
short Cos(short degrees) noexcept { return static_cast<short>(sine(degrees + 90)); }

short Log(short v) noexcept
{
    const int value = std::clamp<int>(v, 0, last_graded);
    const grade_run& run = run_of(value);
    return static_cast<short>(run.grades[static_cast<std::size_t>((value - run.from) >> run.shift)]);
}

double RealLog(short v) noexcept
{
    constexpr double full = 64.0;
    const int value = std::clamp<int>(v, 0, last_graded);
    const grade_run& run = run_of(value);
    const auto i = static_cast<std::size_t>((value - run.from) >> run.shift);
    const double low = run.grades[i] / full;
    if (run.shift == 0)
        return low;
    const int step = 1 << run.shift;
    const double fraction = static_cast<double>(value & (step - 1)) / step;
    const double high = run.grades[i + 1] / full;
    return (high - low) * fraction + low;
}

short Sqrt(int n) noexcept
{
    const std::int64_t value = std::min(std::abs(std::int64_t{n}), std::int64_t{INT32_MAX});
    if (value < 2)
        return static_cast<short>(value);

    std::int64_t root = value;
    for (std::int64_t a = value; a > 1; a >>= 2)
        root >>= 1;

    constexpr int most_steps = 20;
    std::int64_t previous = 0;
    for (int step = 0; step < most_steps; ++step) {
        const std::int64_t quotient = (value + root / 2) / root;
        root = (root + quotient) >> 1;
        if (root == quotient || root == previous)
            break;
        previous = root;
    }
    if (root * root < value && value - root * root > root)
        ++root;
    return static_cast<short>(static_cast<std::uint16_t>(root));
}

void PolarToCartesian(
    const vPOINT& centre, const double& radius, const double& angle, double* x, double* y) noexcept
{
    const double radians = to_radians(angle);
    if (x)
        *x = std::cos(radians) * radius + centre.x;
    if (y)
        *y = std::sin(radians) * radius + centre.y;
}

void CartesianToPolar(
    const vPOINT& centre, const double& x, const double& y, double* radius, double* angle) noexcept
{
    const double dx = x - centre.x;
    const double dy = y - centre.y;
    if (angle) {
        *angle = to_degrees(std::atan2(dy, dx));
        if (*angle < 0)
            *angle += 360.0;
    }
    if (radius)
        *radius = std::sqrt(dx * dx + dy * dy);
}

} // namespace klv
