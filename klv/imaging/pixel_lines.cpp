#include "klv/imaging/pixel_lines.h"

#include "klv/formats/dib_decode.h"

#include <algorithm>
#include <cmath>

namespace klv::imaging {

namespace {

std::uint8_t grey_of(std::uint32_t index, std::uint32_t shades, bool white_first)
{
    const std::uint32_t from_black = white_first ? shades - 1 - index : index;
    return static_cast<std::uint8_t>(from_black * 255 / (shades - 1));
}

/// The inverse of the cube root, straight near 0, that makes lightness of light (CIE 15).
double from_lab_axis(double value)
{
    constexpr double bend = 6.0 / 29;
    return value > bend ? value * value * value : 3 * bend * bend * (value - 4.0 / 29);
}

} // namespace

void set_grey_colours(bitmap_handle& bitmap, bool white_first)
{
    bitmap.colour_count = 1U << bitmap.bits_per_pixel;
    for (std::uint32_t i = 0; i < bitmap.colour_count; ++i) {
        const std::uint8_t grey = grey_of(i, bitmap.colour_count, white_first);
        bitmap.colours[i] = {grey, grey, grey, 0};
    }
}

bool has_grey_colours(const bitmap_handle& bitmap)
{
    const std::uint32_t shades = 1U << bitmap.bits_per_pixel;
    if (bitmap.colour_count != shades)
        return false;
    for (std::uint32_t i = 0; i < shades; ++i) {
        const RGBQUAD& colour = bitmap.colours[i];
        const std::uint8_t grey = grey_of(i, shades, false);
        if (colour.rgbRed != grey || colour.rgbGreen != grey || colour.rgbBlue != grey)
            return false;
    }
    return true;
}

void expand_to_24(const bitmap_handle& bitmap, const std::uint8_t* line, std::uint8_t* bgr)
{
    const auto width = static_cast<std::size_t>(bitmap.width);
    const auto bits = static_cast<std::size_t>(bitmap.bits_per_pixel);
    if (bits == 24) {
        std::copy_n(line, 3 * width, bgr);
        return;
    }
    if (bits == 16 || bits == 32) {
        const auto depth = static_cast<unsigned>(bits);
        masked_pixels(default_channel_masks(depth), depth).to_24(line, bgr, bitmap.width);
        return;
    }
    const std::uint32_t mask = (1U << bits) - 1;
    for (std::size_t x = 0; x < width; ++x, bgr += 3) {
        const std::size_t at = x * bits;
        const RGBQUAD& colour = bitmap.colours[line[at / 8] >> (8 - bits - at % 8) & mask];
        bgr[0] = colour.rgbBlue;
        bgr[1] = colour.rgbGreen;
        bgr[2] = colour.rgbRed;
    }
}

void inks_to_24(const std::uint8_t* cmyk, std::uint8_t* bgr, std::size_t width, bool light)
{
    const std::uint8_t flip = light ? 0 : 0xFF;
    for (std::size_t x = 0; x < width; ++x, cmyk += 4, bgr += 3) {
        const std::uint32_t black = cmyk[3] ^ flip;
        bgr[0] = multiplied(cmyk[2] ^ flip, black);
        bgr[1] = multiplied(cmyk[1] ^ flip, black);
        bgr[2] = multiplied(cmyk[0] ^ flip, black);
    }
}

std::uint8_t srgb_level(double light)
{
    const double value = std::clamp(light, 0.0, 1.0);
    const double level = value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(level * 255));
}

void lab_to_24(const std::uint8_t* lab, std::uint8_t* bgr, std::size_t width)
{
    for (std::size_t x = 0; x < width; ++x, lab += 3, bgr += 3) {
        const double fy = (lab[0] * 100.0 / 255 + 16) / 116;
        const double light_x = 0.9642 * from_lab_axis(fy + (lab[1] - 128) / 500.0);
        const double light_y = from_lab_axis(fy);
        const double light_z = 0.8249 * from_lab_axis(fy - (lab[2] - 128) / 200.0);
        // To the primaries of sRGB, adapted from D50 to D65 (Bradford).
        bgr[0] = srgb_level(0.0719453 * light_x - 0.2289914 * light_y + 1.4052427 * light_z);
        bgr[1] = srgb_level(-0.9787684 * light_x + 1.9161415 * light_y + 0.0334540 * light_z);
        bgr[2] = srgb_level(3.1338561 * light_x - 1.6168667 * light_y - 0.4906146 * light_z);
    }
}

void mirror_pixels(std::uint8_t* pixels, std::size_t width, std::size_t pixel_bytes)
{
    for (std::size_t low = 0, high = width; low + 1 < high; ++low) {
        --high;
        std::swap_ranges(
            pixels + low * pixel_bytes, pixels + (low + 1) * pixel_bytes, pixels + high * pixel_bytes);
    }
}

void pack_indices(const std::uint8_t* indices, std::uint8_t* line, std::size_t width, std::int32_t bits)
{
    if (bits == 8) {
        std::copy_n(indices, width, line);
        return;
    }
    const std::size_t in_byte = 8 / static_cast<std::size_t>(bits);
    const int mask = (1 << bits) - 1;
    for (std::size_t x = 0; x < width; x += in_byte) {
        int byte = 0;
        for (std::size_t i = 0; i < in_byte; ++i)
            byte = byte << bits | (x + i < width ? indices[x + i] & mask : 0);
        line[x / in_byte] = static_cast<std::uint8_t>(byte);
    }
}

void unpack_indices(const std::uint8_t* line, std::uint8_t* indices, std::size_t width, std::int32_t bits)
{
    const auto step = static_cast<std::size_t>(bits);
    const std::uint32_t mask = (1U << bits) - 1;
    for (std::size_t x = 0; x < width; ++x)
        indices[x] = static_cast<std::uint8_t>(line[x * step / 8] >> (8 - step - x * step % 8) & mask);
}

} // namespace klv::imaging
