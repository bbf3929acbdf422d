#include "klv/base/buffer.h"
#include "klv/base/byte_writer.h"
#include "klv/base/memory.h"

#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace klv;

namespace {

class Allocator : public testing::Test {
protected:
    void TearDown() override { vMemNeverFail(); }
};

} // namespace

TEST_F(Allocator, FailsTheChosenAllocation)
{
    const std::uint64_t before = vMemAllocations();
    vMemFailAfter(1, memory_failure::once);
    void* first = vMemAlloc(4);
    void* second = vMemAlloc(4);
    void* third = vMemAlloc(4);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(vMemAllocations() - before, 3U);

    vMemFailAfter(0, memory_failure::from_then_on);
    EXPECT_EQ(vMemRealloc(first, 8), nullptr);
    EXPECT_EQ(vMemAlloc(1), nullptr);
    vMemNeverFail();
    first = vMemRealloc(first, 8);
    EXPECT_NE(first, nullptr);
    vMemFree(first);
    vMemFree(third);

    void* const nothing = vMemAlloc(0);
    EXPECT_NE(nothing, nullptr);
    vMemFree(nothing);
}

TEST_F(Allocator, FailsForTheThreadThatAsked)
{
    vMemFailAfter(0, memory_failure::from_then_on);
    std::uint64_t counted = 0;
    std::thread([&counted] {
        const std::uint64_t before = vMemAllocations();
        void* const block = vMemAlloc(1);
        EXPECT_NE(block, nullptr);
        vMemFree(block);
        counted = vMemAllocations() - before;
    }).join();
    EXPECT_EQ(counted, 1U);
    EXPECT_EQ(vMemAlloc(1), nullptr);
}

TEST_F(Allocator, ContainersAndWritersThrowInside)
{
    vMemFailAfter(0, memory_failure::from_then_on);
    std::vector<int, vALLOCATOR<int>> numbers;
    EXPECT_THROW(numbers.push_back(1), std::bad_alloc);
    byte_writer out(vMemResource());
    EXPECT_THROW(out.u8(1), std::bad_alloc);
    vMemNeverFail();
    EXPECT_THROW((void)vALLOCATOR<int>().allocate(std::size_t{1} << 31), std::bad_alloc);
}

TEST_F(Allocator, BufferKeepsItsContentsWhenGrowthFails)
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

TEST_F(Allocator, AppendingIsLinear)
{
    const std::uint64_t before = vMemAllocations();
    vBUFFER<char> buffer;
    for (int i = 0; i < 1000000; ++i)
        ASSERT_TRUE(buffer.push_back('x'));
    EXPECT_LT(vMemAllocations() - before, 40U);
}
