#include "tools/klv/json.h"

#include <gtest/gtest.h>

namespace klv::tool {
namespace {

TEST(Json, SeparatesAndNests)
{
    json_writer json;
    json.begin_array();
    json.begin_object().key("a").value(std::int64_t{-1}).key("b").begin_array().end_array().end_object();
    json.begin_object().end_object().value(2.5).value("x");
    json.end_array();
    EXPECT_EQ(json.text(), R"([{"a":-1,"b":[]},{},2.5,"x"])");
}

TEST(Json, WritesOnlyValidStrings)
{
    const struct {
        std::string text;
        const char* written;
    } cases[] = {
        {"plain", "\"plain\""},
        {"quote \" and \\", R"("quote \" and \\")"},
        {"line\nend\x01", R"("line\u000aend\u0001")"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\""},
        {"latin \xE9", "\"latin \xEF\xBF\xBD\""},
        {"cut \xE2\x82", "\"cut \xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"overlong \xC0\xAF", "\"overlong \xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"surrogate \xED\xA0\x80", "\"surrogate \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
    };
    for (const auto& c : cases) {
        json_writer json;
        json.value(c.text);
        EXPECT_EQ(json.text(), c.written);
    }
}

} // namespace
} // namespace klv::tool
