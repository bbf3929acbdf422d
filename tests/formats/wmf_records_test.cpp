#include "klv/formats/wmf_records.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using bytes = std::vector<std::uint8_t>;

template <class Record> bytes written(wmf_function function, const Record& record, const bytes& rest = {})
{
    byte_writer out;
    wmf_write_record(out, function, record, rest);
    return {out.span().begin(), out.span().end()};
}

TEST(WmfRecords, StandInTheFileAsPublished)
{
    // Size in words, function, then the parameters: mostly the last one first.
    const struct {
        bytes record;
        bytes expected;
    } cases[] = {
        {written(wmf_function::line_to, wmf_pair{.y = 2, .x = -1}),
            {5, 0, 0, 0, 0x13, 0x02, 2, 0, 0xFF, 0xFF}},
        {written(wmf_function::rectangle, wmf_rect{.bottom = 4, .right = 3, .top = 2, .left = 1}),
            {7, 0, 0, 0, 0x1B, 0x04, 4, 0, 3, 0, 2, 0, 1, 0}},
        {written(wmf_function::set_text_color, wmf_colour{0x00563412}),
            {5, 0, 0, 0, 0x09, 0x02, 0x12, 0x34, 0x56, 0}},
        {written(wmf_function::create_pen_indirect,
             wmf_pen{.style = 1, .width = {.x = 5, .y = 0}, .colour = 0x0000FF}),
            {8, 0, 0, 0, 0xFA, 0x02, 1, 0, 5, 0, 0, 0, 0xFF, 0, 0, 0}},
        {written(wmf_function::pat_blt,
             wmf_pat_blt{.rop = 0x00F00021, .target = {.height = 4, .width = 3, .y = 2, .x = 1}}),
            {9, 0, 0, 0, 0x1D, 0x06, 0x21, 0, 0xF0, 0, 4, 0, 3, 0, 2, 0, 1, 0}},
        // What follows is padded to whole words.
        {written(
             wmf_function::escape, wmf_escape{.function = wmf_comment_escape, .byte_count = 3}, {7, 8, 9}),
            {7, 0, 0, 0, 0x26, 0x06, 15, 0, 3, 0, 7, 8, 9, 0}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.record, c.expected);
}

// Fields filled with numbers of their own come back in their places, whatever the order in the file.
template <class Record> void expect_round_trip(const char* name)
{
    Record sent;
    int next = 1;
    std::apply(
        [&next](auto&... field) {
            ((field = static_cast<std::remove_reference_t<decltype(field)>>(-257 * next++)), ...);
        },
        sent.fields());
    byte_writer out;
    wmf_write(out, sent);
    byte_reader in(out.span());
    Record read;
    EXPECT_TRUE(wmf_read(in, read)) << name;
    EXPECT_TRUE(in.at_end()) << name;
    EXPECT_EQ(sent.fields(), read.fields()) << name;

    byte_reader cut(out.span().first(out.size() - 1));
    EXPECT_FALSE(wmf_read(cut, read)) << name;
}

TEST(WmfRecords, ComeBackAsTheyWereWritten)
{
    expect_round_trip<wmf_placeable_header>("placeable header");
    expect_round_trip<wmf_header>("header");
    expect_round_trip<wmf_font>("font");
    expect_round_trip<wmf_arc>("arc");
    expect_round_trip<wmf_round_rect>("round rectangle");
    expect_round_trip<wmf_stretch_dib>("stretched bitmap");
    expect_round_trip<wmf_set_dib_to_dev>("bitmap to device");
    expect_round_trip<wmf_ext_flood_fill>("flood fill");
    expect_round_trip<wmf_frame_region>("frame of a region");
    expect_round_trip<wmf_ext_text_out>("text");
    expect_round_trip<wmf_draw_text>("text in a rectangle");
    expect_round_trip<wmf_region>("region");
}

TEST(WmfRecords, ListsHoldWhatTheBytesHold)
{
    const bytes data{1, 0, 0xFE, 0xFF, 3, 0, 4, 0, 5};
    byte_reader in(data);
    const auto points = wmf_points::read(in, 60000);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].y, -2);
    EXPECT_EQ(points[1].x, 3);
    EXPECT_EQ(in.left(), 1U);

    byte_reader numbers(data);
    const auto counts = wmf_counts::read(numbers, 2);
    ASSERT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts[1], 0xFFFEU);
}

} // namespace
} // namespace klv
