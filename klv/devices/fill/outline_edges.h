#pragma once

#include "klv/devices/fill/band_cutter.h"

#include <cstddef>

namespace klv {

/// Calls take(from, to) for every edge of the outline that has a length.
template <class Take> void for_each_edge(const cut_outline& outline, Take&& take)
{
    std::size_t start = 0;
    for (const int count : outline.counts) {
        const auto size = static_cast<std::size_t>(count);
        for (std::size_t i = 0; i < size; ++i) {
            const POINT& from = outline.points[start + i];
            const POINT& to = outline.points[start + (i + 1) % size];
            if (from != to)
                take(from, to);
        }
        start += size;
    }
}

} // namespace klv
