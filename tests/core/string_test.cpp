#include "klv/base/memory.h"
#include "klv/core/library_strings.h"
#include "klv/core/resource_id.h"
#include "klv/core/string.h"
#include "klv/core/system.h"

#include <string>

#include <gtest/gtest.h>

using namespace klv;

namespace klv {

static void PrintTo(const vSTRING& s, std::ostream* out) { *out << '"' << s.View() << '"'; }

} // namespace klv

TEST(String, TakesTextNumbersAndCharacters)
{
    EXPECT_EQ(vSTRING(static_cast<const char*>(nullptr)), "");
    EXPECT_TRUE(vSTRING().Null());
    EXPECT_STREQ(vSTRING()(), "");
    EXPECT_EQ(vSTRING(0), "0");
    EXPECT_EQ(vSTRING(INT32_MIN), "-2147483648");
    EXPECT_EQ(vSTRING(vREAL(1.5)), "1.5");
    EXPECT_EQ(vSTRING(vREAL(1.0 / 3)), "0.3333");
    EXPECT_EQ(vSTRING(vREAL(-32768.0)), "-3.277e+04");
    vSTRING s;
    s = vCHAR('x');
    EXPECT_EQ(s, "x");
    EXPECT_EQ(s.FormatString("%s-%04d", "ab", 7), "ab-0007");
    EXPECT_EQ(s.FormatString(nullptr), "");
}

TEST(String, LimitsItsLength)
{
    const std::string huge(70000, 'a');
    const vSTRING s{std::string_view(huge)};
    EXPECT_EQ(s.Length(), 65535);
    EXPECT_EQ((s + s).Length(), 65535);
    EXPECT_EQ((vSTRING("b") + s).Char(65534)(), 'a');
    vSTRING formatted;
    EXPECT_EQ(formatted.FormatString("%s", huge.c_str()).Length(), 1023);
}

TEST(String, ReadsNumbersLikeC)
{
    const struct {
        const char* text;
        int number;
        double real;
    } cases[] = {
        {" \t42abc", 42, 42},
        {"-17.25x", -17, -17.25},
        {"+3", 3, 3},
        {"+-3", 0, 0},
        {".5", 0, 0.5},
        {"1e2", 1, 100},
        {"inf", 0, 0},
        {"nan", 0, 0},
        {"99999999999", INT32_MAX, 0},
        {"-99999999999", INT32_MIN, 0},
        {"", 0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(vSTRING(c.text).Int(), c.number) << c.text;
    for (const auto& c : cases)
        if (c.number != INT32_MAX && c.number != INT32_MIN) {
            EXPECT_EQ(vSTRING(c.text).Real()(), vREAL(c.real)()) << c.text;
        }
}

TEST(String, SplitsIntoFieldsAndWords)
{
    const vSTRING fields("a,b,,c");
    const char* const expected[] = {"a", "b", "", "c", "", ""};
    for (std::uint16_t n = 0; n < 6; ++n)
        EXPECT_EQ(fields.GetDelimitedSubString(',', n), expected[n]) << n;

    const vSTRING words("  one two  three");
    const char* const expected_words[] = {"one", "two", "three", "", ""};
    for (std::uint16_t n = 0; n < 5; ++n)
        EXPECT_EQ(words.Word(n), expected_words[n]) << n;
    EXPECT_EQ(vSTRING("one ").Word(1), "");

    EXPECT_EQ(vSTRING("a.b.c").GetPreDelimitedSubString('.', 2), "a.b");
    EXPECT_EQ(vSTRING("a.b.c").GetPreDelimitedSubString('.', 3), "");
    EXPECT_EQ(vSTRING("a.b.c").GetPreDelimitedSubString('.', 0), "");
}

TEST(String, TakesParts)
{
    const vSTRING s("hello world");
    EXPECT_EQ(s.GetSubString("o w"), "o world");
    EXPECT_EQ(s.GetSubString("x"), "");
    EXPECT_EQ(s.GetSubString(0, 4), "hello");
    EXPECT_EQ(s.GetSubString(9, 200), "ld");
    EXPECT_EQ(s.GetSubString(5, 4), "");
    EXPECT_EQ(s.GetSubString(11, 12), "");
    EXPECT_EQ(s[4](), 'o');
    EXPECT_EQ(s[11](), '\0');

    vSTRING path("c:\\dir\\file.ext");
    EXPECT_EQ(path.RemoveFromEnd('\\'), "file.ext");
    EXPECT_EQ(path, "c:\\dir");
    EXPECT_EQ(path.RemoveFromEnd('!'), "c:\\dir");
    EXPECT_EQ(path, "c:\\dir");
}

TEST(String, Counts)
{
    EXPECT_EQ(vSTRING("banana").Count('a'), 3);
    EXPECT_EQ(vSTRING("aaaa").NoOfOccurance(vSTRING("aa")), 3);
    EXPECT_EQ(vSTRING("aaaa").NoOfOccurance(vSTRING("")), 0);
}

TEST(String, ChangesInPlace)
{
    vSTRING s("hELLO wORLD \xE9");
    s.Capitalise();
    EXPECT_EQ(s, "Hello world \xE9");
    s.ConvertUpper();
    EXPECT_EQ(s, "HELLO WORLD \xE9") << "ASCII letters only";
    s.ConvertLower();
    EXPECT_EQ(s, "hello world \xE9");
    s.Char(0, 'J');
    s.Char(99, '!');
    EXPECT_EQ(s, "Jello world \xE9");

    vSTRING x("xxabcxx");
    EXPECT_EQ(x.RemoveLeadAndTrailing('x'), "abc");
    EXPECT_EQ(vSTRING("xxx").RemoveLeadAndTrailing('x'), "");
    EXPECT_EQ(vSTRING("").RemoveLeadAndTrailing('x'), "");
    vSTRING y("axbxc");
    y.StripLTChar('x');
    EXPECT_EQ(y, "abc");
    EXPECT_EQ(y.Length(), 3);
    y.Assign(y.View().substr(1));
    EXPECT_EQ(y, "bc") << "a part of its own";
}

TEST(String, OrdersLikeADictionary)
{
    // Windows-1252: E0 is a with grave, C9 is E with acute, 9C is the oe ligature.
    const char* const rising[]
        = {"", "_", "1", "2", "a", "A", "\xE0", "ab", "Ab", "b", "eb", "\xC9h", "ez", "o", "\x9C", "p", "Z"};
    for (std::size_t i = 0; i < std::size(rising); ++i)
        for (std::size_t j = 0; j < std::size(rising); ++j) {
            const vSTRING a(rising[i]);
            const vSTRING b(rising[j]);
            EXPECT_EQ(a < b, i < j) << i << ' ' << j;
            EXPECT_EQ(a >= b, i >= j) << i << ' ' << j;
            EXPECT_EQ(a == b, i == j) << i << ' ' << j;
        }
}

TEST(String, LoadsResources)
{
    EXPECT_EQ(vSTRING(vRESID(library_string::out_of_memory)), "M\xE9moire insuffisante");
    EXPECT_EQ(vSTRING(vRESID(1)), "");

    static const std::string long_text(300, 'x');
    static const string_resource strings[] = {{7, long_text}};
    struct application : vMODULE {
        application()
            : vMODULE(reinterpret_cast<HINSTANCE>(std::uintptr_t{0x40}))
        {
        }
    } module;
    register_strings(module.GetInstance(), strings);
    EXPECT_EQ(vSTRING(vRESID(7, &module)).Length(), 255);
    vSTRING s("old");
    s = vRESID(7, &module);
    EXPECT_EQ(s.Length(), 127);
    s = vRESID(8, &module);
    EXPECT_EQ(s, "");
    EXPECT_TRUE(vRESID(7, &module) == vRESID(7)) << "modules are not compared";
}

TEST(String, BecomesEmptyWhenMemoryIsOut)
{
    const vSTRING source("text");
    vMemFailAfter(0);
    const vSTRING copy(source);
    vMemFailAfter(0);
    const vSTRING sum = source + source;
    vMemNeverFail();
    EXPECT_STREQ(copy(), "");
    EXPECT_STREQ(sum(), "");
    EXPECT_EQ(source, "text");
    vSYSTEM::SetExceptionFlag(0);
}

TEST(Char, ClassifiesAsciiAndComparesSigned)
{
    EXPECT_EQ(vCHAR(0x141)(), 'A');
    EXPECT_LT(vCHAR(0xE9), vCHAR('a')) << "signed 8-bit numbers";
    EXPECT_FALSE(vCHAR(0xE9).IsCharAlphaA());
    EXPECT_TRUE(vCHAR('z').IsCharLowerA() && vCHAR('Z').IsCharUpperA() && vCHAR('0').IsCharNumeric());
    EXPECT_FALSE(vCHAR('[').IsCharAlphaA() || vCHAR('/').IsCharNumeric());
    vCHAR c(127);
    EXPECT_EQ(c.Next()(), '\x80');
    char out = 0;
    EXPECT_EQ(vCHAR('q').Symbol(out), 'q');
    EXPECT_EQ(out, 'q');
}
