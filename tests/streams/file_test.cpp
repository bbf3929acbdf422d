#include "klv/base/memory.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include "tests/streams/stream_testing.h"

#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

namespace klv {

namespace fs = std::filesystem;

TEST(File, OpenModes)
{
    const struct {
        const char* what;
        std::uint32_t mode;
        bool there;
        vSTREAMSTATUS opened;
        vSTREAMSTATUS written;
        std::string left;
    } cases[] = {
        {"read a missing file", 0x80000000, false, vSTREAM_NOT_FOUND, vSTREAM_WRITE_ERROR, ""},
        {"read", 0x80000000, true, vSTREAM_OK, vSTREAM_READ_ONLY, "old"},
        {"read, opened for writing", 0x80000001, true, vSTREAM_OK, vSTREAM_READ_ONLY, "old"},
        {"write an existing file", 0x80000002, true, vSTREAM_OK, vSTREAM_OK, "Xld"},
        {"write a missing file", 0x80000002, false, vSTREAM_NOT_FOUND, vSTREAM_WRITE_ERROR, ""},
        {"create", 0, false, vSTREAM_OK, vSTREAM_OK, "X"},
        {"keep", 0, true, vSTREAM_OK, vSTREAM_OK, "Xld"},
        {"truncate", 5, true, vSTREAM_OK, vSTREAM_OK, "X"},
    };
    for (const auto& c : cases) {
        scratch_directory scratch;
        if (c.there)
            scratch.put("f", to_bytes("old"));
        {
            vFILE file(scratch.name("f"), c.mode);
            EXPECT_EQ(file.Status(), c.opened) << c.what;
            const bool allowed = c.written == vSTREAM_OK;
            EXPECT_EQ(file.WriteUByte('X'), allowed ? 1 : 0) << c.what;
            EXPECT_EQ(file.Status(), c.written) << c.what;
        }
        EXPECT_EQ(scratch.bytes("f"), to_bytes(c.left)) << c.what;
        EXPECT_EQ(fs::exists(scratch.path("f")), !c.left.empty()) << c.what;
    }
    EXPECT_EQ(vFILE("/", 0x80000000).Status(), vSTREAM_OPEN_ERROR);
    EXPECT_EQ(vFILE("/no/such/directory/f", 0).Status(), vSTREAM_OPEN_ERROR);
}

TEST(File, ReadsWithoutAFileAreErrors)
{
    scratch_directory scratch;
    vFILE file(scratch.name("none"), 0x80000000);
    EXPECT_EQ(file.ReadULong(), 0U);
    EXPECT_EQ(file.Status(), vSTREAM_READ_ERROR);
    std::uint8_t byte;
    EXPECT_EQ(file.ReadByteString(&byte, 1), 0);
    EXPECT_EQ(file.Size(), 0U);
    EXPECT_TRUE(file.AtEnd());
    EXPECT_EQ(file.MoveFromStart(0), 0U);
    EXPECT_EQ(file.Status(), vSTREAM_END);
}

TEST(File, CacheHoldsWritesUntilItIsFull)
{
    scratch_directory scratch;
    vFILE file(scratch.name("f"), 0, 1);
    write(file, byte_vector(1000, 'a'));
    EXPECT_EQ(file.Size(), 0U);
    EXPECT_EQ(file.CurrentPos(), 1000U);
    write(file, byte_vector(100, 'b'));
    EXPECT_EQ(file.Size(), 1000U);
    EXPECT_EQ(file.CurrentPos(), 1100U);
    EXPECT_EQ(scratch.bytes("f"), byte_vector(1000, 'a'));

    // Back into the cached range and over its end: only the cache changes.
    EXPECT_EQ(file.MoveFromStart(1050), 1050U);
    write(file, byte_vector(60, 'c'));
    EXPECT_EQ(file.Size(), 1000U);
    EXPECT_EQ(file.MoveFromCur(-110), 1000U);
    file << std::uint8_t{'d'};
    EXPECT_EQ(file.CurrentPos(), 1001U);

    // A read writes the cache out and goes on where the stream stands.
    EXPECT_EQ(file.ReadUByte(), 'b');
    EXPECT_EQ(file.CurrentPos(), 1002U);
    EXPECT_EQ(file.Size(), 1110U);
}

// Every mixture of writes, moves and reads must leave the same file, cached or not.
TEST(File, CachedAndUncachedFilesAgreeWithMemory)
{
    scratch_directory scratch;
    vFILE cached(scratch.name("cached"), 5, 1);
    vFILE plain(scratch.name("plain"), 5, 0);
    vMEMSTREAM memory;
    vSTREAM* const streams[] = {&cached, &plain, &memory};

    const auto choices = noise(20'000, 42);
    for (std::size_t i = 0; i + 3 < choices.size(); i += 4) {
        const auto block = noise(choices[i + 1] < 8 ? 1500 : choices[i + 1] / 2, choices[i + 2]);
        const auto place = static_cast<std::uint32_t>(memory.Size() * choices[i + 3] / 256);
        std::vector<byte_vector> seen;
        for (vSTREAM* stream : streams) {
            byte_vector got;
            switch (choices[i] % 6) {
            case 0:
                stream->MoveFromStart(place);
                break;
            case 1:
                got = read_block(*stream, static_cast<std::uint32_t>(block.size()));
                break;
            case 2:
                stream->MoveFromCur(-static_cast<std::int32_t>(std::min(stream->CurrentPos(), 40U)));
                break;
            default:
                write(*stream, block);
            }
            got.push_back(static_cast<std::uint8_t>(stream->CurrentPos() & 0xFF));
            got.push_back(static_cast<std::uint8_t>(stream->CurrentPos() >> 8 & 0xFF));
            seen.push_back(got);
        }
        ASSERT_EQ(seen[0], seen[2]) << "cached, step " << i / 4;
        ASSERT_EQ(seen[1], seen[2]) << "uncached, step " << i / 4;
    }
    EXPECT_GT(memory.Size(), 20'000U);
    EXPECT_EQ(contents(cached), contents(memory));
    EXPECT_EQ(contents(plain), contents(memory));
}

TEST(File, TheCacheReachesTheFileWhenItCloses)
{
    scratch_directory scratch;
    {
        vFILE file(scratch.name("f"), 0, 1);
        write(file, to_bytes("destroyed"));
    }
    EXPECT_EQ(scratch.bytes("f"), to_bytes("destroyed"));
    vFILE file(scratch.name("f"), 5, 1);
    write(file, to_bytes("closed"));
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(scratch.bytes("f"), to_bytes("closed"));
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(file.WriteUByte('x'), 0);
    EXPECT_EQ(file.Status(), vSTREAM_WRITE_ERROR);
}

TEST(File, ReopensByItsName)
{
    scratch_directory scratch;
    vFILE file(scratch.name("f"), 0);
    write(file, to_bytes("abc"));
    file.Close();
    ASSERT_EQ(file.ReOpen(), 1);
    EXPECT_EQ(file.Status(), vSTREAM_OK);
    EXPECT_EQ(file.CurrentPos(), 0U);
    EXPECT_EQ(read_block(file, 3), to_bytes("abc"));
}

TEST(File, ATemporaryFileGoesWithTheLastWhoHoldsIt)
{
    auto file = std::make_unique<vFILE>();
    ASSERT_EQ(file->Status(), vSTREAM_OK);
    const fs::path path = file->Name()();
    EXPECT_EQ(path.filename().string().substr(0, 2), "vm");
    write(*file, to_bytes("data"));
    EXPECT_EQ(file->Close(), 1);
    EXPECT_TRUE(fs::exists(path));
    EXPECT_EQ(file->ReOpen(), 1);

    auto copy = std::make_unique<vFILE>(*file);
    file.reset();
    EXPECT_TRUE(fs::exists(path));
    EXPECT_EQ(contents(*copy), to_bytes("data"));
    copy.reset();
    EXPECT_FALSE(fs::exists(path));
}

TEST(File, CopiesShareTheFileAndItsPointer)
{
    scratch_directory scratch;
    scratch.put("f", to_bytes("abcdef"));
    vFILE file(scratch.name("f"), 0x80000000);
    vFILE copy(file);
    EXPECT_EQ(file.ReadUByte(), 'a');
    EXPECT_EQ(copy.ReadUByte(), 'b');
    EXPECT_EQ(file.CurrentPos(), 2U);
    file.Close();
    EXPECT_EQ(copy.ReadUByte(), 0);
    EXPECT_EQ(copy.Status(), vSTREAM_READ_ERROR);
}

// Reads are buffered; a buffer must never show what another stream has overwritten or appended since.
TEST(File, ReadersSeeWhatOthersWrite)
{
    scratch_directory scratch;
    scratch.put("f", to_bytes("abc"));
    vFILE reader(scratch.name("f"), 0x80000000);
    vFILE writer(scratch.name("f"), 0);
    EXPECT_EQ(reader.ReadUByte(), 'a');
    writer.MoveFromStart(1);
    write(writer, to_bytes("BCD"));
    EXPECT_FALSE(reader.AtEnd());
    EXPECT_EQ(read_block(reader, 3), to_bytes("BCD"));
    EXPECT_TRUE(reader.AtEnd());
    write(writer, to_bytes("E"));
    EXPECT_FALSE(reader.AtEnd());
    EXPECT_EQ(reader.ReadUByte(), 'E');
}

TEST(File, EndOfDataIsLiftedByAMove)
{
    scratch_directory scratch;
    scratch.put("f", to_bytes("abc"));
    vFILE file(scratch.name("f"), 0x80000000);
    EXPECT_EQ(file.ReadULong(), 0U);
    EXPECT_EQ(file.Status(), vSTREAM_END);
    EXPECT_EQ(file.MoveFromEnd(-1), 2U);
    EXPECT_EQ(file.Status(), vSTREAM_OK);
    EXPECT_EQ(file.ReadUByte(), 'c');
    EXPECT_EQ(file.MoveFromCur(-4), 0U) << "before the start";
    EXPECT_EQ(file.Status(), vSTREAM_END);
    EXPECT_EQ(file.CurrentPos(), 3U);
}

TEST(File, ViewsAreWhatReadsDeliver)
{
    scratch_directory scratch;
    const auto bytes = noise(200'000);
    scratch.put("f", bytes);
    vFILE file(scratch.name("f"), 0x80000000);
    file.MoveFromStart(100);
    byte_vector seen;
    for (auto view = file.View(5000); !view.empty(); view = file.View(5000)) {
        seen.insert(seen.end(), view.begin(), view.end());
        file.MoveFromCur(static_cast<std::int32_t>(view.size()));
    }
    EXPECT_EQ(seen, byte_vector(bytes.begin() + 100, bytes.end()));
}

TEST(File, OutOfMemoryIsAStatusOrCostsTheCache)
{
    for (std::uint64_t n = 0; n < 4; ++n) {
        scratch_directory scratch;
        const auto name = scratch.name("f");
        vSTREAMSTATUS status;
        {
            vMemFailAfter(n);
            vFILE file(name, 0, 1);
            vMemNeverFail();
            status = file.Status();
            EXPECT_EQ(file.WriteUByte('x'), status == vSTREAM_OK ? 1 : 0) << n;
        }
        EXPECT_EQ(scratch.bytes("f"), to_bytes(status == vSTREAM_OK ? "x" : "")) << n;
    }
}

} // namespace klv
