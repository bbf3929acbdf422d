#include "tests/gdi/raster_canvas.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

/// A region as a grid of pixels: slow and obvious.
class pixel_set {
public:
    static constexpr INT side = 48;

    static pixel_set of(HRGN region)
    {
        pixel_set set;
        for (INT y = 0; y < side; ++y)
            for (INT x = 0; x < side; ++x)
                set.at(x, y) = PtInRegion(region, x, y) != 0;
        return set;
    }
    void add(const RECT& r)
    {
        for (INT y = std::max(r.top, 0); y < std::min(r.bottom, side); ++y)
            for (INT x = std::max(r.left, 0); x < std::min(r.right, side); ++x)
                at(x, y) = true;
    }
    template <class Operation> pixel_set with(const pixel_set& other, Operation operation) const
    {
        pixel_set result;
        for (std::size_t i = 0; i < pixels_.size(); ++i)
            result.pixels_[i] = operation(pixels_[i], other.pixels_[i]);
        return result;
    }
    bool& at(INT x, INT y) { return pixels_[static_cast<std::size_t>(y * side + x)]; }
    [[nodiscard]] bool empty() const
    {
        return std::none_of(pixels_.begin(), pixels_.end(), [](bool b) { return b; });
    }
    friend bool operator==(const pixel_set&, const pixel_set&) = default;

private:
    std::array<bool, side * side> pixels_{};
};

HRGN random_region(std::mt19937& random, pixel_set& pixels)
{
    const HRGN whole = CreateRectRgn(0, 0, 0, 0);
    for (auto i = random() % 12; i != 0; --i) {
        const auto any = [&] { return static_cast<INT>(random() % pixel_set::side); };
        const RECT r{any(), any(), any(), any()};
        const RECT ordered{std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right),
            std::max(r.top, r.bottom)};
        const HRGN one = CreateRectRgn(r.left, r.top, r.right, r.bottom);
        CombineRgn(whole, whole, one, RGN_OR);
        DeleteObject(one);
        pixels.add(ordered);
    }
    return whole;
}

TEST(Regions, CombineLikePixelSets)
{
    std::mt19937 random(11);
    for (int round = 0; round < 100; ++round) {
        pixel_set a;
        pixel_set b;
        const HRGN first = random_region(random, a);
        const HRGN second = random_region(random, b);
        const HRGN result = CreateRectRgn(0, 0, 1, 1);
        struct {
            INT mode;
            pixel_set expected;
        } cases[] = {
            {RGN_AND, a.with(b, [](bool p, bool q) { return p && q; })},
            {RGN_OR, a.with(b, [](bool p, bool q) { return p || q; })},
            {RGN_XOR, a.with(b, [](bool p, bool q) { return p != q; })},
            {RGN_DIFF, a.with(b, [](bool p, bool q) { return p && !q; })},
            {RGN_COPY, a},
        };
        for (const auto& c : cases) {
            const INT complexity = CombineRgn(result, first, second, c.mode);
            EXPECT_EQ(pixel_set::of(result), c.expected) << "round " << round << " mode " << c.mode;
            EXPECT_EQ(complexity == NULLREGION, c.expected.empty());
            RECT box{};
            EXPECT_EQ(GetRgnBox(result, &box), complexity);
        }
        // The target may be one of the sources.
        CombineRgn(first, first, second, RGN_XOR);
        EXPECT_EQ(pixel_set::of(first), cases[2].expected);
        for (const HRGN r : {first, second, result})
            DeleteObject(r);
    }
}

TEST(Regions, OfFiguresHoldThePixelsThatTheFiguresFill)
{
    const POINT star[] = {{20, 0}, {32, 38}, {0, 14}, {40, 14}, {8, 38}, {42, 2}, {47, 2}, {47, 9}};
    const INT counts[] = {5, 3};
    for (const INT mode : {ALTERNATE, WINDING}) {
        raster_canvas figure(48, 48);
        raster_canvas painted(48, 48);
        const auto brush = use_brush(figure, black);
        SelectObject(figure, GetStockObject(NULL_PEN));
        SetPolyFillMode(figure, mode);
        PolyPolygon(figure, star, counts, 2);
        Ellipse(figure, 30, 30, 48, 41);
        const HRGN region = CreatePolyPolygonRgn(star, counts, 2, mode);
        const HRGN round = CreateEllipticRgn(30, 30, 47, 40);
        CombineRgn(region, region, round, RGN_OR);
        FillRgn(painted, region, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        EXPECT_EQ(figure.art(), painted.art()) << mode;
        DeleteObject(region);
        DeleteObject(round);
    }
}

TEST(Regions, AnswerQuestions)
{
    const HRGN region = CreateRectRgn(10, 20, 0, 5);
    RECT box{};
    EXPECT_EQ(GetRgnBox(region, &box), SIMPLEREGION);
    EXPECT_EQ(box, (RECT{0, 5, 10, 20}));
    EXPECT_TRUE(PtInRegion(region, 0, 5));
    EXPECT_FALSE(PtInRegion(region, 10, 5));
    const HRGN other = CreateRectRgn(5, 10, 20, 30);
    EXPECT_EQ(CombineRgn(other, region, other, RGN_OR), COMPLEXREGION);
    const DWORD size = GetRegionData(other, 0, nullptr);
    ASSERT_EQ(size, sizeof(RGNDATAHEADER) + 3 * sizeof(RECT));
    std::vector<RECT> memory(size / sizeof(RECT));
    auto* data = reinterpret_cast<RGNDATA*>(memory.data());
    EXPECT_EQ(GetRegionData(other, size - 1, data), 0U);
    EXPECT_EQ(GetRegionData(other, size, data), size);
    EXPECT_EQ(data->rdh.rcBound, (RECT{0, 5, 20, 30}));
    const RECT bands[] = {{0, 5, 10, 10}, {0, 10, 20, 20}, {5, 20, 20, 30}};
    EXPECT_TRUE(std::equal(std::begin(bands), std::end(bands), memory.end() - 3));

    EXPECT_EQ(OffsetRgn(region, -3, 4), SIMPLEREGION);
    const HRGN moved = CreateRectRgn(-3, 9, 7, 24);
    EXPECT_TRUE(EqualRgn(region, moved));
    for (const HRGN r : {region, other, moved})
        EXPECT_TRUE(DeleteObject(r));
    EXPECT_EQ(GetRgnBox(region, &box), ERROR_REGION);
    EXPECT_FALSE(DeleteObject(region));
}

TEST(Regions, FarCoordinatesAreHeld)
{
    const HRGN region = CreateRectRgn(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_TRUE(PtInRegion(region, 500000000, -500000000));
    OffsetRgn(region, INT32_MAX, INT32_MAX);
    const POINT far[] = {{INT32_MIN, 0}, {INT32_MAX, 0}, {0, INT32_MAX}};
    const HRGN triangle = CreatePolygonRgn(far, 3, WINDING);
    EXPECT_TRUE(PtInRegion(triangle, 0, 1000));
    EXPECT_FALSE(PtInRegion(triangle, 0, -1));
    DeleteObject(region);
    DeleteObject(triangle);
}

// ---- Clipping ------------------------------------------------------------------------------------------

TEST(Clipping, CutsEveryKindOfDrawing)
{
    const HRGN ring = CreateRectRgn(1, 1, 9, 7);
    const HRGN hole = CreateRectRgn(3, 3, 7, 5);
    CombineRgn(ring, ring, hole, RGN_DIFF);
    const char* const expected = R"(
..........
.########.
.########.
.##....##.
.##....##.
.########.
.########.
..........)";
    using draw_function = void (*)(HDC);
    const draw_function drawings[] = {
        [](HDC dc) { PatBlt(dc, 0, 0, 10, 8, BLACKNESS); },
        [](HDC dc) {
            const POINT all[] = {{0, 0}, {10, 0}, {10, 8}, {0, 8}};
            const auto brush = use_brush(dc, black);
            Polygon(dc, all, 4);
        },
        [](HDC dc) {
            for (INT y = 0; y < 8; ++y) {
                MoveToEx(dc, 10, y, nullptr);
                LineTo(dc, -1, y);
            }
        },
        [](HDC dc) {
            for (INT x = 0; x < 10; ++x) {
                MoveToEx(dc, x, -5, nullptr);
                LineTo(dc, x, 20);
            }
        },
        [](HDC dc) {
            const auto pen = use_pen(dc, PS_SOLID, 20, black);
            MoveToEx(dc, 0, 4, nullptr);
            LineTo(dc, 9, 4);
        },
        [](HDC dc) {
            raster_canvas from(10, 8);
            PatBlt(from, 0, 0, 10, 8, BLACKNESS);
            BitBlt(dc, 0, 0, 10, 8, from, 0, 0, SRCCOPY);
        },
        [](HDC dc) {
            raster_canvas from(1, 1);
            SetPixel(from, 0, 0, black);
            StretchBlt(dc, -5, -5, 20, 20, from, 0, 0, 1, 1, SRCAND);
        },
        [](HDC dc) {
            for (INT y = 0; y < 8; ++y)
                for (INT x = 0; x < 10; ++x)
                    SetPixel(dc, x, y, black);
        },
    };
    for (std::size_t i = 0; i < std::size(drawings); ++i) {
        raster_canvas canvas(10, 8);
        EXPECT_EQ(SelectClipRgn(canvas, ring), COMPLEXREGION);
        drawings[i](canvas);
        SelectClipRgn(canvas, nullptr);
        EXPECT_EQ(canvas.art(), expected) << "drawing " << i;
    }
    DeleteObject(ring);
    DeleteObject(hole);
}

TEST(Clipping, FollowsTheContextThroughSaveAndRestore)
{
    raster_canvas canvas(20, 20);
    const HRGN region = CreateRectRgn(0, 0, 0, 0);
    EXPECT_EQ(GetClipRgn(canvas, region), 0);
    RECT box{};
    EXPECT_EQ(GetClipBox(canvas, &box), SIMPLEREGION);
    EXPECT_EQ(box, (RECT{0, 0, 20, 20}));

    EXPECT_EQ(IntersectClipRect(canvas, 2, 3, 100, 12), SIMPLEREGION);
    EXPECT_EQ(SaveDC(canvas), 1);
    EXPECT_EQ(ExcludeClipRect(canvas, 0, 0, 10, 5), COMPLEXREGION);
    EXPECT_FALSE(PtVisible(canvas, 5, 4));
    EXPECT_TRUE(PtVisible(canvas, 5, 5));
    const RECT cut{0, 0, 10, 5};
    const RECT left{0, 0, 10, 6};
    EXPECT_FALSE(RectVisible(canvas, &cut));
    EXPECT_TRUE(RectVisible(canvas, &left));
    EXPECT_EQ(OffsetClipRgn(canvas, 0, -2), COMPLEXREGION);
    EXPECT_TRUE(PtVisible(canvas, 5, 3));
    EXPECT_TRUE(RestoreDC(canvas, -1));
    EXPECT_EQ(GetClipRgn(canvas, region), 1);
    GetRgnBox(region, &box);
    EXPECT_EQ(box, (RECT{2, 3, 100, 12}));
    GetClipBox(canvas, &box);
    EXPECT_EQ(box, (RECT{2, 3, 20, 12}));
    EXPECT_FALSE(RestoreDC(canvas, -1));

    // The region belongs to the caller: the context took a copy.
    SelectClipRgn(canvas, region);
    DeleteObject(region);
    EXPECT_TRUE(PtVisible(canvas, 5, 5));
    SelectClipRgn(canvas, nullptr);
    EXPECT_TRUE(PtVisible(canvas, 0, 0));
}

} // namespace
} // namespace klv
