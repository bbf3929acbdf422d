// What the canvas offers beyond what a Windows metafile asks of it.
#include "klv/filters/windows/windows_canvas.h"
#include "klv/gdi/gdi.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"

#include <string>
#include <variant>

#include <gtest/gtest.h>

namespace klv {
namespace {

constexpr std::size_t object_numbers = 8;

// What a canvas recorded, by kind.
template <class Record> std::vector<Record> recorded(vMETAFILE& picture)
{
    std::vector<Record> found;
    for_each_record(picture, [&found](metafile_record& record) {
        if (auto* wanted = std::get_if<Record>(&record))
            found.push_back(std::move(*wanted));
    });
    return found;
}

TEST(CanvasMapping, GoesThroughTheWorldBeforeTheWindow)
{
    canvas_mapping mapping(vPOINT(100, 100), 1);
    mapping.viewport_ext(vPOINT(200, 300));
    mapping.window_org = vPOINT(10, 0);
    EXPECT_EQ(mapping.map(20, 10), vPOINT(20, 30));

    // A quarter turn, doubled and moved: (x, y) becomes (-2 y + 50, 2 x + 5) in the window.
    mapping.world({.m11 = 0, .m12 = 2, .m21 = -2, .m22 = 0, .dx = 50, .dy = 5});
    EXPECT_EQ(mapping.map(20, 10), vPOINT((50 - 20 - 10) * 2, (40 + 5) * 3));
    EXPECT_EQ(mapping.map_width(10), 40);
    EXPECT_EQ(mapping.map_height(-10), -60);

    // Coordinates of 32 bits stay within them.
    mapping.world({.m11 = 1e9, .m12 = 0, .m21 = 0, .m22 = 1});
    EXPECT_EQ(mapping.map(2e9, 0).x, 1 << 30);
}

TEST(CanvasObjects, AreKeptByOrderAndByNumber)
{
    canvas_object_table table(object_numbers);
    const auto colour_at = [&table](std::size_t number) {
        const auto* object = table.find(number);
        const auto* brush = object ? std::get_if<canvas_brush>(object) : nullptr;
        return brush ? static_cast<int>(brush->colour) : -1;
    };
    table.set(2, canvas_brush{.colour = 2});
    table.add(canvas_brush{.colour = 10});
    table.add(canvas_brush{.colour = 11});
    table.add(canvas_brush{.colour = 13});
    EXPECT_EQ(colour_at(0), 10);
    EXPECT_EQ(colour_at(1), 11);
    EXPECT_EQ(colour_at(2), 2);
    EXPECT_EQ(colour_at(3), 13);

    table.remove(1);
    table.add(canvas_brush{.colour = 21});
    EXPECT_EQ(colour_at(1), 21);
    table.set(object_numbers, canvas_brush{.colour = 99}); // beyond all numbers: lost
    EXPECT_EQ(colour_at(object_numbers), -1);
}

TEST(CanvasStates, AreTakenByPlaceAndFromTheEnd)
{
    canvas_state_stack stack;
    canvas_state state(canvas_mapping(vPOINT(1, 1), 1));
    for (COLORREF colour = 1; colour <= 4; ++colour) {
        state.text_colour = colour;
        stack.save(state);
    }
    EXPECT_FALSE(stack.take(0).has_value());
    EXPECT_FALSE(stack.take(5).has_value());
    EXPECT_FALSE(stack.take(-5).has_value());
    EXPECT_EQ(stack.take(-2)->text_colour, 3U); // and the fourth is gone with it
    EXPECT_EQ(stack.take(-1)->text_colour, 2U);
    EXPECT_EQ(stack.take(1)->text_colour, 1U);
    EXPECT_FALSE(stack.take(-1).has_value());
}

TEST(WindowsCanvas, WritesUtf16InTheCharactersOfTheFont)
{
    vMETAFILE picture;
    windows_canvas canvas(picture, documented_reading, object_numbers);
    canvas.start();
    canvas_font font;
    font.face = vSTRING("Arial");
    font.file_height = -20;
    font.charset = RUSSIAN_CHARSET;
    canvas.attributes().objects().set(4, canvas.attributes().make_font(font));
    canvas.attributes().select(4);
    canvas.text().draw(std::u16string_view(u"A\u0416\u03A9"), {5, 6});
    canvas.finish();

    const auto texts = recorded<text_on_line_record>(picture);
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].text.View(), "A\xC6?"); // Zhe is C6 in code page 1251, which has no Omega
    EXPECT_EQ(texts[0].start, vPOINT(5, 6));
}

TEST(WindowsCanvas, RestoresTheWorldWithTheRest)
{
    vMETAFILE picture;
    windows_canvas canvas(picture, faithful_reading, object_numbers);
    canvas.start();
    const world_transform moved{.dx = 7, .dy = 9};
    canvas.save();
    canvas.change_mapping([&](canvas_mapping& mapping) { mapping.world(moved); });
    canvas.set_text_align(TA_CENTER);
    EXPECT_EQ(canvas.state().mapping.world(), moved);
    canvas.restore(-1);
    EXPECT_TRUE(canvas.state().mapping.world().is_identity());
    EXPECT_EQ(canvas.state().text_align, 0);
    canvas.finish();
}

} // namespace
} // namespace klv
