#include "klv/geometry/curves/curve_fit.h"

#include "klv/base/vec2.h"
#include "klv/base/wrapping.h"
#include "klv/core/rect.h"
#include "klv/geometry/point_record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

// After P. J. Schneider, "An Algorithm for Automatically Fitting Digitized Curves", Graphics Gems (1990): a
// cubic is fitted by least squares with the tangents at both ends given, each point at a parameter that
// begins as its share of the chords' length. Then the parameters move to the places on the curve that are
// nearest to the points, and it is fitted again.
namespace klv {

namespace {

vPOINT to_point(vec2 v) { return {round_wrapped(v.x), round_wrapped(v.y)}; }

using cubic = std::array<vec2, 4>;

// The weights of the four points of a cubic at t.
std::array<double, 4> bernstein(double t)
{
    const double u = 1 - t;
    return {u * u * u, 3 * t * u * u, 3 * t * t * u, t * t * t};
}

vec2 at(const cubic& c, double t)
{
    const auto w = bernstein(t);
    return c[0] * w[0] + c[1] * w[1] + c[2] * w[2] + c[3] * w[3];
}

// One Newton step from t toward the place of the curve nearest to p.
double nearer_parameter(const cubic& c, const vec2& p, double t)
{
    const double u = 1 - t;
    const vec2 d0 = c[1] - c[0], d1 = c[2] - c[1], d2 = c[3] - c[2];
    const vec2 first = (d0 * (u * u) + d1 * (2 * t * u) + d2 * (t * t)) * 3;
    const vec2 second = ((d1 - d0) * u + (d2 - d1) * t) * 6;
    const vec2 error = at(c, t) - p;
    const double slope = dot(first, first) + dot(error, second);
    return slope == 0 ? t : std::clamp(t - dot(error, first) / slope, 0.0, 1.0);
}

class fitter {
public:
    fitter(std::span<const vPOINT> points, const fit_tolerance& tolerance,
        std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>>& out)
        : points_(points)
        , tolerance_(tolerance)
        , out_(out)
    {
    }
    void run();

private:
    [[nodiscard]] bool run_goes_on(std::size_t i) const;
    void fit(std::size_t first, std::size_t last);
    [[nodiscard]] std::optional<cubic> fit_one(std::size_t first, std::size_t last);
    [[nodiscard]] bool share_out_parameters(std::size_t first, std::size_t last);
    [[nodiscard]] cubic least_squares(std::size_t first, std::size_t last) const;
    [[nodiscard]] double error_of(const cubic& c, std::size_t first) const;
    [[nodiscard]] vec2 tangent(std::size_t i) const;
    void line_to(const vPOINT& p);
    void curve_to(const cubic& c, const vPOINT& p);
    void leave_by(std::uint8_t segment);

    std::span<const vPOINT> points_;
    const fit_tolerance& tolerance_;
    std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>>& out_;
    std::vector<double, vALLOCATOR<double>> parameters_; // of the points of the run being fitted
    double length_ = 0; // of its chords
    std::size_t run_first_ = 0;
    std::size_t run_last_ = 0;
    std::size_t end_ = 0; // the last on-curve point in out_
};

void fitter::run()
{
    if (points_.empty())
        return;
    end_ = out_.size();
    out_.emplace_back(points_[0], 0);
    for (run_first_ = 0; run_first_ + 1 < points_.size(); run_first_ = run_last_) {
        run_last_ = run_first_ + 1;
        while (run_last_ + 1 < points_.size() && run_goes_on(run_last_))
            ++run_last_;
        fit(run_first_, run_last_);
    }
}

// Whether the edge that leaves point i turns little enough to belong to the same curve.
bool fitter::run_goes_on(std::size_t i) const
{
    constexpr double longest_edge = 32767;
    const vec2 in = vec2::of(points_[i]) - vec2::of(points_[i - 1]);
    const vec2 out = vec2::of(points_[i + 1]) - vec2::of(points_[i]);
    const double lengths = length(in) * length(out);
    return dot(in, out) > 0 && 2 * dot(in, out) >= lengths && length(in) <= longest_edge
        && length(out) <= longest_edge;
}

void fitter::fit(std::size_t first, std::size_t last)
{
    constexpr std::size_t fewest_to_split = 5;
    const std::size_t count = last - first + 1;
    if (count == 2)
        return line_to(points_[last]);
    if (const auto curve = fit_one(first, last)) {
        curve_to(*curve, points_[last]);
    } else if (count >= fewest_to_split) {
        const std::size_t middle = first + count / 2;
        fit(first, middle);
        fit(middle, last);
    } else {
        for (std::size_t i = first + 1; i <= last; ++i)
            line_to(points_[i]);
    }
}

// The sum of the chords around point i, near ones counting more; inside a run, whose ends are corners.
vec2 fitter::tangent(std::size_t i) const
{
    constexpr std::array<double, 3> weights{4, 2, 1};
    vec2 sum;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        if (i + k + 1 <= run_last_)
            sum = sum + (vec2::of(points_[i + k + 1]) - vec2::of(points_[i + k])) * weights[k];
        if (i >= run_first_ + k + 1)
            sum = sum + (vec2::of(points_[i - k]) - vec2::of(points_[i - k - 1])) * weights[k];
    }
    const double size = length(sum);
    return size > 0 ? sum * (1 / size) : vec2{};
}

// The curve of a few rounds that follows its points within the tolerances; nothing when none does.
std::optional<cubic> fitter::fit_one(std::size_t first, std::size_t last)
{
    constexpr int rounds = 5;
    constexpr double hopeless = 16; // times the tolerance
    if (!share_out_parameters(first, last))
        return std::nullopt;
    for (int round = 0; round < rounds; ++round) {
        const cubic curve = least_squares(first, last);
        const double error = error_of(curve, first);
        if (error <= 1)
            return curve;
        if (!(error <= hopeless))
            return std::nullopt;
        for (std::size_t i = 0; i < parameters_.size(); ++i)
            parameters_[i] = nearer_parameter(curve, vec2::of(points_[first + i]), parameters_[i]);
    }
    return std::nullopt;
}

// Parameters by the length of the chords so far. False when there is no length.
bool fitter::share_out_parameters(std::size_t first, std::size_t last)
{
    auto& t = parameters_;
    t.assign(1, 0.0);
    for (std::size_t i = first + 1; i <= last; ++i)
        t.push_back(t.back() + length(vec2::of(points_[i]) - vec2::of(points_[i - 1])));
    length_ = t.back();
    if (!(length_ > 0))
        return false;
    for (auto& parameter : t)
        parameter /= length_;
    return true;
}

cubic fitter::least_squares(std::size_t first, std::size_t last) const
{
    const vec2 start = vec2::of(points_[first]);
    const vec2 end = vec2::of(points_[last]);
    const vec2 out = tangent(first);
    const vec2 in = tangent(last) * -1;
    double c00 = 0, c01 = 0, c11 = 0, x0 = 0, x1 = 0;
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const auto w = bernstein(parameters_[i]);
        const vec2 a0 = out * w[1];
        const vec2 a1 = in * w[2];
        const vec2 rest = vec2::of(points_[first + i]) - start * (w[0] + w[1]) - end * (w[2] + w[3]);
        c00 += dot(a0, a0);
        c01 += dot(a0, a1);
        c11 += dot(a1, a1);
        x0 += dot(a0, rest);
        x1 += dot(a1, rest);
    }
    const double det = c00 * c11 - c01 * c01;
    const double chord = length(end - start);
    const double least = 1e-6 * chord;
    const auto usable = [&](double at_start, double at_end) {
        return at_start > least && at_end > least && at_start + at_end <= length_;
    };
    double reach0 = (x0 * c11 - x1 * c01) / det;
    double reach1 = (c00 * x1 - c01 * x0) / det;
    // Too short, backward or so long that the curve folds: the same for both ends, or the usual third.
    if (!usable(reach0, reach1))
        reach0 = reach1 = (x0 + x1) / (c00 + 2 * c01 + c11);
    if (!usable(reach0, reach1))
        reach0 = reach1 = chord / 3;
    return {start, start + out * reach0, end + in * reach1, end};
}

// The worse of the mean and the greatest squared distance of the points from the curve, as a part of what the
// tolerance allows.
double fitter::error_of(const cubic& c, std::size_t first) const
{
    double sum = 0, greatest = 0;
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const vec2 error = at(c, parameters_[i]) - vec2::of(points_[first + i]);
        const double square = dot(error, error);
        sum += square;
        greatest = std::max(greatest, square);
    }
    const double mean = sum / static_cast<double>(parameters_.size());
    const auto part
        = [](double value, double allowed) { return value == 0 ? 0 : value / std::max(allowed, 0.0); };
    return std::max(part(mean, tolerance_.mean), part(greatest, tolerance_.greatest));
}

void fitter::leave_by(std::uint8_t segment)
{
    out_[end_].SetFlags(static_cast<std::uint8_t>(out_[end_].GetFlags() | segment));
}

void fitter::line_to(const vPOINT& p)
{
    leave_by(point_flags::line_to);
    end_ = out_.size();
    out_.emplace_back(p, 0);
}

void fitter::curve_to(const cubic& c, const vPOINT& p)
{
    leave_by(point_flags::curve_to);
    out_.emplace_back(to_point(c[1]), point_flags::control);
    out_.emplace_back(to_point(c[2]), point_flags::control);
    end_ = out_.size();
    out_.emplace_back(p, 0);
}

} // namespace

void fit_curves(std::span<const vPOINT> points, const fit_tolerance& tolerance,
    std::vector<vBEZPOINT, vALLOCATOR<vBEZPOINT>>& out)
{
    fitter(points, tolerance, out).run();
}

} // namespace klv
