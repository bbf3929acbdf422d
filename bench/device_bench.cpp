#include "klv/devices/device.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/gdi/gdi.h"
#include "klv/geometry/shape.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_AGG
#include <agg_curves.h>
#endif
#if KLV_BENCH_CAIRO
#include <cairo.h>
#endif

// Flattening, graduations and strokes of a device, each beside the same work done by the reference library.
namespace {

using klv::POINT;
using klv::vCOLOUR;
using klv::vPOINT;

constexpr int surface_size = 1000;

class paper {
public:
    paper()
        : dc_(klv::CreateCompatibleDC(nullptr))
    {
        klv::BITMAPINFO info{};
        info.bmiHeader
            = {sizeof info.bmiHeader, surface_size, -surface_size, 1, 32, klv::BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        bitmap_ = klv::CreateDIBSection(dc_, &info, klv::DIB_RGB_COLORS, &bits, nullptr, 0);
        old_ = klv::SelectObject(dc_, bitmap_);
    }
    ~paper()
    {
        klv::SelectObject(dc_, old_);
        klv::DeleteObject(bitmap_);
        klv::DeleteDC(dc_);
    }
    paper(const paper&) = delete;
    paper& operator=(const paper&) = delete;
    klv::HDC dc() const { return dc_; }

private:
    klv::HDC dc_;
    klv::HBITMAP bitmap_ = nullptr;
    klv::HGDIOBJ old_ = nullptr;
};

/// A display is painted with rings; this device with discs from the outside in.
struct disc_device : klv::vDEVICE {
    using vDEVICE::vDEVICE;
    klv::vDEV_TYPE DeviceType() const noexcept override { return klv::vDEV_BITMAP; }
};

// ---- Flattening ----------------------------------------------------------------------------------------

struct cubic {
    vPOINT p[4];
};

/// One curve after the other.
std::vector<cubic> random_cubics(int size)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> coordinate(0, size);
    const auto point = [&] { return vPOINT(coordinate(random), coordinate(random)); };
    std::vector<cubic> cubics(1000);
    vPOINT at = point();
    for (cubic& c : cubics) {
        c = {{at, point(), point(), point()}};
        at = c.p[3];
    }
    return cubics;
}

klv::vSHAPE shape_of(const std::vector<cubic>& cubics)
{
    using namespace klv::point_flags;
    std::vector<klv::point_record> records;
    for (const cubic& c : cubics) {
        records.emplace_back(c.p[0], records.empty() ? start_curve : curve_to);
        records.emplace_back(c.p[1], control);
        records.emplace_back(c.p[2], control);
    }
    records.emplace_back(cubics.back().p[3], open_end);
    klv::vSHAPE shape;
    shape.assign_records(records);
    return shape;
}

void flatten(benchmark::State& state)
{
    const klv::vSHAPE shape = shape_of(random_cubics(static_cast<int>(state.range(0))));
    paper surface;
    klv::vDEVICE device(surface.dc());
    std::span<const POINT> points;
    std::span<const int> counts;
    for (auto _ : state)
        benchmark::DoNotOptimize(device.ConvertShapeToPoints(shape, points, counts));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(flatten)->Arg(10)->Arg(100)->Arg(1000);

#if KLV_BENCH_AGG
void flatten_agg(benchmark::State& state)
{
    // Its tolerance is half a pixel for both control points together; ours three quarters for each.
    constexpr double equal_tolerance = 0.5 / 1.5;
    const std::vector<cubic> cubics = random_cubics(static_cast<int>(state.range(0)));
    std::vector<POINT> points;
    agg::curve4_div curve;
    curve.approximation_scale(equal_tolerance);
    for (auto _ : state) {
        points.clear();
        for (const cubic& c : cubics) {
            curve.init(c.p[0].x, c.p[0].y, c.p[1].x, c.p[1].y, c.p[2].x, c.p[2].y, c.p[3].x, c.p[3].y);
            double x = 0;
            double y = 0;
            while (!agg::is_stop(curve.vertex(&x, &y)))
                points.push_back({static_cast<klv::LONG>(x), static_cast<klv::LONG>(y)});
        }
        benchmark::DoNotOptimize(points.data());
    }
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(flatten_agg)->Arg(10)->Arg(100)->Arg(1000);
#endif

// ---- Graduations ---------------------------------------------------------------------------------------

constexpr klv::RECT whole_surface{0, 0, surface_size, surface_size};

klv::vFILLSPEC graduation(klv::vFILLTYPE type)
{
    return {type, vCOLOUR(0, 0, 0), vCOLOUR(255, 255, 255), klv::vANGLE(), klv::vFILL_ALTERNATE, vPOINT()};
}

void linear_bands(benchmark::State& state)
{
    paper surface;
    klv::vDEVICE device(surface.dc());
    device.FillSpec(graduation(klv::vFILL_LINEAR_LOGARITHMIC)); // 257 bands
    for (auto _ : state)
        klv::NewLinearFill(device, whole_surface);
}
BENCHMARK(linear_bands);

// 128 steps a fill, so two fills make 256.
void radial_rings(benchmark::State& state)
{
    paper surface;
    klv::vDEVICE device(surface.dc());
    device.FillSpec(graduation(klv::vFILL_RADIAL));
    for (auto _ : state)
        for (int i = 0; i < 2; ++i)
            klv::NewRadialFill(device, whole_surface);
}
BENCHMARK(radial_rings);

void radial_discs(benchmark::State& state)
{
    paper surface;
    disc_device device(surface.dc());
    device.FillSpec(graduation(klv::vFILL_RADIAL));
    for (auto _ : state)
        for (int i = 0; i < 2; ++i)
            klv::NewRadialFill(device, whole_surface);
}
BENCHMARK(radial_discs);

void clipped_graduation(benchmark::State& state)
{
    paper surface;
    klv::vDEVICE device(surface.dc());
    device.LineSpec(klv::vLINESPEC(klv::vLINE_NONE, vCOLOUR(), 0, klv::vCORNER_BEVEL, klv::vDASH_FLAT,
        nullptr, klv::vLINESPEC::no_arrow, klv::vLINESPEC::no_arrow));
    device.FillSpec(graduation(klv::vFILL_LINEAR_LOGARITHMIC));
    for (auto _ : state)
        device.DrawEllipse(klv::vRECT(0, 0, surface_size, surface_size));
}
BENCHMARK(clipped_graduation);

#if KLV_BENCH_CAIRO
class cairo_paper {
public:
    cairo_paper()
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, surface_size, surface_size))
        , context_(cairo_create(surface_))
    {
        cairo_set_antialias(context_, CAIRO_ANTIALIAS_NONE);
    }
    ~cairo_paper()
    {
        cairo_destroy(context_);
        cairo_surface_destroy(surface_);
    }
    cairo_paper(const cairo_paper&) = delete;
    cairo_paper& operator=(const cairo_paper&) = delete;
    cairo_t* context() const { return context_; }
    void grey(double level) { cairo_set_source_rgb(context_, level, level, level); }

private:
    cairo_surface_t* surface_;
    cairo_t* context_;
};

void linear_bands_cairo(benchmark::State& state)
{
    constexpr int bands = 257;
    cairo_paper surface;
    for (auto _ : state) {
        for (int k = 0; k < bands; ++k) {
            const int from = surface_size * k / bands;
            const int to = surface_size * (k + 1) / bands;
            surface.grey(k / 256.0);
            cairo_rectangle(surface.context(), from, 0, to - from, surface_size);
            cairo_fill(surface.context());
        }
    }
}
BENCHMARK(linear_bands_cairo);

constexpr double surface_radius = surface_size * std::numbers::sqrt2 / 2;
constexpr int radial_steps = 128;

void radial_rings_cairo(benchmark::State& state)
{
    constexpr int vertices = 40;
    cairo_paper surface;
    cairo_set_fill_rule(surface.context(), CAIRO_FILL_RULE_EVEN_ODD);
    const auto add_circle = [&](double radius) {
        for (int i = 0; i < vertices; ++i) {
            const double angle = 2 * std::numbers::pi * i / vertices;
            cairo_line_to(surface.context(), surface_size / 2.0 + radius * std::cos(angle),
                surface_size / 2.0 + radius * std::sin(angle));
        }
        cairo_close_path(surface.context());
    };
    for (auto _ : state) {
        for (int k = 1; k <= 2 * radial_steps; ++k) {
            const int ring = (k - 1) % radial_steps + 1;
            surface.grey(ring / 128.0);
            add_circle(surface_radius * ring / radial_steps);
            add_circle(surface_radius * (ring - 1) / radial_steps);
            cairo_fill(surface.context());
        }
    }
}
BENCHMARK(radial_rings_cairo);

void radial_discs_cairo(benchmark::State& state)
{
    cairo_paper surface;
    for (auto _ : state) {
        for (int k = 2 * radial_steps; k > 0; --k) {
            const int disc = (k - 1) % radial_steps + 1;
            surface.grey(disc / 128.0);
            cairo_arc(surface.context(), surface_size / 2.0, surface_size / 2.0,
                surface_radius * disc / radial_steps, 0, 2 * std::numbers::pi);
            cairo_fill(surface.context());
        }
    }
}
BENCHMARK(radial_discs_cairo);
#endif

// ---- Lines ---------------------------------------------------------------------------------------------

std::vector<vPOINT> wandering_line(std::size_t count)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> step(-12, 12);
    std::vector<vPOINT> points;
    vPOINT at(surface_size / 2, surface_size / 2);
    for (std::size_t i = 0; i < count; ++i) {
        at = vPOINT(std::clamp(at.x + step(random), 0, surface_size - 1),
            std::clamp(at.y + step(random), 0, surface_size - 1));
        points.push_back(at);
    }
    return points;
}

constexpr std::size_t polyline_points = 10000;

void polyline(benchmark::State& state)
{
    paper surface;
    klv::vDEVICE device(surface.dc());
    const std::vector<vPOINT> points = wandering_line(polyline_points);
    device.LineSpec(klv::vLINESPEC(static_cast<klv::vLINETYPE>(state.range(1)), vCOLOUR(),
        static_cast<int>(state.range(0)), klv::vCORNER_ROUND, klv::vDASH_ROUND, nullptr,
        klv::vLINESPEC::no_arrow, klv::vLINESPEC::no_arrow));
    for (auto _ : state)
        device.DrawLine(std::span<const vPOINT>(points));
}
BENCHMARK(polyline)
    ->ArgNames({"width", "type"})
    ->Args({1, 1})
    ->Args({4, 1})
    ->Args({20, 1})
    ->Args({1, 3})
    ->Args({4, 3});

#if KLV_BENCH_CAIRO
void polyline_cairo(benchmark::State& state)
{
    cairo_paper surface;
    surface.grey(0);
    cairo_set_line_width(surface.context(), static_cast<double>(state.range(0)));
    cairo_set_line_join(surface.context(), CAIRO_LINE_JOIN_ROUND);
    const std::vector<vPOINT> points = wandering_line(polyline_points);
    for (auto _ : state) {
        for (const vPOINT& point : points)
            cairo_line_to(surface.context(), point.x, point.y);
        cairo_stroke(surface.context());
    }
}
BENCHMARK(polyline_cairo)->ArgName("width")->Arg(1)->Arg(4)->Arg(20);
#endif

} // namespace
