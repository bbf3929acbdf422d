#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/core/progress.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/metafiles/metafile.h"

#include "tests/metafiles/all_records.h"
#include "tests/metafiles/fake_device.h"
#include "tests/metafiles/picture_bytes.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

// A picture of 100 by 100 units whose upper left corner is (10, 20).
struct picture_of_100 : vMETAFILE {
    void finish() { LogicalExtents(10, 110, 20, 120); }
};

// Twice as wide, the same height, at (0, 0).
const vRECT wide_target(0, 0, 200, 100);

std::string played(vMETAFILE& picture, const vRECT& target = wide_target)
{
    fake_device device;
    device.DrawMetafile(picture, target);
    EXPECT_EQ(device.calls.front(), "PushState");
    EXPECT_EQ(device.calls.back(), "PopState");
    return device.inner();
}

template <class Draw> std::string played_after(Draw draw)
{
    picture_of_100 picture;
    draw(picture);
    picture.finish();
    return played(picture);
}

std::string played_records(const std::vector<metafile_record>& records)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    append(stream, records);
    picture.LogicalExtents(10, 110, 20, 120);
    return played(picture);
}

std::vector<metafile_record> one(metafile_record r)
{
    std::vector<metafile_record> records;
    records.push_back(std::move(r));
    return records;
}

TEST(Playback, MapsFiguresIntoTheTarget)
{
    EXPECT_EQ(played_after([](vMETAFILE& p) {
        p.DrawRect(vRECT(10, 20, 60, 70));
        p.DrawLine(2, vPOINT(11, 21), vPOINT(110, 120));
    }),
        "DrawShape M0,0 L100,0 L100,50 L0,50Z\n"
        "DrawLine 2,1 200,100\n");
    EXPECT_EQ(played_after([](vMETAFILE& p) { p.DrawEllipse(vRECT(10, 20, 110, 120)); }),
        "DrawShape M100,0 c154,0 c200,23 C200,50 c200,77 c154,100 C100,100 c46,100 c0,77 C0,50Z c0,23 "
        "c46,0\n");
    EXPECT_EQ(played_after([](vMETAFILE& p) {
        p.DrawArc(vRECT(110, 120, 10, 20), vPOINT(10, 20), vPOINT(60, 70));
        p.DrawPie(vRECT(10, 20, 110, 120), vPOINT(10, 20), vPOINT(60, 70));
        p.DrawChord(vRECT(10, 20, 110, 120), vPOINT(10, 20), vPOINT(60, 70));
    }),
        "DrawArc 0,0,200,100 0,0 100,50\n"
        "DrawPie 0,0,200,100 0,0 100,50\n"
        "DrawChord 0,0,200,100 0,0 100,50\n");
}

TEST(Playback, ScalesLinesAndKeepsFillsAndFonts)
{
    for (const auto& [width, scaled] : {std::pair{3, 3}, {1, 1}, {0, 1}, {-4, 1}, {1000, 1000}})
        EXPECT_EQ(played_after([w = width](vMETAFILE& p) {
            p.LineSpec(
                vLINESPEC(vLINE_SOLID, vCOLOUR(1, 2, 3), w, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
        }),
            "LineSpec " + std::to_string(scaled) + " 030201\n");
    EXPECT_EQ(played_after([](vMETAFILE& p) {
        p.FillSpec(vFILLSPEC(
            vFILL_LINEAR, vCOLOUR(1, 2, 3), vCOLOUR(4, 5, 6), vANGLE(-30.75), vFILL_WINDING, vPOINT(5, 6)));
        p.FontSpec(vFONTSPEC("Face", vFONT_BOLD, 10, vREAL(1.0), 0, vFONT_CELL_HEIGHT, vANGLE()));
        p.TextTransparency(-7);
    }),
        "FillSpec 6 030201 060504 -1966080 5,6\n"
        "FontSpec Face 10\n"
        "TextTransparency 1\n");
}

TEST(Playback, ReplaysStateInCodeOrder)
{
    std::vector<metafile_record> records;
    for (auto c = 10; c <= 19; ++c)
        records.push_back(state_record{record_code{static_cast<std::uint16_t>(c)}});
    EXPECT_EQ(played_records(records),
        "PushState\nPopState\nPushLineSpec\nPopLineSpec\nPushFillSpec\nPopFillSpec\nPushFontSpec\nPopFontSpec"
        "\n"
        "PushClipArea\nPopClipArea\n");
}

TEST(Playback, ClipsAndDrawsOnlyWellFormedShapes)
{
    const vPOINT corners[] = {vPOINT(10, 20), vPOINT(60, 20), vPOINT(60, 70)};
    vSHAPE broken;
    broken.AppendPoint(vBEZPOINT(vPOINT(0, 0), point_flags::start_curve));
    broken.AppendPoint(vBEZPOINT(vPOINT(9, 9), point_flags::control));
    vSHAPE point;
    point.AppendPoint(vBEZPOINT(vPOINT(1, 1), point_flags::start_line));
    EXPECT_EQ(played_after([&](vMETAFILE& p) {
        p.ClipArea(vSHAPE(3, corners));
        p.DrawShape(vSHAPE());
        p.DrawShape(point);
        p.DrawShape(broken);
        p.DrawShape(vSHAPE(3, corners, 0));
        p.DrawLine(std::span<const vPOINT>());
    }),
        "ClipArea M0,0 L100,0 L100,50Z 1\n"
        "DrawShape M0,0 L100,0 L100,50\n"
        "DrawLine\n");
}

TEST(Playback, StopsAtTheEndRecord)
{
    EXPECT_EQ(played_after([](vMETAFILE& p) {
        p.DrawLine(1, vPOINT(10, 20));
        p.EndMetaFile();
        p.DrawLine(1, vPOINT(10, 20));
    }),
        "DrawLine 0,0\n");
}

TEST(Playback, EmptyTargetLeavesTheDeviceAlone)
{
    picture_of_100 picture;
    picture.DrawLine(1, vPOINT(1, 1));
    picture.finish();
    fake_device device;
    device.DrawMetafile(picture, vRECT(5, 5, 5, 50));
    device.DrawMetafile(picture, vRECT(5, 5, 50, 5));
    EXPECT_EQ(device.all(), "");
}

TEST(Playback, BackwardTargetsMirror)
{
    picture_of_100 picture;
    picture.LineSpec(vLINESPEC(vLINE_SOLID, vCOLOUR(), 2, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.DrawLine(2, vPOINT(10, 20), vPOINT(60, 120));
    picture.DrawArc(vRECT(10, 20, 110, 120), vPOINT(10, 20), vPOINT(60, 70));
    picture.finish();
    EXPECT_EQ(played(picture, vRECT(100, 0, 0, 100)),
        "LineSpec 2 000000\n"
        "DrawLine 100,0 50,100\n"
        "DrawArc 0,0,100,100 50,50 100,0\n");
}

TEST(Playback, PictureWithoutAnAxisIsOnlyMovedAlongIt)
{
    vMETAFILE picture;
    picture.DrawLine(2, vPOINT(10, 5), vPOINT(20, 5));
    picture.EndMetaFile();
    EXPECT_EQ(played(picture, vRECT(0, 0, 100, 100)), "DrawLine 0,0 100,0\n");
    vMETAFILE untouched;
    EXPECT_EQ(played(untouched), "");
}

TEST(Playback, SetsTheFontRatioWhileItPlays)
{
    picture_of_100 picture;
    picture.DrawRect(vRECT(10, 20, 110, 120));
    picture.finish();
    fake_device device;
    device.SetFontRatio(vREAL(3.0));
    device.DrawMetafile(picture, vRECT(0, 0, 10, 50));
    EXPECT_EQ(device.ratio(), 32768);
    EXPECT_EQ(device.GetFontRatio()(), vREAL(3.0)());
}

TEST(Playback, OverridesColours)
{
    picture_of_100 picture;
    picture.LineSpec(
        vLINESPEC(vLINE_SOLID, vCOLOUR(0, 0, 0), 1, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.finish();
    fake_device device;
    vCOLOUR red(255, 0, 0);
    picture.Draw(device, wide_target, &red, vPOINT(), 0.0, 0, nullptr, nullptr);
    EXPECT_EQ(device.inner(), "LineSpec 1 0000FF\n");
}

TEST(Playback, ReplaysTextAsTheSwitchSays)
{
    picture_of_100 picture;
    picture.DrawTextA("box", vRECT(10, 20, 60, 70), vTEXT_RIGHT);
    picture.DrawTextOnLine("line", vPOINT(60, 70), nullptr);
    picture.finish();
    // The fake device has no context: no bitmap of the text can be made for it.
    const std::string box = "DrawTextA box 0,0,100,50 1\n";
    EXPECT_EQ(picture.TextReplay(), vTEXTREPLAY::as_bitmap);
    picture.TextReplay(vTEXTREPLAY::as_text);
    EXPECT_EQ(played(picture), box + "DrawTextOnLine line 100,50\n");

    EXPECT_EQ(played_records(one(text_record{vSTRING("x"), vRECT(10, 20, 10, 20), 999})),
        "DrawTextA x 0,0,0,0 0\n");
}

metafile_record bitmap_at(bitmap_layout layout, const vRECT& place, std::int32_t transparency = 0)
{
    bitmap_record r;
    r.layout = layout;
    r.destination = place;
    r.centre = place.TopLeft();
    r.source = vRECT(1, 0, 4, 2);
    r.transparency = transparency;
    r.bitmap.reset(new oMEMDIB(6, 4, 24, oMODEL_RGB24, 0));
    return r;
}

TEST(Playback, PlacesBitmapsOfEveryLayout)
{
    const vRECT place(10, 20, 60, 70);
    const std::string whole = "DrawDIB 6x4 at 0,0,100,50 of 0,0,6,4 transparency ";
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::placed, place))), whole + "0\n");
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::transparent, place))), whole + "0\n");
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::transparent, place, 1))), whole + "1\n");
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::cut, place))),
        "DrawDIB 6x4 at 0,0,100,50 of 1,0,4,2 transparency 0\n");
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::centred, vRECT(60, 70, 0, 0)))),
        "DrawDIB 6x4 at 94,48,106,52 of 0,0,6,4 transparency 0\n");
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::placed, vRECT(300, 300, 400, 400)))), "")
        << "outside";
    // The right half lies outside the picture and is cut off.
    EXPECT_EQ(played_records(one(bitmap_at(bitmap_layout::placed, vRECT(60, 20, 160, 120)))),
        "DrawDIB 6x4 at 100,0,200,100 of 0,0,3,4 transparency 0\n");
}

TEST(Playback, SourceRectangleCutsBitmaps)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    append(stream, one(bitmap_at(bitmap_layout::placed, vRECT(10, 20, 110, 120))));
    picture.LogicalExtents(10, 110, 20, 120);
    fake_device device;
    vRECT left_half(0, 0, 50, 100);
    picture.Draw(device, wide_target, nullptr, vPOINT(), 0.0, 0, &left_half, nullptr);
    EXPECT_EQ(device.inner(), "DrawDIB 6x4 at 0,0,200,100 of 0,0,3,4 transparency 0\n");
}

class stopping_progress : public oPROGRESS {
public:
    explicit stopping_progress(int after)
        : left_(after)
    {
    }
    void oFullScale(std::uint32_t n) override { log += "full " + std::to_string(n) + "\n"; }
    void oSet(std::uint32_t n) override { log += "set " + std::to_string(n) + "\n"; }
    void oStart() override { log += "start\n"; }
    void oTerminate() override { log += "terminate\n"; }
    int Stop() override { return --left_ <= 0; }
    std::string log;

private:
    int left_;
};

TEST(Playback, ReportsProgressAndStops)
{
    picture_of_100 picture;
    for (int i = 0; i < 3; ++i)
        picture.DrawLine(1, vPOINT(10, 20)); // 12 bytes each
    picture.finish();
    stopping_progress progress(2);
    picture.SetProgressInd(&progress);
    EXPECT_EQ(played(picture), "DrawLine 0,0\nDrawLine 0,0\n");
    EXPECT_EQ(progress.log, "start\nfull 91\nset 55\nset 67\nset 79\nset 79\nterminate\n");
}

TEST(Playback, KeepsTheLastPoint)
{
    picture_of_100 picture;
    picture.DrawRect(vRECT(10, 20, 60, 70));
    picture.finish();
    fake_device device;
    device.LogUnitsPerHorzInch(96);
    device.LogUnitsPerVertInch(96);
    device.DrawMetafile(picture, wide_target);
    vPOINT expected(0, 50);
    device.LPtoDP(expected);
    POINT last{};
    picture.LastPoint(last);
    EXPECT_EQ(vPOINT(last), expected);
}

TEST(Playback, EveryRecordReachesTheDevice)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    append(stream, one_of_each_record());
    picture.LogicalExtents(-3, 500, 0, 600);
    fake_device device;
    device.DrawMetafile(picture, vRECT(0, 0, 503, 600));
    // Two reserved records, and a bitmap record of an unknown layout, whose place is empty, draw nothing.
    EXPECT_EQ(device.calls.size(), one_of_each_record().size() - 3 + 2);
}

} // namespace
} // namespace klv
