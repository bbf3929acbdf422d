#include "klv/gdi/gdi.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_CAIRO
#include <cairo.h>
#endif
#if KLV_BENCH_PIXMAN
#include <pixman.h>
#endif

// Scan conversion, fills, regions and stretches of the raster surface, each beside the same work done by the
// reference library. Arguments named bits are the depth of the surface.
namespace {

using klv::HDC;
using klv::POINT;

constexpr int surface_size = 1000;

/// A memory context on a surface of the given depth, ready to fill in one colour.
class canvas {
public:
    explicit canvas(int bits, int width = surface_size, int height = surface_size)
        : dc_(klv::CreateCompatibleDC(nullptr))
    {
        struct {
            klv::BITMAPINFOHEADER header{};
            klv::RGBQUAD colours[256]{};
        } info;
        info.header = {
            sizeof info.header, width, -height, 1, static_cast<klv::WORD>(bits), klv::BI_RGB, 0, 0, 0, 0, 0};
        for (int i = 0; i < 256; ++i) {
            const auto grey = static_cast<klv::BYTE>(bits == 1 ? i * 255 : i);
            info.colours[i] = {grey, grey, grey, 0};
        }
        bitmap_ = klv::CreateDIBSection(
            dc_, reinterpret_cast<klv::BITMAPINFO*>(&info), klv::DIB_RGB_COLORS, &bits_, nullptr, 0);
        old_bitmap_ = klv::SelectObject(dc_, bitmap_);
        brush_ = klv::CreateSolidBrush(bits == 32 ? klv::RGB(10, 120, 230) : klv::RGB(255, 255, 255));
        old_brush_ = klv::SelectObject(dc_, brush_);
        klv::SelectObject(dc_, klv::GetStockObject(klv::NULL_PEN));
    }
    ~canvas()
    {
        klv::SelectObject(dc_, old_bitmap_);
        klv::SelectObject(dc_, old_brush_);
        klv::DeleteObject(bitmap_);
        klv::DeleteObject(brush_);
        klv::DeleteDC(dc_);
    }
    canvas(const canvas&) = delete;
    canvas& operator=(const canvas&) = delete;

    operator HDC() const { return dc_; }
    [[nodiscard]] void* bits() const { return bits_; }

private:
    HDC dc_;
    klv::HBITMAP bitmap_;
    klv::HBRUSH brush_;
    klv::HGDIOBJ old_bitmap_;
    klv::HGDIOBJ old_brush_;
    void* bits_ = nullptr;
};

std::vector<POINT> triangles(int size)
{
    std::mt19937 random(1);
    std::vector<POINT> points;
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int i = 0; i < 1000; ++i) {
        const int x = below(surface_size - size + 1);
        const int y = below(surface_size - size + 1);
        points.push_back({x + below(size / 4 + 1), y + below(size / 4 + 1)});
        points.push_back({x + size, y + below(size + 1)});
        points.push_back({x + below(size + 1), y + size});
    }
    return points;
}

/// A star of two radii, its points in order around the centre.
std::vector<POINT> star(int vertices)
{
    std::vector<POINT> points;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 2 * std::numbers::pi * i / vertices;
        const double radius = i % 2 == 0 ? 490 : 250;
        points.push_back({static_cast<int>(500 + radius * std::cos(angle)),
            static_cast<int>(500 + radius * std::sin(angle))});
    }
    return points;
}

/// A star whose edges all cross near the centre.
std::vector<POINT> crossing_star(int edges)
{
    std::vector<POINT> points;
    for (int i = 0; i < edges; ++i) {
        const double angle = 2 * std::numbers::pi * (static_cast<double>(i) * (edges / 2) / edges);
        points.push_back(
            {static_cast<int>(500 + 490 * std::cos(angle)), static_cast<int>(500 + 490 * std::sin(angle))});
    }
    return points;
}

void ours_triangles(benchmark::State& state)
{
    const canvas to(static_cast<int>(state.range(0)));
    const auto points = triangles(static_cast<int>(state.range(1)));
    for (auto _ : state)
        for (std::size_t i = 0; i < points.size(); i += 3)
            klv::Polygon(to, &points[i], 3);
}
BENCHMARK(ours_triangles)
    ->ArgNames({"bits", "px"})
    ->ArgsProduct({{32, 8, 1}, {10, 100, 500}})
    ->Unit(benchmark::kMicrosecond);

void ours_polygon(benchmark::State& state, const std::vector<POINT>& points)
{
    const canvas to(32);
    for (auto _ : state)
        klv::Polygon(to, points.data(), static_cast<int>(points.size()));
}
BENCHMARK_CAPTURE(ours_polygon, star_10000, star(10000))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ours_polygon, crossing_1001, crossing_star(1001))->Unit(benchmark::kMicrosecond);

void ours_rectangle(benchmark::State& state)
{
    const canvas to(32);
    for (auto _ : state)
        klv::PatBlt(to, 0, 0, surface_size, surface_size, klv::PATCOPY);
}
BENCHMARK(ours_rectangle)->Unit(benchmark::kMicrosecond);

void memset_rectangle(benchmark::State& state)
{
    const canvas to(32);
    for (auto _ : state) {
        std::memset(to.bits(), 0x55, std::size_t{surface_size} * surface_size * 4);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(memset_rectangle)->Unit(benchmark::kMicrosecond);

void ours_discs(benchmark::State& state)
{
    const canvas to(32);
    for (auto _ : state)
        for (int r = 500; r > 0; r -= 2)
            klv::Ellipse(to, 500 - r, 500 - r, 501 + r, 501 + r);
}
BENCHMARK(ours_discs)->Unit(benchmark::kMicrosecond);

void ours_lines(benchmark::State& state)
{
    const canvas to(32);
    const auto points = triangles(static_cast<int>(state.range(0)));
    const auto pen = klv::CreatePen(klv::PS_SOLID, 1, 0);
    const auto old = klv::SelectObject(to, pen);
    for (auto _ : state)
        for (std::size_t i = 0; i < points.size(); i += 3)
            klv::Polyline(to, &points[i], 3);
    klv::SelectObject(to, old);
    klv::DeleteObject(pen);
}
BENCHMARK(ours_lines)->ArgNames({"px"})->Arg(10)->Arg(100)->Arg(500)->Unit(benchmark::kMicrosecond);

void ours_clipped_triangles(benchmark::State& state)
{
    const canvas to(32);
    const auto points = triangles(100);
    const klv::HRGN clip = klv::CreateEllipticRgn(0, 0, surface_size, surface_size);
    klv::SelectClipRgn(to, clip);
    for (auto _ : state)
        for (std::size_t i = 0; i < points.size(); i += 3)
            klv::Polygon(to, &points[i], 3);
    klv::DeleteObject(clip);
}
BENCHMARK(ours_clipped_triangles)->Unit(benchmark::kMicrosecond);

// ---- Stretches -----------------------------------------------------------------------------------------

constexpr int stretched_width = 1700;
constexpr int stretched_height = 1300;

void ours_stretch(benchmark::State& state)
{
    const canvas from(32);
    const canvas to(32, stretched_width, stretched_height);
    klv::SetStretchBltMode(to, klv::COLORONCOLOR);
    for (auto _ : state)
        klv::StretchBlt(to, 0, 0, stretched_width, stretched_height, from, 0, 0, surface_size, surface_size,
            klv::SRCCOPY);
}
BENCHMARK(ours_stretch)->Unit(benchmark::kMicrosecond);

// ---- Regions -------------------------------------------------------------------------------------------

constexpr int region_side = 100;

/// region_side x region_side rectangles with gaps, moved by offset.
std::vector<klv::RECT> tiles(int offset)
{
    std::vector<klv::RECT> rects;
    for (int y = 0; y < region_side; ++y)
        for (int x = 0; x < region_side; ++x)
            rects.push_back({x * 10 + offset, y * 10 + offset, x * 10 + 7 + offset, y * 10 + 7 + offset});
    return rects;
}

klv::HRGN region_of(const std::vector<klv::RECT>& rects)
{
    std::vector<POINT> points;
    std::vector<int> counts;
    for (const auto& r : rects) {
        const POINT corners[] = {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}};
        points.insert(points.end(), std::begin(corners), std::end(corners));
        counts.push_back(4);
    }
    return klv::CreatePolyPolygonRgn(
        points.data(), counts.data(), static_cast<int>(counts.size()), klv::WINDING);
}

void ours_regions(benchmark::State& state, int mode)
{
    const klv::HRGN a = region_of(tiles(0));
    const klv::HRGN b = region_of(tiles(4));
    const klv::HRGN result = klv::CreateRectRgn(0, 0, 0, 0);
    for (auto _ : state)
        klv::CombineRgn(result, a, b, mode);
    for (const klv::HRGN r : {a, b, result})
        klv::DeleteObject(r);
}
BENCHMARK_CAPTURE(ours_regions, union, klv::RGN_OR)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ours_regions, intersection, klv::RGN_AND)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ours_regions, difference, klv::RGN_DIFF)->Unit(benchmark::kMicrosecond);

// ---- References ----------------------------------------------------------------------------------------

#if KLV_BENCH_CAIRO
class cairo_canvas {
public:
    explicit cairo_canvas(cairo_format_t format)
        : surface_(cairo_image_surface_create(format, surface_size, surface_size))
        , cr_(cairo_create(surface_))
    {
        cairo_set_antialias(cr_, CAIRO_ANTIALIAS_NONE);
        cairo_set_source_rgb(cr_, 0.04, 0.47, 0.9);
    }
    ~cairo_canvas()
    {
        cairo_destroy(cr_);
        cairo_surface_destroy(surface_);
    }
    cairo_canvas(const cairo_canvas&) = delete;
    cairo_canvas& operator=(const cairo_canvas&) = delete;

    void polygon(const POINT* points, std::size_t count)
    {
        cairo_move_to(cr_, points[0].x, points[0].y);
        for (std::size_t i = 1; i < count; ++i)
            cairo_line_to(cr_, points[i].x, points[i].y);
        cairo_close_path(cr_);
        cairo_fill(cr_);
    }
    operator cairo_t*() const { return cr_; }

private:
    cairo_surface_t* surface_;
    cairo_t* cr_;
};

void cairo_triangles(benchmark::State& state)
{
    cairo_canvas to(state.range(0) == 32 ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_A8);
    const auto points = triangles(static_cast<int>(state.range(1)));
    for (auto _ : state)
        for (std::size_t i = 0; i < points.size(); i += 3)
            to.polygon(&points[i], 3);
}
BENCHMARK(cairo_triangles)
    ->ArgNames({"bits", "px"})
    ->ArgsProduct({{32, 8}, {10, 100, 500}})
    ->Unit(benchmark::kMicrosecond);

void cairo_polygon(benchmark::State& state, const std::vector<POINT>& points)
{
    cairo_canvas to(CAIRO_FORMAT_RGB24);
    cairo_set_fill_rule(to, CAIRO_FILL_RULE_EVEN_ODD);
    for (auto _ : state)
        to.polygon(points.data(), points.size());
}
BENCHMARK_CAPTURE(cairo_polygon, star_10000, star(10000))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(cairo_polygon, crossing_1001, crossing_star(1001))->Unit(benchmark::kMicrosecond);

void cairo_discs(benchmark::State& state)
{
    cairo_canvas to(CAIRO_FORMAT_RGB24);
    for (auto _ : state)
        for (int r = 500; r > 0; r -= 2) {
            cairo_arc(to, 500, 500, r, 0, 2 * std::numbers::pi);
            cairo_fill(to);
        }
}
BENCHMARK(cairo_discs)->Unit(benchmark::kMicrosecond);
#endif

#if KLV_BENCH_PIXMAN
void pixman_stretch(benchmark::State& state)
{
    pixman_image_t* from = pixman_image_create_bits(PIXMAN_x8r8g8b8, surface_size, surface_size, nullptr, 0);
    pixman_image_t* to
        = pixman_image_create_bits(PIXMAN_x8r8g8b8, stretched_width, stretched_height, nullptr, 0);
    pixman_transform_t scale;
    pixman_transform_init_scale(&scale, pixman_double_to_fixed(double{surface_size} / stretched_width),
        pixman_double_to_fixed(double{surface_size} / stretched_height));
    pixman_image_set_transform(from, &scale);
    pixman_image_set_filter(from, PIXMAN_FILTER_NEAREST, nullptr, 0);
    for (auto _ : state)
        pixman_image_composite32(
            PIXMAN_OP_SRC, from, nullptr, to, 0, 0, 0, 0, 0, 0, stretched_width, stretched_height);
    pixman_image_unref(from);
    pixman_image_unref(to);
}
BENCHMARK(pixman_stretch)->Unit(benchmark::kMicrosecond);

using region_operation
    = pixman_bool_t (*)(pixman_region32_t*, const pixman_region32_t*, const pixman_region32_t*);

void pixman_regions(benchmark::State& state, region_operation operation)
{
    const auto region_of_tiles = [](pixman_region32_t& r, int offset) {
        std::vector<pixman_box32_t> boxes;
        for (const auto& t : tiles(offset))
            boxes.push_back({t.left, t.top, t.right, t.bottom});
        pixman_region32_init_rects(&r, boxes.data(), static_cast<int>(boxes.size()));
    };
    pixman_region32_t a;
    pixman_region32_t b;
    pixman_region32_t result;
    region_of_tiles(a, 0);
    region_of_tiles(b, 4);
    pixman_region32_init(&result);
    for (auto _ : state)
        operation(&result, &a, &b);
    for (pixman_region32_t* r : {&a, &b, &result})
        pixman_region32_fini(r);
}
BENCHMARK_CAPTURE(pixman_regions, union, pixman_region32_union)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(pixman_regions, intersection, pixman_region32_intersect)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(pixman_regions, difference, pixman_region32_subtract)->Unit(benchmark::kMicrosecond);
#endif

} // namespace
