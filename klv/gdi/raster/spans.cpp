#include "klv/gdi/raster/spans.h"

#include <algorithm>

namespace klv::gdi {

// Figures come row by row, so the band asked for is mostly the one at hand or the next.
void clip_stage::find_band(std::int32_t y)
{
    if (band_ < band_end_ && boxes_[band_].y1 <= y && y < boxes_[band_].y2)
        return;
    auto first = boxes_.begin() + static_cast<std::ptrdiff_t>(band_end_);
    const bool is_next = first != boxes_.end() && first->y1 <= y && y < first->y2;
    if (!is_next)
        first = std::partition_point(boxes_.begin(), boxes_.end(), [y](const box& b) { return b.y2 <= y; });
    band_ = static_cast<std::size_t>(first - boxes_.begin());
    band_end_ = band_;
    if (first == boxes_.end() || first->y1 > y)
        return;
    while (band_end_ < boxes_.size() && boxes_[band_end_].y1 == first->y1)
        ++band_end_;
}

void clip_stage::draw(std::span<const span> spans)
{
    for (const span& s : spans) {
        find_band(s.y);
        const auto band = boxes_.subspan(band_, band_end_ - band_);
        auto b = std::partition_point(band.begin(), band.end(), [&](const box& c) { return c.x2 <= s.x0; });
        for (; b != band.end() && b->x1 < s.x1; ++b)
            out_.add(s.y, std::max(s.x0, b->x1), std::min(s.x1, b->x2));
    }
    out_.flush();
}

void draw_region(const region& area, span_sink& sink)
{
    span_batch out(sink);
    const auto boxes = area.boxes();
    for (std::size_t i = 0; i < boxes.size();) {
        std::size_t end = i + 1;
        while (end < boxes.size() && boxes[end].y1 == boxes[i].y1)
            ++end;
        for (std::int32_t y = boxes[i].y1; y < boxes[i].y2; ++y)
            for (std::size_t b = i; b < end; ++b)
                out.add(y, boxes[b].x1, boxes[b].x2);
        i = end;
    }
    out.flush();
}

} // namespace klv::gdi
