#include "klv/geometry/planar/arrangement.h"
#include "klv/platform/host.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <numeric>

// From edges to nodes: crossings become places, equal places one node, stops are sorted along their contours.
namespace klv {

arrangement::arrangement(
    std::span<const POINT> points, std::span<const int> counts, bool within_contours, int frames)
    : outline_(points, counts)
    , tree_(outline_)
    , frames_(frames)
    , found_(find_crossings(outline_, tree_, within_contours))
{
    find_places();
    report_shared_points();
    sort_stops();
    join_stops();
    make_nodes();
    number_strands();

    for (const node& n : nodes_)
        cancel_strands(n);
    for (const node& n : nodes_) {
        if (n.crossing)
            pair_crossing(n);
        else
            pair_strands(n);
    }
    find_levels();
}

// Places are numbered: the points of the outline, then the crossings.
void arrangement::find_places()
{
    const auto crossings = static_cast<std::uint32_t>(found_.crossings.size());
    parents_.resize(outline_.size() + crossings);
    std::iota(parents_.begin(), parents_.end(), 0u);
    passed_.assign(outline_.size(), false);
    stops_.reserve(2 * std::size_t{crossings});
    meetings_.reserve(crossings);
    for (std::uint32_t i = 0; i < crossings; ++i)
        add_crossing(i);
    for (const edge_pair& pair : found_.crossings) {
        if (outline_[pair.a] == outline_[pair.b]
            && cross(outline_.direction(pair.a), outline_.direction(pair.b)) == 0)
            add_overlap(pair);
    }
    for (const edge_pair& pair : found_.overlaps)
        add_overlap(pair);
}

void arrangement::add_crossing(std::uint32_t number)
{
    const auto [a, b] = found_.crossings[number];
    const POINT &a1 = outline_[a], &b1 = outline_[b];
    if (a1 == b1) {
        add_contact(a, b);
        meetings_.push_back({a, a1});
        return;
    }
    const offset along_a = outline_.direction(a), along_b = outline_.direction(b);
    const offset apart = offset::between(a1, b1);
    const wide t = cross(apart, along_b), s = cross(apart, along_a), whole = cross(along_a, along_b);
    const auto end_on = [](wide at, wide full, std::uint32_t from, std::uint32_t to) {
        return at == 0 ? from : at == full ? to : none;
    };
    const std::uint32_t point_of_a = end_on(t, whole, a, outline_.following(a));
    const std::uint32_t point_of_b = end_on(s, whole, b, outline_.following(b));
    if (point_of_a == none && point_of_b == none) {
        const std::uint32_t place = outline_.size() + number;
        const double on_a = fraction::of(t, whole).rounded();
        stops_.push_back({a, place, on_a});
        stops_.push_back({b, place, fraction::of(s, whole).rounded()});
        meetings_.push_back({place, point_on_edge(outline_, a, on_a)});
        return;
    }
    if (point_of_a != none && point_of_b != none) {
        add_contact(point_of_a, point_of_b);
    } else if (point_of_a != none) {
        add_touch(point_of_a, b);
    } else {
        add_touch(point_of_b, a);
    }
    const std::uint32_t place = point_of_a != none ? point_of_a : point_of_b;
    meetings_.push_back({place, outline_[place]});
}

// Edges on one line: the ends of each that lie on the other.
void arrangement::add_overlap(const edge_pair& pair)
{
    const auto touch = [this](std::uint32_t point, std::uint32_t edge) {
        const POINT &p = outline_[point], &from = outline_[edge], &to = outline_.end(edge);
        if (!edge_box::of(from, to).meets(edge_box::of(p, p)))
            return;
        if (p == from || p == to)
            add_contact(point, p == from ? edge : outline_.following(edge));
        else
            add_touch(point, edge);
        meetings_.push_back({point, p});
    };
    touch(pair.b, pair.a);
    touch(outline_.following(pair.b), pair.a);
    touch(pair.a, pair.b);
    touch(outline_.following(pair.a), pair.b);
}

// Two points of the outline at the same place.
void arrangement::add_contact(std::uint32_t point, std::uint32_t other)
{
    add_passage(point);
    add_passage(other);
    join(point, other);
}

// A point of the outline inside an edge.
void arrangement::add_touch(std::uint32_t point, std::uint32_t edge)
{
    add_passage(point);
    stops_.push_back({edge, point, position(edge, point).rounded()});
}

void arrangement::add_passage(std::uint32_t point)
{
    if (passed_[point])
        return;
    passed_[point] = true;
    stops_.push_back({point, point, 0});
}

void arrangement::join(std::uint32_t place, std::uint32_t other)
{
    place = joined(place);
    other = joined(other);
    const auto [least, greatest] = std::minmax(place, other);
    parents_[greatest] = least;
}

std::uint32_t arrangement::joined(std::uint32_t place) const
{
    while (parents_[place] != place)
        place = parents_[place];
    return place;
}

// Where a place lies on an edge.
fraction arrangement::position(std::uint32_t edge, std::uint32_t place) const
{
    const offset along = outline_.direction(edge);
    if (is_point(place)) {
        const offset to = offset::between(outline_[edge], outline_[place]);
        return std::abs(along.x) > std::abs(along.y) ? fraction::of(to.x, along.x)
                                                     : fraction::of(to.y, along.y);
    }
    const auto [a, b] = found_.crossings[place - outline_.size()];
    const std::uint32_t other = a == edge ? b : a;
    const offset across = outline_.direction(other);
    return fraction::of(
        cross(offset::between(outline_[edge], outline_[other]), across), cross(along, across));
}

namespace {

// Twice the error of a rounded position.
constexpr double surely_apart = 1e-15;

} // namespace

bool arrangement::same_position(const stop& a, const stop& b) const
{
    return a.place == b.place
        || (std::abs(a.t - b.t) <= surely_apart && position(a.edge, a.place) == position(b.edge, b.place));
}

bool arrangement::before(const stop& a, const stop& b) const
{
    if (std::abs(a.t - b.t) > surely_apart)
        return a.t < b.t;
    if (same_position(a, b))
        return a.place < b.place;
    return position(a.edge, a.place) < position(b.edge, b.place);
}

// By edges, then along each.
void arrangement::sort_stops()
{
    geometry_list<std::uint32_t> starts(outline_.size() + 1, 0);
    for (const stop& s : stops_)
        ++starts[s.edge + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    geometry_list<stop> sorted(stops_.size());
    for (const stop& s : stops_)
        sorted[starts[s.edge]++] = s;
    stops_.swap(sorted);
    for (auto at = stops_.begin(); at != stops_.end();) {
        const auto end = std::find_if(at, stops_.end(), [&](const stop& s) { return s.edge != at->edge; });
        if (end - at > 1)
            std::sort(at, end, [this](const stop& a, const stop& b) { return before(a, b); });
        at = end;
    }
}

// Stops of an edge at the same point are one.
void arrangement::join_stops()
{
    std::size_t kept = 0;
    for (const stop& s : stops_) {
        if (kept > 0 && stops_[kept - 1].edge == s.edge && same_position(stops_[kept - 1], s))
            join(stops_[kept - 1].place, s.place);
        else
            stops_[kept++] = s;
    }
    stops_.resize(kept);
}

namespace {

template <typename T> void release(geometry_list<T>& list) { geometry_list<T>().swap(list); }

} // namespace

// In the order of the first meetings at each.
void arrangement::make_nodes()
{
    for (std::uint32_t i = 0; i < parents_.size(); ++i)
        parents_[i] = parents_[parents_[i]]; // a parent has the lesser number, and is done before
    geometry_list<std::uint32_t> node_of_place(parents_.size(), none);
    nodes_.reserve(std::min(meetings_.size(), parents_.size()));
    for (const meeting& m : meetings_) {
        const std::uint32_t place = parents_[m.place];
        if (node_of_place[place] != none)
            continue;
        node_of_place[place] = static_cast<std::uint32_t>(nodes_.size());
        nodes_.push_back({0, 0, is_point(place) ? outline_[place] : m.at, 0, !is_point(place), false});
    }
    release(meetings_);
    release(found_.crossings);
    release(found_.overlaps);

    // Strand i leaves stop i.
    strands_.reserve(stops_.size());
    for (const stop& s : stops_) {
        const std::uint32_t n = node_of_place[parents_[s.place]];
        ++nodes_[n].count;
        strands_.push_back({s.edge, n, none, 0, 0, s.place == s.edge, false, false});
    }
    release(stops_);
    release(parents_);
    release(passed_);
}

// Which strands belong to a contour, and which to a node.
void arrangement::number_strands()
{
    contour_strands_.assign(outline_.contours().size() + 1, 0);
    for (const strand& s : strands_)
        ++contour_strands_[outline_.contour_of(s.edge) + 1];
    std::partial_sum(contour_strands_.begin(), contour_strands_.end(), contour_strands_.begin());

    std::uint32_t first = 0;
    for (node& n : nodes_) {
        n.first = first;
        first += n.count;
        n.crossing = n.crossing && n.count == 2;
        n.count = 0;
    }
    node_strands_.resize(strands_.size());
    for (std::uint32_t i = 0; i < strands_.size(); ++i) {
        node& n = nodes_[strands_[i].node];
        node_strands_[n.first + n.count++] = i;
    }
}

// Crossings whose rounded point is that of an earlier one, of two other edges.
void arrangement::report_shared_points() const
{
    const auto count = static_cast<std::uint32_t>(found_.crossings.size());
    const std::size_t mask = std::bit_ceil(std::size_t{count} + count / 2 + 1) - 1;
    geometry_list<std::uint32_t> first_at(mask + 1, none);
    for (std::uint32_t i = 0; i < count; ++i) {
        const POINT at = meetings_[i].at;
        constexpr std::uint64_t spread_x = 0x9E3779B97F4A7C15, spread_y = 0xC2B2AE3D27D4EB4F;
        const std::uint64_t mixed
            = static_cast<std::uint32_t>(at.x) * spread_x ^ static_cast<std::uint32_t>(at.y) * spread_y;
        std::size_t slot = (mixed >> 32) & mask;
        while (first_at[slot] != none && !(meetings_[first_at[slot]].at == at))
            slot = (slot + 1) & mask;
        if (first_at[slot] == none) {
            first_at[slot] = i;
            continue;
        }
        const edge_pair &p = found_.crossings[first_at[slot]], &q = found_.crossings[i];
        if (p.a != q.a && p.a != q.b && p.b != q.a && p.b != q.b)
            current_host().debug_output("*** Illegal DuplicateNode!\n");
    }
}

} // namespace klv
