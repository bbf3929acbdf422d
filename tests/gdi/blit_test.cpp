#include "klv/gdi/state/bitmap_object.h"

#include "tests/gdi/raster_canvas.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

const WORD every_depth[] = {1, 4, 8, 16, 24, 32};

/// Draws art on a canvas: '#' black, everything else by letter.
void paint(HDC dc, const char* art)
{
    INT x = 0;
    INT y = -1;
    for (; *art != 0; ++art) {
        if (*art == '\n') {
            x = 0;
            ++y;
            continue;
        }
        SetPixel(dc, x++, y,
            *art == '#'       ? black
                : *art == 'r' ? red
                : *art == 'g' ? green
                : *art == 'b' ? blue
                              : white);
    }
}

TEST(Blits, CopyBetweenAllDepths)
{
    const char* const picture = "\n#..#.\n.##..\n....#";
    for (const WORD from_bits : every_depth)
        for (const WORD to_bits : every_depth) {
            raster_canvas from(5, 3, from_bits);
            raster_canvas to(7, 3, to_bits);
            paint(from, picture);
            BitBlt(to, 1, 0, 5, 3, from, 0, 0, SRCCOPY);
            EXPECT_EQ(to.art(), "\n.#..#..\n..##...\n.....#.") << from_bits << " to " << to_bits;
        }
}

TEST(Blits, StretchByPixelCentresAndMirror)
{
    raster_canvas from(3, 2);
    paint(from, "\n#r.\ng.b");
    raster_canvas to(6, 4);
    SetStretchBltMode(to, COLORONCOLOR);
    StretchBlt(to, 0, 0, 6, 4, from, 0, 0, 3, 2, SRCCOPY);
    EXPECT_EQ(to.art(), "\n##rr..\n##rr..\ngg..bb\ngg..bb");
    StretchBlt(to, 6, 4, -6, -4, from, 0, 0, 3, 2, SRCCOPY);
    EXPECT_EQ(to.art(), "\nbb..gg\nbb..gg\n..rr##\n..rr##");
    // Shrinking keeps the pixel under each centre.
    raster_canvas small(1, 2);
    SetStretchBltMode(small, COLORONCOLOR);
    StretchBlt(small, 0, 0, 1, 2, from, 0, 0, 3, 2, SRCCOPY);
    EXPECT_EQ(small.art(), "\nr\n.");
}

TEST(Blits, ShrinkingJoinsPixelsAsTheModeSays)
{
    raster_canvas from(4, 2);
    paint(from, "\n#..#\n....");
    struct {
        INT mode;
        COLORREF expected;
    } cases[] = {{BLACKONWHITE, black}, {WHITEONBLACK, white}, {HALFTONE, RGB(191, 191, 191)}};
    for (const auto& c : cases) {
        raster_canvas to(2, 1);
        SetStretchBltMode(to, c.mode);
        StretchBlt(to, 0, 0, 2, 1, from, 0, 0, 4, 2, SRCCOPY);
        EXPECT_EQ(GetPixel(to, 0, 0), c.expected) << c.mode;
        EXPECT_EQ(GetPixel(to, 1, 0), c.expected) << c.mode;
    }
}

TEST(Blits, EveryRasterOperationFollowsItsTruthTable)
{
    for (unsigned code = 0; code < 256; ++code) {
        raster_canvas from(8, 1);
        raster_canvas to(8, 1);
        bool expected[8];
        for (unsigned i = 0; i < 8; ++i) {
            SetPixel(from, static_cast<INT>(i), 0, (i & 2) != 0 ? white : black);
            SetPixel(to, static_cast<INT>(i), 0, (i & 1) != 0 ? white : black);
            expected[i] = (code >> i & 1) != 0;
        }
        for (INT i = 0; i < 8; i += 4) {
            const auto brush = use_brush(to, i != 0 ? white : black);
            BitBlt(to, i, 0, 4, 1, from, i, 0, code << 16);
        }
        for (unsigned i = 0; i < 8; ++i)
            EXPECT_EQ(GetPixel(to, static_cast<INT>(i), 0), expected[i] ? white : black)
                << code << " at " << i;
    }
}

TEST(Blits, OverlappingCopiesReadBeforeTheyWrite)
{
    for (const WORD bits : every_depth) {
        raster_canvas canvas(6, 4, bits);
        paint(canvas, "\n#.#...\n##....\n.#....");
        BitBlt(canvas, 1, 1, 3, 3, canvas, 0, 0, SRCCOPY);
        EXPECT_EQ(canvas.art(), "\n#.#...\n##.#..\n.##...\n..#...") << bits;
        BitBlt(canvas, 0, 0, 3, 3, canvas, 1, 1, SRCCOPY);
        EXPECT_EQ(canvas.art(), "\n#.#...\n##.#..\n.#....\n..#...") << bits;
    }
}

TEST(Blits, MonochromeTakesTextAndBackgroundColours)
{
    const std::uint8_t bits[] = {0xA0, 0};
    const HBITMAP mask = CreateBitmap(4, 1, 1, 1, bits);
    const HDC mask_dc = CreateCompatibleDC(nullptr);
    const HGDIOBJ old = SelectObject(mask_dc, mask);
    raster_canvas canvas(4, 1);
    SetTextColor(canvas, blue);
    SetBkColor(canvas, green);
    BitBlt(canvas, 0, 0, 4, 1, mask_dc, 0, 0, SRCCOPY);
    EXPECT_EQ(canvas.art(), "\ngbgb");
    // Back again: what has the source's background colour becomes 1.
    SetBkColor(canvas, blue);
    BitBlt(mask_dc, 0, 0, 4, 1, canvas, 0, 0, SRCCOPY);
    const auto& pixels = gdi::find<gdi::bitmap_object>(mask)->pixels;
    EXPECT_EQ(pixels.row(0)[0] & 0xF0, 0x50);

    // The masked draw of a transparent bitmap: clear by the mask, then paint the rest.
    canvas.clear();
    SetTextColor(canvas, black);
    SetBkColor(canvas, white);
    BitBlt(canvas, 0, 0, 4, 1, mask_dc, 0, 0, SRCAND);
    raster_canvas picture(4, 1);
    paint(picture, "\nr#r#");
    BitBlt(canvas, 0, 0, 4, 1, picture, 0, 0, SRCPAINT);
    EXPECT_EQ(canvas.art(), "\nr.r.");
    SelectObject(mask_dc, old);
    DeleteDC(mask_dc);
    DeleteObject(mask);
}

TEST(Blits, SourcesThatEndEarlyLeaveTheRestAlone)
{
    raster_canvas from(2, 2);
    PatBlt(from, 0, 0, 2, 2, BLACKNESS);
    raster_canvas to(5, 4);
    BitBlt(to, 0, 0, 5, 4, from, -1, -1, SRCCOPY);
    EXPECT_EQ(to.art(), "\n.....\n.##..\n.##..\n.....");
    to.clear();
    SetStretchBltMode(to, COLORONCOLOR);
    StretchBlt(to, INT32_MIN, -5, INT32_MAX, 10, from, 0, 0, INT32_MAX, 2, SRCCOPY);
    StretchBlt(to, 0, 0, 5, 0, from, 0, 0, 2, 2, SRCCOPY);
    BitBlt(to, 0, 0, 5, 4, from, INT32_MAX, INT32_MAX, SRCCOPY);
    EXPECT_EQ(to.art(), "\n.....\n.....\n.....\n.....");
}

TEST(Blits, PatternBlitsNeedNoSource)
{
    raster_canvas canvas(4, 1);
    const auto brush = use_brush(canvas, RGB(255, 0, 255));
    PatBlt(canvas, 0, 0, 1, 1, PATCOPY);
    PatBlt(canvas, 1, 0, 1, 1, PATINVERT);
    PatBlt(canvas, 2, 0, 1, 1, DSTINVERT);
    SelectObject(canvas, GetStockObject(NULL_BRUSH));
    PatBlt(canvas, 3, 0, 1, 1, BLACKNESS);
    EXPECT_EQ(GetPixel(canvas, 0, 0), RGB(255, 0, 255));
    EXPECT_EQ(canvas.art(), "\n?g##");
    EXPECT_FALSE(PatBlt(canvas, 0, 0, 1, 1, SRCCOPY));
}

// ---- Bitmaps in memory ---------------------------------------------------------------------------------

struct small_dib {
    BITMAPINFOHEADER header{};
    RGBQUAD colours[256]{};
    const BITMAPINFO* info() const { return reinterpret_cast<const BITMAPINFO*>(this); }
    BITMAPINFO* info() { return reinterpret_cast<BITMAPINFO*>(this); }
};

small_dib dib(INT width, INT height, WORD bits)
{
    small_dib d;
    d.header = {sizeof d.header, width, height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    d.colours[1] = {255, 255, 255, 0};
    d.colours[2] = {0, 0, 255, 0};
    return d;
}

TEST(Dibs, RowsComeFromTheBottomUnlessTheHeightIsNegative)
{
    const std::uint8_t bits[] = {0, 2, 1, 9, 1, 1, 2, 9}; // rows of 3 pixels, padded
    for (const INT height : {2, -2}) {
        const small_dib d = dib(3, height, 8);
        raster_canvas canvas(4, 2);
        EXPECT_EQ(StretchDIBits(canvas, 0, 0, 3, 2, 0, 0, 3, 2, bits, d.info(), DIB_RGB_COLORS, SRCCOPY), 2);
        EXPECT_EQ(canvas.art(), height < 0 ? "\n#r..\n..r." : "\n..r.\n#r..");
        // One row, counted from the first one in memory.
        canvas.clear();
        StretchDIBits(canvas, 0, 0, 3, 1, 0, 0, 3, 1, bits, d.info(), DIB_RGB_COLORS, SRCCOPY);
        EXPECT_EQ(canvas.art(), "\n#r..\n....");
        // The rows can be handed over in bands.
        canvas.clear();
        EXPECT_EQ(SetDIBitsToDevice(canvas, 0, 0, 3, 2, 0, 0, 1, 1, bits + 4, d.info(), DIB_RGB_COLORS), 1);
        EXPECT_EQ(canvas.art(), height < 0 ? "\n....\n..r." : "\n..r.\n....");
    }
}

TEST(Dibs, RunLengthCodesUnpack)
{
    struct {
        WORD bits;
        DWORD compression;
        std::vector<std::uint8_t> code;
        const char* art;
    } cases[] = {
        {8, BI_RLE8, {3, 2, 0, 0, 0, 3, 1, 2, 0, 0, 0, 1}, "\n.r##\nrrr#"},
        {8, BI_RLE8, {0, 2, 1, 1, 9, 1, 0, 1}, "\n#...\n####"},
        {8, BI_RLE8, {250, 1, 0, 0, 250, 2, 0, 0, 250, 2}, "\nrrrr\n...."},
        {4, BI_RLE4, {4, 0x12, 0, 0, 0, 3, 0x21, 0x20, 0, 1}, "\nr.r#\n.r.r"},
        {8, BI_RLE8, {0, 200}, "\n####\n####"},
    };
    for (const auto& c : cases) {
        small_dib d = dib(4, 2, c.bits);
        d.header.biCompression = c.compression;
        d.header.biSizeImage = static_cast<DWORD>(c.code.size());
        raster_canvas canvas(4, 2);
        StretchDIBits(canvas, 0, 0, 4, 2, 0, 0, 4, 2, c.code.data(), d.info(), DIB_RGB_COLORS, SRCCOPY);
        EXPECT_EQ(canvas.art(), c.art);
    }
}

TEST(Dibs, ImpossibleHeadersAreRefused)
{
    raster_canvas canvas(2, 2);
    const std::uint8_t bits[64] = {};
    struct {
        INT width, height;
        WORD depth;
        DWORD compression;
    } cases[] = {{0, 1, 8, BI_RGB}, {1, 0, 8, BI_RGB}, {-1, 1, 8, BI_RGB}, {1, INT32_MIN, 8, BI_RGB},
        {INT32_MAX, INT32_MAX, 32, BI_RGB}, {1, 1, 7, BI_RGB}, {1, 1, 4, BI_RLE8}, {1, -1, 8, BI_RLE8},
        {1, 1, 24, BI_BITFIELDS}, {1, 1, 8, 77}, {100000, 100000, 8, BI_RLE8}};
    for (const auto& c : cases) {
        small_dib d = dib(c.width, c.height, c.depth);
        d.header.biCompression = c.compression;
        EXPECT_EQ(StretchDIBits(canvas, 0, 0, 2, 2, 0, 0, 1, 1, bits, d.info(), DIB_RGB_COLORS, SRCCOPY), 0);
        EXPECT_EQ(CreateDIBSection(canvas, d.info(), DIB_RGB_COLORS, nullptr, nullptr, 0), nullptr);
    }
}

TEST(Dibs, ReadBackInAnotherDepth)
{
    raster_canvas canvas(3, 2);
    paint(canvas, "\nr.#\n#g.");
    small_dib d = dib(3, 2, 24);
    std::uint8_t bits[24] = {};
    EXPECT_EQ(GetDIBits(canvas, canvas.bitmap(), 0, 2, bits, d.info(), DIB_RGB_COLORS), 2);
    const std::uint8_t expected[]
        = {0, 0, 0, 0, 255, 0, 255, 255, 255, 0, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0};
    EXPECT_EQ(std::memcmp(bits, expected, sizeof expected), 0);
    EXPECT_EQ(d.header.biSizeImage, 24U);

    d = dib(3, -2, 1);
    EXPECT_EQ(GetDIBits(canvas, canvas.bitmap(), 1, 1, bits, d.info(), DIB_RGB_COLORS), 1);
    EXPECT_EQ(bits[0] & 0xE0, 0x20); // black, green (nearer to black), white
    d.header.biBitCount = 0;
    GetDIBits(canvas, canvas.bitmap(), 0, 0, nullptr, d.info(), DIB_RGB_COLORS);
    EXPECT_EQ(d.header.biBitCount, 32);
    EXPECT_EQ(d.header.biHeight, 2);
}

TEST(Dibs, SectionsShareTheirBits)
{
    small_dib d = dib(2, 2, 8);
    void* bits = nullptr;
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(dc, d.info(), DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bitmap, nullptr);
    const HGDIOBJ old = SelectObject(dc, bitmap);
    static_cast<std::uint8_t*>(bits)[0] = 2; // bottom row, left
    EXPECT_EQ(GetPixel(dc, 0, 1), red);
    SetPixel(dc, 1, 0, white);
    EXPECT_EQ(static_cast<std::uint8_t*>(bits)[5], 1);
    RGBQUAD table[3] = {};
    EXPECT_EQ(GetDIBColorTable(dc, 1, 3, table), 3U);
    EXPECT_EQ(table[1], (RGBQUAD{0, 0, 255, 0}));
    EXPECT_EQ(GetDIBColorTable(dc, 256, 1, table), 0U);

    DIBSECTION section{};
    EXPECT_EQ(GetObjectA(bitmap, sizeof section, &section), static_cast<INT>(sizeof section));
    EXPECT_EQ(section.dsBm.bmBits, bits);
    EXPECT_EQ(section.dsBm.bmWidthBytes, 4);
    // Selected bitmaps belong to one context, and deleting one waits until it is replaced.
    const HDC other = CreateCompatibleDC(dc);
    EXPECT_EQ(SelectObject(other, bitmap), nullptr);
    EXPECT_TRUE(DeleteObject(bitmap));
    SetPixel(dc, 1, 1, red);
    EXPECT_EQ(SelectObject(dc, old), nullptr == old ? nullptr : bitmap);
    DeleteDC(other);
    DeleteDC(dc);
}

// ---- Brushes -------------------------------------------------------------------------------------------

TEST(Brushes, HatchesRepeatFromTheUpperLeftCorner)
{
    raster_canvas canvas(16, 8);
    selected<HBRUSH> brush(canvas, CreateHatchBrush(HS_FDIAGONAL, black));
    SetBkMode(canvas, TRANSPARENT);
    PatBlt(canvas, 0, 0, 8, 8, PATCOPY);
    SetBkMode(canvas, OPAQUE);
    SetBkColor(canvas, red);
    PatBlt(canvas, 8, 0, 8, 8, PATCOPY);
    EXPECT_EQ(canvas.art(), R"(
#.......#rrrrrrr
.#......r#rrrrrr
..#.....rr#rrrrr
...#....rrr#rrrr
....#...rrrr#rrr
.....#..rrrrr#rr
......#.rrrrrr#r
.......#rrrrrrr#)");
}

TEST(Brushes, MonochromePatternsTakeTheContextsColours)
{
    const std::uint8_t rows[] = {0x80, 0, 0x40, 0};
    const HBITMAP pattern = CreateBitmap(3, 2, 1, 1, rows);
    raster_canvas canvas(6, 3);
    selected<HBRUSH> brush(canvas, CreatePatternBrush(pattern));
    DeleteObject(pattern);
    SetTextColor(canvas, blue);
    SetBkColor(canvas, green);
    SelectObject(canvas, GetStockObject(NULL_PEN));
    Rectangle(canvas, 0, 0, 7, 4);
    EXPECT_EQ(canvas.art(), "\ngbbgbb\nbgbbgb\ngbbgbb");
}

TEST(Brushes, PackedBitmapsRepeatUpright)
{
    struct {
        small_dib dib;
        std::uint8_t bits[8];
    } packed{dib(2, 2, 8), {2, 1, 0, 0, 0, 1, 0, 0}};
    raster_canvas canvas(4, 3);
    selected<HBRUSH> brush(canvas, CreateDIBPatternBrushPt(&packed, DIB_RGB_COLORS));
    PatBlt(canvas, 0, 0, 4, 3, PATCOPY);
    EXPECT_EQ(canvas.art(), "\n#.#.\nr.r.\n#.#.");
}

TEST(Brushes, ColoursThatATableLacksAreMixed)
{
    raster_canvas canvas(64, 64, 1);
    const auto brush = use_brush(canvas, RGB(64, 64, 64));
    PatBlt(canvas, 0, 0, 64, 64, PATCOPY);
    const std::string art = canvas.art();
    EXPECT_NEAR(static_cast<double>(std::count(art.begin(), art.end(), '.')), 64 * 64 / 4.0, 64.0);
    // Pens are never mixed.
    canvas.clear();
    const auto pen = use_pen(canvas, PS_SOLID, 1, RGB(64, 64, 64));
    MoveToEx(canvas, 0, 0, nullptr);
    LineTo(canvas, 64, 0);
    EXPECT_EQ(canvas.art().substr(0, 65), "\n" + std::string(64, '#'));
}

} // namespace
} // namespace klv
