#include "klv/platform/system/profile.h"
#include "klv/platform/system/registry.h"
#include "klv/platform/system/settings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

using namespace klv;

namespace {

class Settings : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::remove_all(directory_);
        set_settings_directory(directory_.c_str());
    }
    void TearDown() override
    {
        set_settings_directory(nullptr);
        std::filesystem::remove_all(directory_);
    }

    void write(const char* name, const std::string& text) const
    {
        std::filesystem::create_directories(directory_);
        std::ofstream(directory_ + '/' + name) << text;
    }
    [[nodiscard]] std::string read(const char* name) const
    {
        std::ostringstream text;
        text << std::ifstream(directory_ + '/' + name).rdbuf();
        return text.str();
    }
    static std::string profile(const char* section, const char* key, DWORD size = 100)
    {
        char text[100];
        const DWORD length = GetProfileStringA(section, key, "none", text, size);
        EXPECT_EQ(length, std::string(text).size());
        return text;
    }

    // Tests run beside each other, each in a process of its own.
    std::string directory_ = testing::TempDir() + "klv-settings-"
        + testing::UnitTest::GetInstance()->current_test_info()->name();
};

std::string as_text(const BYTE* value) { return reinterpret_cast<const char*>(value); }

} // namespace

TEST_F(Settings, ProfileIsReadAsPeopleWriteIt)
{
    write("profile.ini",
        "stray = 1\n; TraceLevel = 5\n [ VirtualMachine ] \r\nTraceLevel=3\r\n"
        "CheckHeap =  \"Yes \"\nEmpty=\n[Other]\nTraceLevel=9\nno equals sign");
    EXPECT_EQ(profile("VirtualMachine", "tracelevel"), "3");
    EXPECT_EQ(profile("VIRTUALMACHINE", "CheckHeap"), "Yes ");
    EXPECT_EQ(profile("VirtualMachine", "Empty"), "");
    EXPECT_EQ(profile("VirtualMachine", "Missing"), "none");
    EXPECT_EQ(profile("Other", "TraceLevel"), "9");
    EXPECT_EQ(profile("Missing", "TraceLevel"), "none");
    EXPECT_EQ(profile("VirtualMachine", "CheckHeap", 3), "Ye");
}

TEST_F(Settings, WritingKeepsEverythingElse)
{
    write("profile.ini", "; mine\n[A]\nx=1\n\n[B]\ny=2\n");
    EXPECT_TRUE(WriteProfileStringA("a", "z", " padded "));
    EXPECT_TRUE(WriteProfileStringA("B", "Y", "3"));
    EXPECT_TRUE(WriteProfileStringA("C", "q", "4"));
    EXPECT_TRUE(WriteProfileStringA("A", "x", nullptr));
    EXPECT_EQ(read("profile.ini"), "; mine\n[A]\nz=\" padded \"\n\n[B]\nY=3\n[C]\nq=4\n");
    EXPECT_EQ(profile("A", "Z"), " padded ");
    EXPECT_EQ(profile("A", "x"), "none");
}

TEST_F(Settings, NothingIsKeptWithoutADirectory)
{
    write("blocked", "");
    set_settings_directory((directory_ + "/blocked").c_str());
    EXPECT_FALSE(WriteProfileStringA("A", "x", "1"));
    EXPECT_EQ(profile("A", "x"), "none");
}

TEST_F(Settings, DirectoryFollowsTheEnvironment)
{
    set_settings_directory(nullptr);
    setenv("KLV_CONFIG_DIR", "/one", 1);
    EXPECT_EQ(settings_file("f"), "/one/f");
    unsetenv("KLV_CONFIG_DIR");
    setenv("XDG_CONFIG_HOME", "/two", 1);
    EXPECT_EQ(settings_directory(), "/two/klv");
    unsetenv("XDG_CONFIG_HOME");
}

TEST_F(Settings, RegistryKeysAreMadeAndOpened)
{
    HKEY key = nullptr;
    DWORD disposition = 0;
    const char* const path = "SOFTWARE\\Test\\Key";
    EXPECT_EQ(RegOpenKeyA(HKEY_LOCAL_MACHINE, path, &key), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, path, &key, &disposition), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    const BYTE text[] = "1.4";
    EXPECT_EQ(RegSetValueExA(key, "Data", REG_SZ, text, sizeof text), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, "More", REG_SZ, text, 1), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, "Bad", REG_SZ, reinterpret_cast<const BYTE*>("a\nb"), 3),
        ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);

    EXPECT_EQ(read("registry.ini"), "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Test\\Key]\nData=1.4\nMore=1\n");

    ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, "software\\test\\KEY", &key, &disposition), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    char name[8];
    BYTE value[8];
    DWORD name_size = sizeof name;
    DWORD size = sizeof value;
    DWORD type = 0;
    ASSERT_EQ(RegEnumValueA(key, 0, name, &name_size, &type, value, &size), ERROR_SUCCESS);
    EXPECT_STREQ(name, "Data");
    EXPECT_EQ(name_size, 4U);
    EXPECT_EQ(as_text(value), "1.4");
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(type, REG_SZ);
    name_size = sizeof name;
    EXPECT_EQ(RegEnumValueA(key, 2, name, &name_size, &type, value, &size), ERROR_NO_MORE_ITEMS);
    name_size = 4;
    EXPECT_EQ(RegEnumValueA(key, 0, name, &name_size, &type, value, &size), ERROR_MORE_DATA);

    size = 3;
    EXPECT_EQ(RegQueryValueExA(key, "data", nullptr, value, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(RegQueryValueExA(key, "none", nullptr, value, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}
