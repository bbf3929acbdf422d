#pragma once

#include "klv/base/types.h"
#include "klv/core/object.h"

#include <cstdint>

namespace klv {

class vSTREAM;

/// The model in which a colour was given; it decides how the colour's value is laid out.
enum vCOLOURTYPE : std::int32_t {
    vCOLOUR_RGB = 0, ///< red bits 0-7, green 8-15, blue 16-23, each 0 to 255
    vCOLOUR_HLS = 1, ///< hue bits 0-15 in degrees, lightness 16-23 and saturation 24-31 in per cent
    vCOLOUR_CMYK = 2, ///< black bits 0-7, yellow 8-15, magenta 16-23, cyan 24-31, each in per cent
    vCOLOUR_PANTONE = 3, ///< marker bits 0-13, simulation type 14-19, index 20-31
};

/// One colour, kept in the model in which it was given, with a tint percentage (100 is full strength) and
/// flags. Every component of every model can be read from any colour; the class converts on demand.
///
/// A Pantone colour is converted by an outside colour library, which is looked for at every conversion.
/// Without it, and for a colour whose type is none of vCOLOURTYPE, components and packed RGB read 0.
class vCOLOUR : public vOBJECT {
public:
    /// Black.
    constexpr vCOLOUR() = default;
    constexpr vCOLOUR(unsigned char r, unsigned char g, unsigned char b)
        : value_(std::uint32_t{r} | std::uint32_t{g} << 8 | std::uint32_t{b} << 16)
    {
    }
    /// An RGB colour of a packed value; system marks it as one of the system's own colours.
    constexpr vCOLOUR(std::int32_t value, int system)
        : value_(static_cast<std::uint32_t>(value))
        , flags_(system != 0 ? system_flag : std::uint16_t{0})
    {
    }
    /// \param tint per cent, clamped to 0..100
    constexpr vCOLOUR(vCOLOURTYPE type, std::uint32_t value, int tint, int spot)
        : value_(value)
        , type_(static_cast<std::uint8_t>(type))
        , tint_(static_cast<std::uint8_t>(tint > full_tint ? full_tint
                  : tint < 0                               ? 0
                                                           : tint))
        , flags_(spot != 0 ? spot_flag : std::uint16_t{0})
    {
    }
    /// The colour i/n of the way from a to b, in RGB. \param n not 0
    vCOLOUR(const vCOLOUR& a, const vCOLOUR& b, short i, short n) noexcept;

    friend constexpr bool operator==(const vCOLOUR& a, const vCOLOUR& b)
    {
        return a.EqualsWithoutTint(b) && a.tint_ == b.tint_;
    }
    /// Equal but for the tint.
    [[nodiscard]] constexpr bool EqualsWithoutTint(const vCOLOUR& other) const
    {
        return value_ == other.value_ && type_ == other.type_ && flags_ == other.flags_;
    }

    [[nodiscard]] constexpr vCOLOURTYPE GetNativeFormat() const noexcept
    {
        return static_cast<vCOLOURTYPE>(type_);
    }
    [[nodiscard]] constexpr unsigned char GetTint() const noexcept { return tint_; }
    [[nodiscard]] constexpr int SystemColour() const noexcept { return (flags_ & system_flag) != 0; }
    [[nodiscard]] constexpr int Spot() const noexcept { return (flags_ & spot_flag) != 0; }

    /// Components, the tint applied.
    [[nodiscard]] unsigned char Red() const noexcept;
    [[nodiscard]] unsigned char Green() const noexcept;
    [[nodiscard]] unsigned char Blue() const noexcept;
    /// Per cent.
    [[nodiscard]] unsigned char Cyan() const noexcept;
    [[nodiscard]] unsigned char Magenta() const noexcept;
    [[nodiscard]] unsigned char Yellow() const noexcept;
    [[nodiscard]] unsigned char Black() const noexcept;
    /// Degrees, 0 to 359.
    [[nodiscard]] unsigned short Hue() const noexcept;
    /// Per cent.
    [[nodiscard]] unsigned char Light() const noexcept;
    [[nodiscard]] unsigned char Saturation() const noexcept;
    [[nodiscard]] unsigned short Marker() const noexcept;
    [[nodiscard]] unsigned short Simtype() const noexcept;
    [[nodiscard]] unsigned short Index() const noexcept;

    /// Set one component. A colour of another model is converted, changed and converted back; a Pantone
    /// colour is not changed.
    void Red(unsigned char value) noexcept;
    void Green(unsigned char value) noexcept;
    void Blue(unsigned char value) noexcept;
    void Cyan(unsigned char percent) noexcept;
    void Magenta(unsigned char percent) noexcept;
    void Yellow(unsigned char percent) noexcept;
    void Black(unsigned char percent) noexcept;
    void Hue(unsigned short degrees) noexcept;
    void Light(unsigned char percent) noexcept;
    void Saturation(unsigned char percent) noexcept;
    /// Change only a Pantone colour. The arguments are cut to the fields' 14, 6 and 12 bits.
    void Marker(unsigned short value) noexcept;
    void Simtype(unsigned short value) noexcept;
    void Index(unsigned short value) noexcept;

    /// This colour in another model, with its tint and spot flag.
    [[nodiscard]] vCOLOUR RGBFormat() const noexcept;
    [[nodiscard]] vCOLOUR CMYKFormat() const noexcept;
    [[nodiscard]] vCOLOUR HLSFormat() const noexcept;
    /// A Pantone colour of the given book stays; any other is no Pantone colour: value 0.
    [[nodiscard]] vCOLOUR PantoneFormat(unsigned char book) const noexcept;
    /// The same colour with t per cent of its tint.
    [[nodiscard]] vCOLOUR TintFormat(std::uint32_t t) const noexcept;
    /// Red, green and blue as the platform packs them, the tint applied.
    [[nodiscard]] COLORREF PackedRGB() const noexcept;
    /// Darkness in per cent: 0 white, 100 black.
    [[nodiscard]] unsigned char GreyScale() const noexcept;
    /// True when separation may print the colour with black ink alone.
    [[nodiscard]] int IsTintOfBlack() const noexcept;

    /// The stream form, 8 bytes: value, type, tint, flags.
    vSTREAM& operator>>(vSTREAM& out) const noexcept;
    vSTREAM& operator<<(vSTREAM& in) noexcept;

private:
    static constexpr int full_tint = 100;
    static constexpr std::uint16_t system_flag = 0x0001;
    static constexpr std::uint16_t spot_flag = 0x0010;

    [[nodiscard]] vCOLOUR converted(vCOLOURTYPE type, std::uint32_t value) const noexcept;
    [[nodiscard]] std::uint32_t tinted_field(
        vCOLOURTYPE type, unsigned shift, std::uint32_t mask) const noexcept;
    void set_field(vCOLOURTYPE type, unsigned shift, std::uint32_t mask, std::uint32_t value) noexcept;
    [[nodiscard]] std::uint32_t ApplyTint(std::uint32_t value) const noexcept;
    [[nodiscard]] vCOLOUR in_model(vCOLOURTYPE type) const noexcept;
    [[nodiscard]] vCOLOUR RgbToHls() const noexcept;
    [[nodiscard]] vCOLOUR HlsToRgb() const noexcept;
    [[nodiscard]] vCOLOUR RgbToCmyk() const noexcept;
    [[nodiscard]] vCOLOUR CmykToRgb() const noexcept;
    [[nodiscard]] vCOLOUR RgbToPant() const noexcept;
    [[nodiscard]] vCOLOUR PantToRgb() const noexcept;
    [[nodiscard]] vCOLOUR PantToCmyk() const noexcept;
    [[nodiscard]] unsigned char RgbToTint() const noexcept;

    std::uint32_t value_ = 0;
    std::uint8_t type_ = vCOLOUR_RGB;
    std::uint8_t tint_ = full_tint;
    std::uint16_t flags_ = 0;
};

} // namespace klv
