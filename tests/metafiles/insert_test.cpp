#include "klv/metafiles/detail/playback.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"

#include "tests/metafiles/all_records.h"
#include "tests/metafiles/picture_bytes.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

std::vector<std::string> lines_of(vMETAFILE& picture)
{
    std::vector<std::string> lines;
    for_each_record(picture, [&](metafile_record& r) {
        record_line line;
        describe(r, line);
        lines.emplace_back(line);
    });
    return lines;
}

using lines = std::vector<std::string>;

TEST(Insertion, LogToLogRounds)
{
    insertion in;
    in.width = 100;
    in.height = 100;
    in.target = vRECT(7, 0, 57, 50);
    EXPECT_EQ(in.log_to_log(vPOINT(1, 0)), vPOINT(8, 0));
    EXPECT_EQ(in.log_to_log(vPOINT(100, 100)), vPOINT(57, 50));
    in.target = vRECT(57, 0, 7, 50);
    EXPECT_EQ(in.log_to_log(vPOINT(1, 0)), vPOINT(8, 0)) << "mirroring is a step of its own";
    in.mirror_x = 57 + 7 + 1;
    EXPECT_EQ(in(vPOINT(1, 0)), vPOINT(57, 0));
    in.width = 0;
    EXPECT_EQ(in.log_to_log(vPOINT(50, 0)).x, 57);
}

TEST(Insertion, AppendsOverTheEndRecord)
{
    vMETAFILE source;
    source.DrawLine(2, vPOINT(0, 0), vPOINT(100, 100));
    source.DrawRect(vRECT(0, 0, 50, 50));
    source.DrawTextOnLine("t", vPOINT(50, 50), nullptr);
    source.DrawTextA("b", vRECT(0, 0, 100, 50), vTEXT_LEFT);
    source.EndMetaFile();

    vMETAFILE target;
    target.DrawEllipse(vRECT(0, 0, 1000, 1000));
    target.EndMetaFile();
    const int units = target.LogUnitsPerHorzInch();
    target.Origin(vPOINT(3, 4));
    source.InsertInto(target, vRECT(200, 100, 400, 300));
    EXPECT_EQ(lines_of(target),
        (lines{"ellipse (0, 0, 1000, 1000)", "polyline (200, 100) (400, 300)",
            "shape (200, 100, 300, 200) 4 points: M 200,100 L 300,100 L 300,200 L 200,200 Z",
            "text on line \"t\" at (300, 200)", "text \"b\" (200, 100, 400, 200) alignment 0", "end"}));
    EXPECT_EQ(target.LogUnitsPerHorzInch(), units);
    EXPECT_EQ(target.Origin(), vPOINT(3, 4));
    EXPECT_EQ(target.LogicalWidth(), 1000);
}

TEST(Insertion, MirrorsAboutTheRectangle)
{
    vMETAFILE source;
    source.DrawLine(2, vPOINT(0, 0), vPOINT(100, 100));
    source.EndMetaFile();
    vMETAFILE target;
    target.DrawEllipse(vRECT(0, 0, 1000, 1000));
    target.EndMetaFile();
    source.InsertInto(target, vRECT(300, 0, 100, 200));
    // x runs back from 300 + 100 + 1 - 100.
    EXPECT_EQ(lines_of(target)[1], "polyline (301, 0) (101, 200)");
}

TEST(Insertion, UnfinishedTargetLosesNothing)
{
    vMETAFILE source;
    source.DrawLine(1, vPOINT(5, 5));
    source.EndMetaFile();
    vMETAFILE target;
    target.DrawRect(vRECT(0, 0, 10, 10));
    source.InsertInto(target, vRECT(0, 0, 10, 10));
    EXPECT_EQ(lines_of(target), (lines{"rectangle (0, 0, 10, 10)", "polyline (0, 0)", "end"}));
}

TEST(Insertion, PlacesBitmaps)
{
    vMEMSTREAM stream;
    vMETAFILE source(stream);
    bitmap_record r;
    r.destination = vRECT(0, 0, 100, 100);
    r.bitmap.reset(new oMEMDIB(2, 2, 24, oMODEL_RGB24, 0));
    std::vector<metafile_record> records;
    records.emplace_back(std::move(r));
    append(stream, records);
    source.LogicalExtents(0, 100, 0, 100);
    vMETAFILE target;
    source.InsertInto(target, vRECT(10, 20, 60, 70));
    const auto result = lines_of(target);
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[0].substr(0, 32), "bitmap layout 3 (10, 20, 60, 70)");
}

TEST(Insertion, RefusesNothingToInsertInto)
{
    vMETAFILE source;
    source.DrawLine(1, vPOINT(5, 5));
    vMETAFILE target;
    const std::uint32_t length = target.Length();
    source.InsertInto(target, vRECT(0, 0, 0, 10));
    source.InsertInto(target, vRECT(0, 0, 10, 0));
    EXPECT_EQ(target.Length(), length);
    vMETAFILE same;
    same = source;
    source.InsertInto(same, vRECT(0, 0, 10, 10));
    EXPECT_EQ(source.Length(), vMETAFILE::header_size + 12) << "a picture can't go into itself";
}

} // namespace
} // namespace klv
