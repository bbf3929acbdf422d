#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/core/collection.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"

#include "tests/metafiles/picture_bytes.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

// What one call appends to a new picture.
template <class Call> std::string appended_by(Call call)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    call(picture);
    EXPECT_EQ(picture.GetNoOfRecords(), 1u);
    return hex(bytes_of(stream), vMETAFILE::header_size);
}

constexpr const char* rect_bytes = "01 00 00 00 fe ff ff ff 03 00 00 00 04 01 00 00";
const vRECT rect(1, -2, 3, 260);

TEST(Recording, WritesAttributesAsTheyAre)
{
    const vLINESPEC line(
        vLINE_DASH, vCOLOUR(1, 2, 3), 7, vCORNER_MITRE, vDASH_EXTENDED, nullptr, vLINESPEC::no_arrow, 3);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.LineSpec(line); }),
        "14 00 01 02 03 00 00 64 00 00 07 00 00 00 03 00 01 00 02 00 05 03 00 00 00 00");

    const vFILLSPEC fill(
        vFILL_LINEAR, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 255), vANGLE(45.0), vFILL_ALTERNATE, vPOINT(10, -1));
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.FillSpec(fill); }),
        "15 00 06 00 ff 00 00 00 00 64 00 00 00 00 ff 00 00 64 00 00 00 00 2d 00 01 00 00 00 "
        "0a 00 00 00 ff ff ff ff");

    const vFONTSPEC font("Ab", vFONT_BOLD, 12, vREAL(1.5), 0, vFONT_CHARACTER_HEIGHT, vANGLE(90.0));
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.FontSpec(font); }),
        "16 00 02 00 41 62 02 00 f4 ff ff ff 00 80 01 00 00 00 00 00 00 00 5a 00");

    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.TextTransparency(0x12345678); }), "26 00 78 56");
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.TextTransparency(-1); }), "26 00 ff ff");
}

TEST(Recording, WritesFiguresAsTheyAre)
{
    const std::string r = rect_bytes;
    const std::string arc_points = " 05 00 00 00 06 00 00 00 07 00 00 00 08 00 00 00";
    const vPOINT start(5, 6);
    const vPOINT end(7, 8);
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawRect(rect); }), "1f 00 " + r);
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawEllipse(rect); }), "20 00 " + r);
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawRoundRect(rect, vSIZE(9, 10)); }),
        "2b 00 " + r + " 09 00 00 00 0a 00 00 00");
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawArc(rect, start, end); }), "28 00 " + r + arc_points);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawPie(rect, start, end); }), "29 00 " + r + arc_points);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawChord(rect, start, end); }), "2a 00 " + r + arc_points);

    const vPOINT points[] = {vPOINT(1, 2), vPOINT(70000, -4)};
    const std::string line = "1e 00 02 00 01 00 00 00 02 00 00 00 70 11 01 00 fc ff ff ff";
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawLine(2, points[0], points[1]); }), line);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawLine(points[0], points[1]); }), line);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawLine(std::span<const vPOINT>()); }), "1e 00 00 00");
    EXPECT_EQ(appended_by([&](vMETAFILE& p) {
        vCOLLECTION collection(vARRAYTYPE::int_pairs);
        collection.AddPoint(points[0]);
        collection.AddPoint(points[0]);
        p.DrawLine(1, collection);
    }),
        "1e 00 01 00 01 00 00 00 02 00 00 00");
}

TEST(Recording, WritesShapesInTheirStreamForm)
{
    const vPOINT corners[] = {vPOINT(0, 0), vPOINT(4, 0), vPOINT(4, 3)};
    const vSHAPE triangle(3, corners);
    const std::string payload = "00 00 00 00 00 00 00 00 04 00 00 00 03 00 00 00 03 00 03 00 01 00 00 00 "
                                "00 00 00 00 00 00 00 00 09 04 00 00 00 00 00 00 00 08 "
                                "04 00 00 00 03 00 00 00 0a";
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.DrawShape(triangle); }), "21 00 " + payload);
    EXPECT_EQ(appended_by([&](vMETAFILE& p) { p.ClipArea(triangle); }), "17 00 " + payload);
}

TEST(Recording, WritesTextThroughThePictureAndThroughTheDevice)
{
    const std::string r = rect_bytes;
    const std::string in_rect = "23 00 02 00 48 69 " + r + " 02 00";
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawTextA("Hi", rect, vTEXT_CENTRE); }), in_rect);
    EXPECT_EQ(
        appended_by([](vDEVICE& p) { p.DrawTextA("Hi", rect, vTEXT_CENTRE, 0, vPOINT(), 0.0); }), in_rect);
    const std::string on_line = "27 00 01 00 48 09 00 00 00 08 00 00 00";
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawTextOnLine("H", vPOINT(9, 8), nullptr); }), on_line);
    EXPECT_EQ(appended_by([](vDEVICE& p) { p.DrawTextOnLine("H", vPOINT(9, 8), nullptr, 0); }), on_line);
    EXPECT_EQ(appended_by([](vMETAFILE& p) { p.DrawChar('x', vPOINT(1, 1), 3); }), "");
}

TEST(Recording, WritesBitmapsWithDestinationAndTransparency)
{
    oMEMDIB dib(2, 1, 24, oMODEL_RGB24, 0);
    const std::uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 0, 0};
    dib.SetImageLines(pixels, oMODEL_RGB24, 0, 1);
    const vRECT place(10, 20, 30, 40);
    const vCOLOUR key(9, 8, 7);
    oDIBCONTEXT context(2, 1, &place, nullptr, nullptr, nullptr, &key, nullptr, 1, 6);
    const std::string bytes = appended_by([&](vMETAFILE& p) { p.DrawDIB(dib, context, nullptr, 0); });
    const std::string transparency = std::to_string(context.GetTransparency());
    EXPECT_EQ(bytes.substr(0, 59), "24 00 03 00 0a 00 00 00 14 00 00 00 1e 00 00 00 28 00 00 00");
    EXPECT_EQ(bytes.substr(60, 11), "0" + transparency + " 00 00 00");
    EXPECT_EQ(bytes.substr(72, 35), "09 08 07 00 00 64 00 00 06 00 00 00");
    EXPECT_EQ(bytes.substr(108, 11), "28 00 00 00");
    EXPECT_EQ(bytes.substr(bytes.size() - 23), "01 02 03 04 05 06 00 00");

    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    const oMEMDIB nothing(0);
    picture.DrawDIB(nothing, context, nullptr, 0);
    EXPECT_EQ(stream.Size(), vMETAFILE::header_size) << "nobody could read an empty bitmap back";
}

metafile_record first_record(vMETAFILE& picture)
{
    record_cursor cursor(picture);
    metafile_record first;
    EXPECT_TRUE(cursor.next(first));
    return first;
}

// What is stored of an 8 x 4 bitmap, black but for a white pixel in the lower left corner.
bitmap_record stored_bitmap(const vRECT& place, const vRECT* source, double angle, int flip_h, int small,
    vTRANSPARENCYTYPE transparency = vTRANSPARENCY_NONE)
{
    oMEMDIB dib(8, 4, 24, oMODEL_RGB24, 0);
    std::vector<std::uint8_t> line(24);
    line[0] = line[1] = line[2] = 255;
    dib.SetImageLines(line.data(), oMODEL_RGB24, 0, 1);
    vIMAGECOLOUR colour;
    colour.SetTransparency(transparency);
    oDIBCONTEXT context(8, 4, &place, source, angle, flip_h, 0, colour, vTILEINFO());
    vMETAFILE picture;
    picture.DrawDIB(dib, context, nullptr, small);
    auto record = first_record(picture);
    return std::move(std::get<bitmap_record>(record));
}

TEST(Recording, StoresBitmapsAsTheyWillLook)
{
    const vRECT place(0, 0, 100, 100);
    const bitmap_record plain = stored_bitmap(place, nullptr, 0, 0, 1, vTRANSPARENCY_WHITE);
    EXPECT_EQ(plain.bitmap->Width(), 8) << "nothing is changed, so nothing is resampled";
    EXPECT_EQ(plain.bitmap->Height(), 4);
    EXPECT_EQ(plain.bitmap->line(0)[0], 255);

    const bitmap_record flipped = stored_bitmap(vRECT(0, 0, 80, 40), nullptr, 0, 1, 0);
    EXPECT_EQ(flipped.bitmap->Width(), 8);
    EXPECT_EQ(flipped.bitmap->line(0)[0], 0);
    EXPECT_EQ(flipped.bitmap->line(0)[21], 255);

    // The longer side of the box keeps the pixels of the source's longer side.
    const vRECT part(0, 0, 4, 4);
    const bitmap_record cut = stored_bitmap(vRECT(0, 0, 100, 50), &part, 0, 0, 0);
    EXPECT_EQ(cut.bitmap->Width(), 4);
    EXPECT_EQ(cut.bitmap->Height(), 2);

    const bitmap_record upright = stored_bitmap(vRECT(0, 0, 80, 40), nullptr, 90, 0, 0);
    EXPECT_NEAR(upright.bitmap->Width(), 4, 1);
    EXPECT_NEAR(upright.bitmap->Height(), 8, 1);
    EXPECT_NEAR(upright.destination.Width(), 40, 1);
    EXPECT_NEAR(upright.destination.Height(), 80, 1);
}

TEST(Recording, LongLinesBecomeSeveralThatMeet)
{
    std::vector<vPOINT> points;
    for (int i = 0; i < 65537; ++i)
        points.emplace_back(i, 0);
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    picture.DrawLine(points);
    const auto bytes = bytes_of(stream);
    const std::size_t second = vMETAFILE::header_size + 4 + 65535 * 8;
    EXPECT_EQ(picture.GetNoOfRecords(), 2u);
    EXPECT_EQ(hex(bytes, second),
        "1e 00 03 00 fe ff 00 00 00 00 00 00 ff ff 00 00 00 00 00 00 00 00 01 00 00 00 00 00");
}

TEST(Recording, PopsRecordWhatComesBack)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    const vLINESPEC wide(vLINE_SOLID, vCOLOUR(), 9, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1);
    picture.PushLineSpec();
    picture.LineSpec(wide);
    EXPECT_EQ(picture.LineSpec().Width(), 9);
    const std::uint32_t before = stream.Size();
    picture.PopLineSpec();
    EXPECT_EQ(picture.LineSpec().Width(), 1);
    EXPECT_EQ(hex(bytes_of(stream), before).substr(0, 41), "14 00 00 00 00 00 00 64 00 00 01 00 00 00");

    const vFONTSPEC current = picture.FontSpec();
    picture.PushFontSpec();
    picture.FontSpec(vFONTSPEC("Other", vFONT_BOLD, 3, vREAL(1.0), 0, vFONT_CELL_HEIGHT, vANGLE()));
    EXPECT_TRUE(picture.FontSpec() == current) << "recording a font does not select it";
    const std::uint32_t before_font = stream.Size();
    picture.PopFontSpec();
    EXPECT_EQ(hex(bytes_of(stream), before_font).substr(0, 23), "16 00 05 00 41 72 69 61");
    EXPECT_EQ(picture.GetNoOfRecords(), 4u);
}

TEST(Recording, CompressesOnlyBlocks)
{
    std::vector<vPOINT> points(400, vPOINT(3, 3));
    const vSHAPE shape(400, points.data());
    vMEMSTREAM stream;
    stream.Compress(1);
    vMETAFILE picture(stream);
    picture.DrawRect(rect);
    picture.DrawShape(shape);
    picture.EndMetaFile();
    EXPECT_EQ(hex(bytes_of(stream)).substr(0, 26), "5a 59 4e 56 4d 4d 45 54 41");
    EXPECT_LT(stream.Size(), 1000u);
}

} // namespace
} // namespace klv
