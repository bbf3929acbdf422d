#include "klv/attributes/font_spec.h"

#include "klv/base/wrapping.h"
#include "klv/streams/stream.h"

namespace klv {

vFONTSPEC::vFONTSPEC(const vSTRING& name, vFONTSTYLE style, const int& size, const vREAL& expansion,
    unsigned short, vFONT_HEIGHT kind, const vANGLE& angle) noexcept
    : name_(name)
    , style_(style)
    , expansion_(expansion)
    , angle_(angle)
{
    if (kind == vFONT_CHARACTER_HEIGHT)
        height_ = wrap_neg(wrap_abs(size));
    else if (kind == vFONT_CELL_HEIGHT)
        height_ = wrap_abs(size);
}

vSTREAM& vFONTSPEC::operator>>(vSTREAM& out) const noexcept
{
    constexpr std::int32_t reserved = 0;
    name_ >> out;
    out << static_cast<std::uint16_t>(style_) << height_;
    expansion_ >> out;
    out << reserved;
    return angle_ >> out;
}

vSTREAM& vFONTSPEC::operator<<(vSTREAM& in) noexcept
{
    name_ << in;
    style_ = static_cast<vFONTSTYLE>(in.ReadUWord());
    height_ = in.ReadSLong();
    expansion_ << in;
    static_cast<void>(in.ReadSLong());
    return angle_ << in;
}

} // namespace klv
