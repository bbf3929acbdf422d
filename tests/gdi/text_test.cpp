#include "tests/gdi/text_canvas.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using testing::text_canvas;

LOGFONTA description_of(const char* face, int height)
{
    LOGFONTA description{};
    description.lfHeight = height;
    std::strncpy(description.lfFaceName, face, LF_FACESIZE - 1);
    return description;
}

int width_of(HDC dc, unsigned char character)
{
    std::int32_t width = -1;
    GetCharWidthA(dc, character, character, &width);
    return width;
}

int extent_of(HDC dc, std::string_view text)
{
    SIZE extent{};
    GetTextExtentPoint32A(dc, text.data(), static_cast<int>(text.size()), &extent);
    return extent.cx;
}

// The metric-compatible faces have the published widths of the faces they stand for, in units of 1/2048 em.
TEST(Text, HasThePublishedWidthsOfItsFaces)
{
    const struct {
        const char* face;
        bool bold;
        unsigned char character;
        int width;
    } cases[] = {
        {"Arial", false, 'A', 1366},
        {"Arial", false, 'i', 455},
        {"Arial", false, ' ', 569},
        {"Arial", true, 'A', 1479},
        {"Helv", false, 'W', 1933},
        {"Times New Roman", false, 'A', 1479},
        {"Tms Rmn", false, 'm', 1593},
        {"Times New Roman", true, 'm', 1706},
        {"Courier New", false, 'i', 1229},
        {"Courier", false, 'M', 1229},
        {"Arial", false, 0xE9, 1139},
        {"Arial Narrow", false, 'A', 1120},
    };
    text_canvas canvas;
    for (const auto& c : cases) {
        LOGFONTA description = description_of(c.face, -2048);
        description.lfWeight = c.bold ? FW_BOLD : FW_NORMAL;
        canvas.font(description);
        EXPECT_EQ(width_of(canvas, c.character), c.width) << c.face << ' ' << c.character;
    }
}

TEST(Text, TakesNegativeHeightsAsCharactersAndPositiveOnesAsCells)
{
    text_canvas canvas;
    TEXTMETRICA metrics{};
    canvas.font("Arial", -2048);
    ASSERT_TRUE(GetTextMetricsA(canvas, &metrics));
    EXPECT_EQ(metrics.tmAscent, 1854);
    EXPECT_EQ(metrics.tmDescent, 434);
    EXPECT_EQ(metrics.tmHeight, 2288);
    EXPECT_EQ(metrics.tmInternalLeading, 240);
    EXPECT_EQ(metrics.tmExternalLeading, 67);
    EXPECT_EQ(metrics.tmAveCharWidth, 904);
    EXPECT_EQ(metrics.tmPitchAndFamily & 0x0F, TMPF_TRUETYPE | TMPF_VECTOR | TMPF_FIXED_PITCH);

    canvas.font("Arial", 2288);
    EXPECT_EQ(width_of(canvas, 'A'), 1366);
    for (const int cell : {1, 7, 16, 33, 100}) {
        canvas.font("Times New Roman", cell);
        ASSERT_TRUE(GetTextMetricsA(canvas, &metrics));
        EXPECT_EQ(metrics.tmHeight, cell);
    }
}

TEST(Text, ScalesMeasuresByTheMapping)
{
    text_canvas canvas;
    SetMapMode(canvas, MM_ANISOTROPIC);
    SetWindowExtEx(canvas, 100, 100, nullptr);
    SetViewportExtEx(canvas, 1000, -1000, nullptr);
    canvas.font("Arial", -100);
    TEXTMETRICA metrics{};
    ASSERT_TRUE(GetTextMetricsA(canvas, &metrics));
    EXPECT_EQ(metrics.tmHeight, 112);
    EXPECT_EQ(width_of(canvas, 'A'), 67);
    EXPECT_EQ(extent_of(canvas, "AAA"), 200);
}

TEST(Text, StretchesToTheAverageWidthAskedFor)
{
    text_canvas canvas;
    canvas.font("Arial", -100);
    TEXTMETRICA metrics{};
    GetTextMetricsA(canvas, &metrics);
    const int natural = extent_of(canvas, "Wide");
    LOGFONTA description = description_of("Arial", -100);
    description.lfWidth = 2 * metrics.tmAveCharWidth;
    canvas.font(description);
    EXPECT_NEAR(extent_of(canvas, "Wide"), 2 * natural, 2 * 0.02 * natural);
    GetTextMetricsA(canvas, &metrics);
    EXPECT_EQ(metrics.tmHeight, 112);
}

TEST(Text, AddsSpaceToCharactersAndBreaks)
{
    text_canvas canvas;
    canvas.font("Arial", -20);
    const int plain = extent_of(canvas, "a b c d");
    EXPECT_EQ(SetTextCharacterExtra(canvas, 3), 0);
    EXPECT_EQ(extent_of(canvas, "a b c d"), plain + 21);
    EXPECT_EQ(SetTextCharacterExtra(canvas, 0), 3);
    SetTextJustification(canvas, 10, 3);
    EXPECT_EQ(extent_of(canvas, "a b c d"), plain + 10);
    EXPECT_EQ(extent_of(canvas, "a b"), extent_of(canvas, "a ") + width_of(canvas, 'b'));
    SetTextJustification(canvas, 0, 0);
    EXPECT_EQ(extent_of(canvas, "a b c d"), plain);
}

TEST(Text, StandsWhereItsAlignmentSays)
{
    text_canvas canvas;
    canvas.font("Arial", -100);
    TEXTMETRICA metrics{};
    GetTextMetricsA(canvas, &metrics);
    const int width = extent_of(canvas, "H");
    SetTextAlign(canvas, TA_BASELINE);
    canvas.write(100, 150, "H");
    const RECT reference = canvas.ink(); // from the pen at (100, 150)
    EXPECT_EQ(reference.bottom, 150);
    EXPECT_EQ(reference.bottom - reference.top, 69); // capitals are 1409 of 2048 units high
    EXPECT_NEAR(reference.left, 108, 1); // 168 of 2048 units

    const struct {
        std::uint32_t align;
        int dx;
        int dy;
    } cases[] = {
        {TA_TOP, 0, metrics.tmAscent},
        {TA_BOTTOM, 0, -metrics.tmDescent},
        {TA_BASELINE | TA_RIGHT, -width, 0},
        {TA_BASELINE | TA_CENTER, -width / 2, 0},
    };
    for (const auto& c : cases) {
        canvas.clear();
        SetTextAlign(canvas, c.align);
        canvas.write(150, 100, "H");
        const RECT ink = canvas.ink();
        EXPECT_EQ(ink.left - reference.left, 50 + c.dx) << c.align;
        EXPECT_EQ(ink.top - reference.top, -50 + c.dy) << c.align;
        EXPECT_EQ(ink.right - ink.left, reference.right - reference.left) << c.align;
    }
}

TEST(Text, TurnsByItsEscapement)
{
    text_canvas upright(200, 200);
    upright.font("Arial", -60);
    SetTextAlign(upright, TA_BASELINE);
    upright.write(100, 100, "L");
    const RECT r = upright.ink();
    const struct {
        int tenths;
        RECT ink;
    } cases[] = {
        {900, {r.top, 200 - r.right, r.bottom, 200 - r.left}},
        {1800, {200 - r.right, 200 - r.bottom, 200 - r.left, 200 - r.top}},
        {2700, {200 - r.bottom, r.left, 200 - r.top, r.right}},
        {-2700, {r.top, 200 - r.right, r.bottom, 200 - r.left}},
    };
    for (const auto& c : cases) {
        text_canvas canvas(200, 200);
        LOGFONTA description = description_of("Arial", -60);
        description.lfEscapement = c.tenths;
        canvas.font(description);
        SetTextAlign(canvas, TA_BASELINE);
        canvas.write(100, 100, "L");
        const RECT ink = canvas.ink();
        EXPECT_NEAR(ink.left, c.ink.left, 1) << c.tenths;
        EXPECT_NEAR(ink.top, c.ink.top, 1) << c.tenths;
        EXPECT_NEAR(ink.right, c.ink.right, 1) << c.tenths;
        EXPECT_NEAR(ink.bottom, c.ink.bottom, 1) << c.tenths;
    }
}

TEST(Text, PutsCharactersAtTheDistancesGiven)
{
    text_canvas canvas;
    canvas.font("Arial", -20);
    const std::array<std::int32_t, 3> dx{50, 0, 90};
    ExtTextOutA(canvas, 10, 10, 0, nullptr, "III", 3, dx.data());
    const RECT all = canvas.ink();
    canvas.clear();
    canvas.write(10, 10, "I");
    const RECT one = canvas.ink();
    EXPECT_EQ(all.left, one.left);
    EXPECT_EQ(all.right, one.right + 50);
}

TEST(Text, KeepsWithinItsClip)
{
    text_canvas canvas;
    canvas.font("Arial", -60);
    const RECT clip{40, 30, 90, 50};
    ExtTextOutA(canvas, 10, 10, ETO_CLIPPED, &clip, "Clipped", 7, nullptr);
    const RECT ink = canvas.ink();
    EXPECT_GE(ink.left, clip.left);
    EXPECT_EQ(ink.top, clip.top);
    EXPECT_LE(ink.right, clip.right);
    EXPECT_EQ(ink.bottom, clip.bottom);

    canvas.clear();
    IntersectClipRect(canvas, 60, 0, 70, 200);
    canvas.write(10, 10, "Clipped");
    EXPECT_GE(canvas.ink().left, 60);
    EXPECT_LE(canvas.ink().right, 70);
}

TEST(Text, FillsBehindItselfWhenOpaque)
{
    text_canvas canvas;
    canvas.font("Arial", -20);
    SetBkColor(canvas, RGB(255, 255, 0));
    const RECT box{100, 100, 110, 105};
    ExtTextOutA(canvas, 0, 0, ETO_OPAQUE, &box, nullptr, 0, nullptr);
    EXPECT_EQ(canvas.ink_pixels(), 50);
    EXPECT_EQ(canvas.at(100, 100), RGB(255, 255, 0));

    canvas.clear();
    SetBkMode(canvas, OPAQUE);
    SIZE extent{};
    GetTextExtentPoint32A(canvas, "abc", 3, &extent);
    canvas.write(10, 20, "abc");
    EXPECT_EQ(canvas.ink_pixels(), extent.cx * extent.cy);
    EXPECT_EQ(canvas.ink(), (RECT{10, 20, 10 + extent.cx, 20 + extent.cy}));
}

TEST(Text, UnderlinesAndStrikesOut)
{
    const auto rows_of_bar = [](bool underline, bool strike_out) {
        text_canvas canvas;
        LOGFONTA description = description_of("Arial", -100);
        description.lfUnderline = underline;
        description.lfStrikeOut = strike_out;
        canvas.font(description);
        SetTextAlign(canvas, TA_BASELINE);
        canvas.write(10, 120, "  ");
        return canvas.ink();
    };
    EXPECT_EQ(rows_of_bar(false, false), RECT{});
    const RECT under = rows_of_bar(true, false);
    EXPECT_GT(under.top, 120);
    EXPECT_LT(under.bottom, 120 + 22);
    EXPECT_EQ(under.right - under.left, 56);
    const RECT through = rows_of_bar(false, true);
    EXPECT_GT(through.top, 120 - 52);
    EXPECT_LT(through.bottom, 120 - 10);
}

TEST(Text, MovesTheCurrentPosition)
{
    text_canvas canvas;
    canvas.font("Arial", -20);
    SetTextAlign(canvas, TA_UPDATECP);
    MoveToEx(canvas, 30, 40, nullptr);
    canvas.write(0, 0, "moving");
    POINT position{};
    GetCurrentPositionEx(canvas, &position);
    EXPECT_EQ(position.x, 30 + extent_of(canvas, "moving"));
    EXPECT_EQ(position.y, 40);
    EXPECT_GE(canvas.ink().left, 30);
}

TEST(Text, ShowsTheCharactersOfItsSet)
{
    const auto drawn = [](const char* face, std::uint8_t charset, std::string_view text) {
        text_canvas canvas;
        canvas.font(face, -40, charset);
        canvas.write(10, 10, text);
        EXPECT_GT(canvas.ink_pixels(), 0) << face << ' ' << int{charset};
        return std::string(canvas.bytes());
    };
    EXPECT_EQ(drawn("Arial CYR", ANSI_CHARSET, "\xCF"), drawn("Arial", RUSSIAN_CHARSET, "\xCF"));
    EXPECT_NE(drawn("Arial", RUSSIAN_CHARSET, "\xCF"), drawn("Arial", ANSI_CHARSET, "\xCF"));
    // Cyrillic A and Latin A are the same glyph; a space holds no ink of its own.
    EXPECT_EQ(drawn("Arial", RUSSIAN_CHARSET, "\xC0"), drawn("Arial", ANSI_CHARSET, "A"));
    EXPECT_EQ(drawn("Arial", GREEK_CHARSET, "\xC1"), drawn("Arial", ANSI_CHARSET, "A"));
}

// Every sign must come from some font of the set-up; a face without it would show the same box each time.
TEST(Text, FindsTheSignsOfSymbolFaces)
{
    const struct {
        const char* face;
        std::string_view signs;
    } cases[] = {
        {"Symbol",
            "\"$'"
            "abcdefgVWXYZ\xA2\xA3\xA5\xB1\xB3\xB9\xBB\xC5\xCE\xD1\xD6\xE5\xE6\xE7\xE8\xEC\xED\xEE\xF2\xF3"
            "\xF5"},
        {"ZapfDingbats", "!\"&*4678HIlnu\xAB\xAC\xB6\xC0\xD4\xE8"},
        {"Wingdings", "\"FGJLNQSTYlnqrsuv\x81\x8C\x9F\xA8\xAB\xD8\xDF\xE0\xE8\xEF\xF0\xFB\xFC\xFD\xFE"},
        {"MT Extra", "KLMNOhlmor"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> seen;
        for (const char sign : c.signs) {
            text_canvas canvas(80, 80);
            canvas.font(c.face, -40);
            canvas.write(10, 10, {&sign, 1});
            EXPECT_GT(canvas.ink_pixels(), 0) << c.face << ' ' << int{static_cast<unsigned char>(sign)};
            const std::string picture(canvas.bytes());
            EXPECT_EQ(std::find(seen.begin(), seen.end(), picture), seen.end())
                << c.face << ' ' << int{static_cast<unsigned char>(sign)} << " looks like another sign";
            seen.push_back(picture);
        }
    }
}

TEST(Text, PassesOverControlCharacters)
{
    text_canvas canvas;
    canvas.font("Arial", -20);
    EXPECT_EQ(extent_of(canvas, "ab\r\n"), extent_of(canvas, "ab"));
}

// Drawn at eight times the size, a text has 64 times the ink: what averaging it down relies on.
TEST(Text, KeepsItsWeightAtAnySize)
{
    const auto ink = [](int height) {
        text_canvas canvas(800, 200);
        canvas.font("Arial", -height);
        canvas.write(0, 0, "Hamburg");
        return canvas.ink_pixels();
    };
    const double large = ink(160);
    EXPECT_NEAR(ink(80) * 4 / large, 1, 0.02);
    EXPECT_NEAR(ink(20) * 64 / large, 1, 0.12);
}

TEST(Text, DrawsTheVisiblePartOfHugeGlyphs)
{
    text_canvas canvas;
    for (const int height : {-500, -5000, -30000, -2000000000}) {
        canvas.clear();
        canvas.font("Arial", height);
        SetTextAlign(canvas, TA_BASELINE);
        // The left stem lies between 0.08 and 0.17 em; the largest em is limited.
        const int em = std::min(-height, 16000);
        canvas.write(200 - em / 8, 150, "H");
        EXPECT_GT(canvas.ink_pixels(), 0) << height;
    }
    canvas.clear();
    canvas.font("Arial", -30000);
    SetTextAlign(canvas, TA_BASELINE);
    canvas.write(2147483647, -2147483647, "HHHH");
    EXPECT_EQ(canvas.ink_pixels(), 0);
}

TEST(Text, SlantsAndEmboldensFacesThatHaveNoSuchStyle)
{
    const auto ink = [](bool bold, bool italic) {
        text_canvas canvas;
        LOGFONTA description = description_of("Symbol", -100);
        description.lfWeight = bold ? FW_BOLD : FW_NORMAL;
        description.lfItalic = italic;
        canvas.font(description);
        canvas.write(10, 10, "I");
        return canvas.ink_pixels() * 1000 + (canvas.ink().right - canvas.ink().left);
    };
    EXPECT_GT(ink(true, false) / 1000, ink(false, false) / 1000 * 11 / 10);
    EXPECT_GT(ink(false, true) % 1000, ink(false, false) % 1000 + 10);
}

TEST(Text, KernsByTheFontsPairs)
{
    text_canvas canvas;
    canvas.font("Arial", -2048);
    const std::uint32_t count = GetKerningPairsA(canvas, 0, nullptr);
    ASSERT_GT(count, 100U);
    std::vector<KERNINGPAIR> pairs(count);
    ASSERT_EQ(GetKerningPairsA(canvas, count, pairs.data()), count);
    const auto found = std::find_if(
        pairs.begin(), pairs.end(), [](const KERNINGPAIR& p) { return p.wFirst == 'A' && p.wSecond == 'V'; });
    ASSERT_NE(found, pairs.end());
    EXPECT_EQ(found->iKernAmount, -152);
    EXPECT_EQ(GetKerningPairsA(canvas, 5, pairs.data()), 5U);
}

TEST(Text, ListsTheInstalledFamilies)
{
    text_canvas canvas;
    std::vector<std::string> names;
    const auto collect = [](const LOGFONTA* font, const TEXTMETRICA*, std::uint32_t type, LPARAM data) {
        EXPECT_EQ(type, TRUETYPE_FONTTYPE);
        reinterpret_cast<std::vector<std::string>*>(data)->push_back(font->lfFaceName);
        return 7;
    };
    EXPECT_EQ(EnumFontFamiliesA(canvas, nullptr, collect, reinterpret_cast<LPARAM>(&names)), 7);
    EXPECT_NE(std::find(names.begin(), names.end(), "Liberation Sans"), names.end());
    const auto family_count = names.size();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::unique(names.begin(), names.end()), names.end());

    names.clear();
    EnumFontFamiliesA(canvas, "liberation sans", collect, reinterpret_cast<LPARAM>(&names));
    EXPECT_EQ(names.size(), 4U) << "regular, italic, bold, bold italic";

    int calls = 0;
    const auto stop = [](const LOGFONTA*, const TEXTMETRICA*, std::uint32_t, LPARAM data) {
        ++*reinterpret_cast<int*>(data);
        return 0;
    };
    EXPECT_EQ(EnumFontFamiliesA(canvas, nullptr, stop, reinterpret_cast<LPARAM>(&calls)), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_GT(family_count, 1U);
}

TEST(Text, RefusesWhatIsNoContextOrNoText)
{
    SIZE extent{};
    TEXTMETRICA metrics{};
    std::int32_t width = 0;
    EXPECT_EQ(GetTextExtentPoint32A(nullptr, "a", 1, &extent), 0);
    EXPECT_EQ(GetTextMetricsA(nullptr, &metrics), 0);
    EXPECT_EQ(TextOutA(nullptr, 0, 0, "a", 1), 0);
    EXPECT_EQ(CreateFontIndirectA(nullptr), nullptr);
    text_canvas canvas;
    EXPECT_EQ(GetTextExtentPoint32A(canvas, nullptr, 1, &extent), 0);
    EXPECT_EQ(GetTextExtentPoint32A(canvas, "a", -1, &extent), 0);
    EXPECT_EQ(TextOutA(canvas, 0, 0, "a", -1), 0);
    EXPECT_EQ(GetCharWidthA(canvas, 5, 4, &width), 0);
    EXPECT_EQ(GetCharWidthA(canvas, 255, 256, &width), 0);
    EXPECT_EQ(canvas.ink_pixels(), 0);
}

} // namespace
} // namespace klv
