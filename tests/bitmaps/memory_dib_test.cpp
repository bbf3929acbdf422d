#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/colour/colour.h"
#include "klv/core/rect.h"

#include "tests/bitmaps/dib_text.h"

#include <array>
#include <memory>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::dib_of;
using test::picture;
using test::text_of;

std::unique_ptr<oDIB> made(bool in_stream, int width, int height, int bits)
{
    const oCOLOUR_MODEL model = model_of_bits(static_cast<unsigned>(bits));
    if (in_stream)
        return std::make_unique<oSTREAMDIB>(width, height, bits, model, 0);
    return std::make_unique<oMEMDIB>(width, height, bits, model, 0);
}

TEST(Dib, LinesAndBlocksStayWithinTheBitmap)
{
    for (const bool in_stream : {false, true}) {
        const auto dib = made(in_stream, 3, 4, 24);
        std::vector<std::uint8_t> bytes(4 * 12, 9);
        const struct {
            int first, count, answer;
        } lines[] = {{0, 4, 1}, {3, 1, 1}, {4, 0, 1}, {0, 5, 0}, {-1, 1, 0}, {1, -1, 0}, {2, INT32_MAX, 0}};
        for (const auto& c : lines) {
            EXPECT_EQ(dib->SetImageLines(bytes.data(), oMODEL_RGB24, c.first, c.count), c.answer)
                << in_stream << ' ' << c.first << ' ' << c.count;
            EXPECT_EQ(dib->GetImageLines(c.first, c.count, bytes.data(), nullptr), c.answer);
        }
        const struct {
            int x, y, width, height, answer;
        } blocks[] = {{0, 0, 3, 4, 1}, {1, 1, 2, 3, 1}, {1, 0, 3, 1, 0}, {0, 1, 1, 4, 0}, {-1, 0, 1, 1, 0},
            {2, 0, INT32_MAX, 1, 0}};
        for (const auto& c : blocks) {
            EXPECT_EQ(dib->SetImageBlock(bytes.data(), oMODEL_RGB24, c.x, c.y, c.width, c.height), c.answer);
            EXPECT_EQ(dib->GetImageBlock(c.x, c.y, c.width, c.height, bytes.data(), nullptr), c.answer);
        }
    }
}

TEST(Dib, BlocksOfFewBitsLieAtAnyPixel)
{
    for (const bool in_stream : {false, true}) {
        for (const int bits : {1, 4, 8}) {
            const auto dib = made(in_stream, 20, 2, bits);
            std::array<std::uint8_t, 8> ones;
            ones.fill(bits == 8 ? 1 : 0xFF);
            ASSERT_TRUE(dib->SetImageBlock(ones.data(), oMODEL_RGB24, 5, 1, 3, 1));
            std::array<std::uint8_t, 20> row{};
            oCOLOUR_MODEL model = oMODEL_RGB24;
            ASSERT_TRUE(dib->GetImageLines(1, 1, row.data(), &model));
            EXPECT_EQ(model, model_of_bits(static_cast<unsigned>(bits)));
            for (int x = 0; x < 20; ++x) {
                const int index = bits == 1 ? row[x / 8] >> (7 - x % 8) & 1
                    : bits == 4             ? row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 0xF
                                            : row[x];
                EXPECT_EQ(index != 0, x >= 5 && x < 8) << bits << " bits at " << x;
            }
            std::array<std::uint8_t, 4> block{};
            ASSERT_TRUE(dib->GetImageBlock(4, 1, 2, 1, block.data(), nullptr));
            EXPECT_EQ(block[0], bits == 1 ? 0x40 : bits == 4 ? 0x0F : 0) << bits;
        }
    }
}

TEST(Dib, OneLockAtATime)
{
    oMEMDIB dib(2, 3, 24, oMODEL_RGB24, 0);
    std::uint8_t* pixels = nullptr;
    EXPECT_FALSE(dib.ReleaseImageLines(0));
    ASSERT_TRUE(dib.LockImageLines(1, 2, &pixels, oMODEL_RGB24));
    EXPECT_EQ(pixels, dib.line(1).data());
    EXPECT_FALSE(dib.LockImageLines(0, 1, &pixels, oMODEL_RGB24));
    EXPECT_EQ(pixels, nullptr);
    EXPECT_TRUE(dib.ReleaseImageLines(0));
    EXPECT_FALSE(dib.ReleaseImageLines(0));
    EXPECT_FALSE(dib.LockImageLines(0, 4, &pixels, oMODEL_RGB24));

    oMEMDIB empty;
    EXPECT_FALSE(empty.LockImageLines(0, 1, &pixels, oMODEL_RGB24));
    oSTREAMDIB streamed(2, 3, 24, oMODEL_RGB24, 0);
    EXPECT_FALSE(streamed.LockImageLines(0, 1, &pixels, oMODEL_RGB24));
    EXPECT_FALSE(streamed.ReleaseImageLines(0));
}

TEST(Dib, ANewHeaderMakesRoomAndKeepsThePalette)
{
    for (const bool in_stream : {false, true}) {
        const auto dib = made(in_stream, 1, 1, 8);
        const RGBQUAD colours[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
        dib->SetPalette(oDIBPALETTE(colours, 2));
        ASSERT_TRUE(dib->SetHeader(oDIBHEADER(2, 1, 96, 96, oMODEL_PALETTE8)));
        EXPECT_EQ(dib->GetPalette(nullptr), 2);
        const std::uint8_t row[4] = {1, 0, 0, 0};
        ASSERT_TRUE(dib->SetImageLines(row, oMODEL_PALETTE8, 0, 1));
        // The same layout with another resolution keeps the lines.
        ASSERT_TRUE(dib->SetHeader(oDIBHEADER(2, 1, 300, 300, oMODEL_PALETTE8)));
        EXPECT_EQ(text_of(*dib), (picture{".#"}));
        EXPECT_FALSE(dib->SetHeader(oDIBHEADER(INT32_MAX, INT32_MAX, 1, 1, oMODEL_RGB24)));
    }
}

TEST(Dib, CopiesArePicturesOfTheirOwn)
{
    const oMEMDIB source = dib_of({"rgb", "..#"});
    oMEMDIB copy(source);
    copy.line(0)[0] = 1;
    EXPECT_EQ(text_of(source), (picture{"rgb", "..#"}));
    const oSTREAMDIB streamed(source, 3);
    EXPECT_EQ(streamed.Flag(), 3);
    EXPECT_EQ(text_of(streamed), text_of(source));
    EXPECT_EQ(text_of(oSTREAMDIB(streamed)), text_of(source));
    EXPECT_EQ(text_of(oMEMDIB(streamed, 0)), text_of(source));
}

TEST(Dib, ConvertsBetweenDepths)
{
    const oMEMDIB source = dib_of({"r.g#", "b..#"});
    for (const int bits : {4, 8, 24}) {
        const oMEMDIB converted(source, 0, 0, bits, 0, 0);
        EXPECT_EQ(converted.ColourDepth(), bits);
        EXPECT_EQ(text_of(converted), text_of(source)) << bits;
        EXPECT_EQ(text_of(oMEMDIB(converted, 0, 0, 8, 0, 0)), text_of(source)) << bits;
    }
    EXPECT_EQ(text_of(oMEMDIB(dib_of({"r.r"}), 0, 0, 1, 0, 0)), (picture{"r.r"}));
    EXPECT_FALSE(oMEMDIB(source, 0, 0, 7, 0, 0).HasPixels());
    EXPECT_EQ(text_of(oSTREAMDIB(source, oMODEL_PALETTE8, 0, 0, nullptr)), text_of(source));
    const vRECT right_top(2, 0, 4, 1);
    EXPECT_EQ(text_of(oSTREAMDIB(source, oMODEL_RGB24, 0, 0, &right_top)), (picture{"g#"}));
    const vRECT outside(2, 0, 5, 1);
    EXPECT_EQ(oSTREAMDIB(source, oMODEL_RGB24, 0, 0, &outside).Width(), 0);
}

TEST(Dib, TheLineConvertersAreThoseOfTheTable)
{
    const struct {
        int from, to, answer;
        dib_read_routine read;
        dib_write_routine write;
    } cases[] = {
        {1, 8, 1, ReadLine1To8, WriteLine8},
        {1, 24, 1, ReadLine1To8, WriteLine8},
        {4, 24, 1, ReadLine4To8, WriteLine8},
        {8, 8, 1, ReadLine8To8, WriteLine8},
        {8, 24, 1, ReadLine8To24, WriteLine24},
        {24, 8, 1, ReadLine24To8, WriteLine8},
        {24, 1, 1, ReadLine24To24, WriteLine24},
        {16, 8, 0, nullptr, nullptr},
        {0, 8, 0, nullptr, nullptr},
    };
    for (const auto& c : cases) {
        dib_read_routine read = nullptr;
        dib_write_routine write = nullptr;
        EXPECT_EQ(oDIB::GetReadWriteRoutines(c.from, c.to, read, write), c.answer)
            << c.from << " to " << c.to;
        EXPECT_TRUE(read == c.read && write == c.write) << c.from << " to " << c.to;
    }
}

TEST(Dib, ColourOverrideShadesFromTheColourToWhite)
{
    oMEMDIB dib(1, 1, 8, oMODEL_PALETTE8, 0);
    const RGBQUAD colours[] = {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 255, 0, 0}};
    dib.SetPalette(oDIBPALETTE(colours, 3));
    const vCOLOUR red(200, 0, 100);
    const std::unique_ptr<oDIBPALETTE> shades(dib.CreateColourOverridePalette(&red));
    ASSERT_TRUE(shades);
    EXPECT_EQ(shades->colours()[0], (RGBQUAD{100, 0, 200, 0}));
    EXPECT_EQ(shades->colours()[1], (RGBQUAD{255, 255, 255, 0}));
    EXPECT_EQ(shades->colours()[2], (RGBQUAD{191, 150, 232, 0})); // grey (59 * 255 + 50) / 100 = 150
    EXPECT_EQ(dib.CreateColourOverridePalette(nullptr), nullptr);
    EXPECT_EQ(dib_of({"r"}).CreateColourOverridePalette(&red), nullptr);
}

} // namespace
} // namespace klv
