#include "klv/base/byte_writer.h"
#include "klv/core/buffer.h"
#include "klv/core/exception.h"
#include "klv/core/memory.h"
#include "klv/core/module.h"
#include "klv/core/system.h"
#include "klv/platform/host.h"
#include "klv/platform/system/windows.h"

#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

namespace {

class Memory : public testing::Test {
protected:
    void TearDown() override
    {
        vMemNeverFail();
        vSYSTEM::SetExceptionFlag(0);
    }
};

struct recording_host : host {
    int answer = IDOK;
    std::string text, caption;
    UINT style = 0;

    recording_host() { install_host(this); }
    ~recording_host() override { install_host(nullptr); }
    int message_box(HWND, const char* shown, const char* title, UINT shown_style) override
    {
        text = shown;
        caption = title;
        style = shown_style;
        return answer;
    }
};

} // namespace

TEST_F(Memory, FailsTheChosenAllocation)
{
    const std::uint64_t before = vMemAllocations();
    vMemFailAfter(1, memory_failure::once);
    void* first = vMemAlloc(4);
    void* second = vMemAlloc(4);
    void* third = vMemAlloc(4);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);
    EXPECT_EQ(vMemAllocations() - before, 3U);

    vMemFailAfter(0, memory_failure::from_then_on);
    EXPECT_EQ(vMemRealloc(first, 8), nullptr);
    EXPECT_EQ(vMemAlloc(1), nullptr);
    EXPECT_EQ(new vMODULE, nullptr) << "objects of the library answer null";
    vMemNeverFail();
    first = vMemRealloc(first, 8);
    EXPECT_NE(first, nullptr);
    vMemFree(first);
    vMemFree(third);

    void* const nothing = vMemAlloc(0);
    EXPECT_NE(nothing, nullptr);
    vMemFree(nothing);
}

TEST_F(Memory, FailsInTheThreadThatAskedForIt)
{
    const std::uint64_t before = vMemAllocations();
    vMemFailAfter(0, memory_failure::from_then_on);
    std::thread([] {
        void* const block = vMemAlloc(4);
        EXPECT_NE(block, nullptr);
        vMemFree(block);
        EXPECT_EQ(vMemAllocations(), 1U);
    }).join();
    EXPECT_EQ(vMemAlloc(4), nullptr);
    EXPECT_EQ(vMemAllocations() - before, 1U);
}

TEST_F(Memory, ContainersAndWritersThrowInside)
{
    vMemFailAfter(0, memory_failure::from_then_on);
    std::vector<int, vALLOCATOR<int>> numbers;
    EXPECT_THROW(numbers.push_back(1), std::bad_alloc);
    byte_writer out(vMemResource());
    EXPECT_THROW(out.u8(1), std::bad_alloc);
    vMemNeverFail();
    EXPECT_THROW((void)vALLOCATOR<int>().allocate(std::size_t{1} << 31), std::bad_alloc);
}

TEST_F(Memory, BufferKeepsItsContentsWhenGrowthFails)
{
    vBUFFER<int> buffer;
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(buffer.push_back(i));
    vMemFailAfter(0, memory_failure::from_then_on);
    EXPECT_FALSE(buffer.reserve(100000));
    EXPECT_FALSE(buffer.resize(100000));
    vMemNeverFail();
    EXPECT_EQ(std::accumulate(buffer.begin(), buffer.end(), 0), 999 * 500);
    EXPECT_FALSE(buffer.reserve(std::size_t{1} << 31)) << "more bytes than 32 bits count";

    ASSERT_TRUE(buffer.resize(1002));
    EXPECT_EQ(buffer[1001], 0);
    vBUFFER<int> moved = std::move(buffer);
    EXPECT_TRUE(buffer.empty());
    ASSERT_TRUE(buffer.copy_from(moved));
    EXPECT_EQ(buffer.size(), 1002U);
    EXPECT_EQ(buffer[999], 999);
}

TEST_F(Memory, AppendingIsLinear)
{
    const std::uint64_t before = vMemAllocations();
    vBUFFER<char> buffer;
    for (int i = 0; i < 1000000; ++i)
        ASSERT_TRUE(buffer.push_back('x'));
    EXPECT_LT(vMemAllocations() - before, 40U);
}

TEST_F(Memory, ReserveGoesWithTheFirstFailure)
{
    DEFEXCEP& exception = vSYSTEM::GetDefaultException();
    vMemFailAfter(0);
    EXPECT_EQ(vMemAlloc(4), nullptr);
    EXPECT_FALSE(exception.HoldsReserve());
}

TEST_F(Memory, HandlerShowsTheFirstMessageOnce)
{
    recording_host shown;
    const HWND w = create_window({.title = "Draw"});
    const auto exception = std::make_unique<DEFEXCEP>();
    exception->LoadMessages(vSYSTEM::Pointer()->GetInstance());

    vSYSTEM::SetExceptionFlag(1);
    shown.answer = IDCANCEL;
    EXPECT_EQ(exception->HandleException(w), 0);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);
    EXPECT_EQ(shown.text,
        "la m\xE9moire est presque satur\xE9"
        "e");
    EXPECT_EQ(shown.caption, "Draw");
    EXPECT_EQ(shown.style, 0x1010U);

    shown.answer = IDOK;
    EXPECT_EQ(exception->HandleException(w), 1);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 0);
    EXPECT_EQ(shown.text, "M\xE9moire insuffisante");
    DestroyWindow(w);
}
