#include "klv/geometry/planar/crossings.h"

#include "klv/base/wrapping.h"

#include <array>
#include <numeric>

// All pairs of edges that meet, by walking a bounding-volume tree against itself instead of a plane sweep:
// the pairs come in no order, but each is decided alone and exactly (the signs of 128-bit cross products, as
// the orientation tests of computational geometry), and sorting them afterwards by counting keys costs less
// than keeping the order of a sweep would.
namespace klv {

namespace {

class crossing_search {
public:
    crossing_search(const edge_outline& outline, const outline_tree& tree)
        : outline_(outline)
        , tree_(tree)
    {
    }
    outline_crossings run(bool within_contours);

private:
    void compare_runs(std::uint32_t i, std::uint32_t j);
    void compare(std::uint32_t a, std::uint32_t b);
    void sort(geometry_list<edge_pair>& pairs);
    template <typename KEY> void sort_by(geometry_list<edge_pair>& pairs, std::size_t keys, KEY&& key_of);

    const edge_outline& outline_;
    const outline_tree& tree_;
    bool within_contours_ = true;
    outline_crossings found_;
    geometry_list<edge_pair> sorted_;
    geometry_list<std::uint32_t> places_;
};

outline_crossings crossing_search::run(bool within_contours)
{
    within_contours_ = within_contours;
    tree_.visit_pairs(within_contours, [this](std::uint32_t i, std::uint32_t j) { compare_runs(i, j); });
    sort(found_.crossings);
    sort(found_.overlaps);
    return std::move(found_);
}

void crossing_search::compare_runs(std::uint32_t i, std::uint32_t j)
{
    const auto &r = tree_[i], &s = tree_[j];
    std::array<edge_box, outline_tree::edges_in_run> boxes;
    for (std::uint32_t k = 0; k < s.count; ++k)
        boxes[k] = edge_box::of(outline_[s.first + k], outline_.end(s.first + k));
    for (std::uint32_t a = r.first; a < r.first + r.count; ++a) {
        const edge_box box = edge_box::of(outline_[a], outline_.end(a));
        if (!box.meets(tree_.box_of(j)))
            continue;
        for (std::uint32_t k = i == j ? a - r.first + 1 : 0; k < s.count; ++k) {
            if (box.meets(boxes[k]))
                compare(std::min(a, s.first + k), std::max(a, s.first + k));
        }
    }
}

// Two edges whose boxes meet.
void crossing_search::compare(std::uint32_t a, std::uint32_t b)
{
    if (outline_.contour_of(a) == outline_.contour_of(b)
        && (!within_contours_ || outline_.following(a) == b || outline_.following(b) == a))
        return;
    const POINT &a1 = outline_[a], &a2 = outline_.end(a), &b1 = outline_[b], &b2 = outline_.end(b);
    const offset along_a = offset::between(a1, a2), along_b = offset::between(b1, b2);
    const int b1_side = sign_of(cross(along_a, offset::between(a1, b1)));
    const int b2_side = sign_of(cross(along_a, offset::between(a1, b2)));
    if (b1_side * b2_side > 0)
        return;
    const int a1_side = sign_of(cross(along_b, offset::between(b1, a1)));
    const int a2_side = sign_of(cross(along_b, offset::between(b1, a2)));
    if (a1_side * a2_side > 0)
        return;
    const bool on_one_line = b1_side == 0 && b2_side == 0;
    (on_one_line && !(a1 == b1) ? found_.overlaps : found_.crossings).push_back({a, b});
}

// Stable counting sorts, the least important key first.
void crossing_search::sort(geometry_list<edge_pair>& pairs)
{
    sort_by(pairs, outline_.size(), [](const edge_pair& p) { return p.b; });
    sort_by(pairs, outline_.size(), [](const edge_pair& p) { return p.a; });
    const std::size_t contours = outline_.contours().size();
    if (contours == 1)
        return;
    sort_by(pairs, contours, [this](const edge_pair& p) { return outline_.contour_of(p.b); });
    sort_by(pairs, contours, [this](const edge_pair& p) { return outline_.contour_of(p.a); });
}

template <typename KEY>
void crossing_search::sort_by(geometry_list<edge_pair>& pairs, std::size_t keys, KEY&& key_of)
{
    if (pairs.size() < 2)
        return;
    places_.assign(keys + 1, 0);
    for (const auto& p : pairs)
        ++places_[key_of(p) + 1];
    std::partial_sum(places_.begin(), places_.end(), places_.begin());
    sorted_.resize(pairs.size());
    for (const auto& p : pairs)
        sorted_[places_[key_of(p)]++] = p;
    pairs.swap(sorted_);
}

} // namespace

outline_crossings find_crossings(const edge_outline& outline, const outline_tree& tree, bool within_contours)
{
    return crossing_search(outline, tree).run(within_contours);
}

POINT point_on_edge(const edge_outline& outline, std::uint32_t edge, double t)
{
    const offset along = outline.direction(edge);
    const POINT& from = outline[edge];
    return {wrap_add(from.x, round_wrapped(static_cast<double>(along.x) * t)),
        wrap_add(from.y, round_wrapped(static_cast<double>(along.y) * t))};
}

POINT crossing_point(const edge_outline& outline, const edge_pair& pair)
{
    const offset apart = offset::between(outline[pair.a], outline[pair.b]);
    const offset along_b = outline.direction(pair.b);
    const wide whole = cross(outline.direction(pair.a), along_b);
    return whole == 0 ? outline[pair.a]
                      : point_on_edge(outline, pair.a, fraction::of(cross(apart, along_b), whole).rounded());
}

} // namespace klv
