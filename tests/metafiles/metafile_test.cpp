#include "klv/core/progress.h"
#include "klv/geometry/shape.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"

#include "tests/metafiles/picture_bytes.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

constexpr const char* sentinel = "00 6c ca 88";
constexpr int unset = vMETAFILE::unset_extent;

struct extents_probe : vMETAFILE {
    using vMETAFILE::vMETAFILE;
    std::string ends()
    {
        const auto bytes = bytes_of(*record_stream());
        const std::vector<std::uint8_t> part(bytes.begin() + 19, bytes.begin() + 35);
        return hex(part);
    }
};

TEST(Metafile, NewHeaderIsFiftyFiveBytes)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    const std::string s = sentinel;
    EXPECT_EQ(hex(bytes_of(stream)),
        "5a 59 4e 56 4d 4d 45 54 41 30 00 ec 09 00 00 ec 09 00 00 " + s + " " + s + " " + s + " " + s
            + " 00 00 00 00 00 00 00 00 50 34 03 00 28 88 04 00 00 00 00 00");
    EXPECT_EQ(picture.LogicalWidth(), 0);
    EXPECT_EQ(picture.LogicalHeight(), 0);
    EXPECT_EQ(picture.LogUnitsPerHorzInch(), 2540);
    EXPECT_EQ(picture.DeviceType(), vDEV_METAFILE);
    EXPECT_EQ(picture.GetWinDC(), nullptr);
    EXPECT_EQ(picture.Status(), 1);
    EXPECT_EQ(picture.Native(), 0);
}

TEST(Metafile, ExtentsGrowWithWhatIsDrawn)
{
    vMETAFILE picture;
    picture.DrawLine(1, vPOINT(5, 7));
    EXPECT_EQ(picture.LogicalXOffset(), 5);
    EXPECT_EQ(picture.LogicalYOffset(), 7);
    EXPECT_EQ(picture.LogicalWidth(), 0);
    picture.DrawRect(vRECT(20, 1, -4, 3));
    picture.DrawTextOnLine("x", vPOINT(21, 30), nullptr);
    EXPECT_EQ(picture.LogicalXOffset(), -4);
    EXPECT_EQ(picture.LogicalWidth(), 25);
    EXPECT_EQ(picture.LogicalYOffset(), 1);
    EXPECT_EQ(picture.LogicalHeight(), 29);
    picture.DrawShape(vSHAPE());
    picture.DrawChar('c', vPOINT(900, 900), 1);
    EXPECT_EQ(picture.LogicalWidth(), 25) << "neither a shape without a box nor a character counts";
}

TEST(Metafile, EndPutsExtentsAndUnitsIntoTheHeader)
{
    vMEMSTREAM stream;
    extents_probe picture(stream);
    picture.PhysicalExtents(5080, 2540);
    picture.DrawRect(vRECT(0, 0, 200, 50));
    EXPECT_EQ(picture.LogUnitsPerHorzInch(), 2540) << "extents count when they are set";
    picture.EndMetaFile();
    EXPECT_EQ(picture.LogUnitsPerHorzInch(), 100); // 200 units on 2 inches
    EXPECT_EQ(picture.LogUnitsPerVertInch(), 50);
    const auto bytes = bytes_of(stream);
    EXPECT_EQ(hex(bytes, bytes.size() - 2), "f8 00");
    EXPECT_EQ(hex(bytes).substr(11 * 3, 23), "64 00 00 00 32 00 00 00");
    EXPECT_EQ(picture.ends(), "00 00 00 00 c8 00 00 00 00 00 00 00 32 00 00 00");
    EXPECT_EQ(stream.CurrentPos(), stream.Size());
    EXPECT_EQ(hex(bytes).substr(51 * 3, 11), "00 00 00 00") << "the header never learns the count";
}

TEST(Metafile, ReversedExtentsKeepTheirOrder)
{
    extents_probe picture;
    picture.LogicalExtents(100, -20, 7, 7);
    EXPECT_EQ(picture.LogicalWidth(), 120);
    EXPECT_EQ(picture.LogicalXOffset(), -20);
    EXPECT_EQ(picture.LogicalHeight(), 0);
    EXPECT_EQ(picture.LogUnitsPerHorzInch(), 1); // 120 * 2540 / 210000, rounded
    EXPECT_EQ(picture.LogUnitsPerVertInch(), 2540) << "an axis without a size keeps its units";
    EXPECT_EQ(picture.ends(), "64 00 00 00 ec ff ff ff 07 00 00 00 07 00 00 00");
}

TEST(Metafile, PhysicalSizeOfZeroLeavesTheUnits)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    picture.LogicalExtents(0, 100, 0, 100);
    const int units = picture.LogUnitsPerVertInch();
    picture.PhysicalExtents(0, 2540);
    EXPECT_EQ(picture.PhysicalWidth(), 0);
    EXPECT_EQ(picture.LogUnitsPerVertInch(), units);
    EXPECT_EQ(hex(bytes_of(stream)).substr(43 * 3, 23), "00 00 00 00 ec 09 00 00");
    stream.MoveFromStart(0);
    vMETAFILE reread(stream);
    EXPECT_EQ(reread.PhysicalWidth(), 210000);
    EXPECT_EQ(reread.PhysicalHeight(), 297000);
}

TEST(Metafile, IsReadBackFromWhatItWrote)
{
    vMETAFILE picture;
    picture.PhysicalExtents(2540, 2540);
    picture.DrawRect(vRECT(-10, 0, 90, 40));
    picture.EndMetaFile();
    vMEMSTREAM file;
    file << std::uint8_t{0xEE}; // a picture may start anywhere
    picture >> file;
    file.MoveFromStart(1);

    vMETAFILE copy;
    copy.DrawEllipse(vRECT(1, 2, 3, 4)); // a shorter picture than the one it gets
    copy << file;
    EXPECT_EQ(copy.Length(), picture.Length());
    EXPECT_EQ(copy.LogicalXOffset(), -10);
    EXPECT_EQ(copy.LogicalWidth(), 100);
    EXPECT_EQ(copy.PhysicalWidth(), 2540);
    EXPECT_EQ(copy.GetNoOfRecords(), 0u);
    EXPECT_EQ(copy.LogUnitsPerHorzInch(), 100);
    int rectangles = 0;
    EXPECT_TRUE(for_each_record(
        copy, [&](metafile_record& r) { rectangles += std::holds_alternative<rectangle_record>(r); }));
    EXPECT_EQ(rectangles, 1);
}

TEST(Metafile, AssignedPicturesShareOneStream)
{
    vMETAFILE a;
    {
        vMETAFILE b;
        b.DrawRect(vRECT(0, 0, 5, 5));
        a = b;
    }
    a.DrawRect(vRECT(0, 0, 9, 9));
    EXPECT_EQ(a.GetNoOfRecords(), 2u);
    EXPECT_EQ(a.LogicalWidth(), 9);
    EXPECT_EQ(a.Length(), vMETAFILE::header_size + 2 * 18);
}

TEST(Metafile, ProgressIndicatorIsHandedBack)
{
    vMETAFILE picture;
    oPROGRESS progress;
    picture.SetProgressInd(&progress);
    EXPECT_EQ(picture.RemoveProgressInd(), &progress);
    EXPECT_EQ(picture.RemoveProgressInd(), nullptr);
}

// A Windows metafile: the placeable header (its checksum at the end) and the standard one.
std::vector<std::uint8_t> placeable_metafile(std::uint8_t checksum_low)
{
    return {0xD7, 0xCD, 0xC6, 0x9A, 0, 0, 0xF6, 0xFF, 0, 0, 90, 0, 40, 0, 100, 0, 0, 0, 0, 0, checksum_low,
        0xA8, 1, 0, 9, 0, 0, 3, 12, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0};
}

TEST(Metafile, HoldsAWindowsMetafile)
{
    auto bytes = placeable_metafile(0);
    std::uint16_t sum = 0;
    for (std::size_t i = 0; i < 20; i += 2)
        sum = static_cast<std::uint16_t>(sum ^ (bytes[i] | bytes[i + 1] << 8));
    bytes[20] = static_cast<std::uint8_t>(sum & 0xFF);
    bytes[21] = static_cast<std::uint8_t>(sum >> 8);
    vMEMSTREAM stream;
    fill_stream(stream, bytes);
    vMETAFILE picture(stream);
    EXPECT_EQ(picture.Native(), 1);
    EXPECT_EQ(picture.Status(), 1);
    EXPECT_EQ(picture.LogicalXOffset(), -10);
    EXPECT_EQ(picture.LogicalWidth(), 100);
    EXPECT_EQ(picture.LogicalHeight(), 40);
    EXPECT_EQ(picture.LogUnitsPerHorzInch(), 100);
    EXPECT_EQ(stream.CurrentPos(), 40u);
    EXPECT_TRUE(for_each_record(picture, [](metafile_record&) { ADD_FAILURE(); }));

    bytes[20] ^= 1;
    vMEMSTREAM bad;
    fill_stream(bad, bytes);
    EXPECT_EQ(vMETAFILE(bad).Status(), 0);

    vMEMSTREAM plain;
    fill_stream(plain, {bytes.begin() + 22, bytes.end()});
    vMETAFILE unsized(plain);
    EXPECT_EQ(unsized.Native(), 1);
    EXPECT_EQ(unsized.LogicalWidth(), 1000);
    EXPECT_EQ(unsized.LogUnitsPerVertInch(), 576);
    EXPECT_EQ(plain.CurrentPos(), 18u);
}

TEST(Metafile, SurvivesAnyShortStream)
{
    vMETAFILE whole;
    vMEMSTREAM file;
    whole >> file;
    const auto bytes = bytes_of(file);
    for (std::size_t n = 1; n < bytes.size(); ++n) {
        vMEMSTREAM stream;
        fill_stream(stream, {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n)});
        vMETAFILE picture(stream);
        EXPECT_EQ(picture.Native(), n < 9) << n;
        EXPECT_GE(picture.LogicalWidth(), 0) << n;
    }
    EXPECT_EQ(unset, -2000000000);
}

} // namespace
} // namespace klv
