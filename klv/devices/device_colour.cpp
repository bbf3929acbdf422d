#include "klv/devices/bitmap/colour_override.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/gem_patterns.h"
#include "klv/gdi/gdi.h"

/// Display modes: what a colour becomes on greyscale and separation output.
namespace klv {
namespace {

constexpr int full_ink = 100;
// Colours at least this dark may be kept off the colour plates.
constexpr int dark = 98;

vCOLOUR tint_of_black(int percent) noexcept { return {vCOLOUR_RGB, 0, percent, 0}; }

} // namespace

void vDEVICE::DisplayMode(
    vDISPLAY_MODE mode, const vCOLOUR& colour, int show_other_spots, int hide_dark) noexcept
{
    display_mode_ = mode;
    separation_colour_ = colour;
    show_other_spots_ = show_other_spots;
    hide_dark_ = hide_dark;
    if (mode != vDISPLAY_PROCESS_SEPARATION && !(mode == vDISPLAY_SEPARATION && !colour.Spot()))
        return;
    const int inks[] = {colour.Cyan(), colour.Magenta(), colour.Yellow(), colour.Black()};
    if (inks[0] + inks[1] + inks[2] + inks[3] != full_ink)
        return;
    for (int plate = 0; plate < 4; ++plate)
        if (inks[plate] == full_ink)
            plate_ = static_cast<separation_plate>(plate);
}

int vDEVICE::separate_process_colour(const vCOLOUR& colour, int& visible) const noexcept
{
    visible = !(hide_dark_ && plate_ != separation_plate::black && colour.GreyScale() >= dark);
    switch (plate_) {
    case separation_plate::cyan:
        return colour.Cyan();
    case separation_plate::magenta:
        return colour.Magenta();
    case separation_plate::yellow:
        return colour.Yellow();
    case separation_plate::black:
        break;
    }
    return colour.Black();
}

int vDEVICE::separate_spot_colour(const vCOLOUR& colour, int& visible) const noexcept
{
    visible = 1;
    const bool is_separation_colour = colour.EqualsWithoutTint(separation_colour_);
    const bool is_black_on_black = separation_colour_.PackedRGB() == 0 && colour.IsTintOfBlack();
    if (is_separation_colour || is_black_on_black)
        return colour.GetTint();
    if (!show_other_spots_ || (hide_dark_ && colour.GreyScale() >= dark))
        visible = 0;
    return 0;
}

vCOLOUR vDEVICE::Convert(const vCOLOUR& colour, int& visible, vCOLOUR* grey) const noexcept
{
    visible = 1;
    if (grey)
        *grey = colour.TintFormat(colour.GreyScale());
    switch (display_mode_) {
    case vDISPLAY_NORMAL:
        return DeviceType() == vDEV_PRINTER ? colour.CMYKFormat().RGBFormat() : colour;
    case vDISPLAY_GREYSCALE:
        return tint_of_black(colour.GreyScale());
    case vDISPLAY_PROCESS_SEPARATION:
        return tint_of_black(separate_process_colour(colour, visible));
    case vDISPLAY_SPOT_SEPARATION:
        return tint_of_black(separate_spot_colour(colour, visible));
    case vDISPLAY_SEPARATION:
        return tint_of_black(
            colour.Spot() ? separate_spot_colour(colour, visible) : separate_process_colour(colour, visible));
    }
    return {};
}

COLORREF vDEVICE::NearestColour(const vCOLOUR& colour) noexcept
{
    const active_dc dc(*this);
    return GetNearestColor(dc, colour.PackedRGB());
}

HBRUSH vDEVICE::CreateBrush(const vCOLOUR& colour) noexcept { return CreateSolidBrush(colour.PackedRGB()); }

// ---- Colours of images ---------------------------------------------------------------------------------

int vDEVICE::RGBtoRGB(const vCOLOUR* in, vCOLOUR* out, const vIMAGECOLOUR& override_) noexcept
{
    const colour_override change(override_);
    if (!change.changes_anything()) {
        *out = *in;
        return 1;
    }
    const rgb_channels result = change(rgb_channels(*in));
    *out = vCOLOUR(static_cast<unsigned char>(result.red), static_cast<unsigned char>(result.green),
        static_cast<unsigned char>(result.blue));
    return 1;
}

int vDEVICE::Munge256Palette(std::uint8_t* entries, const vCOLOUR& colour) noexcept
{
    constexpr std::size_t colours = 256;
    constexpr std::size_t entry_size = 4;
    const rgb_channels foreground(colour);
    for (std::size_t i = 0; i < colours; ++i) {
        std::uint8_t* const entry = entries + i * entry_size;
        const rgb_channels shade
            = GetMonochromeRGB(rgb_channels(entry[2], entry[1], entry[0]).grey(), foreground);
        entry[0] = static_cast<std::uint8_t>(shade.blue);
        entry[1] = static_cast<std::uint8_t>(shade.green);
        entry[2] = static_cast<std::uint8_t>(shade.red);
    }
    return 1;
}

// ---- Patterns ------------------------------------------------------------------------------------------

HBRUSH vDEVICE::CreateGEMBrush(int style, int index) noexcept
{
    const auto pattern = find_gem_pattern(style, index);
    if (!pattern)
        return nullptr;
    // Rows of a bitmap are padded to two bytes.
    constexpr int size = 8;
    std::array<std::uint8_t, 2 * size> bits{};
    for (std::size_t row = 0; row < size; ++row)
        bits[2 * row] = (*pattern)[row];
    HBITMAP bitmap = CreateBitmap(size, size, 1, 1, bits.data());
    HBRUSH brush = CreatePatternBrush(bitmap);
    DeleteObject(bitmap);
    return brush;
}

} // namespace klv
