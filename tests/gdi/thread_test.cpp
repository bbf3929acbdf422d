#include "klv/gdi/state/objects.h"

#include "tests/gdi/raster_canvas.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

/// Runs body(number) on several threads that start together.
template <class Body> void on_threads(unsigned count, Body body)
{
    std::atomic<unsigned> waiting = count;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0)
                std::this_thread::yield();
            body(i);
        });
    for (std::thread& t : threads)
        t.join();
}

// The table grows through several of its chunks while others look up, and slots go from thread to thread.
TEST(Threads, HandlesStayTheirOwnWhileTheTableGrows)
{
    const std::size_t before = gdi::object_count();
    std::atomic<int> mistaken = 0;
    on_threads(4, [&](unsigned number) {
        const COLORREF mine = RGB(number, 1, 2);
        const auto is_mine = [mine](HGDIOBJ pen) {
            LOGPEN log{};
            return GetObjectA(pen, sizeof log, &log) == static_cast<INT>(sizeof log) && log.lopnColor == mine;
        };
        for (int round = 0; round < 20; ++round) {
            std::vector<HPEN> pens;
            for (int i = 0; i < 500; ++i)
                pens.push_back(CreatePen(PS_SOLID, 0, mine));
            for (const HPEN pen : pens)
                mistaken += !is_mine(pen);
            for (const HPEN pen : pens)
                mistaken += !DeleteObject(pen);
            for (const HPEN pen : pens)
                mistaken += is_mine(pen) || DeleteObject(pen);
        }
    });
    EXPECT_EQ(mistaken, 0);
    EXPECT_EQ(gdi::object_count(), before);
}

std::string drawn_by_one_thread(WORD bits)
{
    raster_canvas canvas(60, 40, bits);
    SetMapMode(canvas, MM_ANISOTROPIC);
    SetViewportExtEx(canvas, 2, 2, nullptr);
    const POINT star[] = {{15, 1}, {24, 18}, {3, 7}, {27, 7}, {6, 18}};
    const auto pen = use_pen(canvas, PS_SOLID, 2, RGB(200, 20, 20));
    const selected<HBRUSH> brush(canvas, CreateHatchBrush(HS_DIAGCROSS, blue));
    Polygon(canvas, star, 5);
    const auto solid = use_brush(canvas, RGB(33, 99, 200));
    Ellipse(canvas, 2, 2, 9, 9);
    Arc(canvas, 10, 2, 28, 18, 28, 10, 10, 10);
    const HRGN clip = CreateEllipticRgn(10, 0, 60, 40);
    SelectClipRgn(canvas, clip);
    DeleteObject(clip);
    StretchBlt(canvas, 12, 6, 15, 12, canvas, 0, 0, 10, 8, SRCINVERT);
    TextOutA(canvas, 1, 4, "g&Q", 3);
    return canvas.art();
}

TEST(Threads, DrawTheSamePixelsSideBySide)
{
    for (const WORD bits : {WORD{1}, WORD{8}, WORD{32}}) {
        const std::string alone = drawn_by_one_thread(bits);
        std::atomic<int> different = 0;
        on_threads(4, [&](unsigned) {
            for (int i = 0; i < 10; ++i)
                different += drawn_by_one_thread(bits) != alone;
        });
        EXPECT_EQ(different, 0) << bits;
    }
}

TEST(Threads, TakeTurnsOnTheScreen)
{
    ASSERT_TRUE(SetScreenSize(64, 48));
    ASSERT_TRUE(SetScreenDepth(8));
    std::atomic<int> wrong = 0;
    on_threads(4, [&](unsigned number) {
        const auto y = static_cast<INT>(number);
        const HDC screen = GetDC(nullptr);
        const HBITMAP compatible = CreateCompatibleBitmap(screen, 4, 4);
        const HDC memory = CreateCompatibleDC(screen);
        const HGDIOBJ old = SelectObject(memory, compatible);
        for (INT x = 0; x < 64; ++x) {
            SetPixel(screen, x, y, red);
            wrong += GetPixel(screen, x, y) != red;
            PatBlt(memory, 0, 0, 4, 4, WHITENESS);
            BitBlt(screen, x, y, 1, 1, memory, 0, 0, SRCCOPY);
            wrong += GetPixel(screen, x, y) != white;
            RealizePalette(screen);
        }
        SelectObject(memory, old);
        DeleteDC(memory);
        DeleteObject(compatible);
        ReleaseDC(nullptr, screen);
    });
    EXPECT_EQ(wrong, 0);
    SetScreenDepth(32);
    SetScreenSize(1280, 1024);
}

// What every fresh memory context has selected is one object, which none of them can change for the others.
TEST(Threads, TheStockBitmapIsNobodys)
{
    const HDC first = CreateCompatibleDC(nullptr);
    const HDC second = CreateCompatibleDC(nullptr);
    PatBlt(first, 0, 0, 1, 1, WHITENESS);
    EXPECT_EQ(GetPixel(first, 0, 0), white);
    EXPECT_EQ(GetPixel(second, 0, 0), black);
    EXPECT_EQ(GetCurrentObject(first, OBJ_BITMAP), GetCurrentObject(second, OBJ_BITMAP));
    DeleteDC(first);
    DeleteDC(second);
}

} // namespace
} // namespace klv
