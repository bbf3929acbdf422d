#include "klv/formats/dib_header.h"

#include <ostream>
#include <vector>

#include <gtest/gtest.h>

namespace klv {

static void PrintTo(const channel_masks& m, std::ostream* out)
{
    *out << std::hex << m.red << ' ' << m.green << ' ' << m.blue;
}

namespace {

using bytes = std::vector<std::uint8_t>;

bytes joined(std::initializer_list<bytes> parts)
{
    bytes all;
    for (const bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// What follows the size field of a header of 40 bytes: 3 x -2 pixels of 16 bits.
bytes info_fields(std::uint8_t compression)
{
    return {3, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 16, 0, compression, 0, 0, 0, 16, 0, 0, 0, 0x12, 0x0B, 0,
        0, 0x13, 0x0B, 0, 0, 5, 0, 0, 0, 4, 0, 0, 0};
}
const bytes masks_565{0, 0xF8, 0, 0, 0xE0, 7, 0, 0, 0x1F, 0, 0, 0};
constexpr channel_masks read_565{0xF800, 0x07E0, 0x001F};
constexpr channel_masks default_555{0x7C00, 0x03E0, 0x001F};

} // namespace

TEST(DibHeader, ReadsEveryForm)
{
    constexpr std::uint8_t plain = 0, masked = 3, masked_with_opacity = 6;
    const struct {
        const char* form;
        bytes stored;
        std::uint32_t colours;
        channel_masks masks; ///< in the header, or the depth's
        std::size_t table_offset;
        bool os2;
    } cases[] = {
        {"Windows 3", joined({{40, 0, 0, 0}, info_fields(plain)}), 5, default_555, 40, false},
        {"masks behind it", joined({{40, 0, 0, 0}, info_fields(masked)}), 5, default_555, 52, false},
        {"four masks behind it", joined({{40, 0, 0, 0}, info_fields(masked_with_opacity)}), 5, default_555,
            56, false},
        {"masks inside", joined({{52, 0, 0, 0}, info_fields(masked), masks_565}), 5, read_565, 52, false},
        {"masks inside, not used", joined({{52, 0, 0, 0}, info_fields(plain), masks_565}), 5, default_555, 52,
            false},
        {"V4", joined({{108, 0, 0, 0}, info_fields(masked), masks_565, bytes(56)}), 5, read_565, 108, false},
        {"V5", joined({{124, 0, 0, 0}, info_fields(masked), masks_565, bytes(72)}), 5, read_565, 124, false},
        {"OS/2 2", joined({{64, 0, 0, 0}, info_fields(plain), bytes(24, 9)}), 5, default_555, 64, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.form);
        const bytes stored = joined({c.stored, {0xAA}});
        byte_reader in(stored);
        const auto header = dib_header::read(in);
        ASSERT_TRUE(header);
        EXPECT_EQ(in.position(), c.stored.size()) << "the whole header is passed over";
        EXPECT_EQ(header->width, 3);
        EXPECT_EQ(header->rows(), 2U);
        EXPECT_TRUE(header->top_down());
        EXPECT_EQ(header->bits, 16);
        EXPECT_EQ(header->image_size, 16U);
        EXPECT_EQ(header->x_pixels_per_metre, 2834);
        EXPECT_EQ(header->y_pixels_per_metre, 2835);
        EXPECT_EQ(header->colours(), c.colours);
        EXPECT_EQ(header->colours_important, 4U);
        EXPECT_EQ(header->masks, c.masks);
        EXPECT_EQ(header->table_offset(), c.table_offset);
        EXPECT_EQ(header->is_os2(), c.os2);
        EXPECT_EQ(header->stride(), 8U);
        EXPECT_EQ(header->plain_image_size(), 16U);
        const auto again = header->stored();
        const bytes as_windows_3
            = joined({{40, 0, 0, 0}, bytes(c.stored.begin() + 4, c.stored.begin() + dib_header::info_size)});
        EXPECT_EQ(bytes(again.begin(), again.end()), as_windows_3) << "written, it has 40 bytes";
    }
}

TEST(DibHeader, ShortHeadersAreCompletedWithZeros)
{
    // A core header's size fields have no sign.
    const bytes core{12, 0, 0, 0, 3, 0, 0xFF, 0xFF, 1, 0, 4, 0};
    byte_reader in(core);
    const auto oldest = dib_header::read(in);
    ASSERT_TRUE(oldest);
    EXPECT_EQ(oldest->rows(), 65535U);
    EXPECT_EQ(oldest->colours(), 16U);
    EXPECT_EQ(oldest->colour_bytes(), 3U);
    EXPECT_EQ(oldest->table_offset(), 12U);

    const bytes cut{16, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, 8, 0};
    byte_reader short_in(cut);
    const auto os2 = dib_header::read(short_in);
    ASSERT_TRUE(os2);
    EXPECT_TRUE(os2->is_os2());
    EXPECT_EQ(os2->compression, std::uint32_t{BI_RGB});
    EXPECT_EQ(os2->colours(), 256U);
    EXPECT_EQ(os2->colour_bytes(), 4U);
}

TEST(DibHeader, RefusesOtherSizesAndCutHeaders)
{
    for (const std::uint32_t size : {0U, 11U, 13U, 15U, 125U, 0xFFFFFFFFU}) {
        byte_writer out;
        out.u32le(size);
        out.fill(120);
        byte_reader in(out.span());
        EXPECT_FALSE(dib_header::read(in)) << size;
    }
    const bytes whole = joined({{40, 0, 0, 0}, info_fields(0)});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        byte_reader in({whole.data(), length});
        EXPECT_FALSE(dib_header::read(in)) << length;
    }
}

TEST(DibHeader, TrustedHeadersHaveTheirMasksBehindThem)
{
    const bytes stored = joined({{40, 0, 0, 0}, info_fields(3), masks_565});
    const auto header = dib_header::read_trusted(stored.data());
    ASSERT_TRUE(header);
    EXPECT_EQ(header->masks, read_565);
    const bytes nonsense{7, 0, 0, 0};
    EXPECT_FALSE(dib_header::read_trusted(nonsense.data()));
}

TEST(DibHeader, ExtremeSizesDoNotOverflow)
{
    dib_header header;
    header.height = INT32_MIN;
    header.width = INT32_MAX;
    header.bits = 32;
    EXPECT_EQ(header.rows(), 0x80000000U);
    EXPECT_EQ(header.stride(), 0x1FFFFFFFCU);
    EXPECT_EQ(header.plain_image_size(), 0xFFFFFFFE00000000U);
    EXPECT_EQ(dib_stride(1, 1), 4U);
    EXPECT_EQ(dib_stride(33, 1), 8U);
}

TEST(DibHeader, FileHeaderAndColoursGoBothWays)
{
    byte_writer out;
    dib_file_header{0x01020304, 54}.write(out);
    const RGBQUAD colours[] = {{1, 2, 3, 99}, {4, 5, 6, 0}};
    write_colour_table(out, colours);
    const bytes expected{'B', 'M', 4, 3, 2, 1, 0, 0, 0, 0, 54, 0, 0, 0, 1, 2, 3, 0, 4, 5, 6, 0};
    EXPECT_EQ(bytes(out.span().begin(), out.span().end()), expected);

    byte_reader in(expected);
    const auto file = dib_file_header::read(in);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->file_size, 0x01020304U);
    EXPECT_EQ(file->pixel_offset, 54U);
    RGBQUAD triples[3]{};
    EXPECT_EQ(read_colour_table(in, 3, triples), 2U) << "8 bytes hold two triples";
    EXPECT_EQ(triples[1], (RGBQUAD{0, 4, 5, 0}));
    EXPECT_EQ(triples[2], RGBQUAD{});

    for (const std::size_t length : {0U, 1U, 13U}) {
        byte_reader cut({expected.data(), length});
        EXPECT_FALSE(dib_file_header::read(cut)) << length;
    }
}

} // namespace klv
