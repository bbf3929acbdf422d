#include "klv/devices/bitmap/colour_override.h"

#include "klv/colour/colour.h"
#include "klv/colour/image_colour.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace klv {
namespace {

constexpr int full = 255;
constexpr int unset_midtone_tint = 33;

std::uint8_t clamped(double value) noexcept
{
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
}

int two_colour_component(int grey, int background, int foreground) noexcept
{
    return (full - grey) * background / full + grey * foreground / full;
}

// Parts of background, midtone and foreground in a grey.
struct duotone_weights {
    double background;
    double midtone;
    double foreground;

    explicit duotone_weights(int grey) noexcept
        : background(1.0 - grey / 255.0)
        , midtone(midtone_part(grey))
        , foreground(grey / 255.0)
    {
        const double sum = background + midtone + foreground;
        if (sum != 0) {
            background /= sum;
            midtone /= sum;
            foreground /= sum;
        }
    }

    int mix(int b, int m, int f) const noexcept
    {
        return static_cast<int>(b * background) + static_cast<int>(m * midtone)
            + static_cast<int>(f * foreground);
    }

private:
    static double midtone_part(int grey) noexcept
    {
        constexpr double most = 0.28;
        constexpr int middle = 128;
        return grey < middle ? grey / 128.0 * most : most - (grey - middle) / 127.0 * most;
    }
};

// Brightness bends the ramp along a part of a parabola: upwards below the middle setting, downwards
// above it.
std::uint8_t brightened(int i, int brightness) noexcept
{
    constexpr double slope = 0.225;
    constexpr int middle = 50;
    const double at = i / 256.0;
    if (brightness <= middle) {
        const double s = 7 - (middle - brightness) * slope;
        const double x = at * (10 - s) + s;
        return clamped(std::trunc((x * x - s * s) / (100 - s * s) * full));
    }
    const double e = (brightness - middle) * slope - 7;
    const double x = at * (e + 10) - 10;
    return clamped(std::trunc((100 - x * x) / (100 - e * e) * full));
}

std::uint8_t contrasted(int i, int contrast) noexcept
{
    const double degrees = std::trunc(0.8 * contrast + 5);
    const double slope = std::tan(degrees * std::numbers::pi / 180);
    return clamped(std::trunc(i * slope + 128 - 128 * slope));
}

std::size_t index(int channel) noexcept { return static_cast<std::size_t>(std::clamp(channel, 0, full)); }

rgb_channels saturated_by(const rgb_channels& colour, int saturation) noexcept
{
    vCOLOUR changed(static_cast<unsigned char>(colour.red), static_cast<unsigned char>(colour.green),
        static_cast<unsigned char>(colour.blue));
    const double wanted = saturation / 50.0 * changed.Saturation();
    changed.Saturation(static_cast<unsigned char>(std::clamp(std::trunc(wanted), 0.0, 100.0)));
    return rgb_channels(changed);
}

} // namespace

rgb_channels::rgb_channels(const vCOLOUR& colour) noexcept
    : rgb_channels(colour.Red(), colour.Green(), colour.Blue())
{
}

rgb_channels GetMonochromeRGB(int grey, const rgb_channels& foreground) noexcept
{
    const auto shade = [grey](int f) { return f + (full - f) * grey / full; };
    return {shade(foreground.red), shade(foreground.green), shade(foreground.blue)};
}

rgb_channels GetDuotoneRGB(
    int grey, const vCOLOUR& background, const vCOLOUR& midtone, const vCOLOUR& foreground) noexcept
{
    const rgb_channels b(background);
    const rgb_channels f(foreground);
    if (midtone == vCOLOUR(vCOLOUR_RGB, 0xFFFFFF, unset_midtone_tint, 0))
        return {two_colour_component(grey, b.red, f.red), two_colour_component(grey, b.green, f.green),
            two_colour_component(grey, b.blue, f.blue)};
    const rgb_channels m(midtone);
    const duotone_weights weights(grey);
    return {weights.mix(b.red, m.red, f.red), weights.mix(b.green, m.green, f.green),
        weights.mix(b.blue, m.blue, f.blue)};
}

colour_override::colour_override(const vIMAGECOLOUR& colour) noexcept
{
    const vCOLOUROVERRIDETYPE type = colour.GetType();
    overrides_ = type == vOVERRIDE_MONOCHROME || type == vOVERRIDE_DUOTONE || type == vOVERRIDE_TRITONE;
    balances_ = colour.GetBrightness() != vIMAGECOLOUR::normal_balance
        || colour.GetContrast() != vIMAGECOLOUR::normal_balance;
    saturates_ = colour.GetSaturation() != vIMAGECOLOUR::normal_balance;
    saturation_ = colour.GetSaturation();
    const rgb_channels foreground(colour.GetForegroundColour());
    for (int i = 0; overrides_ && i <= full; ++i) {
        const rgb_channels shade = type == vOVERRIDE_MONOCHROME
            ? GetMonochromeRGB(i, foreground)
            : GetDuotoneRGB(
                i, colour.GetBackgroundColour(), colour.GetMidtoneColour(), colour.GetForegroundColour());
        by_grey_[0][index(i)] = static_cast<std::uint8_t>(shade.red);
        by_grey_[1][index(i)] = static_cast<std::uint8_t>(shade.green);
        by_grey_[2][index(i)] = static_cast<std::uint8_t>(shade.blue);
    }
    for (int i = 0; balances_ && i <= full; ++i) {
        const int bright = colour.GetBrightness() == vIMAGECOLOUR::normal_balance
            ? i
            : brightened(i, colour.GetBrightness());
        balance_[index(i)] = colour.GetContrast() == vIMAGECOLOUR::normal_balance
            ? static_cast<std::uint8_t>(bright)
            : contrasted(bright, colour.GetContrast());
    }
}

colour_override colour_override::for_bitmap(const vIMAGECOLOUR& colour) noexcept
{
    vIMAGECOLOUR ends = colour;
    if (colour.GetType() == vOVERRIDE_DUOTONE) {
        ends.SetBackgroundColour(vCOLOUR(0, 0, 0));
        ends.SetForegroundColour(vCOLOUR(255, 255, 255));
    }
    return colour_override(ends);
}

rgb_channels colour_override::operator()(const rgb_channels& colour) const noexcept
{
    rgb_channels result = colour;
    if (overrides_) {
        const std::size_t grey = index(colour.grey());
        result = {by_grey_[0][grey], by_grey_[1][grey], by_grey_[2][grey]};
    }
    if (balances_)
        result = {balance_[index(result.red)], balance_[index(result.green)], balance_[index(result.blue)]};
    if (saturates_)
        result = saturated_by(result, saturation_);
    return result;
}

} // namespace klv
