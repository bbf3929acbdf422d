#include "klv/attributes/fade_spec.h"
#include "klv/attributes/fill_spec.h"
#include "klv/attributes/font_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/memory.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/tile_info.h"
#include "klv/colour/image_colour.h"
#include "klv/devices/memory_device.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/attributes/stream_form.h"

#include <gtest/gtest.h>

using namespace klv;

namespace {

vLINESPEC line(vLINETYPE type, int width, const unsigned char* pattern = nullptr)
{
    return {type, vCOLOUR(1, 2, 3), width, vCORNER_MITRE, vDASH_FLAT, pattern, 3, 9};
}

std::string pattern_of(const vLINESPEC& spec)
{
    std::string text;
    for (unsigned short i = 0; i < vLINESPEC::pattern_length; ++i)
        text += static_cast<char>('0' + spec.Pattern(i));
    return text;
}

// Two pixels of 24 bits in each of two rows.
oMEMDIB small_bitmap()
{
    oMEMDIB dib(2, 2, 24, oCOLOUR_MODEL{}, 0);
    const std::uint8_t rows[16]{1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    dib.SetImageLines(rows, oCOLOUR_MODEL{}, 0, 2);
    return dib;
}

} // namespace

TEST(LineSpec, TypeBringsItsPattern)
{
    const unsigned char user[]{9, 8, 7, 6, 5, 4};
    const struct {
        int type;
        const unsigned char* pattern;
        const char* expected;
    } cases[]{
        {1, nullptr, "000000"},
        {2, nullptr, "330000"},
        {3, nullptr, "530000"},
        {4, nullptr, "533300"},
        {5, nullptr, "533333"},
        {6, user, "987654"},
        {6, nullptr, "000000"},
        {77, user, "000000"},
    };
    for (const auto& c : cases) {
        const auto type = static_cast<vLINETYPE>(c.type);
        EXPECT_EQ(pattern_of(line(type, 5, c.pattern)), c.expected) << c.type;
        EXPECT_EQ(line(type, 5, c.pattern).LineType(), type);
        EXPECT_EQ(line(type, 5).Width(), 5);
    }
    vLINESPEC spec = line(vLINE_DASH, 5);
    spec.LineType(vLINE_USER, nullptr);
    EXPECT_EQ(pattern_of(spec), "530000") << "no pattern given";
    EXPECT_EQ(spec.Pattern(6), 0);
    spec.LineType(vLINE_NONE);
    EXPECT_EQ(spec.Width(), 0);
}

TEST(LineSpec, PatternDoesNotCountInComparison)
{
    const unsigned char a[]{1, 2, 3, 4, 5, 6}, b[]{6, 5, 4, 3, 2, 1};
    EXPECT_EQ(line(vLINE_USER, 5, a), line(vLINE_USER, 5, b));
    vLINESPEC other = line(vLINE_USER, 5, a);
    other.EndArrow(vLINESPEC::no_arrow);
    EXPECT_NE(other, line(vLINE_USER, 5, a));
}

TEST(LineSpec, StreamFormLosesTheArrows)
{
    const byte_vector stored{
        1, 2, 3, 0, 0, 100, 0, 0, 0xFB, 0xFF, 0xFF, 0xFF, 4, 0, 1, 0, 1, 0, 5, 3, 3, 3, 0, 0};
    EXPECT_EQ(stream_form(line(vLINE_DASH_DOT, -5)), stored);

    loaded_stream stream(stored);
    const vLINESPEC read(stream);
    vLINESPEC expected = line(vLINE_DASH_DOT, -5);
    expected.StartArrow(-1);
    expected.EndArrow(-1);
    EXPECT_EQ(read, expected);
    EXPECT_EQ(pattern_of(read), "533300");

    // A line type 0 that a file holds keeps its width.
    byte_vector none = stored;
    none[12] = 0;
    loaded_stream other(none);
    EXPECT_EQ(vLINESPEC(other).Width(), -5);
}

TEST(FillSpec, KindsOfPattern)
{
    for (int type = 0; type < 60; ++type) {
        const vFILLSPEC spec(
            static_cast<vFILLTYPE>(type), vCOLOUR(), vCOLOUR(), vANGLE(), vFILL_WINDING, vPOINT());
        EXPECT_EQ(spec.Hatched(), type >= 8 && type <= 13) << type;
        EXPECT_EQ(spec.GemBrush(), type >= 15 && type <= 50) << type;
    }
}

TEST(FillSpec, StreamFormEndsWithTheCentre)
{
    const vFILLSPEC spec(vFILL_LINEAR, vCOLOUR(1, 2, 3), vCOLOUR(4, 5, 6), vANGLE(static_cast<short>(90)),
        vFILL_ALTERNATE, vPOINT(7, -1));
    const byte_vector stored{6, 0, 1, 2, 3, 0, 0, 100, 0, 0, 4, 5, 6, 0, 0, 100, 0, 0, 0, 0, 90, 0, 1, 0, 0,
        0, 7, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(stream_form(spec), stored);

    loaded_stream stream(stored);
    vFILLSPEC read(stream);
    EXPECT_EQ(stream.Size() - stream.CurrentPos(), 8u) << "the centre is left to the reader";
    EXPECT_NE(read, spec);
    read.Centre(vPOINT(7, -1));
    EXPECT_EQ(read, spec);
}

TEST(FillSpec, OwnsItsBitmap)
{
    const oMEMDIB dib = small_bitmap();
    const vFILLSPEC spec(dib);
    EXPECT_EQ(spec.Type(), vFILL_BITMAP);
    EXPECT_EQ(spec.Mode(), vFILL_ALTERNATE);
    EXPECT_FALSE(spec == spec) << "a record with a bitmap equals nothing";
    EXPECT_TRUE(spec != spec);

    vFILLSPEC copy(spec);
    copy = spec;
    oDIB *mine = nullptr, *theirs = nullptr;
    ASSERT_EQ(spec.Bitmap(&mine), 1);
    ASSERT_EQ(copy.Bitmap(&theirs), 1);
    EXPECT_NE(mine, theirs);
    std::uint8_t rows[16]{};
    theirs->GetImageLines(0, 2, rows, nullptr);
    EXPECT_EQ(rows[9], 8);

    // 24 bytes up to the mode, a 40-byte header, 16 bytes of pixels and the centre.
    const byte_vector stored = stream_form(spec);
    ASSERT_EQ(stored.size(), 24u + 40 + 16 + 8);
    EXPECT_EQ(stored[24], 40);
    loaded_stream stream(stored);
    copy << stream;
    EXPECT_EQ(stream.CurrentPos(), stored.size() - 8);
    ASSERT_EQ(copy.Bitmap(&theirs), 1);
    theirs->GetImageLines(0, 2, rows, nullptr);
    EXPECT_EQ(rows[9], 8);

    // Reading a record without a bitmap drops the old one.
    loaded_stream plain(stream_form(vFILLSPEC()));
    copy << plain;
    EXPECT_EQ(copy.Bitmap(&theirs), 0);
    EXPECT_EQ(copy, vFILLSPEC());
}

TEST(FillSpec, BitmapThatStopsEarlyOrHasNoMemoryIsNone)
{
    byte_vector stored = stream_form(vFILLSPEC(small_bitmap()));
    stored.resize(24 + 20);
    loaded_stream stream(stored);
    const vFILLSPEC read(stream);
    oDIB* dib = nullptr;
    EXPECT_EQ(read.Bitmap(&dib), 0);
    EXPECT_EQ(read.Type(), vFILL_BITMAP);

    const oMEMDIB source = small_bitmap();
    vMemFailAfter(0);
    const vFILLSPEC poor(source);
    vMemNeverFail();
    EXPECT_EQ(poor.Bitmap(&dib), 0);
}

TEST(FontSpec, HeightTellsWhatItMeasures)
{
    const auto height = [](int size, int kind) {
        return vFONTSPEC(
            vSTRING("Arial"), vFONT_BOLD, size, vREAL(1.5), 0, static_cast<vFONT_HEIGHT>(kind), vANGLE())
            .Height();
    };
    EXPECT_EQ(height(12, 0), -12);
    EXPECT_EQ(height(-12, 0), -12);
    EXPECT_EQ(height(-12, 1), 12);
    EXPECT_EQ(height(12, 2), 0);
    EXPECT_EQ(height(INT32_MIN, 0), INT32_MIN) << "the one size whose magnitude is too large wraps";
    EXPECT_EQ(vFONTSPEC().Height(), 0);
    vFONTSPEC spec;
    spec.PointSize(18);
    EXPECT_EQ(spec.Height(), -18);
}

TEST(FontSpec, StreamForm)
{
    const vFONTSPEC spec(vSTRING("Abc"), vFONT_BOLD_ITALIC, 300, vREAL(1.5), 9, vFONT_CELL_HEIGHT,
        vANGLE(static_cast<short>(-90)));
    const byte_vector stored{
        3, 0, 'A', 'b', 'c', 3, 0, 44, 1, 0, 0, 0, 0x80, 1, 0, 0, 0, 0, 0, 0, 0, 0xA6, 0xFF};
    EXPECT_EQ(stream_form(spec), stored);

    byte_vector odd = stored;
    odd[15] = 77; // reserved
    loaded_stream stream(odd);
    vFONTSPEC read;
    read << stream;
    EXPECT_EQ(read, spec);
    read.Style(vFONT_BOLD);
    EXPECT_NE(read, spec);
}

TEST(FadeSpec, ClampsAndCompares)
{
    const vSHAPE outline = vRECTSHAPE(vRECT(0, 0, 10, 10));
    const vFADESPEC spec(vFADE_SHAPE, 150, -1, 12.5, vCOLOUR(1, 2, 3), outline, vFRAME_NONE, 300, -7);
    EXPECT_EQ(spec.GetFadeRange(), 100);
    EXPECT_EQ(spec.GetFadeRate(), 0);
    EXPECT_EQ(spec.GetStartTransLevel(), 300) << "stored as given";
    EXPECT_EQ(spec.GetEndTransLevel(), -7);

    vFADESPEC other = spec;
    EXPECT_EQ(other, spec);
    other.SetStartTransLevel(300);
    EXPECT_EQ(other.GetStartTransLevel(), 255);
    EXPECT_NE(other, spec);
    other = spec;
    other.SetShape(vRECTSHAPE(vRECT(5, 5, 15, 15)));
    EXPECT_EQ(other, spec) << "shapes compare by form";
    other.SetShape(vRECTSHAPE(vRECT(5, 5, 15, 16)));
    EXPECT_NE(other, spec);
    EXPECT_EQ(vFADESPEC().GetShape().NoPoint(), 0);
}

TEST(ImageColour, DefaultsAndOrderOfColours)
{
    const vIMAGECOLOUR plain;
    const vCOLOUR unset(vCOLOUR_RGB, 0xFFFFFF, 33, 0);
    EXPECT_EQ(plain.GetForegroundColour(), unset);
    EXPECT_EQ(plain.GetBackgroundColour(), unset);
    EXPECT_EQ(plain.GetMidtoneColour(), unset);
    EXPECT_EQ(plain.GetTransparencyColour(), vCOLOUR(255, 255, 255));
    EXPECT_EQ(plain.GetTransparencyThreshold(), 5);
    EXPECT_TRUE(plain.IsNormalBalance());
    EXPECT_FALSE(plain.IsTransparent());

    vIMAGECOLOUR spec(vOVERRIDE_TRITONE, vCOLOUR(1, 0, 0), vCOLOUR(2, 0, 0), vCOLOUR(3, 0, 0), 101, -1, 50,
        vTRANSPARENCY_COLOUR, vCOLOUR(4, 0, 0), 1000);
    EXPECT_EQ(spec.GetMidtoneColour().Red(), 1);
    EXPECT_EQ(spec.GetBackgroundColour().Red(), 2);
    EXPECT_EQ(spec.GetForegroundColour().Red(), 3);
    EXPECT_EQ(spec.GetBrightness(), 100);
    EXPECT_EQ(spec.GetContrast(), 0);
    EXPECT_EQ(spec.GetTransparencyThreshold(), 100);
    const vIMAGECOLOUR before = spec;
    spec.SetTransparencyThreshold(1000);
    EXPECT_EQ(spec.GetTransparencyThreshold(), 1000) << "stored as given";
    EXPECT_NE(spec, before);
}

TEST(TileInfo, ComparisonDependsOnTheDrawMode)
{
    vTILEINFO a(vTILE_TILED, 0, -3), b(vTILE_TILED, 1, 1);
    EXPECT_EQ(a.GetTilesAcross(), 1);
    EXPECT_EQ(a.GetTilesDown(), 1);
    a.SetTileSize(vSIZE(30, 40));
    a.SetTileOrigin(vPOINT(5, 5));
    EXPECT_EQ(a, b);
    a.SetTileDrawMode(vTILE_FIXED_SIZE);
    b.SetTileDrawMode(vTILE_FIXED_SIZE);
    EXPECT_NE(a, b);
    EXPECT_TRUE(a.CompareNoScale(b));
}

TEST(TileInfo, FixedTilesCoverTheArea)
{
    const struct {
        int mode, width, height, across, down;
    } cases[]{
        {0, 100, 90, 7, 7},
        {1, 100, 90, 4, 3},
        {2, 100, 90, 5, 4},
        {1, 0, -50, 1, 1},
        {1, INT32_MAX, 30, 71582789, 1},
    };
    vMEMDEVICE device;
    for (const auto& c : cases) {
        vTILEINFO info(vTILE_TILED, 7, 7);
        info.SetTileSize(vSIZE(30, 30));
        info.SetTileDrawMode(static_cast<vTILEDRAWMODE>(c.mode));
        vRECT area(0, 0, c.width, c.height);
        info.CalculateTilesAcrossDown(device, area);
        EXPECT_EQ(info.GetTilesAcross(), c.across) << c.mode << ' ' << c.width;
        EXPECT_EQ(info.GetTilesDown(), c.down) << c.mode << ' ' << c.height;
    }
    vTILEINFO flat(vTILE_TILED, 7, 7);
    flat.SetTileDrawMode(vTILE_FIXED_SIZE);
    vRECT area(0, 0, 10, 10);
    flat.CalculateTilesAcrossDown(device, area);
    EXPECT_EQ(flat.GetTilesAcross(), 7) << "tiles without a size can't cover anything";
}
