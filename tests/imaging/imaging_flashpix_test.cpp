#include "tests/imaging/flashpix_builder.h"
#include "tests/imaging/imaging_module.h"

#include <array>

namespace klv {
namespace {

using namespace klv::imaging;
using namespace klv::test::flashpix;
using test::file_bytes;
using test::image;

class FlashPix : public test::imaging_module_test {
protected:
    /// Three tiles of the three kinds, side by side: 40 by 3 pixels.
    file_bytes picture(compound_layout layout = {})
    {
        file_bytes plain(std::size_t{3} * tile_side * tile_side);
        for (std::size_t i = 0; i < plain.size(); i += 3) {
            plain[i] = static_cast<std::uint8_t>(i / 3 % tile_side); // red counts the columns
            plain[i + 1] = static_cast<std::uint8_t>(i / 3 / tile_side); // green the rows
        }
        image grey;
        EXPECT_EQ(
            module_.create(&grey.handle, conventional_memory, 16, 16, 24, 1, nullptr, top_left), imaging_ok);
        grey.lines.assign(std::size_t{48} * 16, 100);
        file_bytes jpeg;
        EXPECT_EQ(write(grey, format_jpeg, jpeg), imaging_ok);

        compound_builder file(layout);
        file.stream("\005Image Contents", 0, contents(0x00030000));
        add_level(file, 0, 10, 2, 3, {{1, 0x00332211, {}}});
        add_level(file, 1, 40, 3, 3, {{0, 0, plain}, {1, 0x00332211, {}}, {2, 0x00010000, jpeg}});
        return file.bytes();
    }
};

TEST_F(FlashPix, TilesOfEveryKindInFilesOfEveryLayout)
{
    const struct {
        const char* what;
        compound_layout layout;
    } cases[] = {
        {"usual", {}},
        {"streams in small sectors", {.small_streams = true}},
        {"sectors of 4096 bytes", {.sector_shift = 12, .small_streams = true}},
        {"a table that the header has no room for", {.unused_sectors = 31000}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        image loaded;
        ASSERT_EQ(read(picture(c.layout), loaded), imaging_ok);
        ASSERT_EQ(loaded.handle.width, 40);
        ASSERT_EQ(loaded.handle.height, 3);
        EXPECT_EQ(loaded.colour(0, 0), 0);
        EXPECT_EQ(loaded.colour(15, 2), 0x0F0200);
        EXPECT_EQ(loaded.colour(16, 0), 0x112233);
        EXPECT_EQ(loaded.colour(31, 2), 0x112233);
        EXPECT_EQ(loaded.colour(39, 1), 0x646464);
    }
}

TEST_F(FlashPix, ADirectoryThatIsOneLongChainOrACircleIsSearchedAtOnce)
{
    for (const bool circle : {false, true}) {
        compound_builder file;
        const std::uint32_t last = file.storage("0", 0);
        for (int i = 1; i < 200000; ++i)
            file.storage(std::to_string(i), 0);
        if (circle)
            file.link(last, last + 20000);
        image loaded;
        EXPECT_EQ(read(file.bytes(), loaded), imaging_bad_data);
    }
}

TEST_F(FlashPix, ResolutionsAreListedAndChosen)
{
    const file_bytes file = picture();
    stream_.bytes = file;
    stream_.install(module_);
    std::array<dimension, 29> sizes{};
    auto count = static_cast<std::uint32_t>(sizes.size());
    ASSERT_EQ(module_.enumerate("tmp", format_flashpix, sizes.data(), &count), imaging_ok);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(sizes[0].width, 10);
    EXPECT_EQ(sizes[1].height, 3);
    count = 1;
    ASSERT_EQ(module_.enumerate("tmp", format_flashpix, sizes.data(), &count), imaging_ok);
    EXPECT_EQ(count, 1U) << "the table is full";

    const struct {
        dimension wanted;
        std::int32_t width;
    } cases[] = {{{10, 2}, 10}, {{5, 1}, 10}, {{11, 2}, 40}, {{4000, 4000}, 40}, {{0, 0}, 40}};
    for (const auto& c : cases) {
        ASSERT_EQ(module_.set_dimension(format_flashpix, c.wanted.width, c.wanted.height), imaging_ok);
        image loaded;
        EXPECT_EQ(read(file, loaded), imaging_ok);
        EXPECT_EQ(loaded.handle.width, c.width) << c.wanted.width;
    }
    EXPECT_EQ(module_.set_dimension(format_png, 1, 1), imaging_unsupported);
    EXPECT_EQ(module_.set_dimension(format_flashpix, -1, 1), imaging_bad_data);
    EXPECT_EQ(module_.enumerate("tmp", format_png, sizes.data(), &count), imaging_unsupported);
}

TEST_F(FlashPix, OtherColourSpaces)
{
    const struct {
        std::uint32_t first_channel;
        std::uint32_t channels;
        std::uint32_t pixel;
        std::int32_t bits;
        int expected;
    } cases[] = {
        {0x00010000, 1, 0x40, 8, 0x404040}, {0x00020000, 3, 0x00899C64, 24, 0x888888}, // no chrominance
        {0x00038000, 4, 0x7F030201, 24, 0x010203}, // opacity is left out
    };
    for (const auto& c : cases) {
        compound_builder file;
        file.stream("\005Image Contents", 0, contents(c.first_channel));
        add_level(file, 0, 3, 3, c.channels, {{1, c.pixel, {}}});
        image loaded;
        file_info info{};
        ASSERT_EQ(read(file.bytes(), loaded, &info), imaging_ok);
        EXPECT_EQ(info.bits_per_pixel, c.bits);
        EXPECT_EQ(loaded.colour(2, 2), c.expected);
    }
}

TEST_F(FlashPix, DamageIsAnswered)
{
    const file_bytes good = picture();
    constexpr std::size_t step = 97;
    for (std::size_t at = 0; at + step < good.size(); at += step) {
        image loaded;
        const file_bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_NE(read(cut, loaded), imaging_ok) << "the table, at the end, is gone";
        file_bytes damaged = good;
        std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), step, std::uint8_t{0xFF});
        // Either resolution may be all that is left.
        if (read(damaged, loaded) == imaging_ok) {
            EXPECT_TRUE(loaded.handle.width == 40 || loaded.handle.width == 10) << at;
        }
    }
    compound_builder missing_tile;
    missing_tile.stream("\005Image Contents", 0, contents(0x00030000));
    add_level(missing_tile, 0, 20, 3, 3, {{1, 0x00332211, {}}, {0, 0, {1, 2, 3}}});
    image loaded;
    EXPECT_EQ(read(missing_tile.bytes(), loaded), imaging_read_error);
    EXPECT_EQ(loaded.colour(0, 0), 0x112233) << "what could be read is there";

    compound_builder too_large;
    too_large.stream("\005Image Contents", 0, contents(0x00030000));
    add_level(too_large, 0, 60000, 60000, 3, {{1, 0, {}}});
    EXPECT_EQ(read(too_large.bytes(), loaded), imaging_bad_data);
}

} // namespace
} // namespace klv
