#include "klv/attributes/line_spec.h"

#include "klv/streams/stream.h"

#include <algorithm>
#include <optional>

namespace klv {

namespace {

using dash_pattern = std::array<std::uint8_t, vLINESPEC::pattern_length>;

// Dash, gap, dash, gap, ...
std::optional<dash_pattern> stock_pattern(vLINETYPE type)
{
    switch (type) {
    case vLINE_DOT:
        return dash_pattern{3, 3, 0, 0, 0, 0};
    case vLINE_DASH:
        return dash_pattern{5, 3, 0, 0, 0, 0};
    case vLINE_DASH_DOT:
        return dash_pattern{5, 3, 3, 3, 0, 0};
    case vLINE_DASH_DOT_DOT:
        return dash_pattern{5, 3, 3, 3, 3, 3};
    default:
        return std::nullopt;
    }
}

} // namespace

vLINESPEC::vLINESPEC(vLINETYPE type, const vCOLOUR& colour, const int& width, vCORNERTYPE corner,
    vDASHTYPE dash, const unsigned char* pattern, int startArrow, int endArrow) noexcept
    : colour_(colour)
    , width_(width)
    , corner_(corner)
    , dash_(dash)
    , start_arrow_(startArrow)
    , end_arrow_(endArrow)
{
    LineType(type, pattern);
}

void vLINESPEC::LineType(vLINETYPE type, const unsigned char* pattern) noexcept
{
    type_ = type;
    if (type == vLINE_NONE)
        width_ = 0;
    else if (type == vLINE_USER && pattern != nullptr)
        std::copy_n(pattern, pattern_length, pattern_.begin());
    else if (const auto stock = stock_pattern(type))
        pattern_ = *stock;
}

vSTREAM& vLINESPEC::operator>>(vSTREAM& out) const noexcept
{
    colour_ >> out;
    out << width_ << static_cast<std::uint16_t>(type_) << static_cast<std::uint16_t>(corner_)
        << static_cast<std::uint16_t>(dash_);
    out.WriteBlock(pattern_.data(), pattern_length);
    return out;
}

vSTREAM& vLINESPEC::operator<<(vSTREAM& in) noexcept
{
    colour_ << in;
    width_ = in.ReadSLong();
    type_ = static_cast<vLINETYPE>(in.ReadUWord());
    corner_ = static_cast<vCORNERTYPE>(in.ReadUWord());
    dash_ = static_cast<vDASHTYPE>(in.ReadUWord());
    in.ReadByteString(pattern_.data(), pattern_length);
    start_arrow_ = no_arrow;
    end_arrow_ = no_arrow;
    return in;
}

} // namespace klv
