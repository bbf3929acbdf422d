#include "klv/base/memory.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/filters/progress.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/filters/tiff/tiff_palette.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/tiff_builder.h"

#include <random>

#include <gtest/gtest.h>

// Most of these run without the imaging module: what the own decoder does not read, fails.

namespace klv {
namespace {

using test::colours_of;
using test::tiff_bytes;
using test::tiff_file;
using colour_rows = std::vector<std::vector<int>>;

constexpr int white = 0xFFFFFF;

oFILTER_STATUS read(const tiff_bytes& file, oDIB& dib)
{
    vMEMSTREAM stream(vSTRING("picture.tif"));
    stream.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    stream.MoveFromStart(0);
    TIFFILTER filter;
    const auto status = filter.Convert(stream, dib);
    EXPECT_EQ(filter.LastStatus(), status);
    return status;
}

/// Samples that take every value, in rows of an odd width.
std::vector<tiff_file::row> random_rows(
    std::size_t width, std::size_t height, const std::vector<std::uint32_t>& bits)
{
    std::mt19937 random(static_cast<unsigned>(width * height + bits[0]));
    std::vector<tiff_file::row> rows(height);
    for (auto& row : rows)
        for (std::size_t x = 0; x < width; ++x)
            for (const std::uint32_t sample_bits : bits)
                row.push_back(static_cast<std::uint32_t>(random()) & ((1U << sample_bits) - 1));
    return rows;
}

int scaled(std::uint32_t value, std::uint32_t bits)
{
    const std::uint32_t greatest = (1U << bits) - 1;
    return static_cast<int>((value * 255 * 2 + greatest) / (2 * greatest));
}

/// What a file shows, worked out from its samples.
colour_rows expected_of(const tiff_file& file)
{
    colour_rows expected;
    for (const auto& row : file.rows) {
        auto& line = expected.emplace_back();
        for (std::size_t i = 0; i < row.size(); i += file.bits.size()) {
            if (file.photometric == 2) {
                line.push_back(scaled(row[i], file.bits[0]) << 16 | scaled(row[i + 1], file.bits[1]) << 8
                    | scaled(row[i + 2], file.bits[2]));
            } else if (file.photometric == 3) {
                const std::size_t colours = file.colour_map.size() / 3;
                const auto channel = [&](std::size_t c) {
                    return static_cast<int>(file.colour_map[c * colours + row[i]] >> 8);
                };
                line.push_back(channel(0) << 16 | channel(1) << 8 | channel(2));
            } else {
                const int grey = scaled(row[i], file.bits[0]);
                line.push_back((file.photometric == 1 ? grey : 255 - grey) * 0x010101);
            }
        }
    }
    return expected;
}

tiff_file picture(std::uint32_t photometric, const std::vector<std::uint32_t>& bits, std::uint32_t extra = 0)
{
    tiff_file file{
        .photometric = photometric, .bits = bits, .rows = random_rows(13, 7, bits), .extra_samples = extra};
    if (photometric == 3)
        for (std::uint32_t i = 0; i < 3U << bits[0]; ++i)
            file.colour_map.push_back(i * 40503 & 0xFFFF);
    return file;
}

TEST(TiffFilter, EveryLayoutShowsTheSamePixels)
{
    const struct {
        const char* what;
        tiff_file file;
        int depth;
    } kinds[] = {
        {"black and white", picture(1, {1}), 1},
        {"white is zero", picture(0, {1}), 1},
        {"grey of 2 bits", picture(1, {2}), 4},
        {"grey of 3 bits", picture(0, {3}), 4},
        {"grey of 4 bits", picture(0, {4}), 4},
        {"grey of 6 bits", picture(1, {6}), 8},
        {"grey of 7 bits", picture(1, {7}), 8},
        {"grey of 8 bits", picture(0, {8}), 8},
        {"grey and an extra sample", picture(1, {4, 4}, 1), 4},
        {"grey and an extra sample of another width", picture(1, {3, 6}, 1), 4},
        {"palette of 2 colours", picture(3, {1}), 1},
        {"palette of 4 colours", picture(3, {2}), 4},
        {"palette of 16 colours", picture(3, {4}), 4},
        {"palette of 32 colours", picture(3, {5}), 8},
        {"palette of 256 colours", picture(3, {8}), 8},
        {"RGB of 3 bits", picture(2, {1, 1, 1}), 4},
        {"RGB of 6 bits", picture(2, {2, 2, 2}), 8},
        {"RGB of 6 bits and an extra sample", picture(2, {2, 2, 2, 3}, 1), 8},
        {"RGB of 9 bits", picture(2, {3, 3, 3}), 24},
        {"RGB of 12 bits", picture(2, {4, 4, 4}), 24},
        {"RGB of 16 bits", picture(2, {5, 6, 5}), 24},
        {"RGB of 24 bits", picture(2, {8, 8, 8}), 24},
        {"RGB of 24 bits and extra samples", picture(2, {8, 8, 8, 8, 8}, 2), 24},
        {"RGB of 24 bits and an odd extra sample", picture(2, {8, 8, 8, 3}, 1), 24},
    };
    const struct {
        std::uint32_t compression, predictor;
    } packings[] = {{1, 1}, {32773, 1}, {5, 1}, {5, 2}};
    for (const auto& kind : kinds)
        for (const bool big_endian : {false, true})
            for (const std::uint32_t planar : {1U, 2U})
                for (const std::uint32_t rows_per_strip : {0U, 1U, 2U, 7U, 100U})
                    for (const auto& packing : packings) {
                        tiff_file file = kind.file;
                        file.big_endian = big_endian;
                        file.planar = planar;
                        file.rows_per_strip = planar == 2 && rows_per_strip == 0 ? 7 : rows_per_strip;
                        file.compression = packing.compression;
                        file.predictor = packing.predictor;
                        oMEMDIB dib;
                        ASSERT_EQ(read(file.bytes(), dib), oFILTER_OK) << kind.what << " planar " << planar;
                        ASSERT_EQ(dib.ColourDepth(), kind.depth) << kind.what;
                        ASSERT_EQ(colours_of(dib), expected_of(file))
                            << kind.what << ": compression " << packing.compression << " predictor "
                            << packing.predictor << " planar " << planar << " rows " << rows_per_strip;
                    }
}

TEST(TiffFilter, ReadsModifiedHuffmanRunsOfEveryLength)
{
    for (const std::uint32_t photometric : {0U, 1U}) {
        tiff_file file{.photometric = photometric, .bits = {1}, .compression = 2, .rows_per_strip = 3};
        const std::size_t width = 5999;
        for (std::size_t run = 0; run < 2 * 2560 + 70; run += run < 70 ? 1 : 63) {
            tiff_file::row row;
            for (const auto& [length, black] : {std::pair{run % 9, false}, {run, true}, {run / 3, false},
                     {std::size_t{1}, true}, {width, false}})
                row.insert(
                    row.end(), std::min(length, width - row.size()), black ? 1 - photometric : photometric);
            file.rows.push_back(row);
        }
        oMEMDIB dib;
        ASSERT_EQ(read(file.bytes(), dib), oFILTER_OK);
        EXPECT_EQ(colours_of(dib), expected_of(file));
    }
}

TEST(TiffFilter, KnowsThePublishedRunCodes)
{
    // White 4, black 3, white 1, black 8, white 1728 + 0, black 64 + 0.
    test::bit_packer code;
    for (const char* bits :
        {"1011", "10", "000111", "000101", "010011011", "00110101", "0000001111", "0000110111"})
        code.put(bits);
    tiff_file file{.photometric = 0, .bits = {1}, .rows = {tiff_file::row(1808, 0)}};
    auto& row = file.rows[0];
    const auto blacken = [&](std::size_t from, std::size_t count) {
        std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(from), count, 1U);
    };
    blacken(4, 3);
    blacken(8, 8);
    blacken(16 + 1728, 64);
    const auto expected = expected_of(file);
    file.more_tags[259] = {2};
    auto bytes = file.bytes();
    std::ranges::copy(code.bytes, bytes.begin() + 8);
    oMEMDIB dib;
    ASSERT_EQ(read(bytes, dib), oFILTER_OK);
    EXPECT_EQ(colours_of(dib), expected);
}

TEST(TiffFilter, ReadsLongLzwStrips)
{
    const std::size_t width = 151;
    for (const int kind : {0, 1, 2}) {
        tiff_file file{.bits = {8}, .rows = random_rows(width, 217, {8}), .compression = 5}; // 32767 bytes
        for (std::size_t y = 0; y < file.rows.size(); ++y)
            for (std::size_t x = 0; x < width; ++x) // noise, one colour, a texture of few strings
                if (kind != 0)
                    file.rows[y][x] = kind == 1 ? 77 : static_cast<std::uint32_t>((x / 3 + y * y) % 5 * 50);
        oMEMDIB dib;
        ASSERT_EQ(read(file.bytes(), dib), oFILTER_OK) << kind;
        EXPECT_EQ(colours_of(dib), expected_of(file)) << kind;
    }
}

TEST(TiffFilter, RefusesOrHandsOnWhatItDoesNotRead)
{
    const tiff_file grey = picture(1, {8}), rgb = picture(2, {8, 8, 8}), bilevel = picture(0, {1});
    const auto with = [](tiff_file file, std::uint32_t tag, std::vector<std::uint32_t> values) {
        file.more_tags[tag] = std::move(values);
        return file;
    };
    const auto without = [](tiff_file file, std::uint32_t tag) {
        file.dropped_tags = {tag};
        return file;
    };
    const auto with_map = [&](std::uint32_t photometric) {
        auto file = picture(3, {8});
        file.more_tags[262] = {photometric};
        return file;
    };
    const struct {
        const char* what;
        tiff_file file;
        oFILTER_STATUS status;
    } cases[] = {
        {"no photometric interpretation", without(grey, 262), oFILTER_FAILED},
        {"separated colours", with(grey, 262, {5}), oFILTER_FAILED},
        {"separated colours with a colour map", with_map(5), oFILTER_UNSUPPORTED},
        {"unknown photometric interpretation with a colour map", with_map(77), oFILTER_OK},
        {"Lab with a response curve", with(with(grey, 262, {8}), 291, std::vector<std::uint32_t>(256, 9)),
            oFILTER_UNSUPPORTED},
        {"group 3", with(bilevel, 259, {3}), oFILTER_FAILED},
        {"JPEG", with(rgb, 259, {6}), oFILTER_FAILED},
        {"compression of too many bits", with(grey, 259, {0x10001}), oFILTER_FAILED},
        {"planes of another kind", with(grey, 284, {3}), oFILTER_FAILED},
        {"predictor without LZW", with(grey, 317, {2}), oFILTER_FAILED},
        {"floating-point predictor", with(grey, 317, {3}), oFILTER_FAILED},
        {"missing extra samples", picture(2, {8, 8, 8, 8}), oFILTER_FAILED},
        {"colours multiplied by alpha", with(picture(2, {8, 8, 8, 8}, 1), 338, {1}), oFILTER_FAILED},
        {"16 bits", with(grey, 258, {16}), oFILTER_FAILED},
        {"no bits", with(grey, 258, {0}), oFILTER_FAILED},
        {"RGB of 4 bits", picture(2, {1, 2, 1}), oFILTER_FAILED},
        {"RGB of 8 bits", picture(2, {3, 3, 2}), oFILTER_FAILED},
        {"no strips", without(grey, 273), oFILTER_FAILED},
        {"several strips of unknown height", with(grey, 273, {8, 21}), oFILTER_FAILED},
        {"strips without rows", with(grey, 278, {0}), oFILTER_FAILED},
        {"no width", without(grey, 256), oFILTER_FAILED},
        {"width 0", with(grey, 256, {0}), oFILTER_FAILED},
        {"colour map of another depth", with(picture(3, {4}), 258, {8}), oFILTER_FAILED},
        {"modified Huffman in colours", with(picture(3, {1}), 259, {2}), oFILTER_FAILED},
        {"modified Huffman of 8 bits", with(grey, 259, {2}), oFILTER_FAILED},
        {"strip of 32768 LZW bytes", {.bits = {8}, .rows = random_rows(256, 128, {8}), .compression = 5},
            oFILTER_FAILED},
        {"LZW codes in the old bit order", with({.bits = {8}, .rows = {{0, 1, 4}}}, 259, {5}),
            oFILTER_FAILED},
        {"least significant bit first", with(bilevel, 266, {2}), oFILTER_FAILED},
        {"signed samples", with(grey, 339, {2}), oFILTER_FAILED},
        {"turned", with(grey, 274, {8}), oFILTER_FAILED},
        {"turned in no known way", with(grey, 274, {9}), oFILTER_OK},
        {"PackBits run past the row", with({.bits = {8}, .rows = {{255, 1, 4}, {254, 9, 9}}}, 259, {32773}),
            oFILTER_UNSUPPORTED},
        {"Huffman run past the row",
            with({.photometric = 0, .bits = {1}, .rows = {tiff_file::row(8, 1)}}, 259, {2}), oFILTER_FAILED},
    };
    for (const auto& c : cases) {
        oMEMDIB dib;
        EXPECT_EQ(read(c.file.bytes(), dib), c.status) << c.what;
    }
}

using TiffFilterWithTheImagingModule = test::imaging_test;

// The module turns what the own decoder hands on.
TEST_F(TiffFilterWithTheImagingModule, ShowsTurnedImagesUpright)
{
    for (const tiff_file& upright :
        {picture(0, {1}), picture(1, {4}), picture(3, {8}), picture(2, {8, 8, 8})}) {
        const colour_rows stored = expected_of(upright);
        for (std::uint32_t orientation = 1; orientation <= 8; ++orientation) {
            tiff_file file = upright;
            file.more_tags[274] = {orientation};
            oMEMDIB dib;
            ASSERT_EQ(read(file.bytes(), dib), oFILTER_OK) << orientation;
            const colour_rows shown = colours_of(dib);
            // The sides that the first row and the first column are, by the standard's table.
            const bool sideways = orientation >= 5;
            const bool right = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
            const bool bottom = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
            const std::size_t height = sideways ? stored[0].size() : stored.size();
            const std::size_t width = sideways ? stored.size() : stored[0].size();
            ASSERT_EQ(shown.size(), height) << orientation;
            for (std::size_t y = 0; y < height; ++y) {
                ASSERT_EQ(shown[y].size(), width) << orientation;
                for (std::size_t x = 0; x < width; ++x) {
                    const std::size_t across = right ? width - 1 - x : x, down = bottom ? height - 1 - y : y;
                    ASSERT_EQ(shown[y][x], sideways ? stored[across][down] : stored[down][across])
                        << orientation << ": " << x << ", " << y;
                }
            }
        }
    }
}

TEST(TiffFilter, MakesTheColourTablesOfItsImages)
{
    oMEMDIB dib;
    ASSERT_EQ(read(picture(2, {2, 2, 2}).bytes(), dib), oFILTER_OK);
    ASSERT_EQ(dib.colours().size(), 64U);
    const auto colour = [&](std::size_t i) {
        const RGBQUAD& c = dib.colours()[i];
        return c.rgbRed << 16 | c.rgbGreen << 8 | c.rgbBlue;
    };
    EXPECT_EQ(colour(63), white);
    EXPECT_EQ(colour(0x30), 0xFF0000);
    EXPECT_EQ(colour(0x06), 0x0055AA);

    // Densities 0, 0.1, 0.3 and 1 in the unit of tenths; beyond all tables there is no light.
    tiff_file curve = picture(1, {2});
    curve.more_tags = {{291, {0, 1, 3, 10}}, {290, {1}}};
    ASSERT_EQ(read(curve.bytes(), dib), oFILTER_OK);
    ASSERT_EQ(dib.colours().size(), 4U);
    EXPECT_EQ(colour(0), white);
    EXPECT_EQ(colour(1), 202 * 0x010101);
    EXPECT_EQ(colour(2), 127 * 0x010101);
    EXPECT_EQ(colour(3), 25 * 0x010101);
    EXPECT_EQ(reflectance_of_density(8191), 0);
    curve.more_tags = {{291, {0, 1, 3, 4000000000}}, {290, {1}}};
    ASSERT_EQ(read(curve.bytes(), dib), oFILTER_OK);
    EXPECT_EQ(colour(3), 0);
    curve.more_tags = {{291, {0, 1, 3}}};
    EXPECT_EQ(read(curve.bytes(), dib), oFILTER_FAILED);

    ASSERT_EQ(read(picture(2, {8, 8, 8}).bytes(), dib), oFILTER_OK);
    EXPECT_TRUE(dib.colours().empty());
}

TEST(TiffFilter, TakesTheResolutionInDotsPerInch)
{
    constexpr std::uint32_t no_unit = 1, inch = 2, centimetre = 3;
    const struct {
        std::uint32_t unit, x, y;
        int x_dpi, y_dpi;
    } cases[] = {{inch, 300, 600, 300, 600}, {centimetre, 118, 200, 300, 508}, {no_unit, 1, 1, 72, 72},
        {no_unit, 100, 200, 72, 144}, {inch, 0, 96, 150, 96}, {9, 300, 300, 72, 72}};
    for (const auto& c : cases) {
        tiff_file file = picture(1, {8});
        file.more_tags = {{282, {c.x}}, {283, {c.y}}, {296, {c.unit}}};
        oMEMDIB dib;
        ASSERT_EQ(read(file.bytes(), dib), oFILTER_OK);
        oDIBHEADER header;
        dib.GetHeader(header);
        EXPECT_EQ(header.HorzDPI(), c.x_dpi) << c.unit;
        EXPECT_EQ(header.VertDPI(), c.y_dpi) << c.unit;
    }
}

TEST(TiffFilter, KeepsTheRowsBeforeTheDamage)
{
    const struct {
        const char* what;
        std::uint32_t compression, rows_per_strip;
    } cases[]
        = {{"raw", 1, 0}, {"LZW", 5, 0}, {"too few strips", 1, 1}, {"too few strips of PackBits", 32773, 1},
            {"too few LZW strips", 5, 1}, {"too few Huffman strips", 2, 1}};
    for (const auto& c : cases) {
        tiff_file file = picture(0, {c.compression == 2 ? 1U : 8U});
        file.compression = c.compression;
        file.rows_per_strip = c.rows_per_strip;
        file.more_tags[257] = {2000};
        const auto whole = expected_of(file);
        oMEMDIB dib;
        EXPECT_EQ(read(file.bytes(), dib), oFILTER_FAILED) << c.what;
        const auto shown = colours_of(dib);
        ASSERT_EQ(shown.size(), 2000U) << c.what;
        EXPECT_TRUE(std::equal(whole.begin(), whole.end(), shown.begin())) << c.what;
    }
}

// The row that runs out has taken bytes that the rows after it must not be looked for in.
TEST(TiffFilter, KeepsTheRowsBeforeHuffmanCodesRunOut)
{
    test::bit_packer code;
    for (const char* bits : {"10011", "000"}) // white 8, then up to the byte
        code.put(bits);
    for (int i = 0; i < 9; ++i)
        for (const char* bits : {"00110101", "0000110111"}) // white 0, black 0
            code.put(bits);
    tiff_file file{.photometric = 0, .bits = {1}, .rows = {tiff_file::row(8, 0), tiff_file::row(8, 0)}};
    file.more_tags[259] = {2};
    file.more_tags[273] = {static_cast<std::uint32_t>(file.bytes().size())}; // behind all else
    auto bytes = file.bytes();
    bytes.insert(bytes.end(), code.bytes.begin(), code.bytes.end());
    oMEMDIB dib;
    EXPECT_EQ(read(bytes, dib), oFILTER_FAILED);
    EXPECT_EQ(dib.Height(), 2);
}

TEST(TiffFilter, EndsInAnAnswerWhereverTheFileIsCut)
{
    tiff_file file = picture(3, {4});
    file.compression = 5;
    file.big_endian = true;
    const auto bytes = file.bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        oMEMDIB dib;
        const auto status = read({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}, dib);
        // Only the link to the next directory and the last value can be missed.
        EXPECT_TRUE(status == oFILTER_FAILED || size >= bytes.size() - 4) << size;
    }
}

TEST(TiffFilter, ClaimsOfFewBytesCostNothing)
{
    for (const std::uint32_t compression : {1U, 2U, 5U, 32773U})
        for (const auto& [side, rows] : {std::pair{60000U, 60000U}, {0x7FFFFFFFU, 1U}, {1U, 0x7FFFFFFFU}}) {
            tiff_file file = picture(0, {1});
            file.more_tags = {{256, {side}}, {257, {rows}}, {259, {compression}}, {278, {1}}};
            oMEMDIB dib;
            EXPECT_EQ(read(file.bytes(), dib), oFILTER_FAILED);
            EXPECT_FALSE(dib.HasPixels()) << compression << " " << side;
        }
}

TEST(TiffFilter, RecognisesItsHeader)
{
    const struct {
        tiff_bytes bytes;
        oFILTER_STATUS status;
    } cases[] = {
        {{'I', 'I', 42, 0, 8, 0, 0, 0}, oFILTER_RECOGNISED},
        {{'M', 'M', 0, 42, 0, 0, 0, 8}, oFILTER_RECOGNISED},
        {{'I', 'I', 42, 0, 7, 0, 0, 0}, oFILTER_FAILED},
        {{'I', 'I', 42, 0, 0, 0, 0, 0x80}, oFILTER_RECOGNISED},
        {{'I', 'I', 0, 42, 8, 0, 0, 0}, oFILTER_FAILED},
        {{'I', 'M', 42, 0, 8, 0, 0, 0}, oFILTER_FAILED},
        {{'M', 'M', 0, 43, 0, 0, 0, 8}, oFILTER_FAILED},
        {{'I', 'I', 42, 0, 8, 0, 0}, oFILTER_FAILED},
        {{}, oFILTER_FAILED},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream;
        stream.WritePlain(c.bytes.data(), static_cast<std::uint32_t>(c.bytes.size()));
        stream.MoveFromStart(0);
        TIFFILTER filter;
        EXPECT_EQ(filter.CheckStream(stream), c.status);
        EXPECT_EQ(filter.LastStatus(), c.status == oFILTER_RECOGNISED ? oFILTER_OK : oFILTER_FAILED);
    }
    TIFFILTER filter;
    EXPECT_TRUE(
        filter.ExportColourDepths(1) && filter.ExportColourDepths(8) && filter.ExportColourDepths(24));
    EXPECT_FALSE(filter.ExportColourDepths(4) || filter.ExportColourDepths(16));
}

TEST(TiffFilter, ReadsFromFilesAndFromTheMiddleOfAStream)
{
    for (const std::uint32_t compression : {1U, 5U, 32773U}) {
        tiff_file file{.photometric = 2, .bits = {8, 8, 8}, .rows = random_rows(6000, 5, {8, 8, 8})};
        file.compression = compression;
        file.planar = compression == 5 ? 2 : 1;
        file.rows_per_strip = 1;
        const auto bytes = file.bytes();
        vFILE stream; // a temporary file
        const tiff_bytes before(1000, 'x');
        stream.WritePlain(before.data(), 1000);
        stream.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        stream.MoveFromStart(1000);
        oMEMDIB dib;
        TIFFILTER filter;
        ASSERT_EQ(filter.Convert(stream, dib), oFILTER_OK);
        EXPECT_EQ(colours_of(dib), expected_of(file));
    }
}

TEST(TiffFilter, StoresBitmaps)
{
    const auto bytes = picture(3, {4}).bytes();
    vMEMSTREAM in, out;
    in.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    in.MoveFromStart(0);
    TIFFILTER filter;
    ASSERT_EQ(filter.Convert(&in, &out), oFILTER_OK);
    out.MoveFromStart(0);
    EXPECT_EQ(colours_of(oMEMDIB(out, 0)), expected_of(picture(3, {4})));
    EXPECT_EQ(filter.Convert(nullptr, &out), oFILTER_READ_ERROR);
}

class stopping_progress : public oPROGRESSBM {
public:
    explicit stopping_progress(int rows)
        : rows_(rows)
    {
    }
    int Stop() override { return rows_-- == 0; }

private:
    int rows_;
};

TEST(TiffFilter, StopsWhenAsked)
{
    const auto file = picture(1, {8});
    const auto bytes = file.bytes();
    vMEMSTREAM stream;
    stream.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    stream.MoveFromStart(0);
    stopping_progress progress(3);
    TIFFILTER filter;
    filter.SetProgressInd(&progress);
    oMEMDIB dib;
    EXPECT_EQ(filter.Convert(stream, dib), oFILTER_CANCELLED);
    EXPECT_EQ(progress.FullScale(), bytes.size());
    EXPECT_EQ(colours_of(dib)[3], expected_of(file)[3]);
    EXPECT_EQ(colours_of(dib)[4], std::vector<int>(13, 0));
}

TEST(TiffFilter, AnswersWhenMemoryRunsOut)
{
    tiff_file planar = picture(2, {8, 8, 8});
    planar.planar = 2;
    planar.rows_per_strip = 7;
    planar.compression = 5;
    tiff_file packed = picture(3, {4});
    packed.compression = 32773;
    for (const tiff_file& file : {planar, packed}) {
        const auto bytes = file.bytes();
        vMEMSTREAM stream;
        stream.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        oFILTER_STATUS status = oFILTER_FAILED;
        std::uint64_t allocations = 0;
        for (; status != oFILTER_OK && allocations < 1000; ++allocations) {
            stream.MoveFromStart(0);
            oMEMDIB dib;
            TIFFILTER filter;
            vMemFailAfter(allocations, memory_failure::from_then_on);
            status = filter.Convert(stream, dib);
            vMemNeverFail();
            if (status == oFILTER_OK)
                EXPECT_EQ(colours_of(dib), expected_of(file));
            else
                ASSERT_EQ(status, oFILTER_FAILED);
        }
        EXPECT_EQ(status, oFILTER_OK);
        EXPECT_GT(allocations, 5U);
    }
}

TEST(TiffFilter, NeedsLinesThatCanBeLocked)
{
    oSTREAMDIB dib(0);
    EXPECT_EQ(read(picture(1, {8}).bytes(), dib), oFILTER_FAILED);
}

} // namespace
} // namespace klv
