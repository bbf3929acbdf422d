#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"

#include "tests/metafiles/all_records.h"
#include "tests/metafiles/picture_bytes.h"

#include <random>

#include <gtest/gtest.h>

namespace klv {
namespace {

std::string line_about(const metafile_record& r)
{
    record_line line;
    describe(r, line);
    return std::string(line);
}

struct walk {
    std::vector<std::string> lines;
    bool whole = false;
};

walk walked(vMETAFILE& picture)
{
    walk result;
    result.whole
        = for_each_record(picture, [&](metafile_record& r) { result.lines.push_back(line_about(r)); });
    return result;
}

walk walked(const std::vector<std::uint8_t>& bytes)
{
    vMEMSTREAM stream;
    fill_stream(stream, bytes);
    vMETAFILE picture(stream);
    return walked(picture);
}

// A picture of the given payload bytes after the header.
walk walked_payload(std::uint16_t version, const std::vector<std::uint8_t>& payload)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    set_version(stream, version);
    stream.WritePlain(payload.data(), static_cast<std::uint32_t>(payload.size()));
    return walked(picture);
}

// The payload of a picture that holds what another one gives when it is read.
std::string written_again(vMEMSTREAM& stream, vMEMSTREAM& copy)
{
    vMETAFILE picture(stream);
    vMETAFILE again(copy);
    EXPECT_TRUE(for_each_record(picture, [&](metafile_record& r) {
        record_writer out(copy);
        write_record(out, r);
    }));
    return hex(bytes_of(copy), vMETAFILE::header_size);
}

TEST(RecordReading, EveryKindComesBack)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    auto records = one_of_each_record();
    records.push_back(end_record());
    append(stream, records);
    stream << std::uint16_t{0xFFFF}; // what follows the end does not count

    std::size_t count = 0;
    EXPECT_TRUE(for_each_record(picture, [&](metafile_record& r) {
        ASSERT_LT(count, records.size());
        EXPECT_EQ(line_about(r), line_about(records[count]));
        ++count;
    }));
    EXPECT_EQ(count, records.size());

    // Reading settles a shape's capacity and a bitmap's resolution once; from then on all bytes stay.
    vMEMSTREAM first;
    vMEMSTREAM second;
    const std::string settled = written_again(stream, first);
    EXPECT_EQ((settled.size() + 1) / 3, stream.Size() - 2 - vMETAFILE::header_size);
    EXPECT_EQ(written_again(first, second), settled);
}

TEST(RecordReading, ReadsTheSameFromAStreamThatIsNotInMemory)
{
    // A compressed stream's shapes are read by copying, like those of a file.
    vMEMSTREAM plain;
    vMEMSTREAM compressed;
    compressed.Compress(1);
    vMETAFILE a(plain);
    vMETAFILE b(compressed);
    std::vector<vPOINT> points(500, vPOINT(8, 8));
    points[3] = vPOINT(-1, 9);
    for (vMETAFILE* p : {&a, &b}) {
        p->DrawShape(vSHAPE(500, points.data()));
        p->DrawRect(vRECT(1, 2, 3, 4));
        p->EndMetaFile();
    }
    EXPECT_LT(compressed.Size(), plain.Size());
    EXPECT_EQ(walked(a).lines, walked(b).lines);
}

TEST(RecordReading, OlderVersionsHaveNoFillCentre)
{
    vFILLSPEC fill(vFILL_SOLID, vCOLOUR(1, 1, 1), vCOLOUR(), vANGLE(), vFILL_ALTERNATE, vPOINT(3, 4));
    vMEMSTREAM whole;
    vMETAFILE recorder(whole);
    recorder.FillSpec(fill);
    auto bytes = bytes_of(whole);
    std::vector<std::uint8_t> payload(bytes.begin() + vMETAFILE::header_size, bytes.end());
    for (const auto& [version, centre] : {std::pair{16, false}, {32, false}, {48, true}, {0, true}}) {
        auto record = payload;
        if (!centre)
            record.resize(record.size() - 8);
        record.insert(record.end(), {0xF8, 0});
        const walk result = walked_payload(static_cast<std::uint16_t>(version), record);
        ASSERT_EQ(result.lines.size(), 2u) << version;
        EXPECT_NE(result.lines[0].find(centre ? "centre (3, 4)" : "centre (0, 0)"), std::string::npos)
            << version;
    }
}

TEST(RecordReading, VersionSixteenShapesAreToldApart)
{
    // Boxes, counts and points: two points, as the older layout has them and as the current one does. Small
    // coordinates make the older layout look like the current one.
    const std::vector<std::uint8_t> box(16, 0);
    const std::vector<std::uint8_t> near{5, 0, 0, 0, 0, 0, 0, 0, 9, 7, 0, 0, 0, 0, 0, 0, 0, 2};
    const std::vector<std::uint8_t> far{5, 0, 3, 0, 1, 0, 0, 0, 9, 7, 0, 0, 0, 0, 0, 0, 0, 2};
    for (const bool current : {false, true}) {
        for (const auto& points : {near, far}) {
            std::vector<std::uint8_t> bytes{33, 0};
            bytes.insert(bytes.end(), box.begin(), box.end());
            bytes.insert(bytes.end(), {2, 0});
            if (current)
                bytes.insert(bytes.end(), {2, 0, 0, 0, 0, 0});
            bytes.insert(bytes.end(), points.begin(), points.end());
            bytes.insert(bytes.end(), {0xF8, 0});
            const walk result = walked_payload(16, bytes);
            EXPECT_TRUE(result.whole);
            ASSERT_EQ(result.lines.size(), 2u) << current;
            EXPECT_NE(result.lines[0].find("2 points:"), std::string::npos) << result.lines[0];
            EXPECT_NE(result.lines[0].find("L 7,0"), std::string::npos) << result.lines[0];
        }
    }
}

TEST(RecordReading, KeepsWhatComesBeforeABrokenRecord)
{
    const struct {
        const char* what;
        std::vector<std::uint8_t> bytes;
    } cases[] = {
        {"unknown code", {9, 0, 1, 2, 3, 4}},
        {"half a code", {20}},
        {"polyline longer than the stream", {30, 0, 0xFF, 0xFF, 1, 0, 0, 0, 2, 0, 0, 0}},
        {"shape longer than the stream",
            {33, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0, 9}},
        {"string longer than the stream", {39, 0, 0xFF, 0xFF, 'a', 'b'}},
        {"bitmap without a header", {36, 0, 7, 0, 41, 0, 0, 0}},
        {"bitmap without pixels",
            {36, 0, 9, 0, 40, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0, 0x40, 1, 0, 24, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        std::vector<std::uint8_t> bytes{38, 0, 1, 0};
        bytes.insert(bytes.end(), c.bytes.begin(), c.bytes.end());
        const walk result = walked_payload(48, bytes);
        EXPECT_FALSE(result.whole) << c.what;
        EXPECT_EQ(result.lines, std::vector<std::string>{"text transparency 1"}) << c.what;
    }
}

TEST(RecordReading, MissingEndRecordIsNoFault)
{
    EXPECT_TRUE(walked_payload(48, {38, 0, 1, 0}).whole);
    EXPECT_TRUE(walked_payload(48, {}).whole);
}

// Every cut of a picture and a few thousand damaged ones are read without a fault, and never give more
// records than the whole one has bytes.
TEST(RecordReading, AnyBytesAreSafe)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    append(stream, one_of_each_record());
    const auto bytes = bytes_of(stream);
    for (std::size_t n = vMETAFILE::header_size; n < bytes.size(); ++n)
        walked({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n)});

    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        auto damaged = bytes;
        const auto at = vMETAFILE::header_size + random() % (bytes.size() - vMETAFILE::header_size);
        damaged[at] = static_cast<std::uint8_t>(random() & 0xFF);
        damaged[vMETAFILE::version_offset] = i % 2 == 0 ? 48 : 16;
        EXPECT_LE(walked(damaged).lines.size(), bytes.size());
    }
}

TEST(RecordText, NamesEveryFieldOfARecord)
{
    vMEMSTREAM stream;
    vMETAFILE picture(stream);
    append(stream, one_of_each_record());
    const auto lines = walked(picture).lines;
    const char* const some[] = {
        "push state",
        "pop clip",
        "line type 4 width 5 colour rgb(1, 2, 3) corner 0 dash 1 pattern 5 3 3 3 0 0",
        "fill type 2 mode 0 from rgb(9, 8, 7) to cmyk(5, 10, 15, 20) tint 50 spot angle 30.5 centre (-7, 8)",
        "font \"Times\" style 1 height 14 expansion 0.5 angle -90",
        "clip (0, 0, 40, 30) 3 points: M 0,0 L 40,0 L 40,30 Z",
        "polyline (1, 1) (100000, -5) (2, 2)",
        "text \"in a \\\"rectangle\\\"\" (-3, 4, 500, 600) alignment 2",
        "text on line \"on a line\" at (6, 7)",
        "chord (-3, 4, 500, 600) from (9, 10) to (11, 12)",
        "round rectangle (-3, 4, 500, 600) corner 20 x 10",
        "bitmap layout 1 (98, 49, 102, 51) bitmap 5 x 3 x 24",
        "bitmap layout 4 (-3, 4, 500, 600) part (1, 0, 3, 2) bitmap 5 x 3 x 24",
    };
    for (const char* line : some)
        EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line;
    EXPECT_STREQ(name_of(record_code{999}), "unknown");
}

} // namespace
} // namespace klv
