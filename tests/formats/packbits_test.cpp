#include "klv/formats/packbits.h"

#include <numeric>

#include <gtest/gtest.h>

using namespace klv;

namespace {

using bytes = std::vector<std::uint8_t>;

} // namespace

TEST(PackBits, UnpacksUpToTheRow)
{
    const struct {
        const char* what;
        bytes packed;
        bool whole;
        bytes row;
    } cases[] = {
        {"literals and a run", {1, 7, 8, 0xFE, 9}, true, {7, 8, 9, 9, 9}},
        {"-128 between packets", {128, 0, 7, 128, 0xFD, 9}, true, {7, 9, 9, 9, 9}},
        {"a run past the row", {0x81, 5}, true, {5, 5, 5, 5, 5}},
        {"literals past the row", {6, 1, 2, 3, 4, 5, 6, 7}, true, {1, 2, 3, 4, 5}},
        {"a run without its byte", {0, 7, 0xFE}, false, {7, 0, 0, 0, 0}},
        {"literals cut short", {4, 1, 2}, false, {1, 2, 0, 0, 0}},
        {"nothing", {}, false, {0, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        bytes row(5);
        EXPECT_EQ(unpack_bits(c.packed, row), c.whole) << c.what;
        EXPECT_EQ(row, c.row) << c.what;
    }
}

TEST(PackBits, PacksRunsOfThreeAndMore)
{
    bytes packed;
    pack_bits(bytes{1, 1, 2, 3, 3, 3, 4}, packed);
    EXPECT_EQ(packed, (bytes{2, 1, 1, 2, 0xFE, 3, 0, 4}));

    // Each of the two kinds of packet at its longest and one beyond.
    for (const std::size_t length : {128U, 129U, 257U}) {
        bytes different(length);
        std::iota(different.begin(), different.end(), std::uint8_t{0});
        for (const bytes& row : {bytes(length, 6), different}) {
            packed.clear();
            pack_bits(row, packed);
            EXPECT_LE(packed.size(), length + (length + 127) / 128);
            bytes again(length);
            EXPECT_TRUE(unpack_bits(packed, again));
            EXPECT_EQ(again, row);
        }
    }
}
