// PNG and JPEG through the imaging module, each beside the bare library doing the same: same picture, same
// settings, lines into and out of the same memory.
#include "klv/imaging/imaging_api.h"
#include "klv/platform/module_table.h"

#include "tests/build_folder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#if KLV_BENCH_JPEG
#include <jpeglib.h>
#endif
#if KLV_BENCH_PNG
#include <png.h>
#endif

namespace {

using namespace klv;
using namespace klv::imaging;

constexpr std::int32_t side = 1000;
constexpr std::size_t line_bytes = std::size_t{3} * side;
using bytes = std::vector<std::uint8_t>;

enum kind { photographic, line_art };

bytes made_pixels(kind which)
{
    bytes pixels(line_bytes * side);
    std::uint32_t noise = 1;
    for (std::int32_t y = 0; y < side; ++y)
        for (std::int32_t x = 0; x < side; ++x) {
            std::uint8_t* const pixel
                = pixels.data() + static_cast<std::size_t>(y) * line_bytes + 3 * static_cast<std::size_t>(x);
            for (int c = 0; c < 3; ++c) {
                noise = noise * 1664525 + 1013904223;
                const double soft = 127 + 90 * std::sin((x + 40 * c) / 61.0) * std::cos(y / 47.0);
                const bool ink = x % 50 == 0 || y % 70 == 0 || (x + y) % 131 < 2;
                pixel[c] = static_cast<std::uint8_t>(which == photographic ? soft + (noise >> 28)
                        : ink                                              ? 40 * c
                                                                           : 255);
            }
        }
    return pixels;
}

struct module_entries {
    L_RedirectIO_t redirect = nullptr;
    L_CreateBitmap_t create = nullptr;
    L_LoadFile_t load = nullptr;
    L_SaveFile_t save = nullptr;

    module_entries()
    {
        MapModule(file_module_name, klv::test::imaging_module_path().c_str());
        const HINSTANCE module = LoadLibraryA(file_module_name);
        redirect = reinterpret_cast<L_RedirectIO_t>(GetProcAddress(module, "L_RedirectIO"));
        create = reinterpret_cast<L_CreateBitmap_t>(GetProcAddress(module, "L_CreateBitmap"));
        load = reinterpret_cast<L_LoadFile_t>(GetProcAddress(module, "L_LoadFile"));
        save = reinterpret_cast<L_SaveFile_t>(GetProcAddress(module, "L_SaveFile"));
    }
};

struct memory_stream {
    bytes contents;
    std::size_t position = 0;

    static std::uint32_t read(std::uint8_t* to, std::uint32_t count, void* self)
    {
        auto& stream = *static_cast<memory_stream*>(self);
        const std::size_t got = std::min<std::size_t>(count, stream.contents.size() - stream.position);
        std::copy_n(stream.contents.data() + stream.position, got, to);
        stream.position += got;
        return static_cast<std::uint32_t>(got);
    }
    static std::uint32_t write(const std::uint8_t* from, std::uint32_t count, void* self)
    {
        auto& stream = *static_cast<memory_stream*>(self);
        stream.contents.insert(stream.contents.end(), from, from + count);
        return count;
    }
    static std::int32_t seek(std::int32_t offset, std::int32_t origin, void* self)
    {
        auto& stream = *static_cast<memory_stream*>(self);
        const std::size_t base = origin == 0 ? 0 : origin == 1 ? stream.position : stream.contents.size();
        stream.position = base + static_cast<std::size_t>(offset);
        return static_cast<std::int32_t>(stream.position);
    }
};

std::int32_t take_lines(const file_info&, const bitmap_handle& handle, std::uint8_t* band, std::int32_t row,
    std::int32_t lines, void* pixels)
{
    const auto size = static_cast<std::size_t>(handle.bytes_per_line);
    std::copy_n(band, size * static_cast<std::size_t>(lines),
        static_cast<bytes*>(pixels)->data() + size * static_cast<std::size_t>(row));
    return 1;
}

std::int32_t give_lines(
    const bitmap_handle& handle, std::uint8_t* band, std::int32_t row, std::int32_t lines, void* pixels)
{
    const auto size = static_cast<std::size_t>(handle.bytes_per_line);
    std::copy_n(static_cast<bytes*>(pixels)->data() + size * static_cast<std::size_t>(row),
        size * static_cast<std::size_t>(lines), band);
    return 1;
}

bytes saved_by_module(imaging_format format, bytes& pixels)
{
    static const module_entries module;
    memory_stream out;
    bitmap_handle handle{};
    module.create(&handle, conventional_memory, side, side, 24, 1, nullptr, top_left);
    module.redirect(nullptr, memory_stream::read, memory_stream::write, memory_stream::seek, nullptr, &out);
    if (module.save("tmp", &handle, format, 24, best_quality, save_flags_default, give_lines, &pixels)
        != imaging_ok)
        std::abort();
    return std::move(out.contents);
}

void load_by_module(const bytes& file, bytes& pixels)
{
    static const module_entries module;
    memory_stream in{file};
    bitmap_handle handle{};
    module.create(&handle, conventional_memory, side, side, 24, 0, nullptr, top_left);
    module.redirect(nullptr, memory_stream::read, memory_stream::write, memory_stream::seek, nullptr, &in);
    if (module.load("tmp", &handle, 24, 0, load_flags_all_lines, take_lines, &pixels) != imaging_ok)
        std::abort();
}

template <imaging_format Format> void load_through_module(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    const bytes file = saved_by_module(Format, pixels);
    for (auto _ : state)
        load_by_module(file, pixels);
}

template <imaging_format Format> void save_through_module(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    std::size_t size = 0;
    for (auto _ : state)
        size = saved_by_module(Format, pixels).size();
    state.counters["bytes"] = static_cast<double>(size);
}

BENCHMARK_TEMPLATE(load_through_module, format_jpeg)
    ->Arg(photographic)
    ->Arg(line_art)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(save_through_module, format_jpeg)
    ->Arg(photographic)
    ->Arg(line_art)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(load_through_module, format_png)->Arg(photographic)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(save_through_module, format_png)->Arg(photographic)->Unit(benchmark::kMillisecond);

#if KLV_BENCH_JPEG
void load_by_libjpeg(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    const bytes file = saved_by_module(format_jpeg, pixels);
    for (auto _ : state) {
        jpeg_decompress_struct session{};
        jpeg_error_mgr errors{};
        session.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&session);
        jpeg_mem_src(&session, file.data(), file.size());
        jpeg_read_header(&session, TRUE);
        session.out_color_space = JCS_EXT_BGR;
        jpeg_start_decompress(&session);
        while (session.output_scanline < session.output_height) {
            JSAMPROW row = pixels.data() + line_bytes * session.output_scanline;
            jpeg_read_scanlines(&session, &row, 1);
        }
        jpeg_destroy_decompress(&session);
    }
}
BENCHMARK(load_by_libjpeg)->Arg(photographic)->Arg(line_art)->Unit(benchmark::kMillisecond);

void save_by_libjpeg(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    for (auto _ : state) {
        jpeg_compress_struct session{};
        jpeg_error_mgr errors{};
        session.err = jpeg_std_error(&errors);
        jpeg_create_compress(&session);
        unsigned char* file = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&session, &file, &size);
        session.image_width = session.image_height = side;
        session.input_components = 3;
        session.in_color_space = JCS_EXT_BGR;
        jpeg_set_defaults(&session);
        jpeg_set_quality(&session, 95, TRUE);
        session.comp_info[0].h_samp_factor = session.comp_info[0].v_samp_factor = 1;
        jpeg_start_compress(&session, TRUE);
        while (session.next_scanline < session.image_height) {
            JSAMPROW row = pixels.data() + line_bytes * session.next_scanline;
            jpeg_write_scanlines(&session, &row, 1);
        }
        jpeg_finish_compress(&session);
        jpeg_destroy_compress(&session);
        state.counters["bytes"] = static_cast<double>(size);
        std::free(file);
    }
}
BENCHMARK(save_by_libjpeg)->Arg(photographic)->Arg(line_art)->Unit(benchmark::kMillisecond);
#endif

#if KLV_BENCH_PNG
void read_png(png_structp png, png_bytep to, std::size_t count)
{
    memory_stream::read(to, static_cast<std::uint32_t>(count), png_get_io_ptr(png));
}
void write_png(png_structp png, png_bytep from, std::size_t count)
{
    memory_stream::write(from, static_cast<std::uint32_t>(count), png_get_io_ptr(png));
}
void flush_png(png_structp) { }

void load_by_libpng(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    const bytes file = saved_by_module(format_png, pixels);
    for (auto _ : state) {
        memory_stream in{file};
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_read_fn(png, &in, read_png);
        png_read_info(png, info);
        png_set_bgr(png);
        for (std::int32_t y = 0; y < side; ++y)
            png_read_row(png, pixels.data() + line_bytes * static_cast<std::size_t>(y), nullptr);
        png_destroy_read_struct(&png, &info, nullptr);
    }
}
BENCHMARK(load_by_libpng)->Arg(photographic)->Unit(benchmark::kMillisecond);

void save_by_libpng(benchmark::State& state)
{
    bytes pixels = made_pixels(static_cast<kind>(state.range(0)));
    for (auto _ : state) {
        memory_stream out;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(png, &out, write_png, flush_png);
        png_set_compression_level(png, 1);
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        png_set_IHDR(png, info, side, side, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
            PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        png_set_bgr(png);
        for (std::int32_t y = 0; y < side; ++y)
            png_write_row(png, pixels.data() + line_bytes * static_cast<std::size_t>(y));
        png_write_end(png, nullptr);
        png_destroy_write_struct(&png, &info);
        state.counters["bytes"] = static_cast<double>(out.contents.size());
    }
}
BENCHMARK(save_by_libpng)->Arg(photographic)->Arg(line_art)->Unit(benchmark::kMillisecond);
#endif

} // namespace
