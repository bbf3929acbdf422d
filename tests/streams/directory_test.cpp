#include "klv/platform/system/network.h"
#include "klv/streams/directory.h"
#include "klv/streams/store_iterator.h"

#include "tests/streams/stream_testing.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

namespace klv {

namespace fs = std::filesystem;

namespace {

// The tests here move the process's current directory about.
class Directory : public testing::Test {
protected:
    void TearDown() override
    {
        fs::current_path(start_);
        disconnect_disk("Z:");
    }

    scratch_directory scratch_;

private:
    fs::path start_ = fs::current_path();
};

} // namespace

TEST_F(Directory, NamesEndWithABackslash)
{
    const auto path = scratch_.path();
    for (const auto& given : {path, path + "/", path + "\\"})
        EXPECT_EQ(vDIRECTORY(given.c_str()).GetName(), vSTRING((path + "\\").c_str())) << given;
    fs::current_path(path);
    EXPECT_EQ(vDIRECTORY("").GetName(), vSTRING((path + "\\").c_str()));
}

TEST_F(Directory, OwnsTheFilesItCreates)
{
    {
        vDIRECTORY directory(scratch_.path().c_str());
        vFILE* file = directory.CreateFileA("a.txt", 0);
        ASSERT_NE(file, nullptr);
        write(*file, to_bytes("text"));
        EXPECT_EQ(directory.OpenStream("a.txt", 0x80000000)->ReadUByte(), 't');
        EXPECT_EQ(directory.FileExists("a.txt"), 1);
        EXPECT_EQ(directory.FileExists("b.txt"), 0);
    }
    EXPECT_EQ(scratch_.bytes("a.txt"), to_bytes("text"));
    vDIRECTORY directory(scratch_.path().c_str());
    EXPECT_EQ(directory.RemoveFile("a.txt"), 1);
    EXPECT_EQ(directory.RemoveFile("a.txt"), 0);
}

TEST_F(Directory, IsMadeCurrentAndLeftForItsParent)
{
    vDIRECTORY directory(scratch_.path("new").c_str(), 0, 1);
    EXPECT_EQ(fs::current_path(), scratch_.path("new"));
    EXPECT_EQ(directory.AttachToParent(), 1);
    EXPECT_EQ(directory.GetName(), vSTRING((scratch_.path() + "\\").c_str()));
    EXPECT_EQ(fs::current_path(), scratch_.path());
    fs::current_path("/");
    EXPECT_EQ(directory.Attach(), 1);
    EXPECT_EQ(fs::current_path(), scratch_.path());
    EXPECT_EQ(vDIRECTORY("/no/such/place").Attach(), 0);
}

TEST_F(Directory, AMappedDriveTakesItsNetworkForm)
{
    fs::create_directory(scratch_.path("data"));
    connect_disk({"Z:", "\\\\server\\share", scratch_.path()});
    vDIRECTORY directory("z:\\data");
    EXPECT_EQ(directory.GetName(), vSTRING("\\\\server\\share\\data\\"));
    EXPECT_EQ(vDIRECTORY("Y:\\data").GetName(), vSTRING("Y:\\data\\"));

    ASSERT_NE(directory.CreateFileA("a.txt", 0), nullptr);
    EXPECT_TRUE(fs::exists(scratch_.path("data/a.txt")));
    EXPECT_EQ(directory.Attach(), 1);
    EXPECT_EQ(fs::current_path(), scratch_.path("data"));
}

TEST_F(Directory, ListsWhatMatches)
{
    scratch_.put("one.wmf", byte_vector(3));
    scratch_.put("TWO.WMF", byte_vector(4));
    scratch_.put("three.txt", {});
    fs::create_directory(scratch_.path("four.wmf"));
    constexpr std::time_t modified = 920'642'829; // 1999-03-05 14:07:09
    fs::last_write_time(scratch_.path("one.wmf"),
        std::chrono::file_clock::from_sys(std::chrono::system_clock::from_time_t(modified)));

    const vDIRECTORY directory(scratch_.path().c_str());
    const struct {
        const char* pattern;
        std::map<std::string, std::pair<vFILETYPE, int>> expected;
    } cases[] = {
        {"*.wmf",
            {{"one.wmf", {vFILETYPE_FILE, 3}}, {"TWO.WMF", {vFILETYPE_FILE, 4}},
                {"four.wmf", {vFILETYPE_DIRECTORY, 0}}}},
        {"t*.*", {{"TWO.WMF", {vFILETYPE_FILE, 4}}, {"three.txt", {vFILETYPE_FILE, 0}}}},
        {"?ne*", {{"one.wmf", {vFILETYPE_FILE, 3}}}},
        {"*.*",
            {{"one.wmf", {vFILETYPE_FILE, 3}}, {"TWO.WMF", {vFILETYPE_FILE, 4}},
                {"three.txt", {vFILETYPE_FILE, 0}}, {"four.wmf", {vFILETYPE_DIRECTORY, 0}}}},
        {"none*", {}},
    };
    for (const auto& c : cases) {
        fLIST list;
        directory.SelectElements((scratch_.path() + "\\" + c.pattern).c_str(), &list);
        std::map<std::string, std::pair<vFILETYPE, int>> found;
        for (auto* link = list.Next(nullptr); link; link = list.Next(link)) {
            const std::unique_ptr<vSTOREITERATOR> entry(static_cast<vSTOREITERATOR*>(link->Object()));
            const int size = entry->Type() == vFILETYPE_DIRECTORY ? 0 : entry->Size();
            found[entry->Name()()] = {entry->Type(), size};
            if (entry->Name() == vSTRING("one.wmf")) {
                EXPECT_EQ(entry->LastModifiedOn().FullDate(), vSTRING("05 Mar 1999"));
                EXPECT_EQ(entry->LastModifiedOn().Time24(), vSTRING("14:07:09"));
            }
            if (!link->Next())
                break;
        }
        EXPECT_EQ(found, c.expected) << c.pattern;
    }
}

TEST_F(Directory, WithoutATemporaryDirectoryItIsADrive)
{
    const char* before = std::getenv("TMPDIR");
    const auto kept = before ? std::optional<std::string>(before) : std::nullopt;
    ::setenv("TMPDIR", scratch_.path().c_str(), 1);
    EXPECT_EQ(vDIRECTORY::TempDirectory(), vSTRING((scratch_.path() + "/").c_str()));
    ::setenv("TMPDIR", "/no/such/place", 1);
    EXPECT_EQ(vDIRECTORY::TempDirectory(), vSTRING("c:\\"));
    EXPECT_EQ(vFILE().Status(), vSTREAM_OPEN_ERROR);
    kept ? ::setenv("TMPDIR", kept->c_str(), 1) : ::unsetenv("TMPDIR");
}

} // namespace klv
