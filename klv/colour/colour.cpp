#include "klv/colour/colour.h"

#include "klv/base/muldiv.h"
#include "klv/colour/pantone/pantone_library.h"
#include "klv/streams/stream.h"

#include <algorithm>

namespace klv {

// Where each component lies in the value.
namespace {

constexpr std::uint32_t byte_mask = 0xFF;
constexpr unsigned red_shift = 0, green_shift = 8, blue_shift = 16;
constexpr unsigned hue_shift = 0, light_shift = 16, saturation_shift = 24;
constexpr std::uint32_t hue_mask = 0xFFFF;
constexpr unsigned black_shift = 0, yellow_shift = 8, magenta_shift = 16, cyan_shift = 24;
constexpr unsigned marker_shift = 0, simtype_shift = 14, index_shift = 20;
constexpr std::uint32_t marker_mask = 0x3FFF, simtype_mask = 0x3F, index_mask = 0xFFF;

constexpr int byte_at(std::uint32_t value, unsigned shift)
{
    return static_cast<int>(value >> shift & byte_mask);
}
constexpr std::uint32_t pack(int component, unsigned shift)
{
    return (static_cast<std::uint32_t>(component) & byte_mask) << shift;
}
constexpr std::uint32_t pack_rgb(int red, int green, int blue)
{
    return pack(red, red_shift) | pack(green, green_shift) | pack(blue, blue_shift);
}

constexpr std::uint32_t pack_cmyk(int cyan, int magenta, int yellow, int black)
{
    return pack(cyan, cyan_shift) | pack(magenta, magenta_shift) | pack(yellow, yellow_shift)
        | pack(black, black_shift);
}

constexpr int no_quotient = 0x7FFFFFFF;

/// a * b / c, rounded half away from zero.
constexpr int MulDivRound(int a, int b, int c)
{
    if (a == 0 || b == 0)
        return 0;
    if (c == 0)
        return no_quotient;
    return static_cast<int>(mul_div(a, b, c));
}

/// a * b / c, truncated toward zero.
constexpr int MulDivTrunc(int a, int b, int c)
{
    return a == 0 || b == 0 ? 0 : c == 0 ? no_quotient : a * b / c;
}

} // namespace

vCOLOUR::vCOLOUR(const vCOLOUR& a, const vCOLOUR& b, short i, short n) noexcept
{
    const auto between = [=](int from, int to) { return n == 0 ? from : from + (to - from) * i / n; };
    const vCOLOUR from = a.RGBFormat();
    const vCOLOUR to = b.RGBFormat();
    value_ = pack_rgb(
        between(from.Red(), to.Red()), between(from.Green(), to.Green()), between(from.Blue(), to.Blue()));
}

// Tint

std::uint32_t vCOLOUR::ApplyTint(std::uint32_t value) const noexcept
{
    const int paler = full_tint - tint_;
    if (paler == 0)
        return value;
    const auto toward = [=](unsigned shift, int top) {
        const int c = byte_at(value, shift);
        return pack(c + (top - c) * paler / full_tint, shift);
    };
    switch (type_) {
    case vCOLOUR_RGB:
        return toward(red_shift, 255) | toward(green_shift, 255) | toward(blue_shift, 255);
    case vCOLOUR_HLS:
        return (value & ~(byte_mask << light_shift)) | toward(light_shift, 100);
    case vCOLOUR_CMYK:
        return toward(cyan_shift, 0) | toward(magenta_shift, 0) | toward(yellow_shift, 0)
            | toward(black_shift, 0);
    default:
        return value;
    }
}

unsigned char vCOLOUR::RgbToTint() const noexcept
{
    const std::uint32_t rgb = ApplyTint(value_);
    const int light
        = 30 * byte_at(rgb, red_shift) + 59 * byte_at(rgb, green_shift) + 11 * byte_at(rgb, blue_shift);
    return static_cast<unsigned char>(100 - (light + 127) / 255);
}

// Conversions between models

vCOLOUR vCOLOUR::converted(vCOLOURTYPE type, std::uint32_t value) const noexcept
{
    return {type, value, tint_, Spot()};
}

vCOLOUR vCOLOUR::RgbToHls() const noexcept
{
    if (type_ != vCOLOUR_RGB)
        return {vCOLOUR_HLS, 0, 0, 0};
    const int r = byte_at(value_, red_shift);
    const int g = byte_at(value_, green_shift);
    const int b = byte_at(value_, blue_shift);
    const int most = std::max({r, g, b});
    const int sum = most + std::min({r, g, b});
    const int range = most - std::min({r, g, b});

    const int light = MulDivRound(sum, 50, 255);
    int hue = 0;
    int saturation = 0;
    if (range != 0) {
        saturation = MulDivRound(range, 100, light > 50 ? 510 - sum : sum);
        const int rc = MulDivRound(60, most - r, range);
        const int gc = MulDivRound(60, most - g, range);
        const int bc = MulDivRound(60, most - b, range);
        hue = most == r ? bc - gc : most == g ? rc + 120 - bc : gc + 240 - rc;
        hue += hue < 0 ? 360 : 0;
    }
    return converted(vCOLOUR_HLS,
        static_cast<std::uint32_t>(hue) << hue_shift | pack(light, light_shift)
            | pack(saturation, saturation_shift));
}

vCOLOUR vCOLOUR::HlsToRgb() const noexcept
{
    const int hue = static_cast<int>(value_ >> hue_shift & hue_mask);
    const int light = byte_at(value_, light_shift);
    const int saturation = byte_at(value_, saturation_shift);
    if (saturation == 0) {
        const int grey = MulDivRound(light, 255, 100);
        return converted(vCOLOUR_RGB, pack_rgb(grey, grey, grey));
    }
    const int high = light > 50 ? light + saturation - MulDivRound(light, saturation, 100)
                                : MulDivRound(light, saturation + 100, 100);
    const int low = 2 * light - high;
    const auto component = [=](int h) {
        h += h > 360 ? -360 : h < 0 ? 360 : 0;
        const int v = h < 60 ? low + MulDivRound(high - low, h, 60)
            : h < 180        ? high
            : h < 240        ? low + MulDivRound(high - low, 240 - h, 60)
                             : low;
        return MulDivRound(v, 255, 100);
    };
    return converted(vCOLOUR_RGB, pack_rgb(component(hue + 120), component(hue), component(hue - 120)));
}

vCOLOUR vCOLOUR::RgbToCmyk() const noexcept
{
    // On a scale of 200, so that halving rounds.
    const auto ink = [this](unsigned shift) { return MulDivRound(200, 255 - byte_at(value_, shift), 255); };
    const int c = ink(red_shift);
    const int m = ink(green_shift);
    const int y = ink(blue_shift);
    const int k = std::min({c, m, y});
    const auto percent = [](int twice) { return (twice + 1) / 2; };
    return converted(vCOLOUR_CMYK, pack_cmyk(percent(c - k), percent(m - k), percent(y - k), percent(k)));
}

vCOLOUR vCOLOUR::CmykToRgb() const noexcept
{
    const auto ink
        = [this](unsigned shift) { return MulDivTrunc(2 * byte_at(value_, shift), 255 * tint_, 20000); };
    const int c = ink(cyan_shift);
    const int m = ink(magenta_shift);
    const int y = ink(yellow_shift);
    int k = ink(black_shift);
    // Nearly black inks: the black ink on top of them counts half.
    if (c + m + y > 600)
        k /= 2;
    const auto light = [k](int i) { return std::max(255 - (i + k), 0); };
    return converted(vCOLOUR_RGB, pack_rgb(light(c), light(m), light(y)));
}

vCOLOUR vCOLOUR::RgbToPant() const noexcept { return converted(vCOLOUR_PANTONE, 0); }

vCOLOUR vCOLOUR::PantToRgb() const noexcept
{
    const auto rgb = pantone_rgb({Marker(), Simtype(), Index()});
    if (!rgb)
        return converted(vCOLOUR_PANTONE, 0);
    return converted(vCOLOUR_RGB, pack_rgb((*rgb)[0] >> 8, (*rgb)[1] >> 8, (*rgb)[2] >> 8));
}

vCOLOUR vCOLOUR::PantToCmyk() const noexcept
{
    const auto cmyk = pantone_cmyk({Marker(), Simtype(), Index()});
    if (!cmyk)
        return converted(vCOLOUR_PANTONE, 0);
    const auto percent = [](std::uint16_t v) { return static_cast<int>(v / 65535.0 * 100.0 + 0.5); };
    return converted(vCOLOUR_CMYK,
        pack_cmyk(percent((*cmyk)[0]), percent((*cmyk)[1]), percent((*cmyk)[2]), percent((*cmyk)[3])));
}

// A Pantone colour that can't be converted comes back as a Pantone colour, which is not converted again.
vCOLOUR vCOLOUR::in_model(vCOLOURTYPE type) const noexcept
{
    if (type_ == type)
        return *this;
    if (type_ > vCOLOUR_PANTONE)
        return {type, 0, 0, 0};
    switch (type) {
    case vCOLOUR_RGB:
        return type_ == vCOLOUR_HLS ? HlsToRgb() : type_ == vCOLOUR_CMYK ? CmykToRgb() : PantToRgb();
    case vCOLOUR_CMYK:
        if (type_ == vCOLOUR_PANTONE)
            return PantToCmyk();
        return in_model(vCOLOUR_RGB).RgbToCmyk();
    case vCOLOUR_HLS: {
        const vCOLOUR rgb = in_model(vCOLOUR_RGB);
        return rgb.type_ == vCOLOUR_RGB ? rgb.RgbToHls() : rgb;
    }
    default:
        return RgbToPant();
    }
}

vCOLOUR vCOLOUR::RGBFormat() const noexcept { return in_model(vCOLOUR_RGB); }
vCOLOUR vCOLOUR::CMYKFormat() const noexcept { return in_model(vCOLOUR_CMYK); }
vCOLOUR vCOLOUR::HLSFormat() const noexcept { return in_model(vCOLOUR_HLS); }

vCOLOUR vCOLOUR::PantoneFormat(unsigned char book) const noexcept
{
    if (type_ != vCOLOUR_PANTONE)
        return in_model(vCOLOUR_PANTONE);
    return (value_ & byte_mask) == book ? *this : vCOLOUR(vCOLOUR_PANTONE, 0, 0, 0);
}

vCOLOUR vCOLOUR::TintFormat(std::uint32_t t) const noexcept
{
    if (t == full_tint)
        return *this;
    const std::uint64_t tint = std::uint64_t{tint_} * t / full_tint;
    return {GetNativeFormat(), value_, static_cast<int>(std::min<std::uint64_t>(tint, full_tint)), Spot()};
}

COLORREF vCOLOUR::PackedRGB() const noexcept
{
    constexpr std::uint32_t rgb_mask = 0x00FFFFFF;
    return tinted_field(vCOLOUR_RGB, red_shift, rgb_mask);
}

unsigned char vCOLOUR::GreyScale() const noexcept
{
    const vCOLOUR rgb = type_ > vCOLOUR_PANTONE ? vCOLOUR() : RGBFormat();
    return rgb.type_ == vCOLOUR_RGB ? rgb.RgbToTint() : vCOLOUR().RgbToTint();
}

int vCOLOUR::IsTintOfBlack() const noexcept
{
    switch (type_) {
    case vCOLOUR_RGB:
        return value_ == 0;
    case vCOLOUR_HLS:
        return byte_at(value_, light_shift) == 0;
    case vCOLOUR_CMYK: {
        constexpr std::uint32_t inks_mask = ~byte_mask;
        return byte_at(value_, black_shift) == 100 || (value_ & inks_mask) == pack_cmyk(100, 100, 100, 0)
            || value_ == pack_cmyk(50, 50, 50, 50);
    }
    default:
        return 0;
    }
}

// Components

std::uint32_t vCOLOUR::tinted_field(vCOLOURTYPE type, unsigned shift, std::uint32_t mask) const noexcept
{
    if (type_ > vCOLOUR_PANTONE)
        return 0;
    const vCOLOUR colour = in_model(type);
    return colour.type_ == type ? colour.ApplyTint(colour.value_) >> shift & mask : 0;
}

void vCOLOUR::set_field(vCOLOURTYPE type, unsigned shift, std::uint32_t mask, std::uint32_t value) noexcept
{
    if (type_ == type) {
        value_ = (value_ & ~(mask << shift)) | (value & mask) << shift;
    } else if (type_ < vCOLOUR_PANTONE && type < vCOLOUR_PANTONE) {
        vCOLOUR changed = in_model(type);
        changed.set_field(type, shift, mask, value);
        const vCOLOUR back = changed.in_model(GetNativeFormat());
        value_ = back.ApplyTint(back.value_);
    }
}

namespace {

unsigned char narrow(std::uint32_t component) { return static_cast<unsigned char>(component); }
unsigned short narrow_word(std::uint32_t component) { return static_cast<unsigned short>(component); }

} // namespace

unsigned char vCOLOUR::Red() const noexcept
{
    return narrow(tinted_field(vCOLOUR_RGB, red_shift, byte_mask));
}
unsigned char vCOLOUR::Green() const noexcept
{
    return narrow(tinted_field(vCOLOUR_RGB, green_shift, byte_mask));
}
unsigned char vCOLOUR::Blue() const noexcept
{
    return narrow(tinted_field(vCOLOUR_RGB, blue_shift, byte_mask));
}
unsigned char vCOLOUR::Cyan() const noexcept
{
    return narrow(tinted_field(vCOLOUR_CMYK, cyan_shift, byte_mask));
}
unsigned char vCOLOUR::Magenta() const noexcept
{
    return narrow(tinted_field(vCOLOUR_CMYK, magenta_shift, byte_mask));
}
unsigned char vCOLOUR::Yellow() const noexcept
{
    return narrow(tinted_field(vCOLOUR_CMYK, yellow_shift, byte_mask));
}
unsigned char vCOLOUR::Black() const noexcept
{
    return narrow(tinted_field(vCOLOUR_CMYK, black_shift, byte_mask));
}
unsigned short vCOLOUR::Hue() const noexcept
{
    return narrow_word(tinted_field(vCOLOUR_HLS, hue_shift, hue_mask));
}
unsigned char vCOLOUR::Light() const noexcept
{
    return narrow(tinted_field(vCOLOUR_HLS, light_shift, byte_mask));
}
unsigned char vCOLOUR::Saturation() const noexcept
{
    return narrow(tinted_field(vCOLOUR_HLS, saturation_shift, byte_mask));
}
unsigned short vCOLOUR::Marker() const noexcept
{
    return narrow_word(tinted_field(vCOLOUR_PANTONE, marker_shift, marker_mask));
}
unsigned short vCOLOUR::Simtype() const noexcept
{
    return narrow_word(tinted_field(vCOLOUR_PANTONE, simtype_shift, simtype_mask));
}
unsigned short vCOLOUR::Index() const noexcept
{
    return narrow_word(tinted_field(vCOLOUR_PANTONE, index_shift, index_mask));
}

void vCOLOUR::Red(unsigned char value) noexcept { set_field(vCOLOUR_RGB, red_shift, byte_mask, value); }
void vCOLOUR::Green(unsigned char value) noexcept { set_field(vCOLOUR_RGB, green_shift, byte_mask, value); }
void vCOLOUR::Blue(unsigned char value) noexcept { set_field(vCOLOUR_RGB, blue_shift, byte_mask, value); }
void vCOLOUR::Cyan(unsigned char percent) noexcept
{
    set_field(vCOLOUR_CMYK, cyan_shift, byte_mask, percent);
}
void vCOLOUR::Magenta(unsigned char percent) noexcept
{
    set_field(vCOLOUR_CMYK, magenta_shift, byte_mask, percent);
}
void vCOLOUR::Yellow(unsigned char percent) noexcept
{
    set_field(vCOLOUR_CMYK, yellow_shift, byte_mask, percent);
}
void vCOLOUR::Black(unsigned char percent) noexcept
{
    set_field(vCOLOUR_CMYK, black_shift, byte_mask, percent);
}
void vCOLOUR::Hue(unsigned short degrees) noexcept { set_field(vCOLOUR_HLS, hue_shift, hue_mask, degrees); }
void vCOLOUR::Light(unsigned char percent) noexcept
{
    set_field(vCOLOUR_HLS, light_shift, byte_mask, percent);
}
void vCOLOUR::Saturation(unsigned char percent) noexcept
{
    set_field(vCOLOUR_HLS, saturation_shift, byte_mask, percent);
}
void vCOLOUR::Marker(unsigned short value) noexcept
{
    set_field(vCOLOUR_PANTONE, marker_shift, marker_mask, value);
}
void vCOLOUR::Simtype(unsigned short value) noexcept
{
    set_field(vCOLOUR_PANTONE, simtype_shift, simtype_mask, value);
}
void vCOLOUR::Index(unsigned short value) noexcept
{
    set_field(vCOLOUR_PANTONE, index_shift, index_mask, value);
}

// Stream form

vSTREAM& vCOLOUR::operator>>(vSTREAM& out) const noexcept
{
    return out << value_ << type_ << tint_ << flags_;
}
vSTREAM& vCOLOUR::operator<<(vSTREAM& in) noexcept { return in >> value_ >> type_ >> tint_ >> flags_; }

} // namespace klv
