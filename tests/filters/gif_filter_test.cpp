#include "klv/base/memory.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/filters/gif/gif_filter.h"
#include "klv/filters/progress.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/global_memory.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/gif_builder.h"

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::gif_builder;
using test::gif_codes;
using test::literal_codes;
using bytes = std::vector<std::uint8_t>;
using rows = std::vector<bytes>;

oFILTER_STATUS read(const bytes& file, oDIB& dib, oPROGRESSBM* progress = nullptr)
{
    vMEMSTREAM stream(vSTRING("picture.gif"));
    stream.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    GIFFILTER filter;
    filter.SetProgressInd(progress);
    return filter.Convert(stream, dib);
}

bytes contents_of(vSTREAM& stream)
{
    bytes all(stream.Size());
    stream.MoveFromStart(0);
    stream.ReadPlain(all.data(), stream.Size());
    return all;
}

/// One index a byte, top row first.
rows indices_of(const oDIB& dib)
{
    rows all;
    bytes line(dib.BytesPerLine());
    for (int y = dib.Height() - 1; y >= 0 && dib.Width() > 0; --y) {
        dib.GetImageLines(y, 1, line.data(), nullptr);
        bytes row(static_cast<std::size_t>(dib.Width()));
        read_line_as_indices(line.data(), dib.ColourDepth(), row.data(), dib.Width());
        all.push_back(row);
    }
    return all;
}

bytes joined(const rows& parts)
{
    bytes all;
    for (const auto& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// The codes that the plainest encoder makes: a dictionary of strings, never given up unless `clears`.
bytes plainly_encoded(unsigned literal_bits, const bytes& pixels, bool clears)
{
    const std::uint32_t clear = 1U << literal_bits;
    std::vector<std::uint16_t> strings(4096 * 256); // by prefix and pixel; 0 is none
    gif_codes codes;
    std::uint32_t next = clear + 2;
    unsigned bits = literal_bits + 1;
    const auto put = [&](std::uint32_t code) {
        codes.put(code, bits);
        if (next > (1U << bits) - 1 && bits < 12)
            ++bits;
    };
    codes.put(clear, bits);
    std::uint32_t prefix = pixels.at(0);
    for (std::size_t i = 1; i < pixels.size(); ++i) {
        std::uint16_t& string = strings[prefix * 256 + pixels[i]];
        if (string != 0) {
            prefix = string;
            continue;
        }
        put(prefix);
        if (next < 4096) {
            string = static_cast<std::uint16_t>(next++);
        } else if (clears) {
            codes.put(clear, bits);
            std::ranges::fill(strings, std::uint16_t{0});
            next = clear + 2;
            bits = literal_bits + 1;
        }
        prefix = pixels[i];
    }
    put(prefix);
    return codes.put(clear + 1, bits).bytes();
}

/// Runs and noise by turns, so that strings are long and short.
bytes mixed_pixels(std::size_t count, unsigned colours, unsigned seed)
{
    std::mt19937 random(seed);
    bytes pixels;
    while (pixels.size() < count) {
        const auto colour = static_cast<std::uint8_t>(random() % colours);
        if (random() % 3 == 0)
            pixels.insert(pixels.end(), random() % 3000, colour);
        else
            for (auto n = random() % 500; n > 0; --n)
                pixels.push_back(static_cast<std::uint8_t>(random() % colours));
    }
    pixels.resize(count);
    return pixels;
}

TEST(GifFilter, ReadsFilesOfEveryKind)
{
    const bytes application{0x21, 0xFF, 3, 'a', 'b', 'c', 2, 0x2C, 0x3B, 0};
    const bytes six{0, 1, 2, 3, 2, 1};
    const rows as_3x2{{0, 1, 2}, {3, 2, 1}};
    const struct {
        const char* what;
        bytes file;
        int bits;
        unsigned colours;
        int green;
        rows expected;
    } cases[] = {
        {"one bit", gif_builder(1).image(3, 1).data(2, literal_codes(2, {1, 0, 1})).end(), 1, 2, 0,
            {{1, 0, 1}}},
        {"two bits", gif_builder(2).image(3, 2).data(2, literal_codes(2, six)).end(), 4, 4, 0, as_3x2},
        {"three bits", gif_builder(3).image(3, 2).data(3, literal_codes(3, six)).end(), 4, 8, 0, as_3x2},
        {"four bits", gif_builder(4).image(3, 2).data(4, literal_codes(4, six)).end(), 4, 16, 0, as_3x2},
        {"six bits", gif_builder(6).image(3, 2).data(6, literal_codes(6, six)).end(), 8, 64, 0, as_3x2},
        {"eight bits", gif_builder(8).image(3, 2).data(8, literal_codes(8, six)).end(), 8, 256, 0, as_3x2},
        {"more bits than a pixel has", gif_builder(8).image(3, 2).data(11, literal_codes(11, six)).end(), 8,
            256, 0, as_3x2},
        {"colours of its own", gif_builder(8).image(3, 2, false, 2).data(2, literal_codes(2, six)).end(), 4,
            4, 255, as_3x2},
        {"only colours of its own", gif_builder(0).image(3, 2, false, 2).data(2, literal_codes(2, six)).end(),
            4, 4, 255, as_3x2},
        {"an image without colours before",
            gif_builder(0)
                .image(1, 1)
                .data(2, literal_codes(2, {0}))
                .image(3, 2, false, 2)
                .data(2, literal_codes(2, six))
                .end(),
            4, 4, 255, as_3x2},
        {"extensions and stray bytes before",
            gif_builder(2)
                .add(application)
                .add({0, 7, 0xFE})
                .image(3, 2)
                .data(2, literal_codes(2, six))
                .end(),
            4, 4, 0, as_3x2},
        {"the first of two pictures",
            gif_builder(2)
                .image(3, 2)
                .data(2, literal_codes(2, six))
                .image(1, 1)
                .data(2, literal_codes(2, {3}))
                .end(),
            4, 4, 0, as_3x2},
        {"sub-blocks of one byte", gif_builder(2).image(3, 2).data(2, literal_codes(2, six), 1).end(), 4, 4,
            0, as_3x2},
        {"no trailer", gif_builder(2).image(3, 2).data(2, literal_codes(2, six)).bytes(), 4, 4, 0, as_3x2},
        {"a code of the string that it makes",
            gif_builder(2)
                .image(6, 1)
                .data(2, gif_codes().put(4, 3).put(1, 3).put(6, 3).put(7, 3).bytes())
                .end(),
            4, 4, 0, {{1, 1, 1, 1, 1, 1}}},
        {"a string across the end of a row",
            gif_builder(2)
                .image(2, 3)
                .data(2, gif_codes().put(4, 3).put(1, 3).put(2, 3).put(6, 3).put(7, 3).bytes())
                .end(),
            4, 4, 0, {{1, 2}, {1, 2}, {2, 1}}},
        {"no clear code first",
            gif_builder(2).image(4, 1).data(2, gif_codes().put(1, 3).put(2, 3).put(6, 3).bytes()).end(), 4, 4,
            0, {{1, 2, 1, 2}}},
        {"clear codes in a row",
            gif_builder(2)
                .image(2, 1)
                .data(2, gif_codes().put(4, 3).put(4, 3).put(1, 3).put(4, 3).put(2, 3).bytes())
                .end(),
            4, 4, 0, {{1, 2}}},
        {"an end code before the end",
            gif_builder(2).image(2, 2).data(2, gif_codes().put(4, 3).put(1, 3).put(5, 3).bytes()).end(), 4, 4,
            0, {{1, 0}, {0, 0}}},
        {"codes for more colours than there are",
            gif_builder(1).image(3, 1).data(2, literal_codes(2, {3, 2, 1})).end(), 1, 2, 0, {{1, 0, 1}}},
    };
    for (const auto& c : cases) {
        for (const bool in_stream : {false, true}) {
            oMEMDIB memory;
            oSTREAMDIB streamed;
            oDIB& dib = in_stream ? static_cast<oDIB&>(streamed) : memory;
            EXPECT_EQ(read(c.file, dib), oFILTER_OK) << c.what;
            EXPECT_EQ(dib.ColourDepth(), c.bits) << c.what;
            ASSERT_EQ(dib.colours().size(), c.colours) << c.what;
            const RGBQUAD last = dib.colours().back();
            EXPECT_EQ(last.rgbRed, c.colours - 1) << c.what;
            EXPECT_EQ(last.rgbGreen, c.green) << c.what;
            EXPECT_EQ(last.rgbBlue, 256 - c.colours) << c.what;
            EXPECT_EQ(indices_of(dib), c.expected) << c.what;
        }
    }
}

TEST(GifFilter, ReadsInterlacedRowsAsTheirPlainTwins)
{
    for (std::uint16_t height = 1; height <= 20; ++height) {
        rows plain;
        for (std::uint16_t y = 0; y < height; ++y)
            plain.push_back({static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(y * 11 % 32)});
        rows passes;
        for (const auto& [first, step] : {std::pair{0U, 8U}, {4U, 8U}, {2U, 4U}, {1U, 2U}})
            for (std::size_t y = first; y < height; y += step)
                passes.push_back(plain[y]);
        oMEMDIB dib;
        ASSERT_EQ(
            read(gif_builder(5).image(2, height, true).data(5, literal_codes(5, joined(passes))).end(), dib),
            oFILTER_OK);
        EXPECT_EQ(indices_of(dib), plain) << height;
    }
}

TEST(GifFilter, ReadsTheCodesOfAPlainEncoder)
{
    const struct {
        std::uint16_t width, height;
        unsigned literal_bits;
    } cases[] = {{1, 1, 1}, {200, 150, 1}, {333, 40, 2}, {99, 99, 3}, {100, 300, 4}, {50, 50, 5},
        {77, 300, 7}, {900, 500, 8}, {65535, 6, 8}, {1, 5000, 8}, {1000, 400, 2}};
    for (const auto& c : cases) {
        for (const bool clears : {true, false}) { // a table that stays full outlives its place in the window
            const auto pixels
                = mixed_pixels(std::size_t{c.width} * c.height, 1U << c.literal_bits, c.literal_bits);
            oMEMDIB dib;
            ASSERT_EQ(read(gif_builder(8)
                               .image(c.width, c.height)
                               .data(c.literal_bits, plainly_encoded(c.literal_bits, pixels, clears))
                               .end(),
                          dib),
                oFILTER_OK);
            EXPECT_TRUE(joined(indices_of(dib)) == pixels) << c.width << " x " << c.height << ' ' << clears;
        }
    }
}

TEST(GifFilter, TellsTheShapeOfPixels)
{
    const struct {
        std::uint8_t aspect;
        int vertical_dpi;
    } cases[] = {{0, 82}, {49, 82}, {1, 330}, {255, 19}};
    for (const auto& c : cases) {
        oMEMDIB dib;
        ASSERT_EQ(
            read(gif_builder(2, c.aspect).image(1, 1).data(2, literal_codes(2, {1})).end(), dib), oFILTER_OK);
        oDIBHEADER header;
        dib.GetHeader(header);
        EXPECT_EQ(header.HorzDPI(), 82);
        EXPECT_EQ(header.VertDPI(), c.vertical_dpi) << int{c.aspect};
    }
}

TEST(GifFilter, KeepsTheRowsBeforeDamage)
{
    const auto pixels = mixed_pixels(50 * 40, 256, 9);
    const auto codes = plainly_encoded(8, pixels, true);
    const auto whole = gif_builder(8).image(50, 40).data(8, codes).bytes();
    const std::size_t header = whole.size() - codes.size() - codes.size() / 255 - 2;
    std::size_t most_rows = 0;
    for (std::size_t size = 0; size + 3 < whole.size(); size += size < 20 ? 1 : 13) {
        oMEMDIB dib;
        const auto status = read({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}, dib);
        EXPECT_EQ(status, size < 6 || size > header ? oFILTER_BAD_DATA : oFILTER_READ_ERROR) << size;
        const auto got = joined(indices_of(dib));
        const auto differs = std::mismatch(got.begin(), got.end(), pixels.begin()).first;
        EXPECT_TRUE(std::all_of(differs, got.end(), [](auto index) { return index == 0; })) << size;
        most_rows = static_cast<std::size_t>(differs - got.begin()) / 50;
    }
    EXPECT_GT(most_rows, 30U);

    oMEMDIB dib;
    EXPECT_EQ(
        read(
            gif_builder(2).image(2, 2).data(2, gif_codes().put(4, 3).put(1, 3).put(7, 3).bytes()).end(), dib),
        oFILTER_BAD_DATA); // no string 7 yet
    EXPECT_EQ(indices_of(dib), (rows{{1, 0}, {0, 0}}));
}

TEST(GifFilter, RefusesWhatHoldsNoImage)
{
    const auto codes = literal_codes(2, {1});
    const struct {
        const char* what;
        bytes file;
    } cases[] = {
        {"another format", {'B', 'M', 1, 2, 3, 4, 5, 6, 7}},
        {"no colours at all", gif_builder(0).image(1, 1).data(2, codes).end()},
        {"no image", gif_builder(2).end()},
        {"no width", gif_builder(2).image(0, 5).data(2, codes).end()},
        {"code size 0", gif_builder(2).image(1, 1).data(0, codes).end()},
        {"code size 12", gif_builder(2).image(1, 1).data(12, codes).end()},
        {"more pixels than the codes can say", gif_builder(2).image(60000, 60000).data(2, bytes(150)).end()},
    };
    for (const auto& c : cases) {
        oMEMDIB dib;
        EXPECT_EQ(read(c.file, dib), oFILTER_BAD_DATA) << c.what;
        EXPECT_FALSE(dib.HasPixels()) << c.what;
    }
}

TEST(GifFilter, WhatItWritesReadsBackAtEveryDepth)
{
    const struct {
        int width, height;
    } sizes[] = {{1, 1}, {7, 3}, {300, 200}, {65535, 2}, {3, 35000}};
    GIFFILTER filter;
    for (const int bits : {1, 4, 8}) {
        for (const auto& size : sizes) {
            oMEMDIB dib(size.width, size.height, bits, model_of_bits(static_cast<unsigned>(bits)), 0);
            const auto pixels = mixed_pixels(
                static_cast<std::size_t>(size.width * size.height), 1U << bits, static_cast<unsigned>(bits));
            for (int y = 0; y < size.height; ++y)
                write_indices(pixels.data() + y * size.width, dib.line(y).data(),
                    static_cast<std::uint32_t>(bits), size.width);
            std::vector<RGBQUAD> colours(std::size_t{1} << bits);
            for (std::size_t i = 0; i < colours.size(); ++i)
                colours[i] = {static_cast<BYTE>(i), static_cast<BYTE>(i * 7), static_cast<BYTE>(255 - i), 0};
            dib.SetPalette(oDIBPALETTE(colours.data(), static_cast<std::uint16_t>(colours.size())));
            vMEMSTREAM file(vSTRING("out.gif"));
            ASSERT_EQ(filter.Convert(dib, file), oFILTER_OK);
            oMEMDIB back;
            ASSERT_EQ(filter.Convert(file, back), oFILTER_OK);
            EXPECT_EQ(back.ColourDepth(), bits);
            EXPECT_TRUE(indices_of(back) == indices_of(dib)) << bits << " bits, " << size.width;
            ASSERT_EQ(back.colours().size(), colours.size());
            EXPECT_EQ(
                std::memcmp(back.colours().data(), colours.data(), colours.size() * sizeof(RGBQUAD)), 0);
            // The codes are those of the plainest encoder, in sub-blocks of 254 bytes.
            const auto written = contents_of(file);
            const auto literal_bits = static_cast<unsigned>(std::max(bits, 2));
            const auto expected
                = gif_builder(8)
                      .data(literal_bits, plainly_encoded(literal_bits, joined(indices_of(dib)), true), 254)
                      .end();
            const auto body = static_cast<std::ptrdiff_t>(gif_builder(8).bytes().size());
            EXPECT_TRUE(std::equal(expected.rbegin(), expected.rend() - body, written.rbegin())) << bits;
        }
    }
}

TEST(GifFilter, WritesTheSimplestForm)
{
    oMEMDIB dib(2, 1, 1, oMODEL_PALETTE1, 0);
    const RGBQUAD colours[] = {{1, 2, 3, 0}, {4, 5, 6, 0}};
    dib.SetPalette(oDIBPALETTE(colours, 2));
    dib.line(0)[0] = 0x40;
    vMEMSTREAM file;
    GIFFILTER filter;
    ASSERT_EQ(filter.PrivateConvert(dib, file), oFILTER_OK);
    // Codes clear, 0, 1, end of three bits each.
    EXPECT_EQ(contents_of(file),
        (bytes{'G', 'I', 'F', '8', '7', 'a', 2, 0, 1, 0, 0x80, 0, 0, 3, 2, 1, 6, 5, 4, 0x2C, 0, 0, 0, 0, 2, 0,
            1, 0, 0, 2, 2, 0x44, 0x0A, 0, 0x3B}));
}

TEST(GifFilter, WritesDeeperBitmapsInTheirColours)
{
    oMEMDIB dib(40, 30, 24, oMODEL_RGB24, 0);
    for (int y = 0; y < 30; ++y)
        for (std::size_t x = 0; x < 120; ++x)
            dib.line(y)[x] = static_cast<std::uint8_t>(x / 9 * 16);
    vMEMSTREAM file;
    GIFFILTER filter;
    ASSERT_EQ(filter.Convert(dib, file), oFILTER_OK);
    oMEMDIB back;
    ASSERT_EQ(filter.Convert(file, back), oFILTER_OK);
    EXPECT_EQ(back.colours().size(), 16U); // for the 14 greys
    const oMEMDIB deep(back, 0, 0, 24, 0, 0);
    for (int y = 0; y < 30; ++y)
        EXPECT_TRUE(std::ranges::equal(deep.line(y), dib.line(y))) << y;
}

TEST(GifFilter, DithersBitmapsOfTooManyColours)
{
    oMEMDIB dib(64, 64, 24, oMODEL_RGB24, 0);
    for (int y = 0; y < 64; ++y)
        for (std::size_t x = 0; x < 192; ++x)
            dib.line(y)[x] = static_cast<std::uint8_t>(x + static_cast<std::size_t>(y));
    vMEMSTREAM file;
    GIFFILTER filter;
    ASSERT_EQ(filter.Convert(dib, file), oFILTER_OK);
    oMEMDIB back;
    ASSERT_EQ(filter.Convert(file, back), oFILTER_OK);
    EXPECT_EQ(back.ColourDepth(), 8);
    const oMEMDIB deep(back, 0, 0, 24, 0, 0);
    // No pixel need be right, but every block of 8 x 8 is right on the whole.
    for (int top = 0; top < 64; top += 8) {
        for (std::size_t left = 0; left < 192; left += 24) {
            int difference = 0;
            for (int y = top; y < top + 8; ++y)
                for (std::size_t x = left; x < left + 24; ++x)
                    difference += deep.line(y)[x] - dib.line(y)[x];
            EXPECT_LT(std::abs(difference / (8 * 24)), 8) << top << ' ' << left;
        }
    }
}

TEST(GifFilter, SaysWhyItDoesNotWrite)
{
    GIFFILTER filter;
    vMEMSTREAM file;
    oMEMDIB wide(65536, 1, 1, oMODEL_PALETTE1, 0);
    EXPECT_EQ(filter.Convert(wide, file), oFILTER_UNSUPPORTED);
    oMEMDIB nothing;
    EXPECT_EQ(filter.Convert(nothing, file), oFILTER_FAILED);
    EXPECT_EQ(file.Size(), 0U);
    oMEMDIB dib(100, 100, 8, oMODEL_PALETTE8, 0);
    vMEMSTREAM whole;
    ASSERT_EQ(filter.Convert(dib, whole), oFILTER_OK);
    for (std::uint32_t room = 1; room < whole.Size(); room += 29) {
        bytes memory(room);
        std::uint8_t* slot = memory.data();
        vMEMSTREAM narrow(&slot, room, vSTRING(), 0);
        EXPECT_EQ(filter.Convert(dib, narrow), oFILTER_WRITE_ERROR) << room;
    }
}

TEST(GifFilter, ConvertsAStreamIntoABitmapFile)
{
    const auto file = gif_builder(3, 49).image(3, 2).data(3, literal_codes(3, {7, 1, 2, 3, 4, 5})).end();
    vMEMSTREAM in;
    in.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    vMEMSTREAM out;
    GIFFILTER filter;
    ASSERT_EQ(filter.Convert(&in, &out), oFILTER_OK);
    bytes expected{'B', 'M', 94, 0, 0, 0, 0, 0, 0, 0, 86, 0, 0, 0, 40, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0,
        4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE4, 0x0C, 0, 0, 0xE4, 0x0C, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 8; ++i)
        for (const int channel : {255 - i, 0, i, 0})
            expected.push_back(static_cast<std::uint8_t>(channel));
    for (const int byte : {0x34, 0x50, 0, 0, 0x71, 0x20, 0, 0})
        expected.push_back(static_cast<std::uint8_t>(byte));
    EXPECT_EQ(contents_of(out), expected);

    class storage : public vARCHIVE {
    } no_stream;
    EXPECT_EQ(filter.Convert(nullptr, &out), oFILTER_READ_ERROR);
    EXPECT_EQ(filter.Convert(&no_stream, &out), oFILTER_UNSUPPORTED);
    EXPECT_EQ(filter.Convert(&in, &no_stream), oFILTER_FAILED);
    vMEMSTREAM nonsense;
    nonsense.WriteByteString(reinterpret_cast<const std::uint8_t*>("GIFT shop"));
    EXPECT_EQ(filter.Convert(&nonsense, &out), oFILTER_READ_ERROR);
    EXPECT_EQ(contents_of(out), expected);
}

/// Stops after so many questions.
class impatient : public oPROGRESSBM {
public:
    explicit impatient(int patience)
        : patience_(patience)
    {
    }
    int Stop() override { return patience_-- == 0; }
    void oSet(std::uint32_t value) override { last = value; }
    void oTerminate() override { ++terminated; }
    std::uint32_t last = 0;
    int terminated = 0;

private:
    int patience_;
};

TEST(GifFilter, StopsWhenTheProgressSaysSo)
{
    const auto file = gif_builder(8).image(10, 30).data(8, literal_codes(8, mixed_pixels(300, 255, 1))).end();
    oMEMDIB dib;
    impatient reader(20);
    EXPECT_EQ(read(file, dib, &reader), oFILTER_CANCELLED);
    EXPECT_EQ(reader.terminated, 1);
    impatient never(1000);
    EXPECT_EQ(read(file, dib, &never), oFILTER_OK);
    EXPECT_LE(never.last, never.FullScale());
    EXPECT_EQ(never.FullScale(), file.size());

    GIFFILTER filter;
    impatient writer(0);
    filter.SetProgressInd(&writer);
    vMEMSTREAM out;
    EXPECT_EQ(filter.PrivateConvert(dib, out), oFILTER_CANCELLED);
}

TEST(GifFilter, EveryConversionEndsWithAnAnswerWhenMemoryRunsOut)
{
    const auto pixels = mixed_pixels(300 * 40, 256, 4);
    const auto file = gif_builder(8).image(300, 40).data(8, plainly_encoded(8, pixels, true)).end();
    vMEMSTREAM in;
    in.WritePlain(file.data(), static_cast<std::uint32_t>(file.size()));
    GIFFILTER filter;
    int failed = 0;
    bool done = false;
    for (std::uint64_t n = 0; !done && n < 1000; ++n) {
        oMEMDIB dib;
        vMEMSTREAM bitmap_file;
        vMEMSTREAM gif_file;
        vMemFailAfter(n, memory_failure::from_then_on);
        done = filter.Convert(in, dib) == oFILTER_OK && filter.Convert(&in, &bitmap_file) == oFILTER_OK
            && filter.Convert(dib, gif_file) == oFILTER_OK;
        vMemNeverFail();
        failed += !done;
        if (!done) {
            EXPECT_TRUE(
                filter.LastStatus() == oFILTER_NO_MEMORY || filter.LastStatus() == oFILTER_WRITE_ERROR)
                << n << ' ' << filter.LastStatus();
        }
    }
    EXPECT_TRUE(done);
    EXPECT_GT(failed, 10);
}

TEST(GifFilter, IsKnownByItsFirstBytes)
{
    GIFFILTER filter;
    vMEMSTREAM stream;
    stream.WriteByteString(reinterpret_cast<const std::uint8_t*>("xxGIF89"));
    stream.MoveFromStart(2);
    EXPECT_EQ(filter.CheckStream(stream), oFILTER_RECOGNISED);
    EXPECT_EQ(filter.LastStatus(), oFILTER_OK);
    EXPECT_EQ(stream.CurrentPos(), 0U);
    EXPECT_EQ(filter.CheckStream(stream), oFILTER_FAILED);
    EXPECT_EQ(filter.LastStatus(), oFILTER_FAILED);
    EXPECT_EQ(filter.GetDescription(), vSTRING("GIF Bitmap "));
    EXPECT_FALSE(filter.ImportColourDepths(32) || filter.ExportColourDepths(24));
    EXPECT_TRUE(filter.ImportColourDepths(8) && filter.ExportColourDepths(8));
}

std::string imported_name;
bool imports_something = true;

/// Answers a bitmap of one pixel of 24 bits, or nothing.
HGLOBAL import_pixel(const char* name)
{
    imported_name = name;
    if (!imports_something)
        return nullptr;
    const std::uint8_t packed[44]{40, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9, 8, 7, 0};
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof packed);
    std::memcpy(GlobalLock(block), packed, sizeof packed);
    GlobalUnlock(block);
    return block;
}

TEST(GifFilter, AsksTheOutsideReaderWhereThereIsOne)
{
    const module_symbol symbols[]{{"ImportGIF", reinterpret_cast<FARPROC>(import_pixel)}};
    ASSERT_TRUE(RegisterModule("IEPICIMP.DLL", symbols));
    const auto file = gif_builder(2).image(2, 1).data(2, literal_codes(2, {1, 2})).end();
    oMEMDIB dib;
    EXPECT_EQ(read(file, dib), oFILTER_OK);
    EXPECT_EQ(imported_name, "picture.gif");
    EXPECT_EQ(dib.ColourDepth(), 24);
    EXPECT_EQ(dib.line(0)[0], 9);
    imports_something = false;
    EXPECT_EQ(read(file, dib), oFILTER_OK);
    EXPECT_EQ(indices_of(dib), (rows{{1, 2}}));
    UnregisterModule("IEPICIMP.DLL");
}

} // namespace
} // namespace klv
