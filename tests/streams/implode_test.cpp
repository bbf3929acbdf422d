#include "klv/streams/compression/explode.h"
#include "klv/streams/compression/implode.h"

#include "tests/streams/stream_testing.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace klv {

namespace {

byte_vector imploded(const byte_vector& block)
{
    byte_vector data(implode_bound(block.size()));
    data.resize(implode(block, data).value_or(0));
    return data;
}

byte_vector from_hex(std::string_view digits)
{
    byte_vector bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16)));
    return bytes;
}

struct outcome {
    byte_vector bytes;
    explode_state state;
};

// Explodes in pieces, so that copies are cut at every place; one byte more shows the end.
outcome exploded_in_pieces(const byte_vector& data, std::size_t size, std::size_t piece)
{
    byte_vector output(size + 1);
    exploder decoder(data);
    std::size_t done = 0;
    while (done < output.size() && decoder.state() == explode_state::more)
        done = decoder.decode(std::span(output).first(std::min(done + piece, output.size())), done);
    output.resize(done);
    return {output, decoder.state()};
}

outcome exploded_whole(const byte_vector& data, std::size_t room)
{
    byte_vector output(room);
    const auto result = explode(data, output);
    output.resize(result.size);
    return {output, result.state};
}

} // namespace

// Worked out by hand from the published code; the first is the example that came with it.
TEST(Explode, ReadsThePublishedFormat)
{
    const struct {
        const char* what;
        byte_vector data;
        byte_vector expected;
    } cases[] = {
        {"published example", {0x00, 0x04, 0x82, 0x24, 0x25, 0x8F, 0x80, 0x7F}, to_bytes("AIAIAIAIAIAIA")},
        {"nothing", {0x00, 0x06, 0x01, 0xFF}, {}},
        // 'a' plain: 0 + 8 bits least first.
        {"one literal", {0x00, 0x06, 0xC2, 0x02, 0xFE, 0x01}, to_bytes("a")},
        // The coded space, the shortest code word: 0 + 1111.
        {"coded literal", {0x01, 0x05, 0x3E, 0xE0, 0x1F}, to_bytes(" ")},
        {"made by another implementation",
            from_hex("0006E8A02903824D1AB76DBC3103322FCCA461C3064418376440228C19F3C60D9D3775E402FE01"),
            to_bytes("the line of the fill and the line of the contour")},
    };
    for (const auto& c : cases) {
        const auto result = exploded_whole(c.data, 100);
        EXPECT_EQ(result.bytes, c.expected) << c.what;
        EXPECT_EQ(result.state, explode_state::complete) << c.what;
    }
}

TEST(Explode, CodedLiteralsCoverAllBytes)
{
    // Every byte once, coded by another implementation of the format with a 1024-byte dictionary.
    const auto data = from_hex(
        "010420095D03700154600E06C00984813F3415C00154C00C32C00184801F3052006C000598820EB00341E00B12328005207B"
        "D000362000"
        "7CD020009800122841046005FCC01B2C78A00D28E1400258001FF00271F0400B400426200C30035EE0090CC1014D000114A0"
        "024C800778"
        "88410A340078600C0C0046C00D171504813A000772880003E022168100500314B0813E400F3881BB10E801550096D001E800"
        "077073812E"
        "5001600898002D602742013A40198086C50068001B70850A480025400E361DA006ACC0050A200E140119BE0D500116E02C00"
        "C480022095"
        "D2004AC00C9C400C1005F200141E15A0004CC0114C4004C801903029003960040E7C4018C80210B816400618803D32200464"
        "0070090801"
        "A4801ED8F10041200D80E1200024800ED8720101200580629B0031A0053648003F900440B0C80011A001D6200AF001090018"
        "D30008010C"
        "60C5017881380004430708003520C90678801800884102F0017460C902B8812800800E32000F4003168800171009F807");
    byte_vector expected(256);
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] = static_cast<std::uint8_t>(i * 57 % 256);
    const auto result = exploded_whole(data, 1000);
    EXPECT_EQ(result.bytes, expected);
    EXPECT_EQ(result.state, explode_state::complete);
}

TEST(Explode, IsTotalOnDamagedData)
{
    const auto good = imploded(wordy(3000));
    const struct {
        const char* what;
        byte_vector data;
    } cases[] = {
        {"no header", {}},
        {"half a header", {0x00}},
        {"unknown literal mode", {0x02, 0x06, 0x01, 0xFF}},
        {"dictionary too small", {0x00, 0x03, 0x01, 0xFF}},
        {"dictionary too large", {0x00, 0x07, 0x01, 0xFF}},
        {"no data", {0x00, 0x06}},
        {"copy before the first byte", {0x00, 0x06, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"end code cut", {0x00, 0x06, 0x01}},
        {"cut in the middle", byte_vector(good.begin(), good.begin() + 200)},
    };
    for (const auto& c : cases) {
        const auto result = exploded_whole(c.data, 4000);
        EXPECT_EQ(result.state, explode_state::damaged) << c.what;
        EXPECT_LE(result.bytes.size(), 3000U) << c.what;
    }
}

TEST(Explode, StopsAtTheEndOfTheOutput)
{
    const auto block = wordy(5000);
    const auto result = exploded_whole(imploded(block), 1234);
    EXPECT_EQ(result.state, explode_state::more);
    EXPECT_EQ(result.bytes, byte_vector(block.begin(), block.begin() + 1234));
}

TEST(Implode, RoundTripsInPiecesOfAnySize)
{
    byte_vector ramp(256);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<std::uint8_t>(i);
    byte_vector far = noise(4096, 9); // a copy from the greatest distance
    const byte_vector start(far.begin(), far.begin() + 700);
    far.insert(far.end(), start.begin(), start.end());
    const struct {
        const char* what;
        byte_vector block;
    } cases[] = {
        {"empty", {}},
        {"one byte", {7}},
        {"two equal", {7, 7}},
        {"pair repeated", to_bytes("ababab")},
        {"short copies", to_bytes("ab_ab.ab,ab;ab:ab")},
        {"ramp", ramp},
        {"run", byte_vector(100'000, 0)},
        {"words", wordy(70'000)},
        {"noise", noise(20'000)},
        {"greatest distance", far},
    };
    for (const auto& c : cases) {
        const auto data = imploded(c.block);
        ASSERT_GE(data.size(), 4U) << c.what;
        EXPECT_EQ(data[0], 0);
        EXPECT_EQ(data[1], 6);
        for (const std::size_t piece :
            {std::size_t{1}, std::size_t{7}, std::size_t{5000}, c.block.size() + 1}) {
            const auto result = exploded_in_pieces(data, c.block.size(), piece);
            EXPECT_EQ(result.bytes, c.block) << c.what << " in pieces of " << piece;
            EXPECT_EQ(result.state, explode_state::complete) << c.what;
        }
    }
    EXPECT_EQ(imploded({}), (byte_vector{0x00, 0x06, 0x01, 0xFF}));
    EXPECT_LT(imploded(wordy(70'000)).size(), 70'000U / 4);
}

TEST(Implode, NeverWritesMoreThanItMay)
{
    const auto block = wordy(2000);
    const auto needed = imploded(block).size();
    byte_vector room(needed);
    EXPECT_EQ(implode(block, room), needed);
    for (const std::size_t less : {needed - 1, needed / 2, std::size_t{3}, std::size_t{0}}) {
        byte_vector guarded(needed, 0xA5);
        EXPECT_FALSE(implode(block, std::span(guarded).first(less)));
        EXPECT_TRUE(std::all_of(guarded.begin() + static_cast<std::ptrdiff_t>(less), guarded.end(),
            [](std::uint8_t byte) { return byte == 0xA5; }));
    }
}

} // namespace klv
