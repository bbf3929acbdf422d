#include "klv/filters/tiff/tiff_palette.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::uint32_t deepest_palette = 8;
constexpr std::uint32_t white = 255;
constexpr std::uint32_t thousandths = 1000;

/// 65536 x 10^(-2^k / 1000), rounded down: what bit k of a density in thousandths leaves of the light.
constexpr std::array<std::uint32_t, 13> light_left_by_bit{
    65385, 65234, 64935, 64339, 63165, 60880, 56556, 48806, 36347, 20159, 6201, 586, 5};
constexpr std::uint32_t greatest_density = (1U << light_left_by_bit.size()) - 1;

RGBQUAD grey(std::uint32_t level)
{
    const auto channel = static_cast<std::uint8_t>(level);
    return {channel, channel, channel, 0};
}

void fill_grey_palette(const tiff_image& image, tiff_colours& colours)
{
    const std::uint32_t last = colours.count - 1U;
    for (std::uint32_t i = 0; i <= last; ++i) {
        const std::uint32_t level = (i * white + last / 2) / last;
        colours.entries[image.photometric == tiff_white_is_zero ? last - i : i] = grey(level);
    }
}

bool fill_response_palette(const tiff_image& image, tiff_colours& colours)
{
    if (image.grey_response.size() < colours.count)
        return false;
    std::uint64_t divisor = 1;
    for (int i = 0; i < image.grey_response_unit; ++i)
        divisor *= 10;
    for (std::uint32_t i = 0; i < colours.count; ++i) {
        const std::uint64_t density = std::uint64_t{image.grey_response[i]} * thousandths / divisor;
        colours.entries[i] = grey(reflectance_of_density(
            static_cast<std::uint32_t>(std::min<std::uint64_t>(density, greatest_density))));
    }
    return true;
}

/// Red in the highest bits of an index.
void fill_rgb_palette(const tiff_image& image, tiff_colours& colours)
{
    const std::uint32_t bits = image.bits_of_sample(0);
    const std::uint32_t greatest = (1U << bits) - 1;
    const auto channel = [&](std::uint32_t index, std::uint32_t shift) {
        return static_cast<std::uint8_t>((index >> shift & greatest) * (white / greatest));
    };
    for (std::uint32_t i = 0; i < colours.count; ++i)
        colours.entries[i] = {channel(i, 0), channel(i, bits), channel(i, 2 * bits), 0};
}

} // namespace

std::uint8_t reflectance_of_density(std::uint32_t density)
{
    std::uint32_t light = 65535;
    for (std::size_t bit = 0; bit < light_left_by_bit.size(); ++bit)
        if ((density >> bit & 1) != 0)
            light = light * light_left_by_bit[bit] >> 16;
    return static_cast<std::uint8_t>(light / 257);
}

oFILTER_STATUS make_colours(const tiff_image& image, tiff_colours& colours)
{
    if (image.pixel_depth > deepest_palette)
        return oFILTER_OK;
    colours.count = static_cast<std::uint16_t>(1U << image.pixel_depth);
    if (image.photometric == tiff_rgb)
        fill_rgb_palette(image, colours);
    else if (image.photometric == tiff_palette)
        colours.entries = image.colour_map;
    else if (image.grey_response.empty())
        fill_grey_palette(image, colours);
    else if (!fill_response_palette(image, colours))
        return oFILTER_BAD_DATA;
    return oFILTER_OK;
}

} // namespace klv
