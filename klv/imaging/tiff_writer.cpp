#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/tiff_file.h"

#include <algorithm>
#include <array>
#include <vector>

namespace klv::imaging {

namespace {

/// Colours of a TIFF palette have 16 bits.
constexpr std::uint16_t sixteen_bits_of(std::uint8_t value)
{
    return static_cast<std::uint16_t>(value * 257);
}

struct colour_map {
    std::array<std::uint16_t, 256> red{};
    std::array<std::uint16_t, 256> green{};
    std::array<std::uint16_t, 256> blue{};
};

void set_palette(TIFF* tiff, const bitmap_handle& bitmap)
{
    colour_map map;
    for (std::uint32_t i = 0; i < bitmap.colour_count && i < map.red.size(); ++i) {
        map.red[i] = sixteen_bits_of(bitmap.colours[i].rgbRed);
        map.green[i] = sixteen_bits_of(bitmap.colours[i].rgbGreen);
        map.blue[i] = sixteen_bits_of(bitmap.colours[i].rgbBlue);
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, map.red.data(), map.green.data(), map.blue.data());
}

/// What every reader knows: facsimile code for black and white, else LZW, with differences where neighbours
/// are alike.
void set_kind(TIFF* tiff, const bitmap_handle& bitmap)
{
    const bool indexed = bitmap.bits_per_pixel <= 8;
    const bool greys = indexed && has_grey_colours(bitmap);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, indexed ? 1 : 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, indexed ? bitmap.bits_per_pixel : 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
        !indexed    ? PHOTOMETRIC_RGB
            : greys ? PHOTOMETRIC_MINISBLACK
                    : PHOTOMETRIC_PALETTE);
    if (indexed && !greys)
        set_palette(tiff, bitmap);
    if (greys && bitmap.bits_per_pixel == 1) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        return;
    }
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    if (!indexed || (greys && bitmap.bits_per_pixel == 8))
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

void set_directory(TIFF* tiff, const bitmap_handle& bitmap)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(bitmap.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(bitmap.height));
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    set_kind(tiff, bitmap);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    if (bitmap.x_resolution > 0 && bitmap.y_resolution > 0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(bitmap.x_resolution));
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(bitmap.y_resolution));
    }
}

/// The line as TIFF stores it: red first. libtiff may change the bytes.
void store_line(const bitmap_handle& bitmap, const std::uint8_t* line, std::vector<std::uint8_t>& row)
{
    if (bitmap.bits_per_pixel <= 8) {
        std::copy_n(line, row.size(), row.data());
        return;
    }
    expand_to_24(bitmap, line, row.data());
    for (std::size_t x = 0; x + 2 < row.size(); x += 3)
        std::swap(row[x], row[x + 2]);
}

} // namespace

imaging_result tiff_save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    tiff_file file(out, tiff_file::access::writing);
    if (!file.is_open())
        return imaging_write_error;
    set_directory(file.handle(), bitmap);
    std::vector<std::uint8_t> row(
        static_cast<std::size_t>(std::max<tmsize_t>(TIFFScanlineSize(file.handle()), 0)));
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        const std::uint8_t* const line = lines.line_from_top(y);
        if (!line)
            return imaging_aborted;
        store_line(bitmap, line, row);
        if (TIFFWriteScanline(file.handle(), row.data(), static_cast<std::uint32_t>(y), 0) != 1)
            return imaging_write_error;
    }
    return file.close() ? imaging_ok : imaging_write_error;
}

} // namespace klv::imaging
