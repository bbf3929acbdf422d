#include "klv/formats/believable_size.h"
#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/resolution.h"
#include "klv/imaging/samples.h"
#include "klv/imaging/sideways_picture.h"
#include "klv/imaging/tiff_file.h"
#include "klv/imaging/tiff_rows.h"

#include <algorithm>
#include <optional>

namespace klv::imaging {

namespace {

constexpr std::size_t inks = 4;

/// How the pixels are stored, and with it how they are read.
enum class pixel_kind {
    greys, ///< indices into a table of greys
    palette,
    rgb,
    cmyk,
    converted, ///< by libtiff
};

struct layout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    std::size_t samples = 1; ///< of a pixel, with those that are not shown
    std::size_t planes = 1;
    bool white_first = false;
    bool multiplied = false; ///< the first extra sample is an alpha that the colours were multiplied by
    pixel_kind kind = pixel_kind::greys;
    sample_format format;
    std::int32_t bits = 24; ///< delivered

    [[nodiscard]] std::size_t colour_samples() const
    {
        return kind == pixel_kind::cmyk ? inks : kind == pixel_kind::rgb ? 3 : 1;
    }
    [[nodiscard]] bool mirrored() const
    {
        return orientation == ORIENTATION_TOPRIGHT || orientation == ORIENTATION_BOTRIGHT;
    }
    [[nodiscard]] bool bottom_up() const
    {
        return orientation == ORIENTATION_BOTLEFT || orientation == ORIENTATION_BOTRIGHT;
    }
    /// The rows are the columns of what is shown.
    [[nodiscard]] bool sideways() const
    {
        return orientation >= ORIENTATION_LEFTTOP && orientation <= ORIENTATION_LEFTBOT;
    }
    [[nodiscard]] bool from_the_right() const
    {
        return orientation == ORIENTATION_RIGHTTOP || orientation == ORIENTATION_RIGHTBOT;
    }
    [[nodiscard]] bool columns_bottom_up() const
    {
        return orientation == ORIENTATION_RIGHTBOT || orientation == ORIENTATION_LEFTBOT;
    }
};

/// Bytes of pixels that a byte of a file can stand for at most.
std::uint64_t greatest_expansion(const layout& found)
{
    switch (found.compression) {
    case COMPRESSION_NONE:
        return 1;
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
        // A row as the one before it takes one bit.
        return 8 * (std::uint64_t{found.width} / 8 + 1);
    case COMPRESSION_PACKBITS:
    case COMPRESSION_THUNDERSCAN:
    case COMPRESSION_NEXT:
        return 64;
    case COMPRESSION_LZW:
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
        return 2048;
    default:
        // Others have models that hold nearly empty pictures in a few bytes.
        return 1 << 16;
    }
}

bool plausible(const tiff_file& file, const layout& found, std::uint64_t file_size)
{
    TIFF* const tiff = file.handle();
    const std::uint64_t row = TIFFRasterScanlineSize64(tiff);
    std::uint64_t bytes = row * found.height;
    if (TIFFIsTiled(tiff)) {
        const std::uint64_t across
            = (found.width + std::uint64_t{file.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 1)} - 1)
            / std::max(file.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 1), 1U);
        bytes = std::max(bytes, TIFFTileSize64(tiff) * across);
    }
    return row != 0 && believable_size(bytes, file_size, greatest_expansion(found));
}

std::int32_t depth_for_indices(unsigned bits) { return bits == 1 ? 1 : bits <= 4 ? 4 : 8; }

sample_format::number kind_of_number(std::uint16_t format)
{
    switch (format) {
    case SAMPLEFORMAT_IEEEFP:
        return sample_format::number::real;
    case SAMPLEFORMAT_INT:
        return sample_format::number::integer;
    default:
        return sample_format::number::natural;
    }
}

pixel_kind kind_of_pixels(const tiff_file& file, std::uint16_t photometric, layout& found)
{
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
        found.white_first = true;
        return pixel_kind::greys;
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
        return pixel_kind::greys;
    case PHOTOMETRIC_PALETTE:
        return found.format.bits <= 8 ? pixel_kind::palette : pixel_kind::converted;
    case PHOTOMETRIC_RGB:
        return found.samples >= 3 ? pixel_kind::rgb : pixel_kind::converted;
    case PHOTOMETRIC_SEPARATED:
        return found.samples >= inks && file.tag<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK
            ? pixel_kind::cmyk
            : pixel_kind::converted;
    case PHOTOMETRIC_YCBCR:
        // The decoder of JPEG data also turns its colours.
        if (found.compression == COMPRESSION_JPEG && found.planes == 1 && found.samples == 3) {
            TIFFSetField(file.handle(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            return pixel_kind::rgb;
        }
        return pixel_kind::converted;
    default:
        return pixel_kind::converted;
    }
}

/// Files that do not say what their samples mean.
std::uint16_t guessed_photometric(std::size_t samples)
{
    return samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

bool multiplied_by_alpha(const tiff_file& file, const layout& found)
{
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    return TIFFGetField(file.handle(), TIFFTAG_EXTRASAMPLES, &count, &kinds) && count > 0
        && kinds[0] == EXTRASAMPLE_ASSOCALPHA && found.samples > found.colour_samples();
}

imaging_result read_layout(const tiff_file& file, std::uint64_t file_size, layout& found)
{
    found.width = file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    found.height = file.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    if (found.width == 0 || found.height == 0 || found.width > INT32_MAX || found.height > INT32_MAX)
        return imaging_bad_data;
    found.compression = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!TIFFIsCODECConfigured(found.compression))
        return imaging_unsupported;
    found.orientation = file.tag<std::uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    found.samples = file.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    found.format.bits = file.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    found.format.kind = kind_of_number(file.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT));
    const bool separate
        = file.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    found.planes = separate ? found.samples : 1;
    if (!plausible(file, found, file_size))
        return imaging_bad_data;

    std::uint16_t photometric = 0;
    if (!TIFFGetField(file.handle(), TIFFTAG_PHOTOMETRIC, &photometric))
        photometric = guessed_photometric(found.samples);
    found.kind = kind_of_pixels(file, photometric, found);
    if (found.compression == COMPRESSION_OJPEG)
        found.kind = pixel_kind::converted;
    if (found.kind == pixel_kind::greys || found.kind == pixel_kind::palette) {
        found.format.indices = found.format.bits <= 8;
        found.bits = depth_for_indices(found.format.bits);
    }
    if (found.kind != pixel_kind::converted && !unpackable(found.format))
        return imaging_unsupported;
    if (separate)
        found.planes = found.kind == pixel_kind::converted ? 1 : found.colour_samples();
    found.multiplied = !separate && found.kind == pixel_kind::rgb && multiplied_by_alpha(file, found);
    return imaging_ok;
}

std::int32_t dots_per_inch(const tiff_file& file, std::uint32_t tag)
{
    const float resolution = file.tag<float>(tag, 0);
    switch (file.tag<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH)) {
    case RESUNIT_INCH:
        return whole_dots_per_inch(resolution);
    case RESUNIT_CENTIMETER:
        return whole_dots_per_inch(resolution * centimetres_in_inch);
    default:
        return 0;
    }
}

void describe(const tiff_file& file, const layout& found, file_info& info)
{
    info.width = static_cast<std::int32_t>(found.width);
    info.height = static_cast<std::int32_t>(found.height);
    info.bits_per_pixel = found.bits;
    info.perspective = found.bottom_up() ? bottom_left : top_left;
    info.x_resolution = dots_per_inch(file, TIFFTAG_XRESOLUTION);
    info.y_resolution = dots_per_inch(file, TIFFTAG_YRESOLUTION);
    if (found.sideways()) {
        std::swap(info.width, info.height);
        std::swap(info.x_resolution, info.y_resolution);
    }
}

void read_palette(const tiff_file& file, const layout& found, bitmap_handle& bitmap)
{
    bitmap.colour_count = 1U << bitmap.bits_per_pixel;
    std::fill_n(bitmap.colours, bitmap.colour_count, RGBQUAD{});
    std::uint16_t* red = nullptr;
    std::uint16_t* green = nullptr;
    std::uint16_t* blue = nullptr;
    if (!TIFFGetField(file.handle(), TIFFTAG_COLORMAP, &red, &green, &blue))
        return;
    const std::size_t count = std::size_t{1} << found.format.bits;
    const auto small = [count](const std::uint16_t* values) {
        return std::all_of(values, values + count, [](std::uint16_t value) { return value <= 0xFF; });
    };
    // Early programs wrote colours of 8 bits.
    const bool bytes = small(red) && small(green) && small(blue);
    const auto channel = [bytes](std::uint16_t value) {
        return bytes ? static_cast<std::uint8_t>(value) : static_cast<std::uint8_t>(value >> 8);
    };
    for (std::size_t i = 0; i < count; ++i)
        bitmap.colours[i] = {channel(blue[i]), channel(green[i]), channel(red[i]), 0};
}

/// The greys of indices that may be narrower than the delivered depth.
void set_greys(const layout& found, bitmap_handle& bitmap)
{
    bitmap.colour_count = 1U << bitmap.bits_per_pixel;
    std::fill_n(bitmap.colours, bitmap.colour_count, RGBQUAD{});
    const std::uint32_t shades = 1U << std::min(found.format.bits, 8U);
    for (std::uint32_t i = 0; i < shades; ++i) {
        const std::uint32_t from_black = found.white_first ? shades - 1 - i : i;
        const auto grey = static_cast<std::uint8_t>((from_black * 255 + (shades - 1) / 2) / (shades - 1));
        bitmap.colours[i] = {grey, grey, grey, 0};
    }
}

void set_colours(const tiff_file& file, const layout& found, bitmap_handle& bitmap)
{
    if (found.kind == pixel_kind::palette)
        read_palette(file, found, bitmap);
    else if (found.kind == pixel_kind::greys)
        set_greys(found, bitmap);
}

/// Turns stored rows into lines of the delivered bitmap.
class line_maker {
public:
    explicit line_maker(const layout& found)
        : found_(found)
        , stored_(found.planes > 1 ? 1 : found.samples)
        , samples_(found.width * stored_ * found.planes)
        , colours_(std::size_t{found.width} * found.colour_samples())
    {
    }

    void make(const tiff_rows& rows, std::uint8_t* line)
    {
        if (stored_as_delivered()) {
            std::copy_n(rows.plane(0).begin(),
                std::min<std::size_t>(
                    rows.plane(0).size(), (std::size_t{found_.width} * found_.format.bits + 7) / 8),
                line);
            return;
        }
        const std::size_t count = found_.colour_samples();
        const std::size_t width = found_.width;
        for (std::size_t plane = 0; plane < found_.planes; ++plane)
            unpack_samples(rows.plane(plane), found_.format, plane_samples(plane));
        for (std::size_t i = 0; i < count; ++i) {
            const bool planar = found_.planes > 1;
            const std::uint8_t* from = samples_.data() + (planar ? i * width : i);
            const std::size_t step = planar ? 1 : stored_;
            // Colours lie blue first in a line.
            std::uint8_t* to = colours_.data() + (found_.kind == pixel_kind::rgb ? 2 - i : i);
            for (std::size_t x = 0; x < width; ++x, from += step, to += count)
                *to = *from;
        }
        if (found_.multiplied)
            divide_by_alpha();
        if (found_.mirrored())
            mirror_pixels(colours_.data(), width, count);
        store(line);
    }

private:
    [[nodiscard]] bool stored_as_delivered() const
    {
        return found_.format.indices && stored_ == 1 && !found_.mirrored()
            && static_cast<std::int32_t>(found_.format.bits) == found_.bits;
    }
    [[nodiscard]] std::span<std::uint8_t> plane_samples(std::size_t plane)
    {
        const std::size_t size = found_.width * stored_;
        return std::span(samples_).subspan(plane * size, size);
    }
    /// Transparency is left out, so the colours become what they are beneath it.
    void divide_by_alpha()
    {
        const std::uint8_t* alpha = samples_.data() + 3;
        std::uint8_t* colour = colours_.data();
        for (std::size_t x = 0; x < found_.width; ++x, alpha += stored_, colour += 3)
            for (std::size_t i = 0; i < 3 && *alpha != 0 && *alpha != 255; ++i)
                colour[i] = static_cast<std::uint8_t>(std::min(colour[i] * 255 / *alpha, 255));
    }
    void store(std::uint8_t* line) const
    {
        if (found_.kind == pixel_kind::cmyk)
            inks_to_24(colours_.data(), line, found_.width, false);
        else if (found_.kind == pixel_kind::rgb)
            std::ranges::copy(colours_, line);
        else
            pack_indices(colours_.data(), line, found_.width, found_.bits);
    }

    const layout& found_;
    std::size_t stored_; ///< samples of a pixel in a row
    std::vector<std::uint8_t> samples_; ///< a row, plane after plane
    std::vector<std::uint8_t> colours_; ///< the same row without what is not shown
};

/// Sink: line_sink or sideways_picture.
template <class Sink> imaging_result load_rows(image_io& in, tiff_file& file, const layout& found, Sink& sink)
{
    tiff_rows rows(in, file, found.planes);
    if (!rows.readable())
        return imaging_unsupported;
    line_maker maker(found);
    for (std::uint32_t y = 0; y < found.height; ++y) {
        const bool complete = rows.next();
        if (!complete && y == 0)
            return imaging_bad_data;
        std::uint8_t* const line = complete ? sink.next_line() : nullptr;
        if (!line)
            return complete ? imaging_aborted : sink.finish() ? imaging_read_error : imaging_aborted;
        maker.make(rows, line);
    }
    return sink.finish() ? imaging_ok : imaging_aborted;
}

/// The conversion of libtiff, for one picture.
class rgba_image {
public:
    explicit rgba_image(const tiff_file& file)
    {
        char message[1024] = {};
        made_ = TIFFRGBAImageOK(file.handle(), message)
            && TIFFRGBAImageBegin(&image_, file.handle(), 1, message);
        if (made_)
            image_.req_orientation = image_.orientation; // turned here, if at all
    }
    rgba_image(const rgba_image&) = delete;
    rgba_image& operator=(const rgba_image&) = delete;
    ~rgba_image()
    {
        if (made_)
            TIFFRGBAImageEnd(&image_);
    }
    [[nodiscard]] bool made() const { return made_; }
    /// lines rows from first on, each pixel red in the lowest byte.
    [[nodiscard]] bool read(std::uint32_t first, std::uint32_t lines, std::vector<std::uint32_t>& pixels)
    {
        image_.row_offset = static_cast<int>(first);
        image_.col_offset = 0;
        return TIFFRGBAImageGet(&image_, pixels.data(), image_.width, lines) == 1;
    }

private:
    TIFFRGBAImage image_{};
    bool made_ = false;
};

/// Rows that libtiff decodes at a time.
std::uint32_t rows_in_band(const tiff_file& file, const layout& found)
{
    const std::uint32_t tag = TIFFIsTiled(file.handle()) ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP;
    const auto rows = file.tag<std::uint32_t>(tag, found.height);
    return std::clamp(rows, 1U, found.height);
}

template <class Sink> imaging_result load_converted(tiff_file& file, const layout& found, Sink& sink)
{
    rgba_image image(file);
    if (!image.made())
        return imaging_unsupported;
    const std::uint32_t most = rows_in_band(file, found);
    std::vector<std::uint32_t> band(std::size_t{found.width} * most);
    for (std::uint32_t y = 0; y < found.height; y += most) {
        const std::uint32_t count = std::min(most, found.height - y);
        if (!image.read(y, count, band))
            return sink.finish() ? imaging_read_error : imaging_aborted;
        for (std::uint32_t row = 0; row < count; ++row) {
            std::uint8_t* line = sink.next_line();
            if (!line)
                return imaging_aborted;
            const std::uint32_t* const pixels = band.data() + std::size_t{row} * found.width;
            for (std::uint32_t x = 0; x < found.width; ++x, line += 3) {
                const std::uint32_t pixel = pixels[found.mirrored() ? found.width - 1 - x : x];
                line[0] = static_cast<std::uint8_t>(TIFFGetB(pixel));
                line[1] = static_cast<std::uint8_t>(TIFFGetG(pixel));
                line[2] = static_cast<std::uint8_t>(TIFFGetR(pixel));
            }
        }
    }
    return sink.finish() ? imaging_ok : imaging_aborted;
}

template <class Sink>
imaging_result load_lines(image_io& in, tiff_file& file, const layout& found, Sink& sink)
{
    return found.kind == pixel_kind::converted ? load_converted(file, found, sink)
                                               : load_rows(in, file, found, sink);
}

} // namespace

imaging_result tiff_info(image_io& in, file_info& info)
{
    const tiff_file file(in, tiff_file::access::reading);
    if (!file.is_open())
        return imaging_bad_data;
    layout found;
    const imaging_result result = read_layout(file, in.size(), found);
    if (result == imaging_ok)
        describe(file, found, info);
    return result;
}

imaging_result tiff_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    tiff_file file(in, tiff_file::access::reading);
    if (!file.is_open())
        return imaging_bad_data;
    layout found;
    const imaging_result result = read_layout(file, in.size(), found);
    if (result != imaging_ok)
        return result;
    set_colours(file, found, bitmap);
    line_sink sink(info, bitmap, callback, user);
    if (!found.sideways())
        return load_lines(in, file, found, sink);
    sideways_picture picture(bitmap, found.from_the_right(), found.columns_bottom_up());
    const imaging_result gathered = load_lines(in, file, found, picture);
    return picture.empty() || picture.deliver(sink) ? gathered : imaging_aborted;
}

} // namespace klv::imaging
