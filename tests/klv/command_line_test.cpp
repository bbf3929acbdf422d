#include "tests/klv/command_line.h"

#include <algorithm>
#include <filesystem>
#include <string>

// The built tool as a user runs it.

namespace klv {
namespace {

using test::CommandLine;
using test::outcome;
using test::run;
using test::run_command;

TEST_F(CommandLine, APictureAndItsRecordedFormGiveTheSamePixels)
{
    ASSERT_EQ(run("convert " + path("good.wmf") + " " + path("kept.vmm")).status, 0);
    for (const std::string format : {"png", "bmp"}) {
        ASSERT_EQ(run("convert " + path("good.wmf") + " " + path("a." + format) + " --width 300").status, 0);
        ASSERT_EQ(run("convert " + path("kept.vmm") + " " + path("b." + format) + " --width 300").status, 0);
        EXPECT_FALSE(contents("a." + format).empty());
        EXPECT_EQ(contents("a." + format), contents("b." + format));
    }
    EXPECT_EQ(run("convert " + path("a.bmp") + " " + path("c.png")).status, 0);
    EXPECT_EQ(contents("c.png"), contents("a.png"));
}

TEST_F(CommandLine, ReadsAndWritesStandardStreams)
{
    ASSERT_EQ(run("convert " + path("good.wmf") + " " + path("a.png")).status, 0);
    ASSERT_EQ(run("convert - - <" + path("good.wmf") + " >" + path("b.png")).status, 0);
    EXPECT_EQ(contents("a.png"), contents("b.png"));
}

TEST_F(CommandLine, BadInputCostsOneLineAndStatusOne)
{
    auto cut = test::wmf_builder().placeable(0, 0, 1000, 500, 100).build();
    cut.resize(30);
    write("cut.wmf", cut);
    write("empty.wmf", {});
    write("noise.wmf", std::vector<std::uint8_t>(5000, 0x5A));
    write("noise.png", std::vector<std::uint8_t>(5000, 0x5A));
    for (const std::string name : {"cut.wmf", "empty.wmf", "noise.wmf", "noise.png", "missing.wmf", "."}) {
        const auto result = run("convert " + path(name) + " " + path("out.png"));
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1) << result.output;
        EXPECT_NE(result.output.find(path(name)), std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(path("out.png"))) << name;
    }
}

TEST_F(CommandLine, GoesOnPastABadFileAndKeepsWhatADamagedOneHolds)
{
    auto damaged = test::wmf_builder().placeable(0, 0, 1000, 500, 100).rectangle(0, 0, 500, 500);
    damaged.raw({1, 0, 0, 0});
    write("damaged.wmf", damaged.build());
    write("bad.wmf", {1, 2, 3});
    const auto result = run("convert " + path("bad.wmf") + " " + path("damaged.wmf") + " " + path("good.wmf")
        + " " + directory_.string());
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(std::filesystem::exists(path("good.png")));
    EXPECT_TRUE(std::filesystem::exists(path("damaged.png")));
    EXPECT_NE(result.output.find("damaged.wmf: warning: "), std::string::npos) << result.output;
}

// The image of these tests is the metafile's, drawn aliased: a few colours, so that every depth holds it.
class Images : public CommandLine {
protected:
    void SetUp() override
    {
        CommandLine::SetUp();
        ASSERT_EQ(
            run("convert " + path("good.wmf") + " " + path("a.png") + " --width 100 --antialias 1").status,
            0);
    }
    outcome convert(const std::string& arguments) const { return run("convert " + arguments); }
    /// What an image looks like as a 24-bit bitmap file.
    std::string pixels(const std::string& name) const
    {
        const auto result = convert(path(name) + " " + path("pixels.bmp") + " --depth 24");
        EXPECT_EQ(result.status, 0) << result.output;
        return contents("pixels.bmp");
    }
};

TEST_F(Images, AnyFormatTurnsIntoAnyOther)
{
    const std::string original = pixels("a.png").substr(54); // behind the headers
    std::string previous = "a.png";
    for (const char* extension :
        {"bmp", "gif", "tif", "pcx", "tga", "psd", "png", "tiff", "dib", "vmm", "tga", "vmm", "gif"}) {
        const std::string next = std::string("next.") + extension;
        const auto result = convert(path(previous) + " " + path(next));
        ASSERT_EQ(result.status, 0) << result.output;
        EXPECT_EQ(pixels(next).substr(54), original) << previous << " to " << next;
        previous = next;
    }
    EXPECT_EQ(convert(path("a.png") + " " + path("lossy.jpeg")).status, 0);
    EXPECT_EQ(pixels("lossy.jpeg").size(), original.size() + 54);
}

TEST_F(Images, DepthReducesTheColoursAndFormatsTakeWhatTheyHave)
{
    const auto info = [&](const std::string& name) { return run("info " + path(name)).output; };
    const struct {
        const char* depth;
        const char* output;
        const char* written;
    } cases[] = {
        {"1", "b.bmp", "1 bits per pixel"}, {"4", "b.bmp", "4 bits per pixel"},
        {"8", "b.bmp", "8 bits per pixel"}, {"24", "b.bmp", "24 bits per pixel"},
        {"4", "b.tga", "8 bits per pixel"}, // the next that Targa has
        {"1", "b.jpg", "24 bits per pixel"}, {"24", "b.gif", "bits per pixel"}, // the greatest that GIF has
    };
    for (const auto& c : cases) {
        const auto result = convert(path("a.png") + " " + path(c.output) + " --depth " + c.depth);
        ASSERT_EQ(result.status, 0) << result.output;
        EXPECT_NE(info(c.output).find(c.written), std::string::npos) << c.depth << info(c.output);
    }
    // Four colours and more in two: dithered, so both appear.
    ASSERT_EQ(convert(path("good.wmf") + " " + path("two.bmp") + " --depth 1 --width 60").status, 0);
    EXPECT_EQ(pixels("two.bmp").size(), 54U + 180 * 30);
    EXPECT_EQ(convert(path("a.png") + " " + path("x.bmp") + " --depth 5").status, 2);
}

TEST_F(Images, APictureOfAnImageHasTheSizeOfItsResolution)
{
    ASSERT_EQ(convert(path("good.wmf") + " " + path("b.png") + " --width 300 --dpi 150").status, 0);
    ASSERT_EQ(convert(path("b.png") + " " + path("b.vmm")).status, 0);
    const auto page = run("info " + path("b.vmm")).output;
    EXPECT_NE(page.find("50.8 x 25.4 mm"), std::string::npos) << page;
    EXPECT_NE(page.find("1 bitmap"), std::string::npos) << page;
    ASSERT_EQ(convert(path("b.vmm") + " " + path("c.png")).status, 0);
    EXPECT_EQ(contents("c.png"), contents("b.png")); // the resolution too
    ASSERT_EQ(convert(path("b.vmm") + " " + path("d.png") + " --dpi 75").status, 0);
    EXPECT_NE(run("info " + path("d.png")).output.find("150 x 75 pixels"), std::string::npos);
}

TEST_F(Images, AreKnownByTheirContentsToo)
{
    for (const char* extension : {"png", "psd", "gif", "tif", "jpg", "pcx", "bmp"}) {
        ASSERT_EQ(convert(path("a.png") + " " + path(std::string("b.") + extension)).status, 0);
        std::filesystem::rename(path(std::string("b.") + extension), path("unnamed"));
        const auto result = convert("- - --format bmp <" + path("unnamed") + " >" + path("c.bmp"));
        EXPECT_EQ(result.status, 0) << extension;
        EXPECT_NE(run("info " + path("unnamed")).output.find("100 x 50 pixels"), std::string::npos)
            << extension;
    }
}

TEST_F(Images, SeveralGoIntoADirectoryAndFailuresAreTold)
{
    write("bad.tif", {'I', 'I', 42, 0, 8, 0, 0, 0, 1});
    write("bad.gif", {'G', 'I', 'F', '8', '9', 'a'});
    const auto result = convert(path("bad.tif") + " " + path("a.png") + " " + path("bad.gif") + " "
        + directory_.string() + " --format tga");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 2) << result.output;
    EXPECT_TRUE(std::filesystem::exists(path("a.tga")));
    const auto unwritable = convert(path("a.png") + " " + path("a.pcd"));
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_NE(unwritable.output.find("does not write .PCD"), std::string::npos) << unwritable.output;
}

TEST_F(Images, AMissingModuleIsNamed)
{
    for (const char* file : {"klv", "libKLV006.so"})
        std::filesystem::copy(std::filesystem::path(klv::test::build_folder()) / file, directory_ / file);
    ASSERT_EQ(convert(path("a.png") + " " + path("a.gif")).status, 0);
    const std::string lone = path("klv") + " convert ";
    for (const std::string& arguments :
        {path("a.png") + " " + path("b.bmp"), path("a.gif") + " " + path("b.bmp")}) {
        const auto result = run_command(lone + arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.output.find("libklv_imaging.so"), std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(path("b.bmp")));
    }
    // GIF files, and pictures of them, need no module.
    EXPECT_EQ(run_command(lone + path("a.gif") + " " + path("b.vmm")).status, 0);
    EXPECT_EQ(run_command(lone + path("b.vmm") + " " + path("b.gif")).status, 0);
    EXPECT_EQ(pixels("b.gif"), pixels("a.gif"));
}

TEST_F(CommandLine, MisuseIsStatusTwo)
{
    for (const char* arguments :
        {"", "convert", "convert x", "nonsense", "convert a b --width 0", "convert a b --background red"})
        EXPECT_EQ(run(arguments).status, 2) << arguments;
    EXPECT_EQ(run("--help").status, 0);
    EXPECT_EQ(run("--version").status, 0);
}

TEST_F(CommandLine, InfoAndDumpTellWhatIsThere)
{
    const auto text = run("info " + path("good.wmf"));
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("254.0 x 127.0 mm"), std::string::npos) << text.output;
    const auto json = run("info --json " + path("good.wmf") + " " + path("missing"));
    EXPECT_EQ(json.status, 1);
    EXPECT_NE(json.output.find("\"format\":\"WMF\""), std::string::npos) << json.output;
    EXPECT_NE(json.output.find("\"error\":"), std::string::npos) << json.output;
    const auto dump = run("dump " + path("good.wmf"));
    EXPECT_NE(dump.output.find("rectangle ("), std::string::npos) << dump.output;
    EXPECT_NE(dump.output.find("  end"), std::string::npos) << dump.output;
    const auto formats = run("formats");
    for (const char* extension :
        {"VMM", "BMP", "GIF", "JPG", "PCX", "TGA", "TIF", "PNG", "PCD", "FPX", "PSD"})
        EXPECT_NE(formats.output.find(std::string("\n") + extension + " "), std::string::npos) << extension;
}

} // namespace
} // namespace klv
