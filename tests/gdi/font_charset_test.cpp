#include "klv/gdi/text.h"
#include "klv/gdi/text/font_charset.h"
#include "klv/gdi/text/symbol_tables.h"

#include <string>

#include <gtest/gtest.h>

namespace klv::gdi {
namespace {

TEST(FontCharset, ReadsBytesInTheCodePageOfTheSet)
{
    const struct {
        std::uint8_t charset;
        const char* bytes;
        char32_t unicode;
        int length;
    } cases[] = {
        {ANSI_CHARSET, "A", U'A', 1},
        {ANSI_CHARSET, "\x80", U'\u20AC', 1},
        {ANSI_CHARSET, "\x92", U'\u2019', 1},
        {ANSI_CHARSET, "\xE9", U'\u00E9', 1},
        {DEFAULT_CHARSET, "\xE9", U'\u00E9', 1},
        {EASTEUROPE_CHARSET, "\xB3", U'\u0142', 1},
        {RUSSIAN_CHARSET, "\xCF", U'\u041F', 1},
        {GREEK_CHARSET, "\xC1", U'\u0391', 1},
        {TURKISH_CHARSET, "\xFD", U'\u0131', 1},
        {HEBREW_CHARSET, "\xE0", U'\u05D0', 1},
        {ARABIC_CHARSET, "\xC7", U'\u0627', 1},
        {BALTIC_CHARSET, "\xE8", U'\u010D', 1},
        {OEM_CHARSET, "\xC9", U'\u2554', 1},
        {SHIFTJIS_CHARSET, "\x93\xFA", U'\u65E5', 2},
        {SHIFTJIS_CHARSET, "\xB1", U'\uFF71', 1},
        {GB2312_CHARSET, "\xD6\xD0", U'\u4E2D', 2},
        {HANGUL_CHARSET, "\xB0\xA1", U'\uAC00', 2},
        {CHINESEBIG5_CHARSET, "\xA4\xA4", U'\u4E2D', 2},
        {99, "\xE9", U'\u00E9', 1},
    };
    for (const auto& c : cases) {
        const text_character read = code_page::of_charset(c.charset).next(c.bytes);
        EXPECT_EQ(read.unicode, c.unicode) << int{c.charset} << ' ' << c.bytes;
        EXPECT_EQ(read.bytes, c.length) << int{c.charset} << ' ' << c.bytes;
    }
}

TEST(FontCharset, TakesALeadByteWithoutItsTrailAlone)
{
    const code_page& page = code_page::of_charset(SHIFTJIS_CHARSET);
    EXPECT_EQ(page.next("\x93").bytes, 1);
    EXPECT_EQ(page.next("\x93 ").bytes, 1) << "a space is no trail byte";
}

TEST(FontCharset, TurnsNamesIntoUtf8)
{
    EXPECT_EQ(code_page::of_charset(ANSI_CHARSET).utf8("Caf\xE9"), "Caf\xC3\xA9");
    EXPECT_EQ(code_page::of_charset(SHIFTJIS_CHARSET).utf8("\x82l"), "\xEF\xBC\xAD") << "full-width M";
    EXPECT_EQ(code_page::of_charset(GB2312_CHARSET).utf8("\xCB\xCE\xCC\xE5"), "\xE5\xAE\x8B\xE4\xBD\x93");
}

TEST(FontCharset, TakesFaceNamesApart)
{
    const struct {
        const char* name;
        std::uint8_t charset;
        const char* face;
        std::uint8_t meant;
    } cases[] = {
        {"Arial", ANSI_CHARSET, "Arial", ANSI_CHARSET},
        {"Arial CYR", ANSI_CHARSET, "Arial", RUSSIAN_CHARSET},
        {"arial cyr", DEFAULT_CHARSET, "arial", RUSSIAN_CHARSET},
        {"Times New Roman (Hebrew)", ANSI_CHARSET, "Times New Roman", HEBREW_CHARSET},
        {"Arial CE", GREEK_CHARSET, "Arial", GREEK_CHARSET},
        {"@MS Mincho", ANSI_CHARSET, "MS Mincho", SHIFTJIS_CHARSET},
        {"CE", ANSI_CHARSET, "CE", ANSI_CHARSET},
        {"", ANSI_CHARSET, "", ANSI_CHARSET},
    };
    for (const auto& c : cases) {
        const face_and_charset split = split_face_name(c.name, c.charset);
        EXPECT_EQ(split.face, c.face) << c.name;
        EXPECT_EQ(split.charset, c.meant) << c.name;
    }
}

TEST(FontCharset, NamesLeadBackToTheirSets)
{
    for (const int charset :
        {161, 162, 163, 177, 178, 186, 204, 222, 238, 128, 129, 130, 134, 136, 77, 255, 2}) {
        const auto set = static_cast<std::uint8_t>(charset);
        const std::string name = face_name_with_charset("Arial", set);
        const face_and_charset split = split_face_name(name, ANSI_CHARSET);
        EXPECT_EQ(split.charset, set) << name;
        EXPECT_EQ(split.face, "Arial") << name;
    }
    EXPECT_EQ(face_name_with_charset("Arial", ANSI_CHARSET), "Arial");
    EXPECT_EQ(face_name_with_charset("Arial", DEFAULT_CHARSET), "Arial");
    EXPECT_EQ(face_name_with_charset("Wingdings", SYMBOL_CHARSET), "Wingdings");
}

TEST(SymbolTables, KnowTheSignsOfTheirFaces)
{
    const struct {
        const char* face;
        unsigned char byte;
        char32_t sign;
    } cases[] = {
        {"Symbol", 'a', U'\u03B1'},
        {"SYMBOL", 'W', U'\u03A9'},
        {"Symbol", 0xB3, U'\u2265'},
        {"Symbol", 0xE6, U'\u239B'},
        {"Symbol", 0xF2, U'\u222B'},
        {"Symbol", 0xFE, U'\u23AD'},
        {"Symbol", 0x80, 0},
        {"Symbol", 0x1F, 0},
        {"Wingdings", 'J', U'\u263A'},
        {"Wingdings", 0xFC, U'\u2714'},
        {"Wingdings", 0xE0, U'\u2192'},
        {"Wingdings", 'l', U'\u25CF'},
        {"Wingdings", 0x81, U'\u2460'},
        {"Monotype Sorts", '4', U'\u2714'},
        {"ZapfDingbats", 0xFE, U'\u27BE'},
        {"MT Extra", 'L', U'\u22EF'},
        {"MT Extra", 'h', U'\u210F'},
        {"MT Extra", 'r', U'\u2192'},
        {"Webdings", 'a', U'\u2714'},
        {"Wingdings 2", 'P', U'\u2713'},
        {"Wingdings 3", 'u', U'\u25B6'},
        {"Webdings", 'n', U'\u25CF'},
    };
    for (const auto& c : cases) {
        const auto set = symbol_set_of_face(c.face);
        ASSERT_TRUE(set.has_value()) << c.face;
        EXPECT_EQ(symbol_to_unicode(*set, c.byte), c.sign) << c.face << ' ' << int{c.byte};
    }
    EXPECT_FALSE(symbol_set_of_face("Arial").has_value());
    EXPECT_FALSE(symbol_set_of_face("Symbolic").has_value());
}

} // namespace
} // namespace klv::gdi
