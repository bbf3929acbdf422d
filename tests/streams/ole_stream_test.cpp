#include "klv/streams/ole_stream.h"

#include "tests/streams/stream_testing.h"

#include <gtest/gtest.h>

namespace klv {

namespace {

class OleStream : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(interface_->Release(), 0U) << "the stream leaves the interface alone";
    }

    IStream* interface_ = CreateMemoryStream();
};

} // namespace

TEST_F(OleStream, TakesPositionAndSizeFromTheInterface)
{
    interface_->Write("abcdef", 6, nullptr);
    interface_->Seek(2, STREAM_SEEK_SET, nullptr);
    vOLESTREAM stream(&interface_, "ole");
    EXPECT_EQ(stream.Size(), 6U);
    EXPECT_EQ(stream.CurrentPos(), 2U);
    EXPECT_EQ(stream.ReadUByte(), 'c');
    EXPECT_EQ(read_block(stream, 10), to_bytes("def"));
    EXPECT_EQ(stream.Status(), vSTREAM_END);
    EXPECT_TRUE(stream.AtEnd());
}

TEST_F(OleStream, WritesGrowItAndMovesSetNoStatus)
{
    vOLESTREAM stream(&interface_);
    stream << std::uint32_t{0x04030201} << std::uint16_t{0x0605};
    EXPECT_EQ(stream.Size(), 6U);
    EXPECT_EQ(stream.MoveFromEnd(-2), 4U);
    EXPECT_EQ(stream.MoveFromCur(-1), 3U);
    stream << std::uint8_t{0xFF};
    EXPECT_EQ(stream.MoveFromStart(100), 100U);
    EXPECT_EQ(stream.Status(), vSTREAM_OK);
    EXPECT_EQ(stream.ReadUByte(), 0);
    EXPECT_EQ(stream.Status(), vSTREAM_END);
    EXPECT_EQ(contents(stream), (byte_vector{1, 2, 3, 0xFF, 5, 6}));
}

TEST_F(OleStream, AssignmentCopiesBytesAndKeepsTheInterface)
{
    vOLESTREAM source(&interface_);
    write(source, to_bytes("abc"));
    source.MoveFromStart(1);
    IStream* other = CreateMemoryStream();
    vOLESTREAM target(&other);
    target = source;
    target << std::uint8_t{'!'};
    EXPECT_EQ(contents(target), to_bytes("bc!"));
    EXPECT_EQ(contents(source), to_bytes("abc"));
    other->Release();
}

TEST_F(OleStream, IgnoresSwappedByteOrder)
{
    vOLESTREAM stream(&interface_);
    stream << std::uint32_t{1};
    stream.SwapByteOrder(1);
    stream.MoveFromStart(0);
    EXPECT_EQ(stream.ReadULong(), 1U);
}

TEST(OleStreamWithoutInterface, AnswersAnOpenError)
{
    IStream* none = nullptr;
    vOLESTREAM stream(&none);
    EXPECT_EQ(stream.Status(), vSTREAM_OPEN_ERROR);
    EXPECT_EQ(stream.ReadULong(), 0U);
    EXPECT_EQ(stream.WriteULong(1), 0);
    EXPECT_EQ(stream.MoveFromStart(0), 0U);
}

TEST(MemoryIStream, ClonesShareTheBytesWithAPositionOfTheirOwn)
{
    IStream* first = CreateMemoryStream();
    first->Write("abc", 3, nullptr);
    IStream* clone = nullptr;
    ASSERT_EQ(first->Clone(&clone), S_OK);
    clone->Seek(0, STREAM_SEEK_SET, nullptr);
    first->Write("d", 1, nullptr);
    char text[8] = {};
    std::uint32_t read = 0;
    EXPECT_EQ(clone->Read(text, 8, &read), S_FALSE);
    EXPECT_EQ(std::string(text, read), "abcd");

    IStream* target = CreateMemoryStream();
    std::uint64_t copied = 0;
    clone->Seek(-3, STREAM_SEEK_END, nullptr);
    EXPECT_EQ(clone->CopyTo(target, 2, nullptr, &copied), S_OK);
    EXPECT_EQ(copied, 2U);
    STATSTG statistics;
    EXPECT_EQ(target->Stat(&statistics, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(statistics.cbSize, 2U);

    void* same = nullptr;
    EXPECT_EQ(clone->QueryInterface(IID_IStream, &same), S_OK);
    EXPECT_EQ(same, clone);
    EXPECT_EQ(clone->Release(), 1U);
    EXPECT_EQ(clone->QueryInterface(GUID{}, &same), E_NOINTERFACE);
    EXPECT_EQ(clone->Seek(-1, STREAM_SEEK_SET, nullptr), STG_E_INVALIDFUNCTION);
    clone->Release();
    first->Release();
    target->Release();
}

} // namespace klv
