#include "klv/colour/colour.h"
#include "klv/platform/module_table.h"

#include "tests/attributes/stream_form.h"

#include <array>
#include <tuple>

#include <gtest/gtest.h>

using namespace klv;

namespace {

using rgb = std::array<int, 3>;
using hls = std::array<int, 3>;
using cmyk = std::array<int, 4>;

rgb rgb_of(const vCOLOUR& c) { return {c.Red(), c.Green(), c.Blue()}; }
hls hls_of(const vCOLOUR& c) { return {c.Hue(), c.Light(), c.Saturation()}; }
cmyk cmyk_of(const vCOLOUR& c) { return {c.Cyan(), c.Magenta(), c.Yellow(), c.Black()}; }

vCOLOUR make_cmyk(const cmyk& inks, int tint = 100)
{
    const auto byte = [](int ink, int shift) { return static_cast<std::uint32_t>(ink) << shift; };
    return {
        vCOLOUR_CMYK, byte(inks[0], 24) | byte(inks[1], 16) | byte(inks[2], 8) | byte(inks[3], 0), tint, 0};
}

vCOLOUR make_hls(int hue, int light, int saturation, int tint = 100)
{
    return {vCOLOUR_HLS,
        static_cast<std::uint32_t>(hue) | static_cast<std::uint32_t>(light) << 16
            | static_cast<std::uint32_t>(saturation) << 24,
        tint, 0};
}

} // namespace

TEST(Colour, RgbInTheOtherModels)
{
    const struct {
        rgb given;
        hls as_hls;
        rgb hls_back;
        cmyk as_cmyk;
        rgb cmyk_back;
        int darkness;
    } cases[]{
        {{255, 0, 0}, {0, 50, 100}, {255, 0, 0}, {0, 100, 100, 0}, {255, 0, 0}, 70},
        {{128, 128, 128}, {0, 50, 0}, {128, 128, 128}, {0, 0, 0, 50}, {128, 128, 128}, 50},
        {{12, 200, 77}, {141, 42, 89}, {13, 201, 79}, {74, 0, 49, 22}, {11, 199, 75}, 49},
        {{250, 128, 114}, {6, 71, 93}, {250, 125, 112}, {0, 48, 54, 2}, {250, 128, 113}, 36},
        {{0, 0, 128}, {240, 25, 100}, {0, 0, 128}, {50, 50, 0, 50}, {1, 1, 128}, 94},
        {{200, 30, 190}, {304, 45, 74}, {199, 31, 189}, {0, 67, 4, 22}, {199, 29, 189}, 61},
        {{1, 2, 3}, {210, 1, 50}, {0, 3, 5}, {1, 0, 0, 99}, {1, 3, 3}, 99},
        {{255, 255, 255}, {0, 100, 0}, {255, 255, 255}, {0, 0, 0, 0}, {255, 255, 255}, 0},
        {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0, 100}, {0, 0, 0}, 100},
    };
    for (const auto& c : cases) {
        const vCOLOUR colour(static_cast<unsigned char>(c.given[0]), static_cast<unsigned char>(c.given[1]),
            static_cast<unsigned char>(c.given[2]));
        EXPECT_EQ(rgb_of(colour), c.given);
        EXPECT_EQ(hls_of(colour), c.as_hls);
        EXPECT_EQ(rgb_of(colour.HLSFormat().RGBFormat()), c.hls_back);
        EXPECT_EQ(cmyk_of(colour), c.as_cmyk);
        EXPECT_EQ(rgb_of(colour.CMYKFormat().RGBFormat()), c.cmyk_back);
        EXPECT_EQ(colour.GreyScale(), c.darkness);
    }
}

TEST(Colour, InksInRgb)
{
    const struct {
        cmyk inks;
        int tint;
        rgb expected;
    } cases[]{
        {{0, 0, 0, 100}, 100, {0, 0, 0}},
        {{10, 20, 30, 40}, 100, {128, 102, 77}},
        {{80, 80, 80, 40}, 100, {0, 0, 0}},
        {{90, 80, 70, 20}, 100, {1, 26, 52}},
        // A tinted colour is mixed with white twice: once in the conversion, once by the tint it keeps.
        {{10, 20, 30, 40}, 50, {192 + (255 - 192) / 2, 179 + (255 - 179) / 2, 166 + (255 - 166) / 2}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rgb_of(make_cmyk(c.inks, c.tint)), c.expected) << ::testing::PrintToString(c.inks);
}

TEST(Colour, BlackInkCountsHalfOnTopOfThreeFullInks)
{
    // 76 + 76 + 76 per cent make 579, which is below the limit of 600; 79 per cent make 603.
    EXPECT_EQ(rgb_of(make_cmyk({76, 76, 76, 20})), (rgb{11, 11, 11}));
    EXPECT_EQ(rgb_of(make_cmyk({79, 79, 79, 20})), (rgb{29, 29, 29}));
}

TEST(Colour, HlsInRgb)
{
    EXPECT_EQ(rgb_of(make_hls(210, 30, 40)), (rgb{46, 77, 107}));
    EXPECT_EQ(rgb_of(make_hls(300, 75, 60)), (rgb{230, 153, 230}));
    EXPECT_EQ(rgb_of(make_hls(359, 50, 50)), (rgb{191, 64, 66}));
    EXPECT_EQ(make_hls(359, 50, 50, 50).Light(), 75) << "tinted";
}

TEST(Colour, TintMixesTowardWhite)
{
    const vCOLOUR half_black(vCOLOUR_RGB, 0, 50, 0);
    EXPECT_EQ(half_black.Red(), 127);
    EXPECT_EQ(half_black.PackedRGB(), 0x007F7F7Fu);
    EXPECT_EQ(cmyk_of(make_cmyk({10, 25, 100, 3}, 50)), (cmyk{5, 13, 50, 2}));
    EXPECT_EQ(vCOLOUR(vCOLOUR_RGB, 0, 150, 0).GetTint(), 100);
    EXPECT_EQ(vCOLOUR(vCOLOUR_RGB, 0, -5, 0).GetTint(), 0);
    EXPECT_EQ(vCOLOUR(vCOLOUR_RGB, 7, 80, 1).TintFormat(50), vCOLOUR(vCOLOUR_RGB, 7, 40, 1));
    EXPECT_EQ(vCOLOUR(1, 2, 3).TintFormat(0xFFFFFFFF).GetTint(), 100);
}

TEST(Colour, StepsBetweenTwoColours)
{
    const vCOLOUR from(10, 200, 0), to(20, 100, 255);
    EXPECT_EQ(vCOLOUR(from, to, 0, 7), from);
    EXPECT_EQ(vCOLOUR(from, to, 7, 7), to);
    EXPECT_EQ(rgb_of(vCOLOUR(from, to, 1, 3)), (rgb{13, 167, 85}));
    EXPECT_EQ(vCOLOUR(vCOLOUR(vCOLOUR_RGB, 0, 50, 1), to, 0, 1), vCOLOUR(127, 127, 127))
        << "the tint is taken in, the flags are not";
}

TEST(Colour, ComparesExactlyAndKeepsUnknownFlags)
{
    const vCOLOUR full(vCOLOUR_RGB, 5, 100, 0), tinted(vCOLOUR_RGB, 5, 40, 0);
    EXPECT_NE(full, tinted);
    EXPECT_TRUE(full.EqualsWithoutTint(tinted));
    EXPECT_NE(vCOLOUR(), make_cmyk({0, 0, 0, 100}));
    EXPECT_NE(vCOLOUR(5, 1), vCOLOUR(5, 0));
    EXPECT_EQ(vCOLOUR(5, 1).SystemColour(), 1);
    EXPECT_EQ(vCOLOUR(5, 1).TintFormat(50).SystemColour(), 0);

    const byte_vector stored{1, 2, 3, 0, 0, 100, 0x20, 0x80};
    loaded_stream stream(stored);
    vCOLOUR read;
    read << stream;
    EXPECT_NE(read, vCOLOUR(1, 2, 3));
    EXPECT_EQ(stream_form(read), stored);
}

TEST(Colour, StreamForm)
{
    EXPECT_EQ(stream_form(vCOLOUR(1, 2, 3)), (byte_vector{1, 2, 3, 0, 0, 100, 0, 0}));
    EXPECT_EQ(stream_form(vCOLOUR(vCOLOUR_CMYK, 0x0A141E28, 33, 1)),
        (byte_vector{0x28, 0x1E, 0x14, 0x0A, 2, 33, 0x10, 0}));
}

TEST(Colour, ComponentsAreSetInTheirModel)
{
    vCOLOUR colour(10, 20, 30);
    colour.Green(200);
    EXPECT_EQ(colour, vCOLOUR(10, 200, 30));

    vCOLOUR inks = make_cmyk({1, 2, 3, 4});
    inks.Magenta(77);
    EXPECT_EQ(inks, make_cmyk({1, 77, 3, 4}));

    // Another model's component goes there and back.
    vCOLOUR red(255, 0, 0);
    red.Hue(120);
    EXPECT_EQ(red, vCOLOUR(0, 255, 0));
    vCOLOUR grey = make_cmyk({0, 0, 0, 100});
    grey.Red(255);
    EXPECT_EQ(grey, make_cmyk({0, 100, 100, 0}));
    vCOLOUR light = make_hls(0, 50, 100);
    light.Black(50);
    EXPECT_EQ(light.GetNativeFormat(), vCOLOUR_HLS);
    EXPECT_EQ(hls_of(light), (hls{0, 25, 100}));
}

TEST(Colour, TintOfBlack)
{
    const struct {
        vCOLOUR colour;
        int expected;
    } cases[]{
        {vCOLOUR(), 1},
        {vCOLOUR(vCOLOUR_RGB, 0, 30, 0), 1},
        {vCOLOUR(0, 0, 1), 0},
        {make_hls(120, 0, 50), 1},
        {make_hls(0, 1, 0), 0},
        {make_cmyk({0, 0, 0, 100}), 1},
        {make_cmyk({0, 0, 0, 99}), 0},
        {make_cmyk({100, 100, 100, 7}), 1},
        {make_cmyk({100, 100, 99, 0}), 0},
        {make_cmyk({100, 0, 0, 0}), 0},
        {make_cmyk({50, 50, 50, 50}), 1},
        {vCOLOUR(vCOLOUR_PANTONE, 0, 100, 0), 0},
        {vCOLOUR(static_cast<vCOLOURTYPE>(4), 0, 100, 0), 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.colour.IsTintOfBlack(), c.expected) << ::testing::PrintToString(cmyk_of(c.colour));
}

TEST(Colour, UnknownTypesAreNeutral)
{
    const vCOLOUR strange(static_cast<vCOLOURTYPE>(9), 0xFFFFFFFF, 50, 1);
    EXPECT_EQ(rgb_of(strange), (rgb{}));
    EXPECT_EQ(cmyk_of(strange), (cmyk{}));
    EXPECT_EQ(hls_of(strange), (hls{}));
    EXPECT_EQ(strange.PackedRGB(), 0u);
    EXPECT_EQ(strange.GreyScale(), 100);
    EXPECT_EQ(strange.RGBFormat(), vCOLOUR(vCOLOUR_RGB, 0, 0, 0));
    EXPECT_EQ(strange.CMYKFormat(), vCOLOUR(vCOLOUR_CMYK, 0, 0, 0));
    EXPECT_EQ(strange.HLSFormat(), vCOLOUR(vCOLOUR_HLS, 0, 0, 0));
}

namespace {

// The colour library's entry points, as far as they are known: here a reference's three parts become the
// three 16-bit primaries.
std::uint16_t encode(std::uint16_t marker, std::uint16_t simtype, std::uint16_t index, void* encoded)
{
    auto* const words = static_cast<std::uint16_t*>(encoded);
    words[0] = marker;
    words[1] = simtype;
    words[2] = index;
    return index == 4095 ? 2 : 0;
}

std::uint16_t get_rgb(const void* encoded, std::uint16_t* out, std::uint16_t one)
{
    const auto* const words = static_cast<const std::uint16_t*>(encoded);
    for (int i = 0; i < 3; ++i)
        out[i] = static_cast<std::uint16_t>(words[i] << 8 | 0xFF);
    return one == 1 ? 0 : 2;
}

std::uint16_t get_cmyk(const void*, std::uint16_t* out)
{
    const std::uint16_t inks[]{0, 32767, 65535, 655};
    std::copy_n(inks, 4, out);
    return 0;
}

} // namespace

TEST(Colour, PantoneWithAndWithoutTheColourLibrary)
{
    vCOLOUR spot(vCOLOUR_PANTONE, 0, 100, 1);
    spot.Marker(17);
    spot.Simtype(5);
    spot.Index(300);
    EXPECT_EQ(std::make_tuple(spot.Marker(), spot.Simtype(), spot.Index()), std::make_tuple(17, 5, 300));
    spot.Marker(0xFFFF);
    EXPECT_EQ(spot.Simtype(), 5) << "an argument that does not fit stays in its field";
    spot.Marker(17);

    EXPECT_EQ(rgb_of(spot), (rgb{}));
    EXPECT_EQ(cmyk_of(spot), (cmyk{}));
    EXPECT_EQ(hls_of(spot), (hls{}));
    EXPECT_EQ(spot.PackedRGB(), 0u);
    EXPECT_EQ(spot.CMYKFormat(), vCOLOUR(vCOLOUR_PANTONE, 0, 100, 1));

    const module_symbol symbols[]{
        {"_POCE_EncodeColor@16", reinterpret_cast<FARPROC>(encode)},
        {"_POCE_GetColorRGB@12", reinterpret_cast<FARPROC>(get_rgb)},
        {"_POCE_GetColorCMYK@12", reinterpret_cast<FARPROC>(get_cmyk)},
    };
    ASSERT_TRUE(RegisterModule("POCE2.DLL", symbols));
    EXPECT_EQ(spot.RGBFormat(), vCOLOUR(vCOLOUR_RGB, 17 | 5 << 8 | (300 & 0xFF) << 16, 100, 1));
    EXPECT_EQ(cmyk_of(spot), (cmyk{0, 50, 100, 1}));
    spot.Index(4095);
    EXPECT_EQ(rgb_of(spot), (rgb{})) << "refused by the library";
    UnregisterModule("POCE2.DLL");

    EXPECT_EQ(spot.PantoneFormat(17), spot) << "its book";
    EXPECT_EQ(spot.PantoneFormat(18), vCOLOUR(vCOLOUR_PANTONE, 0, 0, 0));
    EXPECT_EQ(vCOLOUR(9, 9, 9).PantoneFormat(0), vCOLOUR(vCOLOUR_PANTONE, 0, 100, 0));
}
