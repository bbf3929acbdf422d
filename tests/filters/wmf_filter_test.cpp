#include "klv/base/memory.h"
#include "klv/filters/filter_list.h"
#include "klv/streams/file.h"
#include "klv/streams/ole_stream.h"

#include "tests/filters/wmf_builder.h"
#include "tests/filters/wmf_conversion.h"
#include "tests/filters/wmf_drawing.h"

#include <fstream>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::conversion;
using test::drawing_of_everything;
using test::small_bitmap;
using test::with_four_colours;
using test::wmf_builder;
using enum wmf_function;

constexpr auto faithful = oREADING_LEVEL::faithful;

std::vector<vPOINT> points_of(const vSHAPE& shape)
{
    std::vector<vPOINT> points;
    for (int i = 0; i < shape.NoPoint(); ++i)
        points.push_back(shape[static_cast<std::size_t>(i)]);
    return points;
}

TEST(WmfFilter, RecognisesHeadersWithSensibleSizesOnly)
{
    const auto good = wmf_builder().build();
    const auto placed = wmf_builder().placeable(0, 0, 100, 50, 96).build();
    auto type3 = good;
    type3[0] = 3;
    auto short_header = good;
    short_header[2] = 8;
    auto no_record_fits = good;
    no_record_fits[12] = 2;
    const struct {
        const char* what;
        std::vector<std::uint8_t> file;
        bool accepted;
    } cases[] = {{"plain", good, true}, {"placeable", placed, true}, {"type 3", type3, false},
        {"short header", short_header, false}, {"largest record 2", no_record_fits, false},
        {"17 bytes", {good.begin(), good.begin() + 17}, false}, {"empty", {}, false}};
    for (auto c : cases) {
        std::uint8_t* data = c.file.data();
        vMEMSTREAM stream(&data, static_cast<std::uint32_t>(c.file.size()), vSTRING("x"), 0);
        WMFFILTER filter;
        EXPECT_EQ(filter.CheckStream(stream) == oFILTER_OK, c.accepted) << c.what;
        EXPECT_EQ(stream.CurrentPos(), 0u) << c.what;
        conversion converted(c.file);
        EXPECT_EQ(converted.status == oFILTER_OK, c.accepted) << c.what;
    }
}

TEST(WmfFilter, MapsTheWindowOntoThePlaceableBox)
{
    conversion c(wmf_builder()
                     .placeable(0, 0, 1000, 500, 100)
                     .window(100, 50, 2000, 1000)
                     .rectangle(100, 50, 300, 250)
                     .build());
    ASSERT_EQ(c.status, oFILTER_OK);
    const auto rectangles = c.all<rectangle_record>();
    ASSERT_EQ(rectangles.size(), 1u);
    EXPECT_EQ(rectangles[0].rect, vRECT(0, 0, 100, 100));
    EXPECT_EQ(c.picture.PhysicalWidth(), 254000);
    EXPECT_EQ(c.picture.PhysicalHeight(), 127000);
    EXPECT_EQ(c.picture.LogicalWidth(), 1000);
    EXPECT_EQ(c.picture.LogicalHeight(), 500);
}

TEST(WmfFilter, TakesThePagesProportionsFromTheWindowWithoutABox)
{
    for (const auto level : {oREADING_LEVEL::documented, faithful}) {
        conversion wide(wmf_builder().window(0, 0, 400, 100).rectangle(0, 0, 400, 100).build(), level);
        EXPECT_EQ(wide.picture.PhysicalWidth(), 210000);
        EXPECT_EQ(wide.picture.PhysicalHeight(), 52500);
        // The rectangle fills the page.
        const auto rectangles = wide.all<rectangle_record>();
        ASSERT_EQ(rectangles.size(), 1u);
        EXPECT_EQ(rectangles[0].rect.Width(), wide.picture.LogicalWidth());
        EXPECT_EQ(rectangles[0].rect.Height(), wide.picture.LogicalHeight());
        conversion tall(wmf_builder().window(0, 0, 100, 400).rectangle(0, 0, 10, 10).build(), level);
        EXPECT_EQ(tall.picture.PhysicalWidth(), 74250);
        EXPECT_EQ(tall.picture.PhysicalHeight(), 297000);
    }
}

TEST(WmfFilter, GuardsExtentsAndScalesOfZero)
{
    conversion c(wmf_builder()
                     .placeable(7, 7, 7, 7, 0)
                     .add(set_window_ext, {0, 0})
                     .add(set_viewport_ext, {5, 0})
                     .add(scale_window_ext, {0, 1, 0, 1})
                     .add(scale_viewport_ext, {0, 1, 0, 1})
                     .rectangle(10, 20, 30, 40)
                     .build());
    ASSERT_EQ(c.status, oFILTER_OK);
    EXPECT_EQ(c.all<rectangle_record>().at(0).rect, vRECT(10, 20, 30, 40));
    EXPECT_EQ(c.picture.LogicalWidth(), 1000);
    EXPECT_EQ(c.picture.LogicalHeight(), 1000);
}

TEST(WmfFilter, ClampsCoordinatesAtTheDocumentedLevel)
{
    conversion c(wmf_builder()
                     .placeable(0, 0, 1000, 1000, 96)
                     .window(0, 0, 10, 10)
                     .rectangle(0, 0, 30000, 30000)
                     .add(intersect_clip_rect, {5, 5, 1, 1})
                     .rectangle(0, 2, 30000, 30000)
                     .build());
    const auto rectangles = c.all<rectangle_record>();
    ASSERT_EQ(rectangles.size(), 2u);
    EXPECT_EQ(rectangles[0].rect, vRECT(0, 0, 32766, 32766));
    EXPECT_EQ(rectangles[1].rect, vRECT(100, 200, 500, 500));
}

TEST(WmfFilter, JoinsLineSegmentsUntilAnotherRecord)
{
    conversion c(wmf_builder()
                     .placeable(0, 0, 1000, 1000, 96)
                     .add(line_to, {10, 10})
                     .add(line_to, {20, 10})
                     .add(move_to, {5, 5})
                     .add(line_to, {6, 6})
                     .add(set_bk_mode, {1})
                     .add(line_to, {7, 7})
                     .build());
    const auto lines = c.all<polyline_record>();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].points.size(), 3u);
    EXPECT_EQ(lines[0].points[0], vPOINT(0, 0));
    EXPECT_EQ(lines[1].points.front(), vPOINT(5, 5));
    EXPECT_EQ(lines[2].points.front(), vPOINT(6, 6));
    EXPECT_EQ(lines[2].points.back(), vPOINT(7, 7));
}

TEST(WmfFilter, ClosesPolygonsOnceAndSkipsThoseWithoutTwoPoints)
{
    conversion c(wmf_builder()
                     .placeable(0, 0, 1000, 1000, 96)
                     .add(polygon, {4, 0, 0, 9, 0, 9, 9, 0, 0})
                     .add(polyline, {2, 1, 1, 8, 8})
                     .add(polygon, {1, 5, 5})
                     .add(polygon, {0})
                     .add(polygon, {30000, 1, 2, 3, 4, 5, 9}) // holds three of the points it announces
                     .add(poly_polygon, {3, 3, 1, 2, 0, 0, 4, 0, 4, 4, 7, 7, 8, 8, 9, 9})
                     .build());
    const auto shapes = c.all<shape_record>();
    ASSERT_EQ(shapes.size(), 4u);
    EXPECT_EQ(points_of(shapes[0].shape).size(), 3u);
    EXPECT_EQ(shapes[0].shape.Closed(), 1);
    EXPECT_EQ(shapes[1].shape.Closed(), 0);
    EXPECT_EQ(points_of(shapes[2].shape).size(), 3u);
    EXPECT_EQ(shapes[3].shape.NoOfContours(), 2);
}

TEST(WmfFilter, SplitsPolygonsThatNoShapeCanHold)
{
    // Three polygons of 30,000 points: two fit the first shape, the third needs another.
    constexpr int polygons = 3;
    constexpr int points = 30000;
    std::vector<std::uint8_t> parameters;
    const auto word = [&parameters](int value) {
        parameters.push_back(static_cast<std::uint8_t>(value & 0xFF));
        parameters.push_back(static_cast<std::uint8_t>(value >> 8));
    };
    word(polygons);
    for (int i = 0; i < polygons; ++i)
        word(points);
    for (int i = 0; i < polygons * points; ++i) {
        word(i % 100);
        word(i / 100 % 100);
    }
    conversion c(wmf_builder().add_bytes(poly_polygon, parameters).build(), faithful);
    const auto shapes = c.all<shape_record>();
    ASSERT_EQ(shapes.size(), 2u);
    EXPECT_EQ(shapes[0].shape.NoOfContours() + shapes[1].shape.NoOfContours(), polygons);
}

TEST(WmfFilter, SelectsPensBrushesAndFontsByNumber)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96);
    file.pen(1, 0, 0x0000FF).brush(1, 0x00FF00).font(-20, "Arial", 0, 700);
    file.select(0).select(1).select(2).select(77).add(delete_object, {0}).brush(0, 0xFF0000).select(0);
    conversion c(file.build());
    const auto lines = c.all<line_spec_record>();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].spec.LineType(), vLINE_DASH);
    EXPECT_EQ(lines[0].spec.Width(), 1);
    EXPECT_EQ(lines[0].spec.Colour(), vCOLOUR(255, 0, 0));
    const auto fills = c.all<fill_spec_record>();
    ASSERT_EQ(fills.size(), 3u); // hollow, blue in the freed entry, and the black one at the end
    EXPECT_EQ(fills[0].spec.Type(), vFILL_NONE);
    EXPECT_EQ(fills[1].spec.Colour(), vCOLOUR(0, 0, 255));
    EXPECT_EQ(fills[2].spec.Colour(), vCOLOUR(0, 0, 0));
    const auto fonts = c.all<font_spec_record>();
    ASSERT_EQ(fonts.size(), 1u);
    EXPECT_EQ(fonts[0].spec.Height(), -20);
    EXPECT_EQ(fonts[0].spec.Style(), vFONT_NORMAL);
}

TEST(WmfFilter, KeepsObjectNumbersInStepAtTheFaithfulLevel)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96);
    file.add(dib_create_pattern_brush, {5, 0, 12, 0}).pen(0x11, 3, 0x123456).select(1);
    conversion c(file.build(), faithful);
    const auto lines = c.all<line_spec_record>();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().spec.LineType(), vLINE_DASH); // by the low bits of the style
    EXPECT_EQ(lines.back().spec.Colour(), vCOLOUR(0x56, 0x34, 0x12));
}

TEST(WmfFilter, PutsThePolygonFillModeIntoTheFill)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96).brush(0, 0xFF).select(0);
    file.add(set_poly_fill_mode, {2}).add(polygon, {3, 0, 0, 9, 0, 9, 9});
    conversion documented(file.build());
    conversion meant(wmf_builder(file).build(), faithful);
    const auto last_before_end = [](conversion& c) {
        const auto fills = c.all<fill_spec_record>();
        return fills.at(fills.size() - 2).spec.Mode();
    };
    EXPECT_EQ(last_before_end(documented), vFILL_ALTERNATE);
    EXPECT_EQ(last_before_end(meant), vFILL_WINDING);
}

TEST(WmfFilter, RestoresWhatEachLevelSaves)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96).brush(0, 0xFF).brush(0, 0xFF00).select(0);
    file.add(save_dc).select(1).window(10, 10, 2000, 2000).add(restore_dc, {-1}).rectangle(0, 0, 10, 10);
    conversion documented(wmf_builder(file).build());
    EXPECT_EQ(documented.all<rectangle_record>().at(0).rect, vRECT(0, 0, 10, 10));
    conversion meant(file.build(), faithful);
    const auto fills = meant.all<fill_spec_record>();
    EXPECT_EQ(fills.at(fills.size() - 2).spec.Colour(), vCOLOUR(255, 0, 0));
}

TEST(WmfFilter, ClipsExactlyAtTheFaithfulLevel)
{
    auto file = wmf_builder().placeable(0, 0, 16000, 16000, 96);
    file.add(save_dc)
        .add(intersect_clip_rect, {200, 200, 100, 100})
        .add(exclude_clip_rect, {160, 160, 120, 120})
        .rectangle(0, 0, 300, 300)
        .add(restore_dc, {-1})
        .rectangle(0, 0, 300, 300);
    conversion c(file.build(), faithful);
    const auto clips = c.all<clip_area_record>();
    ASSERT_EQ(clips.size(), 2u);
    EXPECT_EQ(clips[0].shape.BoundBox(), vRECT(100, 100, 200, 200));
    EXPECT_EQ(clips[1].shape.NoOfContours(), 4); // a frame, as rectangles
    std::string marks;
    for (const auto& s : c.all<state_record>())
        marks += s.code == record_code::push_clip ? '+' : '-';
    EXPECT_EQ(marks, "+-+-");
    for (const auto& r : c.all<rectangle_record>())
        EXPECT_EQ(r.rect, vRECT(0, 0, 300, 300));
}

TEST(WmfFilter, DrawsArcsCounterClockwise)
{
    // From the right (3 o'clock) to the top: the upper right quarter.
    conversion c(
        wmf_builder().placeable(0, 0, 1000, 1000, 96).add(arc, {0, 100, 100, 200, 200, 200, 0, 0}).build());
    const auto shapes = c.all<shape_record>();
    ASSERT_EQ(shapes.size(), 1u);
    const vRECT box = shapes[0].shape.BoundBox();
    EXPECT_NEAR(box.Left(), 100, 2);
    EXPECT_NEAR(box.Top(), 0, 2);
    EXPECT_NEAR(box.Right(), 200, 2);
    EXPECT_NEAR(box.Bottom(), 100, 2);
}

TEST(WmfFilter, ReadsTextRecords)
{
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 96);
    file.add(set_text_color, {0x00FF, 0}).text_out("abc", 10, 20);
    auto ext = wmf_builder::bytes_of({40, 30, 2, 4, 0, 0, 99, 99});
    ext.insert(ext.end(), {'d', 'e', 1, 0, 1, 0});
    file.add_bytes(ext_text_out, ext);
    auto drawn = wmf_builder::bytes_of({5, 3, 50, 60, 70, 80});
    drawn.insert(drawn.end(), {'f', 0, 'g', 0});
    file.add_bytes(draw_text, drawn);
    conversion c(file.build());
    const auto texts = c.all<text_on_line_record>();
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts[0].text, vSTRING("abc"));
    EXPECT_EQ(texts[0].start, vPOINT(10, 20));
    EXPECT_EQ(texts[1].text, vSTRING("de"));
    EXPECT_EQ(texts[1].start, vPOINT(30, 40));
    EXPECT_EQ(texts[2].text, vSTRING("f"));
    EXPECT_EQ(texts[2].start, vPOINT(50, 60));
    EXPECT_EQ(c.all<fill_spec_record>().at(0).spec.Colour(), vCOLOUR(255, 0, 0));
}

TEST(WmfFilter, MovesAlignedTextToItsBaseline)
{
    const auto start_with = [](int align) {
        auto file = wmf_builder().placeable(0, 0, 16000, 16000, 96).font(-1000, "Arial").select(0);
        file.add(set_text_align, {align}).text_out("xx", 5000, 5000);
        conversion c(file.build(), faithful);
        return c.all<text_on_line_record>().at(0).start;
    };
    constexpr int baseline = 24;
    EXPECT_EQ(start_with(baseline), vPOINT(5000, 5000));
    // Two letters of half an em, an ascent of 0.905 and a descent of 0.212 em.
    EXPECT_NEAR(start_with(baseline | 2).x, 4000, 10);
    EXPECT_NEAR(start_with(baseline | 6).x, 4500, 10);
    EXPECT_NEAR(start_with(0).y, 5905, 10);
    EXPECT_NEAR(start_with(8).y, 4788, 10);
}

TEST(WmfFilter, DrawsBitmapsAndCombinesMaskAndImage)
{
    const auto stretched = with_four_colours({0x20, 0xCC, 0, 2, 2, 0, 0, 100, 200, 10, 20});
    conversion c(wmf_builder().placeable(0, 0, 1000, 1000, 96).add_bytes(stretch_dib, stretched).build());
    const auto drawn = c.all<bitmap_record>();
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_EQ(drawn[0].destination, vRECT(20, 10, 220, 110));
    ASSERT_TRUE(drawn[0].bitmap);
    EXPECT_EQ(std::as_const(*drawn[0].bitmap).line(0)[2], 255); // the red pixel, below left

    // A one-bit mask whose left column is white, then the image.
    auto mask = wmf_builder::bytes_of({0xC6, 0x88, 0, 0, 2, 2, 0, 0});
    const auto mono = small_bitmap(1, {0, 0, 0, 0, 255, 255, 255, 0, 0x80, 0, 0, 0, 0x80, 0, 0, 0});
    mask.insert(mask.end(), mono.begin(), mono.end());
    const auto image = with_four_colours({0x86, 0xEE, 0, 0, 2, 2, 0, 0});
    conversion pair(wmf_builder()
                        .placeable(0, 0, 16000, 16000, 96)
                        .add_bytes(dib_bit_blt, mask)
                        .add_bytes(dib_bit_blt, image)
                        .build(),
        faithful);
    const auto combined = pair.all<bitmap_record>();
    ASSERT_EQ(combined.size(), 1u);
    EXPECT_NE(combined[0].transparency, 0);
    const auto row = std::as_const(*combined[0].bitmap).line(0);
    EXPECT_EQ(row[2], combined[0].transparent_colour.Red());
    EXPECT_EQ(row[4], 255); // the green pixel stays
}

TEST(WmfFilter, KeepsWhatWasDrawnBeforeDamage)
{
    const auto good = [] { return wmf_builder().placeable(0, 0, 1000, 1000, 96).rectangle(1, 1, 2, 2); };
    auto long_record = good();
    long_record.rectangle(3, 3, 4, 4).add(polygon, {2, 0, 0, 9, 9, 1, 1, 1, 1, 1, 1, 1, 1});
    long_record.announced_largest = 7;
    struct {
        const char* what;
        std::vector<std::uint8_t> file;
        oFILTER_STATUS documented;
        oFILTER_STATUS meant;
        std::size_t rectangles;
    } cases[] = {
        {"record of 0 words", good().raw({0, 0, 0, 0}).rectangle(3, 3, 4, 4).build(), oFILTER_FAILED,
            oFILTER_FAILED, 1},
        {"record of 2 words", good().raw({2, 0, 0, 0}).build(), oFILTER_FAILED, oFILTER_FAILED, 1},
        {"record past the end", good().raw({200, 0, 0, 0, 0x1B, 4, 9, 9}).build(false), oFILTER_FAILED,
            oFILTER_FAILED, 1},
        {"no end record", good().build(false), oFILTER_OK, oFILTER_OK, 1},
        {"record longer than announced", long_record.build(), oFILTER_FAILED, oFILTER_OK, 2},
    };
    for (const auto& c : cases) {
        conversion documented(c.file);
        conversion meant(c.file, faithful);
        EXPECT_EQ(documented.status, c.documented) << c.what;
        EXPECT_EQ(meant.status, c.meant) << c.what;
        EXPECT_EQ(documented.all<rectangle_record>().size(), c.rectangles) << c.what;
        EXPECT_EQ(meant.all<rectangle_record>().size(), c.rectangles) << c.what;
        EXPECT_EQ(documented.all<end_record>().size(), 1u) << c.what;
    }
}

TEST(WmfFilter, ReadsTheSameFromMemoryFileAndOleStream)
{
    const auto bytes = drawing_of_everything();
    const auto records_from = [](vSTREAM& stream) {
        vMETAFILE picture;
        WMFFILTER filter;
        filter.ReadingLevel(faithful);
        EXPECT_EQ(filter.Convert(stream, &picture), oFILTER_OK);
        record_line lines;
        for_each_record(picture, [&](metafile_record& record) { describe(record, lines); });
        return lines;
    };
    vMEMSTREAM memory;
    memory.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    memory.MoveFromStart(0);
    const auto expected = records_from(memory);
    EXPECT_FALSE(expected.empty());

    const std::string path = testing::TempDir() + "klv_same_records.wmf";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    vFILE file(vSTRING(path), vFILE::read_only);
    EXPECT_EQ(records_from(file), expected);
    std::remove(path.c_str());

    IStream* const storage = CreateMemoryStream();
    {
        vOLESTREAM ole(&storage);
        ole.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        ole.MoveFromStart(0);
        EXPECT_EQ(records_from(ole), expected);
    }
    storage->Release();
}

TEST(WmfFilter, AnswersAStatusForEveryAllocationThatFails)
{
    const auto bytes = drawing_of_everything();
    const std::uint64_t before = vMemAllocations();
    const bool whole = conversion(bytes, faithful).status == oFILTER_OK;
    ASSERT_TRUE(whole);
    const std::uint64_t count = vMemAllocations() - before;
    for (std::uint64_t n = 0; n < count; ++n) {
        vMemFailAfter(n);
        conversion c(bytes, faithful);
        vMemNeverFail();
        EXPECT_TRUE(c.status == oFILTER_OK || c.status == oFILTER_NO_MEMORY || c.status == oFILTER_FAILED)
            << n;
    }
}

} // namespace
} // namespace klv
