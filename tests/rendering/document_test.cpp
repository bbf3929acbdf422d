#include "klv/rendering/bitmap_picture.h"
#include "klv/rendering/document.h"
#include "klv/rendering/save.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/wmf_builder.h"
#include "tests/rendering/drawing.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace klv {
namespace {

using test::close_page;
using test::drawn;
using test::use_solid;
using bytes = std::vector<std::uint8_t>;

bytes metafile() { return test::wmf_builder().placeable(0, 0, 100, 50, 100).rectangle(0, 0, 50, 50).build(); }

bytes contents(vMEMSTREAM& stream)
{
    bytes all(stream.Size());
    stream.MoveFromStart(0);
    stream.ReadPlain(all.data(), stream.Size());
    return all;
}

class Document : public test::imaging_test {
protected:
    void SetUp() override
    {
        // Of this run alone: ctest runs tests of one fixture at the same time.
        std::string pattern = testing::TempDir() + "klv_document_XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }
    std::string path(const char* name) const { return (directory_ / name).string(); }

private:
    std::filesystem::path directory_;
};

TEST_F(Document, SaysWhyAFileIsRefused)
{
    bytes cut = metafile();
    cut.resize(30);
    bytes broken(100, 0x7F); // a picture whose first record is none
    std::ranges::copy(vMETAFILE::signature, broken.begin());
    const struct {
        bytes file;
        const char* name;
        render_code code;
        const char* words;
    } cases[] = {
        {{}, "a.wmf", render_code::unreadable, "is empty"},
        {bytes(5000, 0x5A), "a.xyz", render_code::unknown_format, "is of no format that klv reads"},
        {cut, "a.wmf", render_code::unknown_format, "is of no format that klv reads"},
        {bytes(5000, 0x5A), "a.png", render_code::unsupported, "this variant of the format is not handled"},
        {{'G', 'I', 'F', '8', '9', 'a'}, "a", render_code::unreadable,
            "the file ends early or can't be read"},
        {broken, "a", render_code::damaged, "the file is damaged or not of its format"},
    };
    for (const auto& c : cases) {
        document opened;
        opened.warning = vSTRING("as it was");
        const auto status = open_bytes(c.file, opened, c.name);
        EXPECT_EQ(status.code(), c.code) << c.name << ": " << status.words();
        EXPECT_STREQ(status.words(), c.words);
        EXPECT_EQ(opened.warning, vSTRING("as it was"));
    }
    document opened;
    EXPECT_STREQ(open_file(path("missing.wmf"), opened).words(), "No such file or directory");
    EXPECT_STREQ(open_file(path("."), opened).words(), "is a directory");
    rendered_image image;
    EXPECT_EQ(render(opened, {}, image).code(), render_code::bad_options); // holds nothing
    EXPECT_EQ(render_bytes(bytes(9, 9), {}, image).code(), render_code::unknown_format);
}

TEST_F(Document, KeepsWhatADamagedFileHolds)
{
    document opened;
    bytes damaged = test::wmf_builder()
                        .placeable(0, 0, 1000, 500, 100)
                        .rectangle(0, 0, 500, 500)
                        .raw({1, 0, 0, 0})
                        .build();
    ASSERT_TRUE(open_bytes(damaged, opened).ok());
    EXPECT_NE(opened.warning.View().find("what could be read was kept"), std::string_view::npos);
    EXPECT_GT(opened.picture->GetNoOfRecords(), 0U);
}

// One document after the other: the pixels of what was saved are those of what was drawn.
TEST_F(Document, SavesInTheFormatOfTheName)
{
    document opened;
    ASSERT_TRUE(open_bytes(metafile(), opened).ok());
    const auto expected = drawn(opened, {.width = 60});
    for (const char* name : {"a.vmm", "a.png", "a.BMP", "a.tif", "b.vmm", "c.psd"}) {
        const auto saved = save(opened, path(name), {.format = {}, .depth = {}, .render = {.width = 60}});
        ASSERT_TRUE(saved.ok()) << name << ": " << saved.words();
        ASSERT_TRUE(open_file(path(name), opened).ok()) << name;
        EXPECT_TRUE(std::ranges::equal(drawn(opened, {.width = 60}).bytes(), expected.bytes())) << name;
    }
    EXPECT_EQ(opened.format, vSTRING("PSD"));
}

TEST_F(Document, LeavesNoHalfFileAndNoTargetHarmed)
{
    document opened;
    ASSERT_TRUE(open_bytes(metafile(), opened).ok());
    std::ofstream(path("kept.xyz")) << "kept";
    EXPECT_EQ(save(opened, path("kept.xyz")).code(), render_code::unknown_format);
    EXPECT_EQ(save(opened, path("kept.wmf")).code(), render_code::unknown_format);
    EXPECT_EQ(std::filesystem::file_size(path("kept.xyz")), 4U);
    EXPECT_EQ(save(opened, path("no/such/folder.png")).code(), render_code::unwritable);
    EXPECT_EQ(save(opened, path("a.png"), {.format = {}, .depth = {}, .render = {.width = -1}}).code(),
        render_code::bad_options);
    EXPECT_FALSE(std::filesystem::exists(path("a.png")));
    const auto full = save(opened, "/dev/full", {.format = "bmp", .depth = {}, .render = {}});
    EXPECT_EQ(full.code(), render_code::unwritable) << full.words();
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(Document, ReducesColoursToTheDepthAndKeepsTheCallersBitmap)
{
    vMETAFILE picture;
    for (int i = 0; i < 100; ++i) {
        const auto shade = static_cast<unsigned char>(2 * i);
        use_solid(picture, vCOLOUR(shade, 255, 0));
        picture.DrawRect(vRECT(10 * i, 0, 10 * i + 10, 500));
    }
    close_page(picture, 1000, 500);
    oMEMDIB bitmap;
    ASSERT_TRUE(render_bitmap(picture, {.width = 100}, bitmap).ok());
    const auto before = test::colours_of(bitmap);
    for (const int depth : {1, 4, 8, 24}) {
        vMEMSTREAM out;
        ASSERT_TRUE(save(bitmap, out, {.format = "bmp", .depth = depth, .render = {}}).ok());
        document reopened;
        ASSERT_TRUE(open_bytes(contents(out), reopened).ok());
        EXPECT_EQ(reopened.bitmap->ColourDepth(), depth);
        if (depth >= 8) {
            EXPECT_EQ(test::colours_of(*reopened.bitmap), before) << depth;
        }
    }
    EXPECT_EQ(test::colours_of(bitmap), before);
}

// The round trip of an image through a picture that holds it is exact, its depth and resolution too.
TEST_F(Document, APictureOfABitmapGivesTheBitmap)
{
    oMEMDIB bitmap(6, 4, 8, oMODEL_RGB24, 0);
    oDIBHEADER header;
    bitmap.GetHeader(header);
    header.info().biXPelsPerMeter = 150 * oDIBHEADER::pixels_per_metre_of_dpi;
    header.info().biYPelsPerMeter = 300 * oDIBHEADER::pixels_per_metre_of_dpi;
    bitmap.SetHeader(header);
    vMEMSTREAM out;
    ASSERT_TRUE(record_bitmap(bitmap, out).ok());
    out.MoveFromStart(0);
    vMETAFILE picture(out);
    oMEMDIB held;
    ASSERT_TRUE(render_bitmap(picture, {}, held).ok());
    EXPECT_EQ(held.ColourDepth(), 8);
    EXPECT_EQ(held.InfoHeader().biXPelsPerMeter, header.info().biXPelsPerMeter);
    EXPECT_EQ(held.InfoHeader().biYPelsPerMeter, header.info().biYPelsPerMeter);
    EXPECT_EQ(rendered_size(picture, {.dpi = 600}), vSIZE(24, 8));
    ASSERT_TRUE(render_bitmap(picture, {.width = 12}, held).ok());
    EXPECT_EQ(held.ColourDepth(), 24);
}

} // namespace
} // namespace klv
