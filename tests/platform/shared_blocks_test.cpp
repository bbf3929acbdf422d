#include "klv/platform/system/global_memory.h"
#include "klv/platform/system/shared_memory.h"
#include "klv/platform/system/string_resources.h"
#include "klv/platform/system/tick_count.h"

#include <cstring>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace klv;

TEST(SharedMemory, LivesFromItsFirstToItsLastOwner)
{
    shared_memory first;
    ASSERT_TRUE(first.open("TEST_BLOCK", 64));
    EXPECT_TRUE(first.is_new());
    auto* const bytes = static_cast<char*>(first.data());
    EXPECT_EQ(bytes[63], 0);
    bytes[0] = 'x';

    shared_memory second;
    ASSERT_TRUE(second.open("TEST_BLOCK", 64));
    EXPECT_FALSE(second.is_new());
    EXPECT_EQ(*static_cast<char*>(second.data()), 'x');
    first.close();
    EXPECT_EQ(*static_cast<char*>(second.data()), 'x');
    second.close();

    ASSERT_TRUE(first.open("TEST_BLOCK", 64));
    EXPECT_TRUE(first.is_new());
    EXPECT_EQ(*static_cast<char*>(first.data()), 0);
}

TEST(SharedMemory, OtherProcessesSeeIt)
{
    shared_memory block;
    ASSERT_TRUE(block.open("TEST_PROCESSES", 16));
    const pid_t child = fork();
    if (child == 0) {
        shared_memory same;
        const bool found = same.open("TEST_PROCESSES", 16) && !same.is_new();
        if (found)
            static_cast<char*>(same.data())[3] = 'y';
        _exit(found ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(static_cast<char*>(block.data())[3], 'y');
}

TEST(GlobalMemory, BlocksGrowAndCountTheirLocks)
{
    HGLOBAL block = GlobalAlloc(GHND, 5);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 5U);
    auto* bytes = static_cast<char*>(GlobalLock(block));
    EXPECT_EQ(bytes[4], 0);
    std::memset(bytes, 'x', 5);
    GlobalLock(block);
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_FALSE(GlobalUnlock(block));
    block = GlobalReAlloc(block, 100000, GHND);
    ASSERT_NE(block, nullptr);
    bytes = static_cast<char*>(GlobalLock(block));
    EXPECT_EQ(bytes[4], 'x');
    EXPECT_EQ(bytes[5], 0);
    EXPECT_EQ(bytes[99999], 0);
    EXPECT_EQ(GlobalFree(block), nullptr);
    EXPECT_EQ(GlobalAlloc(GPTR, SIZE_MAX), nullptr);
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    EXPECT_EQ(GlobalSize(nullptr), 0U);
}

TEST(StringResources, AreCutToTheRoomAndAddUp)
{
    static const string_resource strings[] = {{5, "five"}, {6, "six"}};
    const auto module = reinterpret_cast<HINSTANCE>(std::uintptr_t{0x20});
    ASSERT_TRUE(register_strings(module, strings));
    char text[4];
    EXPECT_EQ(LoadStringA(module, 5, text, sizeof text), 3);
    EXPECT_STREQ(text, "fiv");
    EXPECT_EQ(LoadStringA(module, 7, text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(LoadStringA(nullptr, 5, text, sizeof text), 0);
    EXPECT_EQ(LoadStringA(module, 5, text, 0), 0);
    static const string_resource more[] = {{6, "VI"}, {7, "VII"}};
    ASSERT_TRUE(register_strings(module, more));
    for (const auto& [id, expected] : {std::pair<UINT, const char*>{5, "fiv"}, {6, "VI"}, {7, "VII"}}) {
        LoadStringA(module, id, text, sizeof text);
        EXPECT_STREQ(text, expected);
    }
}

TEST(TickCount, CanBeSetForTests)
{
    set_tick_source([]() -> DWORD { return 42; });
    EXPECT_EQ(GetTickCount(), 42U);
    set_tick_source(nullptr);
    const DWORD before = GetTickCount();
    EXPECT_LT(GetTickCount() - before, 60000U);
}
