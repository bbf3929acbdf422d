// write_seeds DIRECTORY: makes DIRECTORY/wmf, /metafile, /dib, /gif, /tiff, /imaging, /shape and /explode,
// small valid inputs from which the fuzz targets of these names start.

#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/gif/gif_filter.h"
#include "klv/filters/raster/bmp_filter.h"
#include "klv/filters/raster/jpeg_filter.h"
#include "klv/filters/raster/pcx_filter.h"
#include "klv/filters/raster/photoshop_filter.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/raster/targa_filter.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/filters/wmf/wmf_filter.h"
#include "klv/imaging/imaging_api.h"
#include "klv/metafiles/metafile.h"
#include "klv/platform/module_table.h"
#include "klv/streams/compression/implode.h"
#include "klv/streams/memory_stream.h"

#include "tests/build_folder.h"
#include "tests/filters/gif_builder.h"
#include "tests/filters/tiff_builder.h"
#include "tests/filters/wmf_drawing.h"
#include "tests/imaging/flashpix_builder.h"
#include "tests/metafiles/all_records.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace klv;
using bytes = std::vector<std::uint8_t>;

std::filesystem::path root;

void write(const char* target, const std::string& name, const bytes& contents)
{
    std::filesystem::create_directories(root / target);
    std::ofstream(root / target / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(contents.data()), static_cast<std::streamsize>(contents.size()));
}

bytes contents_of(vMEMSTREAM& stream)
{
    bytes all(stream.Size());
    stream.MoveFromStart(0);
    stream.ReadPlain(all.data(), stream.Size());
    return all;
}

void write_wmf_files()
{
    using enum wmf_function;
    const auto plain = [] { return test::wmf_builder().window(0, 0, 1000, 1000); };
    write("wmf", "everything", test::drawing_of_everything());
    write("wmf", "lines",
        plain().pen(1, 9, 255).select(0).add(move_to, {1, 1}).add(line_to, {900, 900}).build());
    write("wmf", "text", plain().font(-99, "Times").select(0).text_out("AVA", 9, 500).build());
    write("wmf", "clip",
        plain().add(exclude_clip_rect, {300, 300, 200, 200}).rectangle(0, 0, 999, 999).build());
    write("wmf", "bitmap",
        plain()
            .add_bytes(stretch_dib, test::with_four_colours({0x20, 0xCC, 0, 2, 2, 0, 0, 900, 900, 0, 0}))
            .build());
}

void write_recorded_pictures()
{
    for (const bool converted : {false, true}) {
        vMETAFILE picture;
        vMEMSTREAM file;
        if (converted) {
            auto wmf = test::drawing_of_everything();
            std::uint8_t* data = wmf.data();
            vMEMSTREAM stream(&data, static_cast<std::uint32_t>(wmf.size()), vSTRING("seed.wmf"), 0);
            WMFFILTER().Convert(stream, &picture);
            picture >> file;
        } else {
            picture >> file;
            append(file, one_of_each_record());
        }
        write("metafile", converted ? "converted" : "records", contents_of(file));
    }
}

void write_bitmaps()
{
    for (const int bits : {1, 4, 8, 24}) {
        const oMEMDIB bitmap(9, 5, static_cast<std::uint16_t>(bits), oMODEL_RGB24, 0);
        vMEMSTREAM file;
        bitmap >> file;
        write("dib", std::to_string(bits) + "-bit", contents_of(file));
    }
}

oMEMDIB patterned_bitmap(int width, int height, int bits)
{
    oMEMDIB bitmap(width, height, bits, model_of_bits(static_cast<unsigned>(bits)), 0);
    for (int y = 0; y < bitmap.Height(); ++y)
        for (std::size_t x = 0; x < bitmap.line(y).size(); ++x)
            bitmap.line(y)[x] = static_cast<std::uint8_t>(x / 5 * static_cast<std::size_t>(y) % 23);
    return bitmap;
}

void write_gif_files()
{
    for (const int bits : {1, 4, 8}) {
        oMEMDIB bitmap = patterned_bitmap(60, 50, bits);
        vMEMSTREAM file;
        GIFFILTER().PrivateConvert(bitmap, file);
        write("gif", std::to_string(bits) + "-bit", contents_of(file));
    }
    const auto codes = test::literal_codes(3, {0, 1, 2, 3, 4, 5, 6, 7, 7, 6, 5, 4});
    write("gif", "interlaced", test::gif_builder(3).image(1, 12, true).data(3, codes).end());
    write("gif", "pictures",
        test::gif_builder(0, 49)
            .add({0x21, 0xF9, 4, 0, 0, 0, 0, 0})
            .image(2, 2)
            .data(3, codes)
            .image(4, 3, false, 3)
            .data(3, codes, 3)
            .end());
}

void write_tiff_files()
{
    const std::vector<test::tiff_file::row> rows{{0, 1, 1, 0, 1, 0}, {1, 1, 1, 1, 1, 1}, {0, 0, 1, 0, 0, 1}};
    const struct {
        const char* name;
        test::tiff_file file;
    } seeds[] = {
        {"plain", {.rows = rows}},
        {"bits", {.big_endian = true, .bits = {1}, .rows = rows, .rows_per_strip = 2}},
        {"huffman", {.photometric = 0, .bits = {1}, .rows = rows, .compression = 2}},
        {"packed", {.photometric = 2, .bits = {8, 8, 8}, .rows = rows, .compression = 32773}},
        {"lzw", {.photometric = 2, .bits = {8, 8, 8}, .rows = rows, .compression = 5, .predictor = 2}},
        {"planes", {.photometric = 2, .bits = {8, 8, 8}, .rows = rows, .compression = 5, .planar = 2}},
        {"palette", {.photometric = 3, .bits = {1}, .rows = rows, .colour_map = {0, 65535, 7, 8, 9, 900}}},
    };
    for (const auto& seed : seeds)
        write("tiff", seed.name, seed.file.bytes());
}

template <class Filter> bytes written(Filter filter, int bits)
{
    oMEMDIB bitmap = patterned_bitmap(20, 17, bits);
    vMEMSTREAM file;
    filter.Convert(bitmap, file);
    return contents_of(file);
}

bytes flashpix_file()
{
    using namespace test::flashpix;
    const bytes pixels(std::size_t{3} * tile_side * tile_side, 77);
    compound_builder file({.small_streams = true});
    file.stream("\005Image Contents", 0, contents(0x00030000));
    add_level(
        file, 0, 40, 3, 3, {{0, 0, pixels}, {1, 0x00332211, {}}, {2, 0x00010000, written(JPEGFILTER(), 24)}});
    return file.bytes();
}

void write_files_of_the_imaging_module()
{
    MapModule(imaging::kernel_module_name, klv::test::imaging_module_path().c_str());
    MapModule(imaging::file_module_name, klv::test::imaging_module_path().c_str());
    for (const int bits : {1, 4, 8, 24}) {
        const auto write_one = [&](const std::string& format, const auto& filter) {
            if (filter.ExportColourDepths(bits))
                write("imaging", std::to_string(bits) + "-bit." + format, written(filter, bits));
        };
        write_one("bmp", DIBFILTER());
        write_one("jpg", JPEGFILTER());
        write_one("pcx", PCXFILTER());
        write_one("png", PNGFILTER());
        write_one("psd", PSDFILTER());
        write_one("tga", TGAFILTER());
        write_one("tif", TIFFILTER());
    }
    write("imaging", "tiles.fpx", flashpix_file());
}

// A byte that scales, then contours of signed bytes: an even number chooses the first shape, odd the second,
// and half of it is the number of points.
void write_shapes()
{
    constexpr std::uint8_t first = 8, second = 9; // with four points each
    write("shape", "crossing", {0, first, 0, 0, 10, 0, 10, 10, 0, 10, second, 5, 5, 15, 5, 15, 15, 5, 15});
    write("shape", "touching", {9, first, 0, 0, 10, 0, 10, 10, 0, 10, second, 10, 0, 20, 0, 20, 10, 10, 10});
    write("shape", "same",
        {23, first, 128, 128, 127, 128, 127, 127, 128, 127, second, 128, 128, 127, 128, 127, 127, 128, 127});
    write("shape", "eights", {0, first, 0, 0, 15, 15, 15, 0, 0, 15, second, 0, 5, 20, 5, 0, 9, 10, 250});
}

// The first byte chooses what the target does with the rest.
void write_compressed_blocks()
{
    bytes text;
    for (int i = 0; i < 300; ++i)
        text.push_back(static_cast<std::uint8_t>("a block with repeats, repeats "[i % 30 + i / 250]));
    bytes packed(implode_bound(text.size()));
    packed.resize(implode(text, packed).value_or(0));
    for (const int choice : {0, 1, 2, 96}) {
        bytes input{static_cast<std::uint8_t>(choice)};
        const auto& rest = choice % 3 == 2 ? text : packed;
        input.insert(input.end(), rest.begin(), rest.end());
        write("explode", std::to_string(choice), input);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("write_seeds DIRECTORY\n", stderr);
        return 2;
    }
    root = argv[1];
    write_wmf_files();
    write_recorded_pictures();
    write_bitmaps();
    write_gif_files();
    write_tiff_files();
    write_files_of_the_imaging_module();
    write_shapes();
    write_compressed_blocks();
}
