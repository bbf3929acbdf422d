#include "klv/gdi/state/context.h"

#include "tests/gdi/raster_canvas.h"

#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using gdi::box;

HPALETTE palette_of(const std::vector<PALETTEENTRY>& entries)
{
    std::vector<std::uint32_t> memory(entries.size() + 1);
    auto* log = reinterpret_cast<LOGPALETTE*>(memory.data());
    log->palVersion = LOGPALETTE_VERSION;
    log->palNumEntries = static_cast<WORD>(entries.size());
    std::memcpy(log->palPalEntry, entries.data(), entries.size() * sizeof(PALETTEENTRY));
    return CreatePalette(log);
}

/// Everything that SaveDC keeps, so that states can be compared.
auto everything_of(const gdi::drawing_state& s)
{
    const box clip = s.clip.extents();
    return std::tuple(s.pen, s.brush, s.font, s.bitmap, s.palette, s.map.mode, s.map.window_origin,
        s.map.window_extent, s.map.viewport_origin, s.map.viewport_extent, s.position, s.text_colour,
        s.background_colour, s.background_mode, s.rop2, s.fill_mode, s.stretch_mode, s.text_align,
        s.character_extra, s.justify_extra, s.justify_count, s.clipped, clip.x1, clip.y1, clip.x2, clip.y2);
}

TEST(Contexts, SaveAndRestoreEveryAttribute)
{
    raster_canvas canvas(4, 4);
    const auto state = [&] { return everything_of(gdi::find_context(canvas)->state); };
    const HPEN pen = CreatePen(PS_SOLID, 3, red);
    const HBITMAP bitmap = CreateBitmap(2, 2, 1, 32, nullptr);
    const HFONT font = CreateFontIndirectA(std::make_unique<LOGFONTA>().get());
    const PALETTEENTRY entry{1, 2, 3, 0};
    const HPALETTE palette = palette_of({entry});
    const std::function<void()> changes[] = {
        [&] { SelectObject(canvas, pen); },
        [&] { SelectObject(canvas, GetStockObject(BLACK_BRUSH)); },
        [&] { SelectObject(canvas, font); },
        [&] { SelectObject(canvas, bitmap); },
        [&] { SelectPalette(canvas, palette, FALSE); },
        [&] { SetMapMode(canvas, MM_TWIPS); },
        [&] { SetMapMode(canvas, MM_ANISOTROPIC); },
        [&] { SetWindowOrgEx(canvas, 5, 6, nullptr); },
        [&] { SetWindowExtEx(canvas, 5, 6, nullptr); },
        [&] { OffsetViewportOrgEx(canvas, 5, 6, nullptr); },
        [&] { ScaleViewportExtEx(canvas, 3, 1, 5, 1, nullptr); },
        [&] { MoveToEx(canvas, 9, 9, nullptr); },
        [&] { SetTextColor(canvas, green); },
        [&] { SetBkColor(canvas, blue); },
        [&] { SetBkMode(canvas, TRANSPARENT); },
        [&] { SetROP2(canvas, R2_XORPEN); },
        [&] { SetPolyFillMode(canvas, WINDING); },
        [&] { SetStretchBltMode(canvas, HALFTONE); },
        [&] { SetTextAlign(canvas, TA_RIGHT); },
        [&] { SetTextCharacterExtra(canvas, 3); },
        [&] { SetTextJustification(canvas, 4, 2); },
        [&] { IntersectClipRect(canvas, 1, 1, 3, 3); },
        [&] { OffsetClipRgn(canvas, 2, 0); },
    };
    const auto first = state();
    auto last = first;
    INT level = 0;
    for (const auto& change : changes) {
        EXPECT_EQ(SaveDC(canvas), ++level);
        change();
        EXPECT_NE(state(), last) << level;
        // Back and forth: every single change is taken back.
        EXPECT_TRUE(RestoreDC(canvas, -1)) << level;
        EXPECT_EQ(state(), last) << level;
        EXPECT_EQ(SaveDC(canvas), level);
        change();
        last = state();
    }
    EXPECT_FALSE(RestoreDC(canvas, level + 1));
    EXPECT_FALSE(RestoreDC(canvas, 0));
    EXPECT_FALSE(RestoreDC(canvas, -level - 1));
    EXPECT_TRUE(RestoreDC(canvas, 1));
    EXPECT_EQ(state(), first);
    EXPECT_FALSE(RestoreDC(canvas, -1));
    // The bitmap is free for another context again.
    const HDC other = CreateCompatibleDC(nullptr);
    EXPECT_NE(SelectObject(other, bitmap), nullptr);
    DeleteDC(other);
    for (const HGDIOBJ object : std::initializer_list<HGDIOBJ>{pen, bitmap, font, palette})
        DeleteObject(object);
}

TEST(Contexts, AnswerTheirCapabilities)
{
    const HDC screen = GetDC(nullptr);
    EXPECT_EQ(GetDeviceCaps(screen, TECHNOLOGY), DT_RASDISPLAY);
    EXPECT_EQ(GetDeviceCaps(screen, LOGPIXELSX), 96);
    EXPECT_EQ(GetDeviceCaps(screen, BITSPIXEL), 32);
    EXPECT_EQ(GetDeviceCaps(screen, NUMCOLORS), -1);
    EXPECT_EQ(GetDeviceCaps(screen, HORZRES), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(ReleaseDC(nullptr, screen), 1);
    EXPECT_EQ(GetDeviceCaps(screen, LOGPIXELSX), 0);

    raster_canvas large(3000, 1, 1);
    EXPECT_EQ(GetDeviceCaps(large, HORZRES), 3000);
    EXPECT_EQ(GetDeviceCaps(large, BITSPIXEL), 1);
    EXPECT_EQ(GetDeviceCaps(large, NUMCOLORS), 2);
    EXPECT_TRUE(SetDeviceResolution(large, 384));
    EXPECT_FALSE(SetDeviceResolution(large, 0));
    EXPECT_EQ(GetDeviceCaps(large, LOGPIXELSY), 384);
    const HDC like = CreateCompatibleDC(large);
    EXPECT_EQ(GetDeviceCaps(like, LOGPIXELSX), 384);
    SetMapMode(like, MM_LOENGLISH);
    POINT inch{100, -100};
    LPtoDP(like, &inch, 1);
    EXPECT_EQ(inch, (POINT{384, 384}));
    DeleteDC(like);
    EXPECT_EQ(CreateDCA("PRINTER", nullptr, nullptr, nullptr), nullptr);
}

TEST(Contexts, MapCoordinatesBothWaysAndSaturate)
{
    raster_canvas canvas(1, 1);
    SetMapMode(canvas, MM_ANISOTROPIC);
    EXPECT_FALSE(SetWindowExtEx(canvas, 0, 5, nullptr));
    SetWindowExtEx(canvas, 1000, -500, nullptr);
    SetViewportExtEx(canvas, 333, 250, nullptr);
    SetWindowOrgEx(canvas, 10, 20, nullptr);
    SetViewportOrgEx(canvas, -7, 9, nullptr);
    struct {
        POINT logical, device;
    } cases[] = {{{10, 20}, {-7, 9}}, {{1010, -480}, {326, 259}}, {{12, 21}, {-6, 8}}, {{8, 19}, {-8, 10}}};
    for (const auto& c : cases) {
        POINT p = c.logical;
        LPtoDP(canvas, &p, 1);
        EXPECT_EQ(p, c.device) << c.logical.x << ", " << c.logical.y;
    }
    POINT back{326, 259};
    DPtoLP(canvas, &back, 1);
    EXPECT_EQ(back, (POINT{1010, -480}));

    SetWindowExtEx(canvas, 1, 1, nullptr);
    SetViewportExtEx(canvas, INT32_MAX, INT32_MIN, nullptr);
    POINT far{INT32_MIN, INT32_MIN};
    LPtoDP(canvas, &far, 1);
    EXPECT_EQ(far, (POINT{INT32_MIN, INT32_MAX}));

    // Isotropic mapping keeps both scales alike: the larger viewport extent shrinks.
    SetMapMode(canvas, MM_ISOTROPIC);
    SetWindowExtEx(canvas, 100, 100, nullptr);
    SetViewportExtEx(canvas, 400, -200, nullptr);
    SIZE extent{};
    GetViewportExtEx(canvas, &extent);
    EXPECT_EQ(extent, (SIZE{200, -200}));
}

TEST(Contexts, ScreenKeepsWhatIsDrawn)
{
    ASSERT_TRUE(SetScreenSize(64, 48));
    const HDC first = GetDC(nullptr);
    SetPixel(first, 3, 4, red);
    ReleaseDC(nullptr, first);
    const HDC second = GetDC(nullptr);
    EXPECT_EQ(GetPixel(second, 3, 4), red);
    SetScreenSize(32, 16);
    EXPECT_EQ(GetPixel(second, 3, 4), black);
    EXPECT_EQ(GetPixel(second, 40, 4), CLR_INVALID);
    ReleaseDC(nullptr, second);
    SetScreenSize(1280, 1024);
}

// ---- Objects -------------------------------------------------------------------------------------------

TEST(Objects, HandlesOfDeletedObjectsAreNotMistaken)
{
    const std::size_t before = gdi::object_count();
    const HPEN pen = CreatePen(PS_SOLID, 1, red);
    EXPECT_EQ(GetObjectType(pen), OBJ_PEN);
    LOGPEN log{};
    EXPECT_EQ(GetObjectA(pen, 0, nullptr), static_cast<INT>(sizeof log));
    EXPECT_EQ(GetObjectA(pen, sizeof log, &log), static_cast<INT>(sizeof log));
    EXPECT_EQ(log.lopnColor, red);
    EXPECT_TRUE(DeleteObject(pen));
    const HPEN next = CreatePen(PS_SOLID, 1, blue);
    EXPECT_NE(pen, next);
    EXPECT_EQ(GetObjectType(pen), 0U);
    EXPECT_FALSE(DeleteObject(pen));
    // A handle of one kind does not pass for another.
    EXPECT_EQ(GetRgnBox(reinterpret_cast<HRGN>(next), nullptr), ERROR_REGION);
    EXPECT_FALSE(DeleteDC(reinterpret_cast<HDC>(next)));
    DeleteObject(next);
    EXPECT_EQ(gdi::object_count(), before);

    const HGDIOBJ stock = GetStockObject(BLACK_PEN);
    EXPECT_TRUE(DeleteObject(stock));
    EXPECT_EQ(GetObjectType(stock), OBJ_PEN);
    EXPECT_EQ(GetStockObject(99), nullptr);
    EXPECT_FALSE(DeleteObject(nullptr));
}

TEST(Objects, DeletedWhileSelectedTheyDrawUntilReplaced)
{
    raster_canvas canvas(2, 1);
    const HBRUSH brush = CreateSolidBrush(red);
    const HGDIOBJ old = SelectObject(canvas, brush);
    EXPECT_TRUE(DeleteObject(brush));
    PatBlt(canvas, 0, 0, 1, 1, PATCOPY);
    EXPECT_EQ(canvas.art(), "\nr.");
    SelectObject(canvas, old);
    EXPECT_EQ(SelectObject(canvas, brush), nullptr);
    EXPECT_EQ(GetCurrentObject(canvas, OBJ_BRUSH), old);
}

TEST(Objects, SelectingARegionClips)
{
    raster_canvas canvas(3, 1);
    const HRGN region = CreateRectRgn(1, 0, 2, 1);
    SelectObject(canvas, region);
    DeleteObject(region);
    PatBlt(canvas, 0, 0, 3, 1, BLACKNESS);
    SelectClipRgn(canvas, nullptr);
    EXPECT_EQ(canvas.art(), "\n.#.");
}

TEST(Objects, ImpossibleBitmapsAreRefused)
{
    EXPECT_EQ(CreateBitmap(0, 1, 1, 1, nullptr), nullptr);
    EXPECT_EQ(CreateBitmap(1, -1, 1, 32, nullptr), nullptr);
    EXPECT_EQ(CreateBitmap(1 << 20, 1 << 20, 1, 32, nullptr), nullptr);
    EXPECT_EQ(CreateBitmap(1, 1, 1, 5, nullptr), nullptr);
    EXPECT_EQ(CreateBitmap(1, 1, 4, 1, nullptr), nullptr);
    EXPECT_EQ(CreateCompatibleBitmap(nullptr, 1, 1), nullptr);
}

// ---- Palettes and colours ------------------------------------------------------------------------------

TEST(Palettes, ChangeWhatIndicesMean)
{
    const HPALETTE palette = palette_of({{0, 0, 0, 0}, {250, 10, 10, PC_RESERVED}, {10, 10, 250, 0}});
    const auto& entries = gdi::find<gdi::palette_object>(palette)->entries;
    const PALETTEENTRY greens[] = {{0, 200, 0, PC_RESERVED}, {0, 255, 0, 0}};
    EXPECT_TRUE(AnimatePalette(palette, 1, 2, greens));
    EXPECT_EQ(entries[1], greens[0]);
    EXPECT_EQ(entries[2], (PALETTEENTRY{10, 10, 250, 0})); // not reserved: stayed
    EXPECT_EQ(SetPaletteEntries(palette, 2, 9, greens), 1U);
    EXPECT_TRUE(ResizePalette(palette, 4));
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[2], greens[0]);
    EXPECT_EQ(entries[3], (PALETTEENTRY{0, 0, 0, 0}));
    EXPECT_FALSE(AnimatePalette(static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), 0, 1, greens));

    // Colours can be given by index.
    raster_canvas canvas(1, 1);
    SelectPalette(canvas, palette, FALSE);
    SetPixel(canvas, 0, 0, PALETTEINDEX(2));
    EXPECT_EQ(GetPixel(canvas, 0, 0), RGB(0, 200, 0));
    DeleteObject(palette);
}

TEST(Palettes, RealisingFillsTheScreensFreeEntries)
{
    ASSERT_TRUE(SetScreenDepth(8));
    const HDC screen = GetDC(nullptr);
    EXPECT_EQ(GetDeviceCaps(screen, SIZEPALETTE), 256);
    EXPECT_EQ(GetNearestColor(screen, RGB(250, 3, 3)), red); // a static colour
    const HPALETTE palette = palette_of({{250, 3, 3, 0}, {255, 0, 0, 0}, {255, 0, 0, PC_NOCOLLAPSE}});
    SelectPalette(screen, palette, FALSE);
    EXPECT_EQ(RealizePalette(screen), 2U);
    EXPECT_EQ(RealizePalette(screen), 0U);
    EXPECT_EQ(GetNearestColor(screen, RGB(250, 3, 3)), RGB(250, 3, 3));
    PALETTEENTRY entries[2] = {};
    EXPECT_EQ(GetSystemPaletteEntries(screen, 10, 2, entries), 2U);
    EXPECT_EQ(entries[0], (PALETTEENTRY{250, 3, 3, 0}));
    EXPECT_EQ(entries[1], (PALETTEENTRY{255, 0, 0, 0}));
    ReleaseDC(nullptr, screen);
    DeleteObject(palette);
    SetScreenDepth(32);
}

TEST(Palettes, NearestColoursFollowTheSurface)
{
    raster_canvas deep(1, 1);
    raster_canvas sixteen(1, 1, 16);
    raster_canvas flat(1, 1, 1);
    const COLORREF odd = RGB(160, 232, 203);
    EXPECT_EQ(GetNearestColor(deep, odd), odd);
    EXPECT_EQ(GetNearestColor(flat, odd), white);
    const COLORREF near = GetNearestColor(sixteen, odd);
    EXPECT_EQ(near, SetPixel(sixteen, 0, 0, odd));
    EXPECT_EQ(near, GetNearestColor(sixteen, near));
    EXPECT_NEAR(GetRValue(near), 160, 8);
}

} // namespace
} // namespace klv
