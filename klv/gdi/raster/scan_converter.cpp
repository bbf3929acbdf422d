#include "klv/gdi/raster/scan_converter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace klv::gdi {

namespace {

// Within these limits every product of the edge set-up fits in 64 bits and every stepped value in 32.
constexpr std::int32_t pixel_limit = 1 << 21;
constexpr fixed coordinate_limit = pixel_limit * fixed_one;
constexpr std::size_t few_edges = 24;

constexpr std::int64_t floor_div(std::int64_t a, std::int64_t b)
{
    const std::int64_t q = a / b;
    return q * b > a ? q - 1 : q;
}

constexpr std::int32_t floor_pixel(fixed v)
{
    return v >= 0 ? v / fixed_one : -((fixed_one - 1 - v) / fixed_one);
}
/// First row whose centre is at or below y.
constexpr std::int32_t first_row_from(fixed y) { return floor_pixel(y + fixed_half - 1); }

bool is_near(const POINT& p)
{
    return p.x >= -pixel_limit && p.x <= pixel_limit && p.y >= -pixel_limit && p.y <= pixel_limit;
}

fixed to_fixed(double v) { return static_cast<fixed>(std::lround(v)); }

} // namespace

void scan_converter::begin(const box& clip)
{
    clip_ = intersection(clip, {-pixel_limit, -pixel_limit, pixel_limit, pixel_limit});
    edges_.clear();
}

void scan_converter::add_polygon(std::span<const POINT> corners)
{
    if (corners.size() < 3)
        return;
    if (!std::all_of(corners.begin(), corners.end(), is_near)) {
        add_far_polygon(corners);
        return;
    }
    POINT last = corners.back();
    for (const POINT& p : corners) {
        add_edge(last.x * fixed_one, last.y * fixed_one, p.x * fixed_one, p.y * fixed_one);
        last = p;
    }
}

void scan_converter::add_polygon(std::span<const fixed_point> corners)
{
    if (corners.size() < 3)
        return;
    const auto near = [](fixed v) { return v >= -coordinate_limit && v <= coordinate_limit; };
    fixed_point last = corners.back();
    for (const fixed_point& p : corners) {
        if (near(last.x) && near(last.y) && near(p.x) && near(p.y))
            add_edge(last.x, last.y, p.x, p.y);
        else
            add_far_edge(last.x, last.y, p.x, p.y);
        last = p;
    }
}

void scan_converter::add_far_polygon(std::span<const POINT> corners)
{
    POINT last = corners.back();
    for (const POINT& p : corners) {
        add_far_edge(double{fixed_one} * last.x, double{fixed_one} * last.y, double{fixed_one} * p.x,
            double{fixed_one} * p.y);
        last = p;
    }
}

// What sticks out above and below is cut off; what sticks out at a side is replaced by its projection on
// that side, which keeps the winding of everything within the limits.
void scan_converter::add_far_edge(double x0, double y0, double x1, double y1)
{
    constexpr double limit = coordinate_limit;
    if (y0 == y1)
        return;
    const double slope = (x1 - x0) / (y1 - y0);
    const auto x_at = [&](double y) { return x0 + slope * (y - y0); };
    const double top = std::clamp(y0, -limit, limit);
    const double bottom = std::clamp(y1, -limit, limit);

    // The rows where the edge passes the sides, in the direction of the edge.
    double turns[4] = {top, top, bottom, bottom};
    if (slope != 0) {
        const auto y_at = [&](double x) { return y0 + (x - x0) / slope; };
        const double low = std::min(top, bottom);
        const double high = std::max(top, bottom);
        turns[1] = std::clamp(y_at(-limit), low, high);
        turns[2] = std::clamp(y_at(limit), low, high);
        if ((turns[1] > turns[2]) == (bottom > top))
            std::swap(turns[1], turns[2]);
    }
    for (int i = 0; i < 3; ++i) {
        const double xa = std::clamp(x_at(turns[i]), -limit, limit);
        const double xb = std::clamp(x_at(turns[i + 1]), -limit, limit);
        add_edge(to_fixed(xa), to_fixed(turns[i]), to_fixed(xb), to_fixed(turns[i + 1]));
    }
}

void scan_converter::add_edge(fixed x0, fixed y0, fixed x1, fixed y1)
{
    std::int32_t winding = 1;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        winding = -1;
    }
    const std::int32_t first_row = std::max(first_row_from(y0), clip_.y1);
    const std::int32_t end_row = std::min(first_row_from(y1), clip_.y2);
    if (first_row >= end_row)
        return;

    // Slope and position are rounded down, never up: where the edge meets a pixel centre exactly, that
    // centre stays inside.
    constexpr std::int64_t one = std::int64_t{1} << 32;
    const std::int64_t step = floor_div(std::int64_t{x1 - x0} * one, y1 - y0);
    const std::int64_t down = std::int64_t{first_row} * fixed_one + fixed_half - y0;
    const std::int64_t x = x0 * (one / fixed_one) + (down * step >> 4);
    static_assert(fixed_one == 1 << 4);
    edges_.push_back({{x + one / 2 - 1, step, end_row, winding}, first_row});
}

void scan_converter::sort_edges()
{
    if (edges_.size() <= few_edges) {
        for (std::size_t i = 1; i < edges_.size(); ++i) {
            const starting_edge e = edges_[i];
            std::size_t at = i;
            for (; at != 0 && edges_[at - 1].first_row > e.first_row; --at)
                edges_[at] = edges_[at - 1];
            edges_[at] = e;
        }
        return;
    }
    const auto by_row
        = [](const starting_edge& a, const starting_edge& b) { return a.first_row < b.first_row; };
    const auto [top, bottom] = std::minmax_element(edges_.begin(), edges_.end(), by_row);
    const std::int32_t first = top->first_row;
    const auto rows = static_cast<std::size_t>(bottom->first_row - first) + 1;
    if (rows > edges_.size() * 4 + 4096) {
        std::sort(edges_.begin(), edges_.end(), by_row);
        return;
    }
    // Counting sort by first row.
    row_starts_.assign(rows + 1, 0);
    const auto row_of = [&](const starting_edge& e) { return static_cast<std::size_t>(e.first_row - first); };
    for (const starting_edge& e : edges_)
        ++row_starts_[row_of(e) + 1];
    for (std::size_t i = 1; i < row_starts_.size(); ++i)
        row_starts_[i] += row_starts_[i - 1];
    sorted_.resize(edges_.size());
    for (const starting_edge& e : edges_)
        sorted_[row_starts_[row_of(e)]++] = e;
    edges_.swap(sorted_);
}

// Takes up edges_[first, end), which start in one row.
void scan_converter::activate(std::size_t first, std::size_t end)
{
    const auto by_x = [](const edge& a, const edge& b) { return a.x < b.x; };
    if (end - first == 2) {
        if (by_x(edges_[first + 1], edges_[first]))
            std::swap(edges_[first], edges_[first + 1]);
    } else if (end - first > 2) {
        const auto begin = edges_.begin();
        std::sort(begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end), by_x);
    }
    merge({edges_.data() + first, end - first});
}

// From the back, so that every edge moves once.
void scan_converter::merge(std::span<const starting_edge> starting)
{
    std::size_t old = active_.size();
    active_.resize(old + starting.size());
    std::size_t to = active_.size();
    for (std::size_t n = starting.size(); n != 0;) {
        if (old != 0 && active_[old - 1].x > starting[n - 1].x)
            active_[--to] = active_[--old];
        else
            active_[--to] = starting[--n];
    }
}

// Drops the edges that end, steps the others, and restores the order, all in one pass. From row to row the
// order changes little, and insertion restores it in passing; where many edges cross at once that would be
// slow, so its moves are counted.
void scan_converter::step_active(std::int32_t next_row)
{
    edge* const active = active_.data();
    const std::size_t count = active_.size();
    std::size_t moves_left = 4 * count;
    std::size_t kept = 0;
    std::int64_t rightmost = INT64_MIN;
    for (std::size_t i = 0; i < count; ++i) {
        if (active[i].end_row == next_row)
            continue;
        if (kept != i)
            active[kept] = active[i];
        const std::int64_t x = active[kept].x += active[kept].step;
        if (x >= rightmost) {
            rightmost = x;
        } else if (moves_left != 0) {
            const edge passed = active[kept];
            std::size_t at = kept;
            for (; at != 0 && active[at - 1].x > x; --at)
                active[at] = active[at - 1];
            active[at] = passed;
            moves_left -= std::min(moves_left, kept - at);
        }
        ++kept;
    }
    active_.resize(kept);
    if (moves_left == 0)
        std::sort(active_.begin(), active_.end(), [](const edge& a, const edge& b) { return a.x < b.x; });
}

template <fill_rule Rule> void scan_converter::emit_row(std::int32_t y, span_batch& out) const
{
    const edge* const active = active_.data();
    const auto clipped
        = [left = clip_.x1, right = clip_.x2](const edge& e) { return std::clamp(e.pixel(), left, right); };
    if constexpr (Rule == fill_rule::even_odd) {
        const std::size_t runs = active_.size() / 2;
        if (active_.front().pixel() >= clip_.x1 && active_.back().pixel() <= clip_.x2)
            out.add_row(y, runs, [active](std::size_t i, std::int32_t& x0, std::int32_t& x1) {
                x0 = active[2 * i].pixel();
                x1 = active[2 * i + 1].pixel();
            });
        else
            out.add_row(y, runs, [&](std::size_t i, std::int32_t& x0, std::int32_t& x1) {
                x0 = clipped(active[2 * i]);
                x1 = clipped(active[2 * i + 1]);
            });
    } else {
        std::int32_t winding = 0;
        std::int32_t start = 0;
        for (const edge& e : active_) {
            if (winding == 0)
                start = clipped(e);
            winding += e.winding;
            if (winding == 0 && start < clipped(e))
                out.add(y, start, clipped(e));
        }
    }
}

// Both rules fill between two edges, whichever is on the left; most rows of most figures are this.
void scan_converter::fill_between(
    edge& a, edge& b, std::int32_t y, std::int32_t end_row, span_batch& out) const
{
    for (; y < end_row; ++y) {
        const std::int32_t x0 = std::max(std::min(a.pixel(), b.pixel()), clip_.x1);
        const std::int32_t x1 = std::min(std::max(a.pixel(), b.pixel()), clip_.x2);
        if (x0 < x1)
            out.add(y, x0, x1);
        a.x += a.step;
        b.x += b.step;
    }
}

// Every row of a closed figure meets an even number of edges, so of three the longest lies beside the other
// two, one after the other, and two lie side by side.
void scan_converter::fill_triangle(span_batch& out)
{
    const auto swap_unless = [](bool in_order, starting_edge& a, starting_edge& b) {
        if (!in_order)
            std::swap(a, b);
    };
    starting_edge* const e = edges_.data();
    const std::size_t count = edges_.size();
    for (std::size_t i = 1; i < count; ++i)
        swap_unless(e[0].end_row - e[0].first_row >= e[i].end_row - e[i].first_row, e[0], e[i]);
    if (count == 3)
        swap_unless(e[1].first_row <= e[2].first_row, e[1], e[2]);
    edge longest = e[0];
    for (std::size_t i = 1; i < count; ++i)
        fill_between(longest, e[i], e[i].first_row, e[i].end_row, out);
}

void scan_converter::fill_pair(std::int32_t y, std::int32_t end_row, span_batch& out)
{
    edge left = active_[0];
    edge right = active_[1];
    fill_between(left, right, y, end_row, out);
    if (left.x > right.x)
        std::swap(left, right);
    active_.clear();
    for (const edge& e : {left, right})
        if (e.end_row > end_row)
            active_.push_back(e);
}

// A ring or a letter's bowl: two runs a row, as long as the edges keep their order. Answers the first row
// that is left.
std::int32_t scan_converter::fill_ring(std::int32_t y, std::int32_t end_row, span_batch& out)
{
    std::array<edge, 4> edges;
    std::copy_n(active_.begin(), edges.size(), edges.begin());
    const auto clipped
        = [left = clip_.x1, right = clip_.x2](const edge& e) { return std::clamp(e.pixel(), left, right); };
    const auto in_order
        = [&] { return edges[0].x <= edges[1].x && edges[1].x <= edges[2].x && edges[2].x <= edges[3].x; };
    for (; y < end_row && in_order(); ++y) {
        for (const std::size_t i : {0U, 2U}) {
            const std::int32_t x0 = clipped(edges[i]);
            const std::int32_t x1 = clipped(edges[i + 1]);
            if (x0 < x1)
                out.add(y, x0, x1);
        }
        for (edge& e : edges)
            e.x += e.step;
    }
    std::sort(edges.begin(), edges.end(), [](const edge& a, const edge& b) { return a.x < b.x; });
    active_.clear();
    std::copy_if(edges.begin(), edges.end(), std::back_inserter(active_),
        [y](const edge& e) { return e.end_row > y; });
    return y;
}

template <fill_rule Rule> void scan_converter::run_rows(span_batch& out)
{
    // The row where an active edge ends or the next one starts.
    const auto next_event = [this](std::size_t next) {
        std::int32_t row = next < edges_.size() ? edges_[next].first_row : clip_.y2;
        for (const edge& e : active_)
            row = std::min(row, e.end_row);
        return row;
    };
    active_.clear();
    std::size_t next = 0;
    std::int32_t y = 0;
    while (next < edges_.size() || !active_.empty()) {
        if (active_.empty())
            y = edges_[next].first_row;
        if (const std::size_t first = next; next < edges_.size() && edges_[next].first_row == y) {
            while (next < edges_.size() && edges_[next].first_row == y)
                ++next;
            activate(first, next);
        }
        if (active_.size() == 2) {
            const std::int32_t end_row = next_event(next);
            fill_pair(y, end_row, out);
            y = end_row;
        } else if (Rule == fill_rule::even_odd && active_.size() == 4) {
            y = fill_ring(y, next_event(next), out);
        } else {
            emit_row<Rule>(y, out);
            step_active(++y);
        }
    }
}

void scan_converter::run(fill_rule rule, span_sink& sink)
{
    if (edges_.empty())
        return;
    span_batch out(sink);
    if (edges_.size() <= 3) {
        fill_triangle(out);
    } else {
        sort_edges();
        if (rule == fill_rule::even_odd)
            run_rows<fill_rule::even_odd>(out);
        else
            run_rows<fill_rule::non_zero>(out);
    }
    out.flush();
}

} // namespace klv::gdi
