#pragma once

#include "klv/base/types.h"
#include "klv/geometry/planar/poly_polygon.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace klv {

/// The slow, obvious decomposition: every edge against every edge in floating point, one node for each point
/// where two cross, loops walked from node to node changing contours at each. It knows nothing of many edges
/// in one point or on one line.
class pairwise_walk {
public:
    struct crossing {
        POINT at;
        std::uint32_t a;
        std::uint32_t b;
        double from_a; // rounded distances from the starts of the edges
        double from_b;
    };
    /// Contours without repeated points.
    pairwise_walk(std::vector<POINT> points, std::vector<int> counts, bool self)
        : points_(std::move(points))
        , counts_(std::move(counts))
    {
        std::uint32_t first_a = 0;
        for (std::size_t i = 0; i < counts_.size(); first_a += count(i++)) {
            std::uint32_t first_b = first_a + (self ? 0 : count(i));
            for (std::size_t j = self ? i : i + 1; j < counts_.size(); first_b += count(j++))
                cross_contours(first_a, count(i), first_b, count(j));
        }
    }

    [[nodiscard]] const std::vector<crossing>& found() const { return found_; }
    /// Crossings at the point of an earlier one that share none of its edges.
    [[nodiscard]] int illegal_duplicates() const { return illegal_; }
    /// Whether crossings fell on others or so close to each other on an edge that their order is open.
    [[nodiscard]] bool ambiguous() const { return illegal_ > 0 || touches_ > 0 || ties_ > 0; }

    [[nodiscard]] poly_polygon loops()
    {
        link();
        poly_polygon result;
        for (std::uint32_t n = 0; n < nodes_.size(); ++n) {
            for (const int w : {0, 1}) {
                if (!nodes_[n].ways[w].walked)
                    walk(n, w, result);
            }
        }
        return result;
    }

private:
    struct way {
        std::uint32_t edge;
        double distance;
        std::uint32_t previous = 0;
        std::uint32_t next = 0;
        bool walked = false;
    };
    struct node {
        POINT at;
        way ways[2];
    };

    [[nodiscard]] std::uint32_t count(std::size_t i) const { return static_cast<std::uint32_t>(counts_[i]); }
    [[nodiscard]] std::uint32_t total() const { return static_cast<std::uint32_t>(points_.size()); }

    void cross_contours(std::uint32_t first_a, std::uint32_t n, std::uint32_t first_b, std::uint32_t m)
    {
        for (std::uint32_t i = 0; i < n; ++i) {
            following_[first_a + i] = first_a + (i + 1) % n;
            for (std::uint32_t j = 0; j < m; ++j) {
                following_[first_b + j] = first_b + (j + 1) % m;
                // Within a contour every pair would be met twice.
                const bool met = j <= i || (i + 1) % n == j || (j + 1) % m == i;
                if (first_a == first_b && met)
                    continue;
                if (const auto c = cross(first_a + i, first_b + j))
                    add(*c);
            }
        }
    }

    [[nodiscard]] std::optional<crossing> cross(std::uint32_t a, std::uint32_t b)
    {
        const POINT a1 = points_[a], a2 = points_[following_[a]], b1 = points_[b],
                    b2 = points_[following_[b]];
        if (a1 == b1) {
            ++touches_;
            return crossing{b1, a, b, 0, 0};
        }
        const auto apart = [](int p, int q, int r, int s) {
            return std::max(p, q) < std::min(r, s) || std::max(r, s) < std::min(p, q);
        };
        if (apart(a1.x, a2.x, b1.x, b2.x) || apart(a1.y, a2.y, b1.y, b2.y))
            return std::nullopt;
        const double ax = a2.x - a1.x, ay = a2.y - a1.y, bx = b1.x - b2.x, by = b1.y - b2.y;
        const double dx = b1.x - a1.x, dy = b1.y - a1.y;
        const double den = ax * by - ay * bx, t = dx * by - dy * bx, s = ax * dy - ay * dx;
        const auto within = [den](double v) { return den > 0 ? v >= 0 && v <= den : v <= 0 && v >= den; };
        if (den == 0 || !within(t) || !within(s))
            return std::nullopt;
        touches_ += t == 0 || t == den || s == 0 || s == den;
        const POINT at{a1.x + static_cast<int>(std::round(ax * (t / den))),
            a1.y + static_cast<int>(std::round(ay * (t / den)))};
        const auto distance
            = [&](const POINT& from) { return std::round(std::hypot(at.x - from.x, at.y - from.y)); };
        return crossing{at, a, b, distance(a1), distance(b1)};
    }

    void add(const crossing& c)
    {
        const auto [found, is_new] = node_at_.try_emplace({c.at.x, c.at.y}, found_.size());
        if (is_new) {
            found_.push_back(c);
            return;
        }
        const auto& o = found_[found->second];
        illegal_ += c.a != o.a && c.a != o.b && c.b != o.a && c.b != o.b;
        ++ties_;
    }

    void link()
    {
        struct bead {
            double distance;
            std::uint32_t node;
            int way;
        };
        std::map<std::uint32_t, std::vector<bead>> on_edge;
        for (const auto& c : found_) {
            const auto n = static_cast<std::uint32_t>(nodes_.size());
            on_edge[c.a].push_back({c.from_a, n, 0});
            on_edge[c.b].push_back({c.from_b, n, 1});
            nodes_.push_back({c.at, {{c.a, c.from_a}, {c.b, c.from_b}}});
        }
        successor_ = following_;
        for (auto& [edge, beads] : on_edge) {
            std::ranges::stable_sort(beads, {}, &bead::distance);
            for (std::size_t i = 0; i < beads.size(); ++i) {
                auto& w = nodes_[beads[i].node].ways[beads[i].way];
                w.previous = i == 0 ? edge : total() + beads[i - 1].node;
                w.next = i + 1 == beads.size() ? following_[edge] : total() + beads[i + 1].node;
                ties_ += i > 0 && beads[i - 1].distance == beads[i].distance;
            }
            successor_[edge] = total() + beads[0].node;
        }
        add_lone_contours();
    }

    void add_lone_contours()
    {
        std::uint32_t first = 0;
        for (std::size_t i = 0; i < counts_.size(); first += count(i++)) {
            const auto on_contour
                = [&](std::uint32_t edge) { return edge >= first && edge < first + count(i); };
            if (std::ranges::any_of(
                    found_, [&](const auto& c) { return on_contour(c.a) || on_contour(c.b); }))
                continue;
            const std::uint32_t last = first + count(i) - 1;
            successor_[last] = total() + static_cast<std::uint32_t>(nodes_.size());
            const way on{last, 0, last, successor_[first], false},
                done{last, 0, last, successor_[first], true};
            nodes_.push_back({points_[first], {on, done}});
        }
    }

    void walk(std::uint32_t from, int w, poly_polygon& result)
    {
        std::vector<std::uint32_t> path{total() + from, nodes_[from].ways[w].next};
        while (path.back() != path.front()) {
            const std::uint32_t here = path.back(), before = path[path.size() - 2];
            if (path.size() > points_.size() + nodes_.size())
                return;
            if (here < total()) {
                path.push_back(successor_[here]);
                continue;
            }
            std::optional<std::uint32_t> next;
            for (const auto& o : nodes_[here - total()].ways) {
                if (!o.walked && o.previous != before)
                    next = std::min(next.value_or(o.next), o.next);
            }
            if (!next)
                return;
            path.push_back(*next);
        }
        path.pop_back();
        std::vector<POINT> loop;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (path[i] < total()) {
                loop.push_back(points_[path[i]]);
                continue;
            }
            auto& n = nodes_[path[i] - total()];
            loop.push_back(n.at);
            const auto next = path[(i + 1) % path.size()];
            (n.ways[0].next == next && !n.ways[0].walked ? n.ways[0] : n.ways[1]).walked = true;
        }
        result.append(loop);
    }

    std::vector<POINT> points_;
    std::vector<int> counts_;
    std::map<std::uint32_t, std::uint32_t> following_;
    std::map<std::uint32_t, std::uint32_t> successor_;
    std::map<std::pair<int, int>, std::size_t> node_at_;
    std::vector<crossing> found_;
    std::vector<node> nodes_;
    int illegal_ = 0;
    int touches_ = 0;
    int ties_ = 0;
};

} // namespace klv
