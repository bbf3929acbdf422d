#include "klv/base/memory.h"
#include "klv/streams/memory_stream.h"

#include "tests/streams/stream_testing.h"

#include <cstring>
#include <memory>

#include <gtest/gtest.h>

namespace klv {

namespace {

// Reaches the lock, which is for the library's own classes.
class lockable_stream : public vMEMSTREAM {
public:
    using vMEMSTREAM::LockStream;
    using vMEMSTREAM::ReleaseStream;
};

} // namespace

TEST(MemoryStream, GrowsByTheRequestAndAStep)
{
    vMEMSTREAM stream;
    EXPECT_EQ(stream.Capacity(), 10U);
    write(stream, byte_vector(9, 'x'));
    EXPECT_EQ(stream.Capacity(), 10U);
    write(stream, byte_vector(1, 'x'));
    EXPECT_EQ(stream.Capacity(), 10U + 1024 + 1) << "a write that would fill the buffer grows it";

    vMEMSTREAM fresh;
    write(fresh, byte_vector(20, 'x'));
    EXPECT_EQ(fresh.Capacity(), 1054U);
}

TEST(MemoryStream, MovesStayWithinTheData)
{
    vMEMSTREAM stream;
    write(stream, to_bytes("0123456789"));
    const struct {
        const char* what;
        std::uint32_t answer;
        std::uint32_t expected;
        vSTREAMSTATUS status;
    } moves[] = {
        {"to the end", stream.MoveFromStart(10), 10, vSTREAM_OK},
        {"past the end", stream.MoveFromStart(11), 10, vSTREAM_END},
    };
    for (const auto& m : moves)
        EXPECT_EQ(m.answer, m.expected) << m.what;
    EXPECT_EQ(stream.Status(), vSTREAM_END);
    EXPECT_EQ(stream.MoveFromStart(0), 0U);
    EXPECT_EQ(stream.Status(), vSTREAM_OK);
    EXPECT_EQ(stream.MoveFromCur(4), 4U);
    EXPECT_EQ(stream.MoveFromCur(-1), 3U);
    EXPECT_EQ(stream.MoveFromCur(-4), 10U) << "before the start counts as past the end";
    EXPECT_EQ(stream.Status(), vSTREAM_END);
    EXPECT_EQ(stream.MoveFromEnd(3), 7U);
    EXPECT_EQ(stream.ReadUByte(), '7');
    EXPECT_EQ(stream.MoveFromEnd(INT32_MIN), 10U);
    EXPECT_EQ(stream.MoveFromEnd(INT32_MAX), 0U);
}

TEST(MemoryStream, OverwritesInPlaceAndExtends)
{
    vMEMSTREAM stream;
    write(stream, to_bytes("abcdef"));
    stream.MoveFromStart(4);
    write(stream, to_bytes("XYZ"));
    EXPECT_EQ(stream.Size(), 7U);
    stream.MoveFromStart(0);
    stream << std::uint8_t{'_'};
    EXPECT_EQ(contents(stream), to_bytes("_bcdXYZ"));
    EXPECT_EQ(stream.WriteByteString(reinterpret_cast<const std::uint8_t*>("end")), 3U);
    EXPECT_EQ(stream.Size(), 10U);
}

TEST(MemoryStream, CopiesShareTheBytesAndFreeThemOnce)
{
    auto first = std::make_unique<vMEMSTREAM>();
    write(*first, to_bytes("shared"));
    vMEMSTREAM copy(*first);
    EXPECT_EQ(copy.CurrentPos(), 6U);
    first->MoveFromStart(0);
    *first << std::uint8_t{'S'};
    EXPECT_EQ(contents(copy), to_bytes("Shared"));

    write(copy, noise(100'000)); // moves the buffer under the other stream
    EXPECT_EQ(contents(*first), to_bytes("Shared"));

    vMEMSTREAM assigned;
    write(assigned, to_bytes("lost"));
    assigned = *first;
    first.reset();
    EXPECT_EQ(assigned.CurrentPos(), 0U);
    EXPECT_EQ(contents(assigned), to_bytes("Shared"));
}

TEST(MemoryStream, WorksOnACallersBuffer)
{
    auto* buffer = static_cast<std::uint8_t*>(vMemAlloc(8));
    std::memcpy(buffer, "original", 8);
    auto* const before = buffer;
    {
        vMEMSTREAM stream(&buffer, 8, "fixed", 0);
        EXPECT_EQ(stream.Size(), 8U);
        write(stream, to_bytes("ORIGINAL"));
        EXPECT_EQ(stream.Status(), vSTREAM_OK);
        EXPECT_EQ(stream.WriteUByte('!'), 0);
        EXPECT_EQ(stream.Status(), vSTREAM_OPEN_ERROR);
    }
    EXPECT_EQ(buffer, before);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 8), "ORIGINAL");
    {
        vMEMSTREAM stream(&buffer, 8, "growable", 1);
        stream.MoveFromEnd(0);
        write(stream, byte_vector(100'000, '+'));
    }
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "ORIGINAL++");
    EXPECT_EQ(buffer[100'007], '+');
    vMemFree(buffer);
}

TEST(MemoryStream, ALockGivesTheBytesAndRefusesWrites)
{
    lockable_stream stream;
    write(stream, to_bytes("abc"));
    std::uint8_t* bytes = nullptr;
    ASSERT_EQ(stream.LockStream(&bytes), 1);
    EXPECT_EQ(bytes[2], 'c');
    stream.MoveFromStart(0);
    EXPECT_EQ(stream.WriteULong(0), 0);
    EXPECT_EQ(write(stream, to_bytes("xyz")), 0U);
    EXPECT_EQ(stream.ReadUByte(), 'a');
    stream.ReleaseStream();
    EXPECT_EQ(stream.WriteUByte('B'), 1);
    EXPECT_EQ(contents(stream), to_bytes("aBc"));
}

TEST(MemoryStream, SpillsToATemporaryFileAndGoesOn)
{
    lockable_stream stream;
    const auto block = noise(10'000'000);
    for (int i = 0; i < 9; ++i)
        write(stream, block);
    EXPECT_FALSE(stream.Spilled());
    stream.MoveFromEnd(2);
    write(stream, block);
    ASSERT_TRUE(stream.Spilled());
    EXPECT_EQ(stream.Size(), 99'999'998U);
    EXPECT_EQ(stream.CurrentPos(), 99'999'998U);
    stream << std::uint32_t{0x01020304};

    std::uint8_t* bytes;
    EXPECT_EQ(stream.LockStream(&bytes), 0) << "the bytes are not in memory any more";
    EXPECT_EQ(stream.MoveFromEnd(4), 99'999'998U);
    EXPECT_EQ(stream.ReadULong(), 0x01020304U);
    EXPECT_TRUE(stream.AtEnd());
    EXPECT_EQ(stream.ReadUByte(), 0);
    EXPECT_EQ(stream.Status(), vSTREAM_END);
    stream.MoveFromStart(89'999'998);
    EXPECT_EQ(stream.Status(), vSTREAM_OK);
    EXPECT_EQ(read_block(stream, 1000), byte_vector(block.begin(), block.begin() + 1000));

    vMEMSTREAM copy(stream);
    EXPECT_EQ(copy.Size(), stream.Size());
}

TEST(MemoryStream, ViewsWhatIsLeftWithoutMoving)
{
    vMEMSTREAM stream;
    EXPECT_TRUE(stream.View(1).empty());
    write(stream, to_bytes("abcdef"));
    stream.MoveFromStart(2);
    const auto view = stream.View(100);
    EXPECT_EQ(byte_vector(view.begin(), view.end()), to_bytes("cdef"));
    EXPECT_EQ(stream.View(2).size(), 2U);
    EXPECT_EQ(stream.CurrentPos(), 2U);
}

TEST(MemoryStream, OutOfMemoryIsAStatusAndLosesNothing)
{
    vMEMSTREAM stream;
    write(stream, to_bytes("kept"));
    vMemFailAfter(0, memory_failure::from_then_on);
    EXPECT_EQ(write(stream, byte_vector(5000)), 0U);
    vMEMSTREAM fresh;
    EXPECT_EQ(fresh.WriteULong(1), 0);
    vMemNeverFail();
    EXPECT_EQ(stream.Status(), vSTREAM_OPEN_ERROR);
    EXPECT_EQ(fresh.Status(), vSTREAM_OPEN_ERROR);
    EXPECT_EQ(contents(stream), to_bytes("kept"));
    EXPECT_EQ(write(stream, byte_vector(5000)), 5000U) << "memory is back";
}

} // namespace klv
