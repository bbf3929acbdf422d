#include "klv/bitmaps/pixels/dib_dither.h"

#include "klv/bitmaps/pixels/colour_matcher.h"

#include <algorithm>
#include <cstddef>

namespace klv {

namespace {

constexpr int channels = 3;

constexpr std::array<RGBQUAD, 2> black_and_white{{{0, 0, 0, 0}, {255, 255, 255, 0}}};

constexpr std::array<RGBQUAD, 16> standard_colours{
    {{0, 0, 0, 0}, {0, 0, 128, 0}, {0, 128, 0, 0}, {0, 128, 128, 0}, {128, 0, 0, 0}, {128, 0, 128, 0},
        {128, 128, 0, 0}, {192, 192, 192, 0}, {128, 128, 128, 0}, {0, 0, 255, 0}, {0, 255, 0, 0},
        {0, 255, 255, 0}, {255, 0, 0, 0}, {255, 0, 255, 0}, {255, 255, 0, 0}, {255, 255, 255, 0}}};

// The cube has the same six levels on each channel.
constexpr int cube_side = 6;
constexpr int cube_step = 255 / (cube_side - 1);

constexpr auto colour_cube = [] {
    std::array<RGBQUAD, cube_side * cube_side * cube_side> colours{};
    const auto level = [](std::size_t digit) { return static_cast<BYTE>(digit % cube_side * cube_step); };
    for (std::size_t i = 0; i < colours.size(); ++i)
        colours[i] = {level(i), level(i / cube_side), level(i / (cube_side * cube_side)), 0};
    return colours;
}();

/// The level of a channel's value, and what the level leaves of the value.
struct cube_level {
    std::uint8_t level;
    std::int8_t remainder;
};

// The errors of half a step, which is the most there is, come to a pixel from at most four neighbours and
// their shares sum up to one, so that values leave the range of a byte by no more than this. The table knows
// such values as the clamped ones.
constexpr int most_outside = 32;

constexpr auto cube_levels = [] {
    std::array<cube_level, 256 + 2 * most_outside> levels{};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const int value = std::clamp(static_cast<int>(i) - most_outside, 0, 255);
        const int level = (value + cube_step / 2) / cube_step;
        levels[i] = {static_cast<std::uint8_t>(level), static_cast<std::int8_t>(value - cube_step * level)};
    }
    return levels;
}();

/// What a quantiser makes of one pixel.
template <int Channels> struct quantised {
    std::uint8_t index;
    std::array<int, Channels> errors;
};

struct to_cube {
    quantised<channels> operator()(const std::array<int, channels>& value) const
    {
        const auto level = [&](std::size_t channel) {
            return cube_levels[static_cast<std::size_t>(value[channel] + most_outside)];
        };
        const cube_level blue = level(0);
        const cube_level green = level(1);
        const cube_level red = level(2);
        const int index = (red.level * cube_side + green.level) * cube_side + blue.level;
        return {static_cast<std::uint8_t>(index), {blue.remainder, green.remainder, red.remainder}};
    }
};

/// The standard colour that is nearest to each cell of a grid of 32 x 32 x 32 colours.
class standard_colour_table {
public:
    standard_colour_table()
    {
        const colour_matcher matcher(standard_colours);
        for (std::size_t i = 0; i < indices_.size(); ++i) {
            const auto middle = [&](int channel) {
                return static_cast<std::uint8_t>((i >> (channel * kept_bits) & (side - 1)) * step + step / 2);
            };
            indices_[i] = matcher.nearest(middle(0), middle(1), middle(2));
        }
    }

    [[nodiscard]] std::uint8_t nearest(unsigned blue, unsigned green, unsigned red) const
    {
        return indices_[((red / step) * side + green / step) * side + blue / step];
    }

private:
    static constexpr int kept_bits = 5;
    static constexpr std::size_t side = 1 << kept_bits;
    static constexpr std::size_t step = 256 / side;
    std::array<std::uint8_t, side * side * side> indices_{};
};

int clamped(int value) { return std::clamp(value, 0, 255); }

struct to_standard_colours {
    const standard_colour_table& table;

    quantised<channels> operator()(const std::array<int, channels>& value) const
    {
        const int blue = clamped(value[0]);
        const int green = clamped(value[1]);
        const int red = clamped(value[2]);
        const std::uint8_t index = table.nearest(
            static_cast<unsigned>(blue), static_cast<unsigned>(green), static_cast<unsigned>(red));
        const RGBQUAD& colour = standard_colours[index];
        return {index, {blue - colour.rgbBlue, green - colour.rgbGreen, red - colour.rgbRed}};
    }
};

struct to_black_and_white {
    quantised<1> operator()(const std::array<int, 1>& value) const
    {
        const int grey = clamped(value[0]);
        const bool white = grey >= 128;
        return {std::uint8_t{white}, {white ? grey - 255 : grey}};
    }
};

/// One line of Floyd and Steinberg's filter: 7/16 of an error go to the pixel on the right, 3/16, 5/16 and
/// the rest to the left, the middle and the right of the three pixels in the next line. current and next
/// point to the first pixel's errors.
template <int Channels, class Quantise>
void diffuse(const std::uint8_t* pixels, std::uint8_t* indices, std::int32_t width,
    const std::int16_t* current, std::int16_t* next, Quantise quantise)
{
    std::array<int, Channels> from_left{};
    // Shares of the next line's errors that are not complete yet: of the pixel on the left and of this one.
    std::array<int, Channels> below_left{};
    std::array<int, Channels> below{};
    for (std::int32_t x = 0; x < width; ++x) {
        std::array<int, Channels> value;
        for (std::size_t c = 0; c < Channels; ++c)
            value[c] = pixels[c] + current[c] + from_left[c];
        const quantised<Channels> result = quantise(value);
        indices[x] = result.index;
        for (std::size_t c = 0; c < Channels; ++c) {
            const int error = result.errors[c];
            const int right = (7 * error) >> 4;
            const int left = (3 * error) >> 4;
            const int middle = (5 * error) >> 4;
            next[static_cast<std::ptrdiff_t>(c) - Channels] = static_cast<std::int16_t>(below_left[c] + left);
            below_left[c] = below[c] + middle;
            below[c] = error - left - middle - right;
            from_left[c] = right;
        }
        pixels += Channels;
        current += Channels;
        next += Channels;
    }
    for (std::size_t c = 0; c < Channels; ++c)
        next[static_cast<std::ptrdiff_t>(c) - Channels] = static_cast<std::int16_t>(below_left[c]);
}

void to_greys(const std::uint8_t* pixels, std::uint8_t* greys, std::int32_t width)
{
    for (std::int32_t x = 0; x < width; ++x, pixels += channels)
        greys[x] = static_cast<std::uint8_t>((11 * pixels[0] + 59 * pixels[1] + 30 * pixels[2] + 50) / 100);
}

std::span<const RGBQUAD> colours_of_depth(std::uint16_t bits)
{
    switch (bits) {
    case 1:
        return black_and_white;
    case 4:
        return standard_colours;
    default:
        return colour_cube;
    }
}

} // namespace

bool dib_ditherer::start(std::int32_t width, std::uint16_t bits) noexcept
{
    width_ = width;
    colours_ = colours_of_depth(bits);
    const std::size_t pixels = static_cast<std::size_t>(width) + 1;
    current_.clear();
    return current_.resize(pixels * channels) && next_.resize(pixels * channels)
        && (bits != 1 || greys_.resize(static_cast<std::size_t>(width)));
}

void dib_ditherer::dither_line(const std::uint8_t* pixels, std::uint8_t* indices) noexcept
{
    const bool grey = colours_.size() == black_and_white.size();
    const std::size_t margin = grey ? 1 : channels;
    const std::int16_t* const current = current_.data() + margin;
    std::int16_t* const next = next_.data() + margin;
    if (grey) {
        to_greys(pixels, greys_.data(), width_);
        diffuse<1>(greys_.data(), indices, width_, current, next, to_black_and_white{});
    } else if (colours_.size() == standard_colours.size()) {
        static const standard_colour_table table;
        diffuse<channels>(pixels, indices, width_, current, next, to_standard_colours{table});
    } else {
        diffuse<channels>(pixels, indices, width_, current, next, to_cube{});
    }
    current_.swap(next_);
}

} // namespace klv
