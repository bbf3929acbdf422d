#include "geometry/decompose.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <functional>
#include <optional>
#include <tuple>

#include "geometry/segment_grid.h"
#include "platform/host.h"
#include "platform/wrapping.h"

namespace klv {

namespace {

template <typename T> using list = std::vector<T, vALLOCATOR<T>>;
using index = std::uint32_t;

// Paths are lists of numbers: a point's index, or the number of points plus a node's index.

struct contour {
    index first;
    index count;
};

// Two segments that meet, each named by the point where it starts, in the order in which they are found.
struct meeting {
    index contour_a;
    index contour_b;
    index a;
    index b;

    auto operator<=>(const meeting&) const = default;
};

// Where two segments cross. A node has one way through on each of the two: where it comes from, where it
// goes, and whether a loop has left by it already.
struct node {
    struct way {
        index segment; // the point where the segment starts
        double distance; // of the node from that point
        index previous;
        index next;
        bool walked;
    };
    POINT at;
    way ways[2];
};

struct crossing_point {
    POINT at;
    double distance_a;
    double distance_b;
};

double distance(const POINT& a, const POINT& b)
{
    return std::round(std::hypot(static_cast<double>(b.x) - a.x, static_cast<double>(b.y) - a.y));
}

// Where a meets b; nothing for segments that pass each other or lie on one line.
std::optional<crossing_point> cross(const segment& a, const segment& b)
{
    if (a.from == b.from)
        return crossing_point{b.from, 0, 0};
    if (!a.overlaps(b))
        return std::nullopt;
    const double ax = static_cast<double>(a.to.x) - a.from.x, ay = static_cast<double>(a.to.y) - a.from.y;
    const double bx = static_cast<double>(b.from.x) - b.to.x, by = static_cast<double>(b.from.y) - b.to.y;
    const double dx = static_cast<double>(b.from.x) - a.from.x, dy = static_cast<double>(b.from.y) - a.from.y;
    const double den = ax * by - ay * bx;
    const double t = dx * by - dy * bx;
    const double s = ax * dy - ay * dx;
    const auto within = [den](double v) { return den > 0 ? v >= 0 && v <= den : v <= 0 && v >= den; };
    if (den == 0 || !within(t) || !within(s))
        return std::nullopt;
    const POINT at{
        wrap_add(a.from.x, round_wrapped(ax * (t / den))), wrap_add(a.from.y, round_wrapped(ay * (t / den)))};
    return crossing_point{at, distance(a.from, at), distance(b.from, at)};
}

class decomposition {
public:
    decomposition(std::span<const POINT> points, std::span<const int> counts);
    [[nodiscard]] bool run(poly_polygon& loops, self_crossings crossings);

private:
    bool find_meetings(bool self);
    bool add_nodes();
    void link_nodes();
    void add_lone_nodes();
    void trace(poly_polygon& loops);
    bool walk(list<index>& path) const;
    void mark_walked(const list<index>& path);
    void add_loop(const list<index>& path, poly_polygon& loops) const;

    [[nodiscard]] index number(std::size_t i) const { return static_cast<index>(points_.size() + i); }
    [[nodiscard]] bool is_node(index n) const { return n >= points_.size(); }
    [[nodiscard]] index node_of(index n) const { return n - static_cast<index>(points_.size()); }
    [[nodiscard]] index following(index point) const
    {
        const auto& c = contours_[contour_of_[point]];
        return point + 1 == c.first + c.count ? c.first : point + 1;
    }

    list<POINT> points_;
    list<contour> contours_;
    list<index> contour_of_;
    list<segment> segments_; // segment i leaves point i
    list<index> successor_;
    list<meeting> meetings_;
    list<node> nodes_;
};

// Leaves out repeated first points and contours without any.
decomposition::decomposition(std::span<const POINT> points, std::span<const int> counts)
{
    std::size_t at = 0;
    for (const int count : counts) {
        auto part = points.subspan(at, static_cast<std::size_t>(count));
        at += part.size();
        while (part.size() > 1 && part.back() == part.front())
            part = part.first(part.size() - 1);
        if (part.empty())
            continue;
        contour_of_.insert(contour_of_.end(), part.size(), static_cast<index>(contours_.size()));
        contours_.push_back({static_cast<index>(points_.size()), static_cast<index>(part.size())});
        points_.insert(points_.end(), part.begin(), part.end());
    }
    for (index i = 0; i < points_.size(); ++i) {
        successor_.push_back(following(i));
        segments_.push_back({points_[i], points_[following(i)]});
    }
}

bool decomposition::run(poly_polygon& loops, self_crossings crossings)
{
    constexpr std::size_t fewest_points = 4;
    const bool self = crossings == self_crossings::yes;
    const bool may_cross = points_.size() >= fewest_points && (self || contours_.size() > 1);
    if (may_cross && (!find_meetings(self) || !add_nodes()))
        return false;
    if (nodes_.empty()) {
        loops.points = points_;
        for (const auto& c : contours_)
            loops.counts.push_back(static_cast<int>(c.count));
    } else {
        link_nodes();
        add_lone_nodes();
        trace(loops);
    }
    return !loops.counts.empty();
}

// All pairs of segments that meet, contour by contour and segment by segment.
bool decomposition::find_meetings(bool self)
{
    // A crossing of two segments is met at most eight times: from both sides, at the ends of each.
    constexpr std::size_t most_meetings = std::size_t{8} * 65536;
    segment_grid grid(segments_);
    for (index a = 0; a < segments_.size(); ++a) {
        if (segments_[a].from == segments_[a].to)
            continue;
        const bool room = grid.visit_neighbours(a, [&](index b) {
            const index ca = contour_of_[a], cb = contour_of_[b];
            if (cb < ca || (cb == ca && (!self || a == b || following(a) == b || following(b) == a)))
                return true;
            if (cross(segments_[a], segments_[b]))
                meetings_.push_back({ca, cb, a, b});
            return meetings_.size() < most_meetings;
        });
        if (!room)
            return false;
    }
    std::ranges::sort(meetings_);
    return true;
}

// One node for each point where segments meet: the first meeting there makes it. A later one that shares
// a segment is the same crossing; one that does not would be a third contour through the point.
bool decomposition::add_nodes()
{
    constexpr std::size_t most_nodes = 65535;
    struct place {
        POINT at;
        index meeting;
        bool operator<(const place& o) const
        {
            return std::tie(at.x, at.y, meeting) < std::tie(o.at.x, o.at.y, o.meeting);
        }
    };
    list<place> places;
    for (index i = 0; i < meetings_.size(); ++i)
        places.push_back({cross(segments_[meetings_[i].a], segments_[meetings_[i].b])->at, i});
    std::ranges::sort(places, std::less<>{});

    list<index> makers;
    const place* owner = nullptr;
    for (const auto& p : places) {
        if (owner == nullptr || !(owner->at == p.at)) {
            owner = &p;
            makers.push_back(p.meeting);
            continue;
        }
        const auto& o = meetings_[owner->meeting];
        const auto& m = meetings_[p.meeting];
        if (m.a != o.a && m.a != o.b && m.b != o.a && m.b != o.b)
            current_host().debug_output("*** Illegal DuplicateNode!\n");
    }
    if (makers.size() > most_nodes)
        return false;
    std::ranges::sort(makers);
    for (const index i : makers) {
        const auto& m = meetings_[i];
        const auto c = *cross(segments_[m.a], segments_[m.b]);
        nodes_.push_back({c.at, {{m.a, c.distance_a, 0, 0, false}, {m.b, c.distance_b, 0, 0, false}}});
    }
    return true;
}

// Threads the nodes of each segment onto it, by their distance from its start.
void decomposition::link_nodes()
{
    struct bead {
        index segment;
        double distance;
        index node;
        int way;
        bool operator<(const bead& o) const
        {
            return std::tie(segment, distance, node) < std::tie(o.segment, o.distance, o.node);
        }
    };
    list<bead> beads;
    for (index i = 0; i < nodes_.size(); ++i) {
        for (int w = 0; w < 2; ++w)
            beads.push_back({nodes_[i].ways[w].segment, nodes_[i].ways[w].distance, i, w});
    }
    std::ranges::sort(beads, std::less<>{});
    for (std::size_t i = 0; i < beads.size(); ++i) {
        const auto& b = beads[i];
        auto& way = nodes_[b.node].ways[b.way];
        const bool first = i == 0 || beads[i - 1].segment != b.segment;
        const bool last = i + 1 == beads.size() || beads[i + 1].segment != b.segment;
        way.previous = first ? b.segment : number(beads[i - 1].node);
        way.next = last ? following(b.segment) : number(beads[i + 1].node);
        if (first)
            successor_[b.segment] = number(b.node);
    }
}

// A contour that meets nothing gets a node at its first point, from which it is walked once.
void decomposition::add_lone_nodes()
{
    list<bool> met(contours_.size(), false);
    for (const auto& n : nodes_) {
        for (const auto& way : n.ways)
            met[contour_of_[way.segment]] = true;
    }
    for (std::size_t i = 0; i < contours_.size(); ++i) {
        const auto& c = contours_[i];
        if (met[i] || c.count < 2)
            continue;
        const index last = c.first + c.count - 1;
        const index n = number(nodes_.size());
        nodes_.push_back({points_[c.first],
            {{last, 0, last, successor_[c.first], false}, {last, 0, last, successor_[c.first], true}}});
        successor_[last] = n;
    }
}

void decomposition::trace(poly_polygon& loops)
{
    list<index> path;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        for (const int w : {0, 1}) {
            if (nodes_[i].ways[w].walked)
                continue;
            path.assign({number(i), nodes_[i].ways[w].next});
            if (!walk(path))
                continue;
            mark_walked(path);
            add_loop(path, loops);
        }
    }
}

// Follows the path until it is back at its first number. False when it can't.
bool decomposition::walk(list<index>& path) const
{
    const std::size_t longest = points_.size() + nodes_.size();
    while (path.back() != path.front()) {
        if (path.size() > longest)
            return false;
        const index here = path.back();
        if (!is_node(here)) {
            path.push_back(successor_[here]);
            continue;
        }
        const index from = path[path.size() - 2];
        std::optional<index> next;
        for (const auto& way : nodes_[node_of(here)].ways) {
            if (!way.walked && way.previous != from)
                next = std::min(next.value_or(way.next), way.next);
        }
        if (!next)
            return false;
        path.push_back(*next);
    }
    path.pop_back();
    return true;
}

void decomposition::mark_walked(const list<index>& path)
{
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (!is_node(path[i]))
            continue;
        const index next = path[i + 1 == path.size() ? 0 : i + 1];
        for (auto& way : nodes_[node_of(path[i])].ways) {
            if (way.next == next && !way.walked) {
                way.walked = true;
                break;
            }
        }
    }
}

void decomposition::add_loop(const list<index>& path, poly_polygon& loops) const
{
    for (const index n : path)
        loops.points.push_back(is_node(n) ? nodes_[node_of(n)].at : points_[n]);
    loops.counts.push_back(static_cast<int>(path.size()));
}

} // namespace

bool DecomposePolyPolygon(std::span<const POINT> points, std::span<const int> counts, poly_polygon& loops,
    self_crossings crossings) noexcept
try {
    loops = poly_polygon();
    return decomposition(points, counts).run(loops, crossings);
} catch (const std::bad_alloc&) {
    loops = poly_polygon();
    return false;
}

} // namespace klv
