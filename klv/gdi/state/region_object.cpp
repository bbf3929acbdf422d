#include "klv/gdi/state/region_object.h"

#include "klv/gdi/gdi.h"

#include <algorithm>

namespace klv::gdi {

INT complexity(const region& r)
{
    if (r.empty())
        return NULLREGION;
    return r.is_rectangle() ? SIMPLEREGION : COMPLEXREGION;
}

void region_builder::draw(std::span<const span> spans)
{
    for (const span& s : spans) {
        if (row_ < boxes_.size() && boxes_[row_].y1 != s.y)
            close_row();
        if (row_ < boxes_.size() && boxes_.back().x2 == s.x0)
            boxes_.back().x2 = s.x1;
        else
            boxes_.push_back({s.x0, s.y, s.x1, s.y + 1});
    }
}

// A row of the same runs as the band above it prolongs that band.
void region_builder::close_row()
{
    const std::size_t count = boxes_.size() - row_;
    const auto band = boxes_.begin() + static_cast<std::ptrdiff_t>(last_band_);
    const auto row = boxes_.begin() + static_cast<std::ptrdiff_t>(row_);
    const auto same_run = [](const box& a, const box& b) { return a.x1 == b.x1 && a.x2 == b.x2; };
    if (row_ - last_band_ == count && count != 0 && band->y2 == row->y1
        && std::equal(band, row, row, boxes_.end(), same_run)) {
        for (auto b = band; b != row; ++b)
            ++b->y2;
        boxes_.resize(row_);
    } else {
        last_band_ = row_;
        row_ = boxes_.size();
    }
}

region region_builder::take()
{
    close_row();
    region result{std::span<const box>(boxes_)};
    boxes_.clear();
    last_band_ = row_ = 0;
    return result;
}

} // namespace klv::gdi
