#include "klv/devices/line/line_engine.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstdlib>

/// Thin lines of filled squares, one at every pixel of the line.
namespace klv {
namespace {

// One axis of a line: where it starts and which way it goes.
struct axis {
    std::int64_t from;
    std::int64_t size;
    int sign;

    axis(LONG a, LONG b) noexcept
        : from(a)
        , size(std::abs(std::int64_t{b} - a))
        , sign(b < a ? -1 : 1)
    {
    }
    LONG at(std::int64_t step) const noexcept { return static_cast<LONG>(from + sign * step); }
    // The steps whose position lies in low to high.
    std::int64_t first_step(LONG low, LONG high) const noexcept
    {
        return std::max<std::int64_t>(0, sign > 0 ? low - from : from - high);
    }
    std::int64_t last_step(LONG low, LONG high) const noexcept
    {
        return std::min(size - 1, sign > 0 ? high - from : from - low);
    }
};

} // namespace

void LINEINFO::LineDDA(const POINT& from, const POINT& to) noexcept
{
    const int before = width_ >> 1;
    if (from.x == to.x || from.y == to.y) {
        const RECT box{std::max(std::min(from.x, to.x), reach_.left),
            std::max(std::min(from.y, to.y), reach_.top), std::min(std::max(from.x, to.x), reach_.right),
            std::min(std::max(from.y, to.y), reach_.bottom)};
        if (box.left <= box.right && box.top <= box.bottom)
            PatBlt(dc_, box.left - before, box.top - before, box.right - box.left + width_,
                box.bottom - box.top + width_, PATCOPY);
        return;
    }

    // Steps along the longer axis; squares that share a position on the shorter one are painted together.
    const axis x(from.x, to.x);
    const axis y(from.y, to.y);
    const bool flat = x.size >= y.size;
    const axis& major = flat ? x : y;
    const axis& minor = flat ? y : x;
    const std::int64_t first
        = flat ? major.first_step(reach_.left, reach_.right) : major.first_step(reach_.top, reach_.bottom);
    const std::int64_t last
        = flat ? major.last_step(reach_.left, reach_.right) : major.last_step(reach_.top, reach_.bottom);
    const auto minor_step
        = [&](std::int64_t step) { return (2 * step * minor.size + major.size) / (2 * major.size); };

    for (std::int64_t run = first; run <= last;) {
        const std::int64_t across = minor_step(run);
        // The first step that rounds to a further position.
        const std::int64_t next = ((2 * across + 1) * major.size + 2 * minor.size - 1) / (2 * minor.size);
        const std::int64_t end = std::min(std::max(next, run + 1), last + 1);
        const LONG low = std::min(major.at(run), major.at(end - 1));
        const int size = static_cast<int>(end - run) - 1 + width_;
        if (flat)
            PatBlt(dc_, low - before, minor.at(across) - before, size, width_, PATCOPY);
        else
            PatBlt(dc_, minor.at(across) - before, low - before, width_, size, PATCOPY);
        run = end;
    }
}

} // namespace klv
