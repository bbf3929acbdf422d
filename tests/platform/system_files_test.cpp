#include "klv/platform/system/directory.h"
#include "klv/platform/system/file.h"
#include "klv/platform/system/memory_mapping.h"
#include "klv/platform/system/network.h"
#include "klv/platform/system/path.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace klv {

namespace fs = std::filesystem;

namespace {

class SystemFiles : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "klvtestXXXXXX").string();
        root_ = ::mkdtemp(pattern.data());
    }
    void TearDown() override
    {
        fs::remove_all(root_);
        disconnect_disk("Z:");
    }
    std::string put(const std::string& name, const std::string& text)
    {
        std::ofstream(root_ / name, std::ios::binary) << text;
        return (root_ / name).string();
    }

    fs::path root_;
};

std::string read_text(system_file& file, std::uint32_t size)
{
    std::string text(size, '\0');
    const auto count = file.read(reinterpret_cast<std::uint8_t*>(text.data()), size);
    return text.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
}

std::int64_t write_text(system_file& file, const std::string& text)
{
    return file.write(
        reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()));
}

} // namespace

TEST_F(SystemFiles, PathsOfOtherSystemsAreUnderstood)
{
    connect_disk({"Z:", "\\\\server\\share", "/mnt/share"});
    const struct {
        const char* given;
        const char* expected;
    } cases[] = {
        {"/plain/path.wmf", "/plain/path.wmf"},
        {"dir\\sub\\file.wmf", "dir/sub/file.wmf"},
        {"/mixed\\file.wmf", "/mixed/file.wmf"},
        {"Z:\\pictures\\a.wmf", "/mnt/share/pictures/a.wmf"},
        {"z:", "/mnt/share/"},
        {"\\\\SERVER\\share\\a.wmf", "/mnt/share/a.wmf"},
        {"\\\\server\\sharest\\a.wmf", "//server/sharest/a.wmf"},
        {"Y:\\a.wmf", "Y:/a.wmf"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(host_path(c.given), c.expected) << c.given;

    const auto odd = put("back\\slash.wmf", "x");
    EXPECT_EQ(host_path(odd), odd) << "a file of exactly this name";
}

TEST_F(SystemFiles, BufferedReadsAndWritesOfOneHandleAgree)
{
    const auto path = put("f", "0123456789");
    const auto file = system_file::open(path.c_str(), system_file::access::read_write);
    ASSERT_TRUE(file);
    EXPECT_EQ(read_text(*file, 2), "01");
    EXPECT_EQ(write_text(*file, "AB"), 2);
    EXPECT_EQ(read_text(*file, 3), "456");
    file->move_to(1);
    EXPECT_EQ(read_text(*file, 4), "1AB4");
    file->move_to(100);
    EXPECT_TRUE(file->at_end());
    EXPECT_EQ(read_text(*file, 1), "");
    write_text(*file, "!");
    EXPECT_EQ(file->size(), 101);
    EXPECT_FALSE(file->move_to(-1));
    EXPECT_TRUE(file->close());
    EXPECT_FALSE(file->close());
    EXPECT_EQ(write_text(*file, "x"), -1);
}

TEST_F(SystemFiles, ReadsLargerThanTheBufferAreWhole)
{
    std::string text;
    for (int i = 0; i < 40'000; ++i)
        text += std::to_string(i);
    const auto file = system_file::open(put("f", text).c_str(), system_file::access::read);
    ASSERT_TRUE(file);
    EXPECT_EQ(read_text(*file, 10), text.substr(0, 10));
    EXPECT_EQ(read_text(*file, 100'000), text.substr(10, 100'000));
    EXPECT_EQ(read_text(*file, 200'000), text.substr(100'010));
}

TEST_F(SystemFiles, MapsTheBytesOfAFile)
{
    auto mapping = file_mapping::open(put("f", "mapped").c_str());
    ASSERT_TRUE(mapping);
    const auto moved = std::move(*mapping);
    EXPECT_EQ(std::string(moved.bytes().begin(), moved.bytes().end()), "mapped");
    EXPECT_TRUE(mapping->bytes().empty());
    const auto empty = file_mapping::open(put("empty", "").c_str());
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->bytes().empty());
    EXPECT_FALSE(file_mapping::open((root_ / "none").c_str()));
    EXPECT_FALSE(file_mapping::open(root_.c_str()));
}

TEST_F(SystemFiles, ADirectoryIsNoFile)
{
    EXPECT_FALSE(system_file::open(root_.c_str(), system_file::access::read));
    EXPECT_FALSE(system_file::create(root_.c_str(), false));
    EXPECT_TRUE(find_files((root_ / "none" / "*").string()).empty());
}

} // namespace klv
