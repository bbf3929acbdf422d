#include "klv/gdi/text/text_line.h"

#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>

namespace klv::gdi {

text_placement::text_placement(POINT reference, std::uint32_t align, const realised_font& font, pixels length)
    : cosine_(font.cosine())
    , sine_(font.sine())
{
    double back = 0;
    if ((align & TA_CENTER) == TA_CENTER)
        back = static_cast<double>(length / 2);
    else if ((align & TA_CENTER) == TA_RIGHT)
        back = static_cast<double>(length);
    double drop = font.measures().ascent;
    if ((align & TA_BASELINE) == TA_BASELINE)
        drop = 0;
    else if ((align & TA_BASELINE) == TA_BOTTOM)
        drop = -font.measures().descent;
    start_x_ = reference.x - back * cosine_ + drop * sine_;
    start_y_ = reference.y - back * -sine_ + drop * cosine_;
}

POINT text_placement::from(double x, double y, double distance, double depth) const
{
    constexpr double limit = 1 << 28;
    const auto pixel = [=](double v) { return static_cast<LONG>(std::lround(std::clamp(v, -limit, limit))); };
    return {pixel(x + cosine_ * distance + sine_ * depth), pixel(y + -sine_ * distance + cosine_ * depth)};
}

text_line::text_line(
    const drawing_state& state, selected_font selected, POINT at, std::string_view text, const LONG* advances)
    : selected_(std::move(selected))
    , run_(state, selected_, text, advances)
    , length_(run_.length())
    , reference_(state.map.to_device((state.text_align & TA_UPDATECP) != 0 ? state.position : at))
    , place_(reference_, state.text_align, *selected_.font, length_)
{
}

POINT text_line::end_position(const drawing_state& state) const
{
    switch (state.text_align & TA_CENTER) {
    case TA_CENTER:
        return state.position;
    case TA_RIGHT:
        return state.map.to_logical(place_.along(reference_, static_cast<double>(-length_)));
    default:
        return state.map.to_logical(place_.along(reference_, static_cast<double>(length_)));
    }
}

} // namespace klv::gdi
