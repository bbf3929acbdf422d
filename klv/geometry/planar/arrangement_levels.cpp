#include "klv/geometry/planar/arrangement.h"

#include <algorithm>

// From nodes to loops: the strands around each node by direction, the winding on both sides of each, and the
// pairs that turn the graph into loops of one level (the boundaries of its faces, as a doubly connected edge
// list has them, but traced without storing it).
namespace klv {

bool arrangement::spoke::same_direction(const spoke& o) const
{
    return cross(direction, o.direction) == 0 && dot(direction, o.direction) > 0;
}

// Turning from x to y, beginning with (1, 0). Strands that lie on each other count as side by side, in the
// same order as seen from the other end.
bool arrangement::spoke::operator<(const spoke& o) const
{
    const auto in_second_half = [](const offset& d) { return d.y < 0 || (d.y == 0 && d.x < 0); };
    const bool mine = in_second_half(direction), others = in_second_half(o.direction);
    if (mine != others)
        return others;
    const wide turn = cross(direction, o.direction);
    if (turn != 0)
        return turn > 0;
    return leaves && o.leaves ? strand < o.strand : leaves == o.leaves ? strand > o.strand : leaves;
}

void arrangement::gather_spokes(const node& n)
{
    spokes_.clear();
    for (const auto i : strands_of(n)) {
        const strand& s = strands_[i];
        const std::uint32_t arriving = s.at_point ? outline_.preceding(s.edge) : s.edge;
        spokes_.push_back({outline_.direction(s.edge), i, true});
        spokes_.push_back({-outline_.direction(arriving), previous(i), false});
    }
    std::sort(spokes_.begin(), spokes_.end());
}

// Strands that run both ways on the same line bound nothing.
void arrangement::cancel_strands(const node& n)
{
    if (n.crossing)
        return;
    gather_spokes(n);
    for (auto at = spokes_.begin(); at != spokes_.end();) {
        const auto end
            = std::find_if(at, spokes_.end(), [&](const spoke& s) { return !s.same_direction(*at); });
        if (end - at > 1)
            cancel_on_line({at, end});
        at = end;
    }
}

void arrangement::cancel_on_line(std::span<const spoke> line)
{
    const auto counts
        = [this](const spoke& s) { return !strands_[s.strand].cancelled && straight(s.strand); };
    const auto other_end
        = [this](const spoke& s) { return s.leaves ? end_of(s.strand) : strands_[s.strand].node; };
    // Those that leave come first.
    auto out = line.begin();
    auto in = std::find_if(line.begin(), line.end(), [](const spoke& s) { return !s.leaves; });
    const auto last_out = in;
    while (out != last_out && in != line.end()) {
        if (!counts(*out)) {
            ++out;
        } else if (!counts(*in) || other_end(*in) != other_end(*out)) {
            ++in;
        } else {
            strands_[out++->strand].cancelled = true;
            strands_[in++->strand].cancelled = true;
        }
    }
}

// Whether a strand lies on one edge.
bool arrangement::straight(std::uint32_t s) const
{
    const strand &from = strands_[s], &to = strands_[next(s)];
    if (to.at_point)
        return outline_.following(from.edge) == to.edge;
    return from.edge == to.edge && s < next(s);
}

// Strands that come in match strands that go out like brackets: the faces right of both, and between them,
// have the greater winding.
void arrangement::pair_strands(const node& n)
{
    gather_spokes(n);
    std::int32_t winding = 0;
    open_.clear();
    for (const int round : {1, 2}) {
        for (const auto& [direction, number, leaves] : spokes_) {
            strand& s = strands_[number];
            std::int32_t& level = leaves ? s.level_at_start : s.level_at_end;
            if (s.cancelled) {
                level = winding;
            } else if (leaves) {
                --winding;
                if (round == 1)
                    level = winding;
                if (open_.empty())
                    continue;
                if (strands_[open_.back()].onward == none)
                    strands_[open_.back()].onward = number;
                open_.pop_back();
            } else {
                if (round == 1)
                    level = winding;
                ++winding;
                open_.push_back(number);
            }
        }
    }
}

// The same for two edges that cross, where no more can be.
void arrangement::pair_crossing(const node& n)
{
    const std::uint32_t a = strands_of(n)[0], b = strands_of(n)[1];
    strand &from_a = strands_[a], &from_b = strands_[b];
    strand &to_a = strands_[previous(a)], &to_b = strands_[previous(b)];
    to_a.onward = b;
    to_b.onward = a;
    const bool b_turns_left = cross(outline_.direction(from_a.edge), outline_.direction(from_b.edge)) > 0;
    from_a.level_at_start = -1;
    to_b.level_at_end = -1;
    from_b.level_at_start = to_a.level_at_end = b_turns_left ? -2 : 0;
}

// From contour to contour through the nodes, then by what lies around the topmost point that was reached.
void arrangement::find_levels()
{
    contour_reached_.assign(outline_.contours().size(), false);
    unreached_nodes_ = nodes_.size();
    for (std::uint32_t c = 0; c < outline_.contours().size(); ++c)
        unreached_contours_ += is_lone(c) ? 0 : 1;
    for (const node& n : nodes_) {
        if (n.reached)
            continue;
        const std::int32_t error = error_of_base(reach_from(strands_of(n)[0]));
        for (const auto reached : reached_)
            nodes_[reached].base -= error;
    }
}

// \return the topmost point
std::uint32_t arrangement::reach_from(std::uint32_t first)
{
    const auto top_of
        = [this](std::uint32_t s) { return outline_.contours()[outline_.contour_of(strands_[s].edge)].top; };
    std::uint32_t top = top_of(first);
    reached_.clear();
    entries_.clear();
    reach(first, 0);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const std::uint32_t entry = entries_[i];
        if (higher(outline_[top_of(entry)], outline_[top]))
            top = top_of(entry);
        std::uint32_t s = entry;
        do {
            const strand& on = strands_[s];
            s = next(s);
            reach(s, nodes_[on.node].base + on.level_at_start - on.level_at_end);
        } while (s != entry && unreached_nodes_ > 0);
    }
    return top;
}

// The node where a strand begins, and through it the contours that pass there.
void arrangement::reach(std::uint32_t s, std::int32_t base)
{
    node& n = nodes_[strands_[s].node];
    if (n.reached)
        return;
    n.reached = true;
    --unreached_nodes_;
    n.base = base;
    reached_.push_back(strands_[s].node);
    if (unreached_contours_ == 0)
        return;
    for (const auto other : strands_of(n)) {
        const std::uint32_t contour = outline_.contour_of(strands_[other].edge);
        if (contour_reached_[contour])
            continue;
        contour_reached_[contour] = true;
        --unreached_contours_;
        entries_.push_back(other);
    }
}

std::int32_t arrangement::error_of_base(std::uint32_t top) const
{
    const std::int32_t outside = winding_outside(top);
    const std::uint32_t contour = outline_.contour_of(top);
    const auto first = strands_.begin() + contour_strands_[contour],
               end = strands_.begin() + contour_strands_[contour + 1];
    const auto after = std::partition_point(first, end, [&](const strand& s) { return s.edge < top; });
    if (after != end && after->edge == top && after->at_point)
        return nodes_[after->node].base - outside;
    // The strand through top begins before it.
    const auto s = static_cast<std::uint32_t>((after == first ? end : after) - strands_.begin() - 1);
    return level_of(s) - (outside - interior_on_left(top));
}

// Around the topmost point of everything that is connected.
std::int32_t arrangement::winding_outside(std::uint32_t top) const
{
    return frames_ + tree_.winding_left_of(outline_[top]);
}

bool arrangement::interior_on_left(std::uint32_t top) const
{
    return cross(outline_.direction(outline_.preceding(top)), outline_.direction(top)) > 0;
}

// A loop is closed as soon as it is back at its first node.
std::span<const POINT> arrangement::trace(std::uint32_t first)
{
    loop_.clear();
    std::uint32_t s = first;
    do {
        strand& on = strands_[s];
        on.walked = true;
        add_to_loop(nodes_[on.node].at);
        const strand& to = strands_[next(s)];
        std::uint32_t point = on.edge;
        const bool around = next(s) <= s; // through the contour's first point, if only to come back
        if (point != to.edge || around) {
            do {
                point = outline_.following(point);
                if (point != to.edge || !to.at_point)
                    add_to_loop(outline_[point]);
            } while (point != to.edge);
        }
        s = on.onward;
    } while (strands_[s].node != strands_[first].node);
    if (loop_.size() > 1 && loop_.back() == loop_.front())
        loop_.pop_back();
    return loop_;
}

void arrangement::add_to_loop(const POINT& p)
{
    if (loop_.empty() || !(loop_.back() == p))
        loop_.push_back(p);
}

} // namespace klv
