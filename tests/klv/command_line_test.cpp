#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/wait.h>

#include "tests/filters/wmf_builder.h"

// The built tool as a user runs it.

namespace klv {
namespace {

struct outcome {
    int status = -1;
    std::string output; ///< standard output and standard error together
};

outcome run(const std::string& arguments)
{
    const std::string command = std::string(KLV_BUILD_DIR) + "/klv " + arguments + " 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    outcome result;
    std::array<char, 4096> chunk{};
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), pipe))
        result.output.append(chunk.data(), got);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

class CommandLine : public testing::Test {
protected:
    void SetUp() override
    {
        directory_ = std::filesystem::path(testing::TempDir())
            / (std::string("klv_") + testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(directory_);
        std::filesystem::create_directories(directory_);
        auto picture = test::wmf_builder().placeable(0, 0, 1000, 500, 100).window(0, 0, 1000, 500);
        picture.pen(0, 30, 0xFF).brush(0, 0x00FF00).select(0).select(1).rectangle(100, 100, 600, 400);
        write("good.wmf", picture.build());
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    void write(const std::string& name, const std::vector<std::uint8_t>& bytes)
    {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::string path(const std::string& name) const { return (directory_ / name).string(); }
    std::string contents(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path directory_;
};

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
}

} // namespace
} // namespace klv
