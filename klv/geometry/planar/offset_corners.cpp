#include "klv/geometry/planar/offset_corners.h"

#include "klv/base/saturating.h"
#include "klv/core/integer_math.h"
#include "klv/geometry/planar/contour.h"
#include "klv/geometry/planar/exact.h"

#include <algorithm>
#include <cmath>

namespace klv {

namespace {

std::int32_t integer_length(const offset& v)
{
    return truncate_saturated(std::sqrt(static_cast<double>(dot(v, v))));
}

// Whether the moved edges part from each other at the corner.
bool opens(const POINT& prev, const POINT& v, const POINT& next, const contour_move& move)
{
    const int turn = sign_of(cross(offset::between(prev, v), offset::between(v, next)));
    return move.distance > 0 ? turn > 0 : turn < 0;
}

// Whether a closing corner's moved edges meet beyond the end of the shorter one, which then runs backward.
bool turns_inside_out(const POINT& prev, const POINT& v, const POINT& next, double distance)
{
    const offset a = offset::between(v, prev), b = offset::between(v, next);
    const double la = std::sqrt(static_cast<double>(dot(a, a))),
                 lb = std::sqrt(static_cast<double>(dot(b, b)));
    return std::abs(distance) * (la * lb + static_cast<double>(dot(a, b)))
        > std::min(la, lb) * std::abs(static_cast<double>(cross(a, b)));
}

POINT truncated_step(const POINT& from, const offset& way, double part)
{
    return {truncate_saturated(from.x + std::trunc(static_cast<double>(way.x) * part)),
        truncate_saturated(from.y + std::trunc(static_cast<double>(way.y) * part))};
}

} // namespace

bool CutoffSpike(
    const POINT& prev, const POINT& v, const POINT& next, std::int32_t d, POINT& out, int angle_limit)
{
    constexpr std::int32_t always = -1;
    const int apart = std::abs(EdgeAngle(prev, v) - EdgeAngle(next, v));
    const int angle = apart > 180 ? 360 - apart : apart;
    if (angle >= angle_limit)
        return false;

    const std::int32_t la = integer_length(offset::between(prev, v));
    const std::int32_t lb = integer_length(offset::between(next, v));
    const auto sine = [](int degrees) { return Sin(static_cast<short>(degrees)); };
    const std::int32_t reach = d < 0 ? 0
                                     : MulDiv(MulDiv(std::min(la, lb), sine(angle / 2), trigonometric_scale),
                                         sine((360 - angle) / 2), trigonometric_scale);
    if (d != always && d <= reach)
        return false;

    if (la == lb)
        out = truncated_step(prev, offset::between(prev, next), 0.5);
    else if (lb < la)
        out = truncated_step(v, offset::between(v, prev), static_cast<double>(lb) / la);
    else
        out = truncated_step(v, offset::between(v, next), static_cast<double>(la) / lb);
    return true;
}

bool EliminateVanishingSpikes(geometry_list<POINT>& contour, const contour_move& move)
{
    constexpr int sharpest_kept = 45; // degrees
    const std::int32_t d = truncate_saturated(move.distance);
    const std::size_t n = contour.size();
    geometry_list<std::uint8_t> repeated(n, 0);
    const POINT* last = nullptr;
    bool any_cut = false;
    for (std::size_t i = 0; i < n; ++i) {
        const POINT& prev = contour[(i == 0 ? n : i) - 1];
        const POINT& next = contour[i + 1 == n ? 0 : i + 1];
        POINT cut;
        if (!opens(prev, contour[i], next, move) && turns_inside_out(prev, contour[i], next, move.distance)
            && CutoffSpike(prev, contour[i], next, d, cut, sharpest_kept)) {
            contour[i] = cut;
            any_cut = true;
        }
        repeated[i] = last != nullptr && contour[i] == *last;
        last = &contour[i];
    }
    RemoveSpecifiedSpikes(contour, repeated);
    while (contour.size() > 1 && contour.back() == contour.front())
        contour.pop_back();
    return any_cut;
}

void RemoveSpecifiedSpikes(geometry_list<POINT>& contour, std::span<const std::uint8_t> flags)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        if (flags[i] == 0)
            contour[kept++] = contour[i];
    }
    contour.resize(kept);
}

offset_corners::offset_corners(std::span<const POINT> contour, const contour_move& move)
    : contour_(contour)
    , move_(move)
{
    edges_.reserve(contour_.size());
    for (std::size_t i = 0; i < contour_.size(); ++i) {
        const offset e = offset::between(contour_[i], contour_[after(i)]);
        const auto x = static_cast<double>(e.x), y = static_cast<double>(e.y);
        const double length = std::sqrt(x * x + y * y);
        edges_.push_back({x / length, y / length, length});
    }
    shortenings_.reserve(contour_.size());
    for (std::size_t i = 0; i < contour_.size(); ++i)
        shortenings_.push_back(shortening_at(i));
}

offset_corners::turn offset_corners::turn_at(std::size_t i) const
{
    const edge &in = edges_[before(i)], &out = edges_[i];
    const double sine = in.x * out.y - in.y * out.x;
    const double cosine = in.x * out.x + in.y * out.y;
    const bool turns_back = sine == 0 && cosine < 0;
    return {sine, cosine, turns_back || sine * move_.distance > 0};
}

double offset_corners::shortening_at(std::size_t i) const
{
    const turn t = turn_at(i);
    return t.opens ? 0 : std::abs(move_.distance * t.sine) / (1 + t.cosine);
}

// Corner i pushed out by the distance across the edge, and then along it.
POINT offset_corners::moved(std::size_t i, const edge& e, double along) const
{
    return {round_saturated(contour_[i].x + move_.distance * e.y + along * e.x),
        round_saturated(contour_[i].y - move_.distance * e.x + along * e.y)};
}

void offset_corners::FindNewContourPointsWithMitre(std::size_t i, bool bevel, geometry_list<POINT>& out) const
{
    constexpr double longest_mitre = 1.5; // times the distance, with bevel
    constexpr double longest_of_all = 57.3; // one degree
    const edge &incoming = edges_[before(i)], &outgoing = edges_[i];
    const double at_start = shortenings_[i] + shortenings_[before(i)];
    const double at_end = shortenings_[i] + shortenings_[after(i)];
    if (shortenings_[i] > 0 && (at_start > incoming.length || at_end > outgoing.length)) {
        out.push_back(moved(i, incoming, 0));
        out.push_back(contour_[i]);
        out.push_back(moved(i, outgoing, 0));
        return;
    }

    // The mitre lies on the bisector, at distance / cos(turn / 2) from the corner.
    const turn t = turn_at(i);
    const double mitre = std::sqrt(2 / (1 + t.cosine));
    const double across = move_.distance / (1 + t.cosine);
    const double x = contour_[i].x + across * (incoming.y + outgoing.y);
    const double y = contour_[i].y - across * (incoming.x + outgoing.x);
    const bool fits = std::abs(x) <= INT32_MAX && std::abs(y) <= INT32_MAX;
    if (t.opens && (!(mitre <= longest_of_all) || !fits || (bevel && mitre > longest_mitre)))
        return MitreCorner(i, t, out);
    out.push_back({round_saturated(x), round_saturated(y)});
}

// The two points where the tangent of the circle with the distance around the corner, across the bisector,
// meets the moved edges.
void offset_corners::MitreCorner(std::size_t i, const turn& t, geometry_list<POINT>& out) const
{
    const double half_turn = std::acos(std::clamp(t.cosine, -1.0, 1.0)) / 2;
    const double along = std::abs(move_.distance) * std::tan(half_turn / 2);
    out.push_back(moved(i, edges_[before(i)], along));
    out.push_back(moved(i, edges_[i], -along));
}

} // namespace klv
