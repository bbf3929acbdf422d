// Files built by hand, byte for byte as their formats have them.
#include "klv/base/byte_order.h"

#include "tests/imaging/imaging_module.h"

#include <array>
#include <utility>

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;
using test::image;
using ImagingFiles = test::imaging_module_test;

constexpr int red = 0xFF0000;
constexpr int green = 0x00FF00;
constexpr int blue = 0x0000FF;
constexpr int white = 0xFFFFFF;

file_bytes bytes_of(const byte_writer& out) { return {out.span().begin(), out.span().end()}; }

// ---- TIFF -------------------------------------------------------------------------------------------------

/// A TIFF file of one image, in either byte order.
struct tiff_builder {
    bool big_endian = false;
    std::uint32_t width = 2;
    std::uint32_t height = 2;
    std::uint16_t bits = 8;
    std::uint16_t samples = 1;
    std::uint16_t photometric = 1;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> more{}; ///< further tags of one short each
    std::vector<file_bytes> pieces{}; ///< strips, or tiles of 16 by 16
    std::uint32_t rows_per_strip = 2;
    bool tiled = false;
    std::vector<std::uint16_t> colour_map{};

    file_bytes bytes() const
    {
        byte_writer out;
        const auto u16 = [&](std::uint16_t v) { big_endian ? out.u16be(v) : out.u16le(v); };
        const auto u32 = [&](std::uint32_t v) { big_endian ? out.u32be(v) : out.u32le(v); };
        out.text(big_endian ? "MM" : "II");
        u16(42);
        u32(0); // patched below
        std::vector<std::uint32_t> offsets;
        for (const auto& piece : pieces) {
            offsets.push_back(static_cast<std::uint32_t>(out.size()));
            out.bytes(piece);
            out.align(2);
        }
        const auto list = [&](const std::vector<std::uint32_t>& values) {
            const auto at = static_cast<std::uint32_t>(out.size());
            for (const std::uint32_t value : values)
                u32(value);
            return values.size() == 1 ? values[0] : at;
        };
        std::vector<std::uint32_t> sizes;
        for (const auto& piece : pieces)
            sizes.push_back(static_cast<std::uint32_t>(piece.size()));
        const std::uint32_t offsets_at = list(offsets);
        const std::uint32_t sizes_at = list(sizes);
        const auto map_at = static_cast<std::uint32_t>(out.size());
        for (const std::uint16_t value : colour_map)
            u16(value);
        const auto bits_at = static_cast<std::uint32_t>(out.size());
        for (int i = 0; i < samples; ++i)
            u16(bits);

        struct entry {
            std::uint16_t tag, type;
            std::uint32_t count, value;
        };
        const auto count = static_cast<std::uint32_t>(pieces.size());
        std::vector<entry> entries{{256, 4, 1, width}, {257, 4, 1, height},
            {258, 3, samples, samples > 2 ? bits_at : bits}, {262, 3, 1, photometric}, {277, 3, 1, samples},
            {static_cast<std::uint16_t>(tiled ? 324 : 273), 4, count, offsets_at},
            {static_cast<std::uint16_t>(tiled ? 325 : 279), 4, count, sizes_at}};
        if (tiled)
            entries.insert(entries.end(), {{322, 4, 1, 16}, {323, 4, 1, 16}});
        else
            entries.push_back({278, 4, 1, rows_per_strip});
        if (!colour_map.empty())
            entries.push_back({320, 3, static_cast<std::uint32_t>(colour_map.size()), map_at});
        for (const auto& [tag, value] : more)
            entries.push_back({tag, 3, 1, value});
        std::ranges::sort(entries, {}, &entry::tag);

        out.align(2);
        const auto directory = static_cast<std::uint32_t>(out.size());
        u16(static_cast<std::uint16_t>(entries.size()));
        for (const entry& e : entries) {
            u16(e.tag);
            u16(e.type);
            u32(e.count);
            if (e.type == 3 && e.count <= 2) {
                u16(static_cast<std::uint16_t>(e.value));
                u16(static_cast<std::uint16_t>(e.count == 2 ? e.value : 0));
            } else {
                u32(e.value);
            }
        }
        u32(0);
        auto* const offset_field = out.span().data() + 4;
        big_endian ? store_be<4>(offset_field, directory) : store_le<4>(offset_field, directory);
        return bytes_of(out);
    }
};

/// A tile of 16 by 16 pixels that begins with two rows of so many bytes.
file_bytes tile_of(std::size_t row_bytes, const file_bytes& first, const file_bytes& second)
{
    file_bytes tile(row_bytes * 16);
    std::ranges::copy(first, tile.begin());
    std::ranges::copy(second, tile.begin() + static_cast<std::ptrdiff_t>(row_bytes));
    return tile;
}

TEST_F(ImagingFiles, TiffLayoutsEqualTheirChunkyTwins)
{
    const std::vector<int> expected{red, green, blue, white};
    const file_bytes chunky{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    constexpr std::uint16_t planar = 284;
    constexpr std::uint16_t orientation = 274;
    constexpr std::uint16_t extra = 338;
    const file_bytes sixteen_le{
        255, 255, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 127, 0, 127, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255};
    const struct {
        const char* what;
        tiff_builder file;
        std::vector<int> expected;
    } cases[] = {
        {"one strip", {.samples = 3, .photometric = 2, .pieces = {chunky}}, expected},
        {"big-endian", {.big_endian = true, .samples = 3, .photometric = 2, .pieces = {chunky}}, expected},
        {"a strip for each row",
            {.samples = 3,
                .photometric = 2,
                .pieces = {{255, 0, 0, 0, 255, 0}, {0, 0, 255, 255, 255, 255}},
                .rows_per_strip = 1},
            expected},
        {"planar",
            {.samples = 3,
                .photometric = 2,
                .more = {{planar, 2}},
                .pieces = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}}},
            expected},
        {"planar, a strip for each row",
            {.samples = 3,
                .photometric = 2,
                .more = {{planar, 2}},
                .pieces = {{255, 0}, {0, 255}, {0, 255}, {0, 255}, {0, 0}, {255, 255}},
                .rows_per_strip = 1},
            expected},
        {"tiled",
            {.samples = 3,
                .photometric = 2,
                .pieces = {tile_of(48, {255, 0, 0, 0, 255, 0}, {0, 0, 255, 255, 255, 255})},
                .tiled = true},
            expected},
        {"tiled and planar",
            {.samples = 3,
                .photometric = 2,
                .more = {{planar, 2}},
                .pieces = {tile_of(16, {255, 0}, {0, 255}), tile_of(16, {0, 255}, {0, 255}),
                    tile_of(16, {0, 0}, {255, 255})},
                .tiled = true},
            expected},
        {"bottom up", {.samples = 3, .photometric = 2, .more = {{orientation, 4}}, .pieces = {chunky}},
            {blue, white, red, green}},
        {"from the right", {.samples = 3, .photometric = 2, .more = {{orientation, 2}}, .pieces = {chunky}},
            {green, red, white, blue}},
        {"with an alpha that is left out",
            {.height = 1,
                .samples = 4,
                .photometric = 2,
                .more = {{extra, 2}},
                .pieces = {{255, 0, 0, 9, 0, 255, 0, 0}}},
            {red, green}},
        {"multiplied by its alpha",
            {.height = 1,
                .samples = 4,
                .photometric = 2,
                .more = {{extra, 1}},
                .pieces = {{51, 0, 0, 51, 0, 255, 0, 255}}},
            {red, green}},
        {"16 bits, rounded", {.bits = 16, .samples = 3, .photometric = 2, .pieces = {sixteen_le}}, expected},
        {"16-bit greys", {.big_endian = true, .height = 1, .bits = 16, .pieces = {{0x80, 0x7F, 0x80, 0x81}}},
            {0x808080, 0x808080}},
        {"inks", {.height = 1, .samples = 4, .photometric = 5, .pieces = {{0, 255, 255, 0, 255, 255, 0, 0}}},
            {red, blue}},
        {"white is zero", {.width = 4, .height = 1, .bits = 1, .photometric = 0, .pieces = {{0x50}}},
            {white, 0, white, 0}},
        {"greys of 2 bits", {.width = 4, .height = 1, .bits = 2, .pieces = {{0x1B}}},
            {0, 0x555555, 0xAAAAAA, white}},
        {"palette of 1 bit",
            {.height = 1,
                .bits = 1,
                .photometric = 3,
                .pieces = {{0x40}},
                .colour_map = {0xFFFF, 0, 0, 0, 0, 0xFFFF}},
            {red, blue}},
        {"palette with colours of 8 bits",
            {.height = 1,
                .bits = 1,
                .photometric = 3,
                .pieces = {{0x40}},
                .colour_map = {0xFF, 0, 0, 0, 0, 0xFF}},
            {red, blue}},
        {"real numbers",
            {.height = 1, .bits = 32, .more = {{339, 3}}, .pieces = {{0, 0, 0, 0x3F, 0, 0, 0xC0, 0x7F}}},
            {0x808080, 0}},
    };
    for (const auto& c : cases) {
        image loaded;
        EXPECT_EQ(read(c.file.bytes(), loaded), imaging_ok) << c.what;
        EXPECT_EQ(loaded.colours(), c.expected) << c.what;
    }
}

// ---- Photoshop --------------------------------------------------------------------------------------------

file_bytes photoshop_file(std::uint16_t mode, std::uint16_t bits, std::uint16_t channels, std::uint32_t width,
    std::uint32_t height, const file_bytes& picture, bool large = false)
{
    byte_writer out;
    out.text("8BPS");
    out.u16be(large ? 2 : 1);
    out.fill(6);
    out.u16be(channels);
    out.u32be(height);
    out.u32be(width);
    out.u16be(bits);
    out.u16be(mode);
    if (mode == 2) {
        out.u32be(768);
        out.u8(0);
        out.u8(255);
        out.fill(766);
    } else {
        out.u32be(0);
    }
    out.u32be(28);
    out.text("8BIM");
    out.u16be(1005);
    out.u16be(0);
    out.u32be(16);
    out.u32be(300 << 16);
    out.u32be(0x00010001);
    out.u32be(150 << 16);
    out.u32be(0x00010001);
    if (large)
        out.u32be(0);
    out.u32be(5); // layers
    out.text("layer");
    out.bytes(picture);
    return bytes_of(out);
}

TEST_F(ImagingFiles, PhotoshopModes)
{
    const struct {
        const char* what;
        file_bytes file;
        std::int32_t bits;
        std::vector<int> expected;
    } cases[] = {
        {"bitmap", photoshop_file(0, 1, 1, 2, 1, {0, 0, 0x40}), 1, {white, 0}},
        {"grey", photoshop_file(1, 8, 1, 2, 1, {0, 0, 0, 7}), 8, {0, 0x070707}},
        {"grey of 16 bits", photoshop_file(1, 16, 1, 2, 1, {0, 0, 0x80, 0x7F, 0xFF, 0xFF}), 8,
            {0x808080, white}},
        {"indexed", photoshop_file(2, 8, 1, 2, 1, {0, 0, 1, 0}), 8, {red, 0}},
        {"colour", photoshop_file(3, 8, 3, 2, 1, {0, 0, 255, 0, 0, 255, 0, 0}), 24, {red, green}},
        {"colour and opacity", photoshop_file(3, 8, 4, 2, 1, {0, 0, 255, 0, 0, 255, 0, 0, 0, 0}), 24,
            {red, green}},
        {"inks", photoshop_file(4, 8, 4, 2, 1, {0, 0, 255, 0, 0, 0, 0, 255, 255, 255}), 24, {red, blue}},
        {"lightness and axes", photoshop_file(9, 8, 3, 2, 1, {0, 0, 0, 255, 128, 128, 128, 128}), 24,
            {0, white}},
        {"packed rows",
            photoshop_file(3, 8, 3, 4, 1, {0, 1, 0, 2, 0, 2, 0, 5, 0xFD, 255, 0xFD, 0, 3, 0, 0, 0, 9}), 24,
            {0xFF0000, 0xFF0000, 0xFF0000, 0xFF0009}},
        {"large document", photoshop_file(1, 8, 1, 2, 1, {0, 1, 0, 0, 0, 2, 0xFF, 7}, true), 8,
            {0x070707, 0x070707}},
    };
    for (const auto& c : cases) {
        image loaded;
        file_info info{};
        EXPECT_EQ(read(c.file, loaded, &info), imaging_ok) << c.what;
        EXPECT_EQ(info.bits_per_pixel, c.bits) << c.what;
        EXPECT_EQ(info.x_resolution, 300) << c.what;
        EXPECT_EQ(info.y_resolution, 150) << c.what;
        EXPECT_EQ(loaded.colours(), c.expected) << c.what;
    }
}

// ---- PCX and Targa ----------------------------------------------------------------------------------------

file_bytes pcx_file(int bits, int planes, std::uint16_t width, std::uint16_t bytes_per_line,
    const file_bytes& palette16, const file_bytes& rows, const file_bytes& palette256 = {})
{
    byte_writer out;
    for (const int byte : {10, 5, 1, bits})
        out.u8(static_cast<std::uint8_t>(byte));
    for (const std::uint16_t word :
        std::array<std::uint16_t, 6>{0, 0, static_cast<std::uint16_t>(width - 1), 0, 72, 96})
        out.u16le(word);
    out.bytes(palette16);
    out.fill(48 - palette16.size());
    out.u8(0);
    out.u8(static_cast<std::uint8_t>(planes));
    out.u16le(bytes_per_line);
    out.fill(128 - out.size());
    out.bytes(rows);
    if (!palette256.empty()) {
        out.u8(12);
        out.bytes(palette256);
        out.fill(768 - palette256.size());
    }
    return bytes_of(out);
}

file_bytes targa_file(int type, int bits, int descriptor, std::uint16_t width, const file_bytes& rest,
    int map_length = 0, int map_bits = 0)
{
    byte_writer out;
    out.u8(0);
    out.u8(map_length > 0);
    out.u8(static_cast<std::uint8_t>(type));
    out.u16le(0);
    out.u16le(static_cast<std::uint16_t>(map_length));
    out.u8(static_cast<std::uint8_t>(map_bits));
    out.u32le(0);
    out.u16le(width);
    out.u16le(static_cast<std::uint16_t>(width == 1 ? 2 : 1));
    out.u8(static_cast<std::uint8_t>(bits));
    out.u8(static_cast<std::uint8_t>(descriptor));
    out.bytes(rest);
    return bytes_of(out);
}

TEST_F(ImagingFiles, PcxAndTargaKinds)
{
    if (!magick_is_there())
        GTEST_SKIP() << "GraphicsMagick is not installed";
    constexpr int top_down = 0x20;
    constexpr int from_right = 0x10;
    const struct {
        const char* what;
        file_bytes file;
        std::int32_t bits;
        std::vector<int> expected;
    } cases[] = {
        {"PCX of 1 bit", pcx_file(1, 1, 8, 2, {0, 0, 0, 255, 255, 255}, {0x0F, 0}), 1,
            {0, 0, 0, 0, white, white, white, white}},
        {"PCX of 4 planes",
            pcx_file(1, 4, 2, 2, {0, 0, 0, 255, 0, 0, 0, 0, 255}, {0x40, 0, 0x80, 0, 0, 0, 0, 0}), 4,
            {blue, red}},
        {"PCX of 8 bits, runs", pcx_file(8, 1, 4, 4, {}, {0xC3, 1, 0xC1, 0}, {0, 0, 255, 255, 0, 0}), 8,
            {red, red, red, blue}},
        {"PCX of 3 planes", pcx_file(8, 3, 2, 2, {}, {0xC1, 255, 0, 0, 0xC1, 255, 0, 0}), 24, {red, green}},
        {"Targa in colour", targa_file(2, 24, 0, 2, {0, 0, 255, 0, 255, 0}), 24, {red, green}},
        {"Targa from the right", targa_file(2, 24, from_right, 2, {0, 0, 255, 0, 255, 0}), 24, {green, red}},
        {"Targa bottom up", targa_file(2, 24, 0, 1, {0, 0, 255, 0, 255, 0}), 24, {green, red}},
        {"Targa top down", targa_file(2, 24, top_down, 1, {0, 0, 255, 0, 255, 0}), 24, {red, green}},
        {"Targa of 16 bits", targa_file(2, 16, 0, 2, {0, 0x7C, 0xE0, 3}), 24, {red, green}},
        {"Targa in runs", targa_file(10, 24, 0, 3, {0x81, 0, 0, 255, 0, 0, 255, 0}), 24, {red, red, green}},
        {"Targa with a map", targa_file(1, 8, 0, 2, {0, 0, 255, 0, 255, 0, 1, 0}, 2, 24), 8, {green, red}},
        {"grey Targa", targa_file(3, 8, 0, 2, {7, 200}), 8, {0x070707, 0xC8C8C8}},
    };
    for (const auto& c : cases) {
        image loaded;
        file_info info{};
        EXPECT_EQ(read(c.file, loaded, &info), imaging_ok) << c.what;
        EXPECT_EQ(info.bits_per_pixel, c.bits) << c.what;
        EXPECT_EQ(loaded.colours(), c.expected) << c.what;
    }
}

// ---- JPEG -------------------------------------------------------------------------------------------------

TEST_F(ImagingFiles, JpegResolutionsInEitherUnit)
{
    image made;
    ASSERT_EQ(module_.create(&made.handle, conventional_memory, 8, 8, 24, 1, nullptr, top_left), imaging_ok);
    made.lines.assign(std::size_t{24} * 8, 200);
    made.handle.x_resolution = made.handle.y_resolution = 100;
    file_bytes file;
    ASSERT_EQ(write(made, format_jpeg, file), imaging_ok);
    constexpr std::size_t unit = 13;
    ASSERT_EQ(file[unit], 1);
    for (const auto& [value, expected] : {std::pair{0, 0}, std::pair{1, 100}, std::pair{2, 254}}) {
        file[unit] = static_cast<std::uint8_t>(value);
        image loaded;
        file_info info{};
        ASSERT_EQ(read(file, loaded, &info), imaging_ok);
        EXPECT_EQ(info.x_resolution, expected);
    }
}

} // namespace
} // namespace klv
