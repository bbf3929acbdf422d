#include "tests/platform/imaging_module.h"

#include <array>
#include <cstdio>

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;
using test::image;

constexpr std::size_t sector = 512;
constexpr std::uint32_t end_of_chain = 0xFFFFFFFE;
constexpr std::uint32_t free_sector = 0xFFFFFFFF;
/// Shorter streams would lie in the mini stream.
constexpr std::size_t stream_bytes = 4096;

/// A compound file in which every stream is padded to 4096 bytes.
class compound_builder {
public:
    compound_builder() { add("Root Entry", root_type, none, {}); }

    /// Adds a storage to a storage, the root is number 0.
    std::uint32_t storage(const std::string& name, std::uint32_t parent)
    {
        return add(name, storage_type, parent, {});
    }
    void stream(const std::string& name, std::uint32_t parent, file_bytes bytes)
    {
        bytes.resize(stream_bytes);
        add(name, stream_type, parent, std::move(bytes));
    }

    file_bytes bytes() const
    {
        constexpr std::size_t sectors_of_stream = stream_bytes / sector;
        const std::size_t directory_sectors = (entries_.size() * 128 + sector - 1) / sector;
        // Sector 0 is the table, the directory follows, then the streams.
        std::vector<std::uint32_t> table{0xFFFFFFFD};
        const auto chain = [&](std::size_t count) {
            for (std::size_t i = 1; i < count; ++i)
                table.push_back(static_cast<std::uint32_t>(table.size() + 1));
            table.push_back(end_of_chain);
        };
        chain(directory_sectors);
        byte_writer directory;
        byte_writer streams;
        for (const entry& e : entries_) {
            std::uint32_t start = end_of_chain;
            if (e.type == stream_type) {
                start = static_cast<std::uint32_t>(table.size());
                chain(sectors_of_stream);
                streams.bytes(e.bytes);
            }
            write_entry(directory, e, start);
        }
        directory.align(sector);
        byte_writer out;
        write_header(out);
        table.resize(sector / 4, free_sector);
        for (const std::uint32_t next : table)
            out.u32le(next);
        out.bytes(directory.span());
        out.bytes(streams.span());
        return {out.span().begin(), out.span().end()};
    }

private:
    static constexpr std::uint8_t storage_type = 1;
    static constexpr std::uint8_t stream_type = 2;
    static constexpr std::uint8_t root_type = 5;
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    struct entry {
        std::string name;
        std::uint8_t type;
        file_bytes bytes;
        std::uint32_t next = none;
        std::uint32_t child = none;
    };

    std::uint32_t add(const std::string& name, std::uint8_t type, std::uint32_t parent, file_bytes bytes)
    {
        const auto number = static_cast<std::uint32_t>(entries_.size());
        entries_.push_back({name, type, std::move(bytes)});
        if (parent != none) {
            entries_[number].next = entries_[parent].child;
            entries_[parent].child = number;
        }
        return number;
    }
    static void write_entry(byte_writer& out, const entry& e, std::uint32_t start)
    {
        for (std::size_t i = 0; i < 32; ++i)
            out.u16le(i < e.name.size() ? static_cast<std::uint8_t>(e.name[i]) : 0);
        out.u16le(static_cast<std::uint16_t>(2 * e.name.size() + 2));
        out.u8(e.type);
        out.u8(1);
        out.u32le(none);
        out.u32le(e.next);
        out.u32le(e.child);
        out.fill(16 + 4 + 16);
        out.u32le(start);
        out.u32le(static_cast<std::uint32_t>(e.bytes.size()));
        out.u32le(0);
    }
    static void write_header(byte_writer& out)
    {
        for (const int byte : {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1})
            out.u8(static_cast<std::uint8_t>(byte));
        out.fill(16);
        for (const std::uint16_t word : std::array<std::uint16_t, 5>{0x3E, 3, 0xFFFE, 9, 6})
            out.u16le(word);
        out.fill(6 + 4);
        out.u32le(1); // sectors of the table
        out.u32le(1); // first sector of the directory
        out.u32le(0);
        out.u32le(static_cast<std::uint32_t>(stream_bytes));
        out.u32le(end_of_chain);
        out.u32le(0);
        out.u32le(end_of_chain);
        out.u32le(0);
        out.u32le(0); // where the table lies
        for (int i = 1; i < 109; ++i)
            out.u32le(free_sector);
    }

    std::vector<entry> entries_;
};

struct tile {
    std::uint32_t compression;
    std::uint32_t subtype;
    file_bytes bytes;
};

constexpr std::uint32_t tile_side = 16;
/// Both streams of a resolution and a property set begin so.
constexpr std::size_t stream_header = 28;

file_bytes contents(std::uint32_t first_channel)
{
    byte_writer out;
    out.fill(stream_header + 16);
    out.u32le(48); // the only section
    out.u32le(0);
    out.u32le(1);
    out.u32le(0x02000002);
    out.u32le(16);
    out.u32le(65); // a blob
    out.u32le(20);
    out.u32le(1);
    out.u32le(3);
    for (std::uint32_t i = 0; i < 3; ++i)
        out.u32le(first_channel + i);
    return {out.span().begin(), out.span().end()};
}

void add_level(compound_builder& file, std::uint32_t number, std::uint32_t width, std::uint32_t height,
    std::uint32_t channels, const std::vector<tile>& tiles)
{
    byte_writer header;
    byte_writer data;
    header.fill(stream_header);
    data.fill(stream_header);
    for (const auto value : {std::uint32_t{36}, width, height, static_cast<std::uint32_t>(tiles.size()),
             tile_side, tile_side, channels, std::uint32_t{36}, std::uint32_t{16}})
        header.u32le(value);
    for (const tile& each : tiles) {
        header.u32le(static_cast<std::uint32_t>(data.size() - stream_header));
        header.u32le(static_cast<std::uint32_t>(each.bytes.size()));
        header.u32le(each.compression);
        header.u32le(each.subtype);
        data.bytes(each.bytes);
    }
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "Resolution %04u", number);
    const std::uint32_t storage = file.storage(name.data(), 0);
    file.stream("Subimage 0000 Header", storage, {header.span().begin(), header.span().end()});
    file.stream("Subimage 0000 Data", storage, {data.span().begin(), data.span().end()});
}

class FlashPix : public test::imaging_module_test {
protected:
    /// Three tiles of the three kinds, side by side: 40 by 3 pixels.
    file_bytes picture()
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

        compound_builder file;
        file.stream("\005Image Contents", 0, contents(0x00030000));
        add_level(file, 0, 10, 2, 3, {{1, 0x00332211, {}}});
        add_level(file, 1, 40, 3, 3, {{0, 0, plain}, {1, 0x00332211, {}}, {2, 0x00010000, jpeg}});
        return file.bytes();
    }
};

TEST_F(FlashPix, TilesOfEveryKind)
{
    image loaded;
    ASSERT_EQ(read(picture(), loaded), imaging_ok);
    ASSERT_EQ(loaded.handle.width, 40);
    ASSERT_EQ(loaded.handle.height, 3);
    EXPECT_EQ(loaded.colour(0, 0), 0);
    EXPECT_EQ(loaded.colour(15, 2), 0x0F0200);
    EXPECT_EQ(loaded.colour(16, 0), 0x112233);
    EXPECT_EQ(loaded.colour(31, 2), 0x112233);
    EXPECT_EQ(loaded.colour(39, 1), 0x646464);
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
    for (std::size_t size = 0; size < good.size(); size += 97) {
        image loaded;
        const file_bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
        // The smaller resolution lies before the larger one and may be all that is left.
        if (read(cut, loaded) == imaging_ok && size < good.size() - stream_bytes) {
            EXPECT_EQ(loaded.handle.width, 10) << size;
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
