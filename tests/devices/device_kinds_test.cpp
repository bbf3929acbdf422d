#include "klv/base/memory.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/devices/display_bitmap.h"
#include "klv/devices/memory_device.h"
#include "klv/devices/screen.h"

#include "tests/devices/test_surface.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::drawing;
using test::fill;
using test::no_line;
using test::surface;

// ---- The screen ----------------------------------------------------------------------------------------

TEST(ScreenPalette, SpreadsItsLevelsByGamma)
{
    const gamma_levels default_levels{
        0, 37, 60, 81, 99, 116, 133, 148, 163, 177, 191, 204, 217, 230, 243, 255};
    EXPECT_EQ(levels_for_gamma(14), default_levels);
    EXPECT_EQ(levels_for_gamma(15), default_levels);
    EXPECT_EQ(levels_for_gamma(25), default_levels);
    EXPECT_EQ(levels_for_gamma(5), default_levels);
    const gamma_levels linear = levels_for_gamma(10);
    for (std::size_t i = 0; i < linear.size(); ++i)
        EXPECT_EQ(linear[i], 17 * i);
    const gamma_levels dark = levels_for_gamma(6);
    EXPECT_EQ((std::array{dark[0], dark[1], dark[2], dark[3]}), (std::array<std::uint8_t, 4>{0, 3, 9, 17}));
}

TEST(ScreenPalette, ReadsGammaAsDigitPointDigit)
{
    const struct {
        const char* text;
        int tenths;
    } cases[] = {{"1.4", 14}, {"0.6", 6}, {"2.2", 22}, {"1.9", 19}, {"2.5", 14}, {"0.5", 14}, {"3.0", 14},
        {"1,0", 14}, {"1.0 ", 14}, {"", 14}};
    for (const auto& c : cases)
        EXPECT_EQ(gamma_tenths_from_text(c.text), c.tenths) << c.text;
}

TEST(ScreenPalette, HoldsStaticsGreysAndTheCube)
{
    const palette_256 palette = make_screen_palette(levels_for_gamma(10));
    EXPECT_EQ(palette.version, 0x300);
    const struct {
        std::size_t index;
        COLORREF colour;
    } cases[] = {
        {0, RGB(0, 0, 0)},
        {7, RGB(192, 192, 192)},
        {9, RGB(166, 202, 240)},
        {10, RGB(1, 0, 0)},
        {11, RGB(2, 0, 0)},
        {12, RGB(1, 1, 1)},
        {13, RGB(17, 17, 17)},
        {19, RGB(119, 119, 119)},
        {20, RGB(0, 0, 0)},
        {20 + 36 + 12 + 3, RGB(51, 102, 153)},
        {234, RGB(255, 255, 204)},
        {236, RGB(136, 136, 136)},
        {244, RGB(254, 254, 254)},
        {245, RGB(157, 233, 199)},
        {246, RGB(255, 251, 240)},
        {255, RGB(255, 255, 255)},
        // What would duplicate a static colour is a step darker: white and pure red of the cube.
        {235, RGB(254, 254, 254)},
        {200, RGB(254, 0, 0)},
    };
    for (const auto& c : cases) {
        const PALETTEENTRY& e = palette.entries[c.index];
        EXPECT_EQ(RGB(e.peRed, e.peGreen, e.peBlue), c.colour) << c.index;
    }
    EXPECT_TRUE(std::ranges::all_of(palette.entries, [](const PALETTEENTRY& e) { return e.peFlags == 4; }));
}

TEST(Screen, AnswersItsMeasuresAndColours)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_EQ(vSCREEN::Valid(), 1);
    EXPECT_EQ(screen.Size().Width(), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(screen.Colour(vSCREEN_LIGHT_GREY), RGB(224, 224, 224));
    constexpr int window_text = 8;
    EXPECT_EQ(screen.Colour(static_cast<vSCREENCOLOUR>(window_text)), GetSysColor(window_text));
    EXPECT_EQ(screen.Pattern().header.biSizeImage, 64U);
    EXPECT_EQ(screen.Pattern().palette_indices[255], 255);
    EXPECT_NE(vSCREEN::Palette(), nullptr);
}

TEST(Screen, UsesThePaletteWith256ColoursOnly)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_EQ(screen.PaletteEnabled(), 0);
    screen.EnablePalette(1);
    EXPECT_EQ(screen.PaletteEnabled(), 0);

    SetScreenDepth(8);
    screen.ReInitialize();
    EXPECT_EQ(screen.GetNoColours(), 256);
    EXPECT_EQ(screen.PaletteEnabled(), 1);
    EXPECT_EQ(screen.UpdatePalette(screen.GetWinDC()), 1);
    screen.ReleaseWinDC();
    screen.EnablePalette(0);
    EXPECT_EQ(screen.PaletteEnabled(), 0);
    SetScreenDepth(32);
    screen.ReInitialize();
    EXPECT_EQ(screen.PaletteEnabled(), 0);
}

TEST(Screen, KeepsItsDrawModeFromContextToContext)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    screen.DrawMode(vDRAW_XOR);
    EXPECT_EQ(GetROP2(screen.GetWinDC()), R2_XORPEN);
    screen.DrawMode(vDRAW_COPY);
    EXPECT_EQ(GetROP2(screen.GetWinDC()), R2_COPYPEN);
    screen.ReleaseWinDC();
    screen.ReleaseWinDC();
}

// ---- The memory device ---------------------------------------------------------------------------------

TEST(MemoryDevice, StartsWhiteAndKeepsWhatIsDrawn)
{
    vMEMDEVICE device(10, 4);
    const BITMAPINFO* dib = device.GetDIB();
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(dib->bmiHeader.biBitCount, 8);
    EXPECT_EQ(dib->bmiHeader.biClrUsed, 256U);
    EXPECT_EQ(dib->bmiHeader.biSizeImage, 48U);
    const RGBQUAD white = dib->bmiColors[palette_white];
    EXPECT_EQ(RGB(white.rgbRed, white.rgbGreen, white.rgbBlue), RGB(254, 254, 254));
    const auto* pixels = reinterpret_cast<const std::uint8_t*>(dib) + 40 + 1024;
    EXPECT_TRUE(std::all_of(pixels, pixels + 48, [](std::uint8_t p) { return p == palette_white; }));

    device.LineSpec(no_line());
    device.FillSpec(fill(vFILL_SOLID, vCOLOUR(255, 0, 0)));
    device.DrawRect(vRECT(2, 0, 4, 1));
    dib = device.GetDIB();
    const auto* top_row = reinterpret_cast<const std::uint8_t*>(dib) + 40 + 1024 + 36;
    EXPECT_EQ(top_row[1], palette_white);
    const RGBQUAD red = dib->bmiColors[top_row[2]];
    EXPECT_EQ(RGB(red.rgbRed, red.rgbGreen, red.rgbBlue), RGB(255, 0, 0));
    EXPECT_EQ(top_row[2], top_row[3]);
    EXPECT_EQ(top_row[4], palette_white);
}

TEST(MemoryDevice, HoldsItsContextWhileItIsReferenced)
{
    vMEMDEVICE device(4, 4);
    const HDC dc = device.GetWinDC();
    EXPECT_EQ(device.GetWinDC(), dc);
    device.ReleaseWinDC();
    EXPECT_NE(GetDeviceCaps(dc, BITSPIXEL), 0);
    device.ReleaseWinDC();
    EXPECT_EQ(GetDeviceCaps(dc, BITSPIXEL), 0) << "deleted with the last reference";
}

TEST(MemoryDevice, HasNothingBeforeItIsPrepared)
{
    vMEMDEVICE device;
    EXPECT_EQ(device.GetDIB(), nullptr);
    EXPECT_EQ(device.GetWinDC(), nullptr);
    device.DrawRect(vRECT(0, 0, 5, 5));
    EXPECT_EQ(device.Prepare(0, 5), 0);
    EXPECT_EQ(device.Prepare(5, 5), 1);
    EXPECT_NE(device.GetDIB(), nullptr);
}

// ---- The off-screen bitmap -----------------------------------------------------------------------------

TEST(DisplayBitmap, StartsWhiteAtEveryDepth)
{
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
        vDISPLAYBMP bitmap(5, 3, 0, bits, bits == 8);
        EXPECT_EQ(bitmap.DeviceType(), vDEV_BITMAP);
        EXPECT_EQ(bitmap.Size(), vRECT(0, 0, 5, 3));
        const COLORREF corner = klv::GetPixel(bitmap.GetWinDC(), 4, 2);
        EXPECT_GE(GetRValue(corner), 248) << bits;
        EXPECT_EQ(GetDeviceCaps(bitmap.GetWinDC(), BITSPIXEL), bits);
    }
}

TEST(DisplayBitmap, CopiesIntoAPackedBitmap)
{
    vDISPLAYBMP bitmap(3, 2, 0, 24);
    SetPixel(bitmap.GetWinDC(), 0, 0, RGB(1, 2, 3));
    BITMAPINFO* const dib = bitmap.CopyIntoDIB();
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(dib->bmiHeader.biWidth, 3);
    EXPECT_EQ(dib->bmiHeader.biSizeImage, 24U);
    const std::uint8_t top_left[] = {3, 2, 1};
    EXPECT_EQ(std::memcmp(reinterpret_cast<const std::uint8_t*>(dib) + 40 + 12, top_left, 3), 0);
    vMemFree(dib);
}

TEST(DisplayBitmap, IsCopiedOrStretchedOntoADevice)
{
    surface pixels(8, 4);
    vDEVICE device(pixels.dc());
    vDISPLAYBMP bitmap(2, 2, 0, 32);
    SetPixel(bitmap.GetWinDC(), 0, 0, RGB(255, 0, 0));
    SetPixel(bitmap.GetWinDC(), 1, 1, RGB(0, 0, 255));
    EXPECT_EQ(bitmap.QyIsRendered(), vBMP_NOT_RENDERED);
    EXPECT_EQ(bitmap.Draw(device, vRECT(0, 0, 2, 2)), 1);
    EXPECT_EQ(bitmap.Draw(device, vRECT(4, 0, 8, 4)), 1);
    EXPECT_EQ(bitmap.QyIsRendered(), vBMP_RENDERED);
    EXPECT_EQ(pixels.art(), drawing(R"(
        R...RR..
        .B..RR..
        ......BB
        ......BB
    )"));
}

TEST(DisplayBitmap, DrawsWithinTheClipGiven)
{
    surface pixels(6, 3);
    vDEVICE device(pixels.dc());
    vDISPLAYBMP bitmap(6, 3, 0, 32);
    PatBlt(bitmap.GetWinDC(), 0, 0, 6, 3, BLACKNESS);
    const vRECT clip(1, 1, 3, 2);
    bitmap.Draw(device, vRECT(0, 0, 6, 3), &clip);
    EXPECT_EQ(pixels.art(), drawing(R"(
        ......
        .##...
        ......
    )"));
    bitmap.Draw(device, vRECT(0, 0, 6, 3));
    EXPECT_EQ(pixels.count(0), 18) << "the device's clip area is as before";
}

// A transparent bitmap shows what was drawn on it and leaves the rest of the target alone.
TEST(DisplayBitmap, IsSeeThroughWhereNothingWasDrawn)
{
    for (const int bits : {4, 8, 16, 24, 32}) {
        surface pixels(4, 2);
        PatBlt(pixels.dc(), 3, 0, 1, 2, BLACKNESS);
        vDEVICE device(pixels.dc());
        vDISPLAYBMP bitmap(4, 2, 1, bits, bits == 8);
        EXPECT_EQ(bitmap.IsTransparent(), 1);
        EXPECT_EQ(bitmap.IsDualSurfaced(), bits == 4);
        for (const auto which : {vSURFACE_FIRST, vSURFACE_SECOND}) {
            if (!bitmap.SwitchSurface(which))
                continue;
            SetPixel(bitmap.GetWinDC(), 1, 0, RGB(255, 0, 0));
            SetPixel(bitmap.GetWinDC(), 3, 1, RGB(0, 0, 255));
        }
        ASSERT_EQ(bitmap.Draw(device, vRECT(0, 0, 4, 2)), 1) << bits;
        EXPECT_EQ(pixels.at(0, 0), 0xFFFFFFU) << bits;
        EXPECT_EQ(pixels.at(3, 0), 0U) << bits;
        EXPECT_GE(pixels.at(1, 0) >> 16, 248U) << bits;
        EXPECT_LE(pixels.at(1, 0) & 0xFFFF, 0x0700U) << bits;
        EXPECT_GE(pixels.at(3, 1) & 0xFF, 248U) << bits;
    }
}

TEST(DisplayBitmap, MergesAFadeTowardsWhite)
{
    vDISPLAYBMP bitmap(2, 1, 0, 24);
    PatBlt(bitmap.GetWinDC(), 0, 0, 2, 1, BLACKNESS);
    vDISPLAYBMP fade(2, 1, 0, 8);
    PatBlt(fade.GetWinDC(), 0, 0, 2, 1, BLACKNESS);
    SetPixel(fade.GetWinDC(), 1, 0, RGB(128, 128, 128));
    EXPECT_EQ(bitmap.Merge(fade), 1);
    EXPECT_EQ(klv::GetPixel(bitmap.GetWinDC(), 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(klv::GetPixel(bitmap.GetWinDC(), 1, 0), RGB(128, 128, 128));
    vDISPLAYBMP other_size(3, 1, 0, 8);
    EXPECT_EQ(bitmap.Merge(other_size), 0);
    vDISPLAYBMP few_colours(2, 1, 0, 8);
    EXPECT_EQ(few_colours.Merge(fade), 0);
}

TEST(DisplayBitmap, TakesTheSizeOfItsContextUpToTheLimit)
{
    const vRECT destination(0, 0, 400, 100);
    oDIBCONTEXT context(400, 100, &destination, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    EXPECT_EQ(vDISPLAYBMP(context, nullptr, 0, 0).Size(), vRECT(0, 0, 400, 100));
    EXPECT_EQ(vDISPLAYBMP(context, nullptr, 0, 200).Size(), vRECT(0, 0, 200, 50));
}

TEST(DisplayBitmap, HandsItsBitmapOut)
{
    vDISPLAYBMP bitmap(2, 2, 0, 32);
    const HBITMAP handle = bitmap.RemoveHBitmap();
    BITMAP description{};
    EXPECT_NE(GetObjectA(handle, sizeof description, &description), 0);
    EXPECT_EQ(description.bmWidth, 2);
    EXPECT_EQ(bitmap.GetWinDC(), nullptr);
    EXPECT_EQ(bitmap.CopyIntoDIB(), nullptr);
    EXPECT_EQ(bitmap.RemoveHBitmap(), nullptr);
    DeleteObject(handle);
}

TEST(DisplayBitmap, RefusesImpossibleSizes)
{
    const struct {
        int width, height, bits;
    } cases[] = {{0, 5, 32}, {5, -1, 32}, {40000, 5, 32}, {32767, 32767, 32}, {5, 5, 7}};
    for (const auto& c : cases) {
        vDISPLAYBMP bitmap(c.width, c.height, 0, c.bits);
        EXPECT_EQ(bitmap.Size(), vRECT(0, 0, 0, 0)) << c.width << ' ' << c.height << ' ' << c.bits;
        EXPECT_EQ(bitmap.GetWinDC(), nullptr);
        bitmap.DrawRect(vRECT(0, 0, 3, 3));
    }
}

TEST(DisplayBitmap, ShowsACrossedFrameForWhatItCannotGrab)
{
    vDISPLAYBMP bitmap(40, 20, 0, 32);
    const vRECT destination(0, 0, 40, 20);
    oDIBCONTEXT context(40, 20, &destination, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    EXPECT_EQ(bitmap.GrabScreenImage(context), 1);
    const HDC dc = bitmap.GetWinDC();
    EXPECT_EQ(klv::GetPixel(dc, 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(klv::GetPixel(dc, 20, 4), RGB(255, 255, 255));
}

} // namespace
} // namespace klv
