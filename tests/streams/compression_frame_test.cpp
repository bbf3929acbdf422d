#include "klv/base/memory.h"
#include "klv/core/string.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"
#include "klv/streams/ole_stream.h"

#include "tests/streams/stream_testing.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace klv {

namespace {

const byte_vector marker{0xB1, 0xAA, 0x12, 0x00};

byte_vector frame_of(const byte_vector& data)
{
    byte_vector frame = marker;
    for (unsigned shift = 0; shift < 32; shift += 8)
        frame.push_back(static_cast<std::uint8_t>(data.size() >> shift & 0xFF));
    frame.insert(frame.end(), data.begin(), data.end());
    return frame;
}

byte_vector operator+(byte_vector a, const byte_vector& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// "AIAIAIAIAIAIA", the published example of imploded data.
const byte_vector example{0x00, 0x04, 0x82, 0x24, 0x25, 0x8F, 0x80, 0x7F};
const byte_vector example_block = to_bytes("AIAIAIAIAIAIA");

// The same blocks must come out of every kind of stream.
class EveryStream : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        const std::string kind = GetParam();
        if (kind == "memory") {
            stream_ = std::make_unique<vMEMSTREAM>();
        } else if (kind == "ole") {
            ole_ = CreateMemoryStream();
            stream_ = std::make_unique<vOLESTREAM>(&ole_);
        } else {
            stream_ = std::make_unique<vFILE>(scratch_.name("f"), vFILE::truncate, kind == "cached");
        }
    }
    void TearDown() override
    {
        stream_.reset();
        if (ole_)
            ole_->Release();
        ole_ = nullptr;
    }
    vSTREAM& stream() { return *stream_; }

private:
    scratch_directory scratch_;
    IStream* ole_ = nullptr;
    std::unique_ptr<vSTREAM> stream_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Streams, EveryStream, testing::Values("memory", "file", "cached", "ole"));

TEST_P(EveryStream, KeepsAFrameThatIsShorterThanItsBlock)
{
    const byte_vector zeros(1000);
    stream().Compress(1);
    const auto n = write(stream(), zeros);
    EXPECT_LT(n, 100U);
    EXPECT_EQ(stream().CurrentPos(), n + 8);
    stream() << std::uint8_t{'.'};
    stream().Compress(0);

    stream().MoveFromStart(0);
    EXPECT_EQ(read_block(stream(), 1000), zeros);
    EXPECT_EQ(stream().UnCompressed(), 1);
    EXPECT_EQ(stream().Status(), vSTREAM_OK);
    EXPECT_EQ(stream().CurrentPos(), n + 8) << "just after the frame";
    EXPECT_EQ(stream().ReadUByte(), '.');

    EXPECT_EQ(stream().Size(), n + 9);
    const auto bytes = contents(stream());
    EXPECT_EQ(byte_vector(bytes.begin(), bytes.begin() + 4), marker);
    EXPECT_EQ(bytes[4], n);
}

TEST_P(EveryStream, StoresABlockPlainWhenAFrameWouldNotPay)
{
    stream().Compress(1);
    EXPECT_EQ(write(stream(), to_bytes("abc")), 3U);
    EXPECT_EQ(write(stream(), noise(500)), 500U);
    EXPECT_EQ(stream().CurrentPos(), 503U);
    EXPECT_EQ(contents(stream()), to_bytes("abc") + noise(500));
    stream().MoveFromStart(0);
    EXPECT_EQ(read_block(stream(), 3), to_bytes("abc"));
    EXPECT_EQ(stream().UnCompressed(), 0);
}

// A frame is up to seven bytes longer than its block, and its header alone longer than a block of four.
TEST_P(EveryStream, ReadsAFrameLongerThanItsBlock)
{
    stream().WritePlain(frame_of(example).data(), 16);
    for (const std::uint32_t size : {13U, 4U, 7U, 8U, 12U}) {
        stream().MoveFromStart(0);
        EXPECT_EQ(
            read_block(stream(), size), byte_vector(example_block.begin(), example_block.begin() + size));
        EXPECT_EQ(stream().Status(), vSTREAM_OK) << size;
        EXPECT_EQ(stream().CurrentPos(), 16U);
    }
    stream().MoveFromStart(0);
    EXPECT_EQ(read_block(stream(), 14), example_block);
    EXPECT_EQ(stream().Status(), vSTREAM_END) << "a block shorter than what was asked";
    stream().MoveFromStart(0);
    EXPECT_EQ(read_block(stream(), 3), byte_vector(marker.begin(), marker.begin() + 3))
        << "too short to tell";
}

TEST_P(EveryStream, MalformedFramesAreAnswered)
{
    const struct {
        const char* what;
        byte_vector bytes;
        std::size_t delivered;
        std::uint32_t position;
        vSTREAMSTATUS status;
    } cases[] = {
        {"a marker alone is a plain block", marker, 4, 4, vSTREAM_END},
        {"longer than the stream is a plain block", marker + byte_vector{0xFF, 0xFF, 0xFF, 0xFF, 0, 6}, 10,
            10, vSTREAM_END},
        {"one byte short",
            [] {
                auto f = frame_of(example);
                f.pop_back();
                return f;
            }(),
            15, 15, vSTREAM_END},
        {"empty frame", frame_of({}), 0, 8, vSTREAM_READ_ERROR},
        {"no imploded data", frame_of({9, 9, 9, 9}), 0, 12, vSTREAM_READ_ERROR},
        {"data that ends early", frame_of({0x00, 0x04, 0x82, 0x24}), 1, 12, vSTREAM_READ_ERROR},
    };
    for (const auto& c : cases) {
        TearDown();
        SetUp();
        stream().WritePlain(c.bytes.data(), static_cast<std::uint32_t>(c.bytes.size()));
        stream().MoveFromStart(0);
        EXPECT_EQ(read_block(stream(), 100).size(), c.delivered) << c.what;
        EXPECT_EQ(stream().CurrentPos(), c.position) << c.what;
        EXPECT_EQ(stream().Status(), c.status) << c.what;
    }
}

TEST_P(EveryStream, CopyingTakesFramesApart)
{
    const auto words = wordy(30'000);
    vMEMSTREAM source;
    source << std::uint8_t{'-'};
    source.Compress(1);
    write(source, words);
    write(source, byte_vector(5000, 7));
    source.Compress(0);
    write(source, to_bytes("plain"));
    source.MoveFromStart(1);

    stream() << std::uint8_t{'>'};
    stream() = source;
    EXPECT_EQ(contents(stream()), to_bytes(">") + words + byte_vector(5000, 7) + to_bytes("plain"));
    EXPECT_EQ(stream().Status(), vSTREAM_OK);
    EXPECT_EQ(source.Status(), vSTREAM_OK);
    EXPECT_TRUE(source.AtEnd());
}

TEST_P(EveryStream, CopyingIntoACompressingStreamMakesOneFrame)
{
    const auto words = wordy(5000);
    vMEMSTREAM source;
    write(source, words);
    source.MoveFromStart(0);
    stream().Compress(1);
    stream() = source;
    EXPECT_EQ(stream().Status(), vSTREAM_OK);
    EXPECT_LT(stream().Size(), 2500U);
    stream().MoveFromStart(0);
    EXPECT_EQ(read_block(stream(), 5000), words);
}

TEST(CompressionFrame, CopyingFailsWhereTheSourceIsDamaged)
{
    vMEMSTREAM source;
    const auto bytes = frame_of({0x00, 0x04, 0x82, 0x24}) + to_bytes("rest");
    source.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    source.MoveFromStart(0);
    vMEMSTREAM target;
    static_cast<vSTREAM&>(target) = source;
    EXPECT_EQ(source.Status(), vSTREAM_READ_ERROR);
    EXPECT_EQ(contents(target), to_bytes("A"));
}

TEST(CompressionFrame, TextOfAStringIsOneBlock)
{
    vMEMSTREAM stream;
    stream.Compress(1);
    const vSTRING text(std::string(300, '=').c_str());
    text >> stream;
    EXPECT_LT(stream.Size(), 60U);
    stream.MoveFromStart(0);
    vSTRING back;
    back << stream;
    EXPECT_EQ(back, text);
}

TEST(CompressionFrame, WithoutMemoryForTheSearchABlockIsStoredPlain)
{
    const byte_vector zeros(1000);
    for (std::uint64_t n = 0; n < 2; ++n) {
        vMEMSTREAM stream;
        stream << std::uint8_t{0};
        write(stream, byte_vector(2000));
        stream.MoveFromStart(0);
        stream.Compress(1);
        vMemFailAfter(n);
        EXPECT_EQ(write(stream, zeros), 1000U) << n;
        vMemNeverFail();
        stream.MoveFromStart(0);
        EXPECT_EQ(read_block(stream, 1000), zeros);
        EXPECT_EQ(stream.UnCompressed(), 0);
    }
}

} // namespace klv
