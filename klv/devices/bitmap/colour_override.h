#pragma once

#include "klv/base/types.h"

#include <array>
#include <cstdint>

namespace klv {

class vCOLOUR;
class vIMAGECOLOUR;

/// A colour as channels of 0 to 255, for arithmetic.
struct rgb_channels {
    int red;
    int green;
    int blue;

    rgb_channels(int r, int g, int b) noexcept
        : red(r)
        , green(g)
        , blue(b)
    {
    }
    explicit rgb_channels(const vCOLOUR& colour) noexcept;
    /// Weighted brightness, 0 to 255.
    int grey() const noexcept { return (30 * red + 59 * green + 11 * blue + 50) / 100; }
};

/// Shades of a colour: black becomes the colour, white stays.
rgb_channels GetMonochromeRGB(int grey, const rgb_channels& foreground) noexcept;
/// Shades from the background through the midtone to the foreground colour; an unset midtone (white at 33
/// per cent) leaves it out.
rgb_channels GetDuotoneRGB(
    int grey, const vCOLOUR& background, const vCOLOUR& midtone, const vCOLOUR& foreground) noexcept;

/// The colour override and balance of an image, with its tables made once.
class colour_override {
public:
    /// For single colours of a picture.
    explicit colour_override(const vIMAGECOLOUR& colour) noexcept;
    /// For the pixels of a bitmap, whose two-colour override goes from black to white.
    static colour_override for_bitmap(const vIMAGECOLOUR& colour) noexcept;

    bool changes_anything() const noexcept { return overrides_ || balances_ || saturates_; }
    rgb_channels operator()(const rgb_channels& colour) const noexcept;

private:
    using channel_table = std::array<std::uint8_t, 256>;

    bool overrides_ = false;
    bool balances_ = false;
    bool saturates_ = false;
    int saturation_ = 50;
    std::array<channel_table, 3> by_grey_{}; // red, green, blue of each grey
    channel_table balance_{}; // brightness, then contrast
};

} // namespace klv
