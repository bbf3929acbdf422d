#include "tests/filters/wmf_builder.h"
#include "tests/filters/wmf_conversion.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::conversion;
using test::wmf_builder;
using enum wmf_function;

constexpr int exclusive_or = 7;
constexpr int copy = 13;

// The comment as the library's writer puts it: kind, angle, two colours of C, M, Y, K in per cents of 200.
std::vector<std::uint8_t> fill_comment(int kind, int angle, std::array<int, 4> from, std::array<int, 4> to)
{
    std::vector<std::uint8_t> bytes{'Z', 'Y', 'N', 'f', 'i', 'l', 'l', 0};
    bytes.push_back(static_cast<std::uint8_t>(kind));
    bytes.push_back(0);
    wmf_builder::put16(bytes, angle);
    for (const auto& colour : {from, to})
        for (const int ink : colour)
            bytes.push_back(static_cast<std::uint8_t>(ink));
    bytes.resize(28, 255);
    return bytes;
}

vFILLSPEC fill_of_first_figure(conversion& c)
{
    vFILLSPEC current;
    vFILLSPEC at_figure;
    bool found = false;
    for_each_record(c.picture, [&](metafile_record& record) {
        if (const auto* fill = std::get_if<fill_spec_record>(&record))
            current = fill->spec;
        const bool figure = std::holds_alternative<rectangle_record>(record)
            || std::holds_alternative<shape_record>(record);
        if (figure && !found) {
            at_figure = current;
            found = true;
        }
    });
    EXPECT_TRUE(found);
    return at_figure;
}

TEST(WmfGraduation, CommentNamesTheFillOfTheNextFigure)
{
    const struct {
        int kind;
        vFILLTYPE type;
    } kinds[] = {{3, vFILL_LINEAR}, {4, vFILL_LINEAR_LOGARITHMIC}, {5, vFILL_LINEAR_TWO_WAY},
        {6, vFILL_RADIAL}, {7, vFILL_RADIAL_QUADRATIC}};
    for (const auto& k : kinds) {
        auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96).brush(0, 0).select(0);
        file.comment(fill_comment(k.kind, 30, {0, 200, 200, 0}, {200, 0, 0, 0}));
        file.add(set_rop2, {exclusive_or}).add(ellipse, {9, 9, 0, 0}).add(set_rop2, {copy});
        file.rectangle(1, 2, 3, 4);
        file.add(set_rop2, {exclusive_or}).add(ellipse, {9, 9, 0, 0}).add(set_rop2, {copy});
        file.rectangle(5, 6, 7, 8);
        conversion c(file.build());
        EXPECT_EQ(c.figures(), "rectangle, rectangle");
        const auto fill = fill_of_first_figure(c);
        EXPECT_EQ(fill.Type(), k.type);
        EXPECT_EQ(fill.Angle(), vANGLE(short{30}));
        EXPECT_EQ(fill.ColourFrom(), vCOLOUR(255, 0, 0));
        EXPECT_EQ(fill.ColourTo(), vCOLOUR(0, 255, 255));
    }
}

// Strips in exclusive-or mode from black to white, the mask, and the strips again.
wmf_builder strips(const std::vector<std::uint32_t>& colours, vPOINT step)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96);
    const auto draw = [&] {
        file.add(set_rop2, {exclusive_or});
        vPOINT at(100, 100);
        for (std::size_t i = 0; i < colours.size(); ++i) {
            file.brush(0, colours[i]).select(0).add(delete_object, {0});
            file.add(polygon, {3, at.x, at.y, at.x + 5, at.y, at.x, at.y + 5});
            at = at + step;
        }
        file.add(set_rop2, {copy});
    };
    draw();
    file.brush(0, 0).select(0).add(polygon, {3, 0, 0, 500, 0, 500, 500});
    draw();
    return file;
}

std::uint32_t grey(int level) { return static_cast<std::uint32_t>(level * 0x010101); }

TEST(WmfGraduation, StripsBecomeAGraduatedFill)
{
    const std::vector<std::uint32_t> even{grey(0), grey(128), grey(255)};
    const std::vector<std::uint32_t> slow{grey(0), grey(40), grey(255)};
    const std::vector<std::uint32_t> fast{grey(0), grey(220), grey(255)};
    const std::vector<std::uint32_t> falling_slow{grey(255), grey(240), grey(0)};
    const std::vector<std::uint32_t> there_and_back{grey(0), grey(255), grey(0)};
    const struct {
        const char* what;
        std::vector<std::uint32_t> colours;
        vPOINT step;
        vFILLTYPE type;
        short angle;
        int from;
        int to;
    } cases[] = {
        {"to the right", even, {10, 0}, vFILL_LINEAR, 0, 0, 255},
        {"to the left", even, {-10, 0}, vFILL_LINEAR, 180, 0, 255},
        {"upwards", even, {0, -10}, vFILL_LINEAR, 90, 0, 255},
        {"downwards", even, {0, 10}, vFILL_LINEAR, 270, 0, 255},
        {"up and right", even, {10, -10}, vFILL_LINEAR, 45, 0, 255},
        {"down and left", even, {-10, 10}, vFILL_LINEAR, 225, 0, 255},
        {"slow start", slow, {10, 0}, vFILL_LINEAR_LOGARITHMIC, 0, 255, 0},
        {"fast start", fast, {10, 0}, vFILL_LINEAR_LOGARITHMIC, 180, 0, 255},
        {"slow start, falling", falling_slow, {10, 0}, vFILL_LINEAR_LOGARITHMIC, 0, 0, 255},
        {"there and back", there_and_back, {10, 0}, vFILL_LINEAR_TWO_WAY, 0, 0, 255},
    };
    for (const auto& s : cases) {
        conversion c(strips(s.colours, s.step).build());
        EXPECT_EQ(c.all<shape_record>().size(), 1u) << s.what;
        const auto fill = fill_of_first_figure(c);
        EXPECT_EQ(fill.Type(), s.type) << s.what;
        EXPECT_EQ(fill.Angle(), vANGLE(s.angle)) << s.what;
        EXPECT_EQ(fill.ColourFrom().Red(), s.from) << s.what;
        EXPECT_EQ(fill.ColourTo().Red(), s.to) << s.what;
    }
}

TEST(WmfGraduation, KeepsTheFirst500StripColours)
{
    std::vector<std::uint32_t> colours;
    for (int i = 0; i < 600; ++i)
        colours.push_back(grey(i < 500 ? i * 200 / 499 : 255));
    conversion c(strips(colours, {1, 0}).build());
    EXPECT_EQ(fill_of_first_figure(c).ColourTo().Red(), 200);
}

TEST(WmfGraduation, ExclusiveOrModeWithoutStripsDrawsAsUsualAfterwards)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96).brush(0, 0x1234).select(0);
    file.add(set_rop2, {exclusive_or}).rectangle(0, 0, 9, 9).add(set_rop2, {copy}).rectangle(1, 1, 8, 8);
    conversion c(file.build());
    EXPECT_EQ(c.figures(), "rectangle");
}

// A transparent bitmap as the writer cuts it: whole rows together, shorter runs one by one, each placed by
// its lower edge with a height of two units more than the row has.
TEST(WmfGraduation, PutsTheRunsOfATransparentBitmapTogetherAgain)
{
    constexpr int width = 7;
    constexpr int height = 5;
    for (const auto& [target_width, target_height] : {std::pair{7, 5}, std::pair{100, 73}, std::pair{8, 6}}) {
        const vRECT target(vPOINT(50, 60), target_width, target_height);
        const double sx = target_width / double{width};
        const double sy = target_height / double{height};
        std::vector<std::uint8_t> start{
            'Z', 'Y', 'N', 'S', 't', 'a', 'r', 't', 'T', 'r', 'a', 'n', 's', 'B', 'l', 'i', 't'};
        start.resize(24);
        for (const std::uint32_t v :
            {0xFFFFFFu, 5u, 24u, 0u, 0u, std::uint32_t{width}, std::uint32_t{height}})
            wmf_builder::put32(start, v);
        for (const int v : {target.Left(), target.Top(), target.Right(), target.Bottom()})
            wmf_builder::put32(start, static_cast<std::uint32_t>(v));
        auto end = std::vector<std::uint8_t>{
            'Z', 'Y', 'N', 'E', 'n', 'd', 'T', 'r', 'a', 'n', 's', 'B', 'l', 'i', 't'};
        end.resize(24);

        auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96).comment(start);
        const auto opaque = [](int x, int y) { return (x * 3 + y * 5) % 4 != 0; };
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                if (!opaque(x, y))
                    continue;
                const int bottom = target.Bottom() - static_cast<int>(y * sy);
                const int size = target.Bottom() - static_cast<int>((y + 1) * sy) - bottom - 2;
                auto run = wmf_builder::bytes_of({0x20, 0xCC, 0, 1, 1, 0, 0, size, static_cast<int>(sx),
                    bottom, target.Left() + static_cast<int>(x * sx)});
                auto dib = wmf_builder::bytes_of(
                    {40, 0, 1, 0, 1, 0, 1, 24, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, x + 16 * y, 0});
                run.insert(run.end(), dib.begin(), dib.end());
                file.add_bytes(stretch_dib, run);
            }
        file.comment(end);
        conversion c(file.build());
        const auto bitmaps = c.all<bitmap_record>();
        ASSERT_EQ(bitmaps.size(), 1u);
        ASSERT_TRUE(bitmaps[0].bitmap);
        EXPECT_NE(bitmaps[0].transparency, 0);
        EXPECT_EQ(bitmaps[0].destination, target);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                EXPECT_EQ(std::as_const(*bitmaps[0].bitmap).line(y)[static_cast<std::size_t>(3 * x)],
                    opaque(x, y) ? x + 16 * y : 255)
                    << x << ", " << y << " in " << target_width;
    }
}

} // namespace
} // namespace klv
