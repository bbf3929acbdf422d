#include "klv/filters/tiff/tiff_image.h"

#include "klv/filters/tiff/tiff_lzw.h"
#include "klv/formats/believable_size.h"

#include <algorithm>
#include <limits>

namespace klv {

namespace {

constexpr std::uint32_t bits_per_byte = 8;
constexpr std::uint32_t widest_sample = 8;
constexpr std::uint32_t greatest_depth = 24;
constexpr std::uint32_t least_true_colour_depth = 9; ///< RGB images below become palette images
constexpr std::uint32_t colour_samples = 3;
constexpr std::uint32_t greatest_side = std::numeric_limits<std::int32_t>::max();

/// What one stored byte can become.
constexpr std::uint64_t most_bytes_for_one_raw = 4;
constexpr std::uint64_t most_bytes_for_one_packed = 64; ///< a PackBits run of 128 takes two bytes
constexpr std::uint64_t most_bytes_for_one_coded = 256; ///< LZW strips and Huffman rows do not reach it

bool known_photometric(const tiff_image& image) { return image.photometric <= tiff_palette; }

/// Models that could have been read if they were not unknown to the own decoder.
bool foreign_photometric(const tiff_image& image)
{
    return image.photometric == tiff_mask || image.photometric == tiff_separated
        || image.photometric == tiff_ycbcr || image.photometric == tiff_cielab;
}

bool known_compression(const tiff_image& image)
{
    return image.compression == tiff_uncompressed || image.compression == tiff_modified_huffman
        || image.compression == tiff_lzw || image.compression == tiff_packbits;
}

/// Whether the first row is not the top one, from left to right.
bool turned(const tiff_image& image)
{
    return image.orientation > tiff_top_left && image.orientation <= tiff_left_bottom;
}

/// False for bits and numbers that the own decoder would show, but wrongly; associated alpha is multiplied
/// into the colours.
bool plain_samples(const tiff_image& image)
{
    return image.fill_order != tiff_least_significant_first
        && image.first_extra_sample != tiff_associated_alpha && !turned(image)
        && (image.sample_format == tiff_unsigned || image.sample_format == tiff_undefined);
}

/// What a colour map or a grey response curve tells about a model that is none of ours; false: nothing.
bool infer_photometric(tiff_image& image)
{
    if (image.colour_map_entries != 0)
        image.photometric = tiff_palette;
    else if (!image.grey_response.empty())
        image.photometric = tiff_black_is_zero;
    else
        return false;
    return true;
}

/// Finds the depths. False for layouts that bitmaps can't be made of.
bool find_depths(tiff_image& image)
{
    const std::uint32_t colours = image.photometric == tiff_rgb ? colour_samples : 1;
    if (image.samples_per_pixel != std::uint64_t{image.extra_sample_count} + colours
        || image.bits_per_sample.empty())
        return false;
    for (const std::uint32_t bits : image.bits_per_sample)
        if (bits < 1 || bits > widest_sample)
            return false;
    image.pixel_depth = 0;
    image.stored_depth = 0;
    for (std::uint32_t i = 0; i < image.samples_per_pixel; ++i) {
        if (i < colours)
            image.pixel_depth += image.bits_of_sample(i);
        image.stored_depth += image.bits_of_sample(i);
    }
    if (image.pixel_depth > greatest_depth)
        return false;
    const bool indexed_rgb = colours == colour_samples && image.pixel_depth < least_true_colour_depth;
    const bool equal_samples = image.bits_of_sample(0) == image.bits_of_sample(1)
        && image.bits_of_sample(1) == image.bits_of_sample(2);
    return !indexed_rgb || (equal_samples && image.bits_of_sample(0) <= 2);
}

bool find_strips(tiff_image& image)
{
    if (image.rows_per_strip == tiff_image::missing_long && image.strip_offsets.size() == 1)
        image.rows_per_strip = image.length;
    const auto has_side = [](std::uint32_t side) { return side != 0 && side <= greatest_side; };
    if (image.rows_per_strip == tiff_image::missing_long || image.rows_per_strip == 0
        || !has_side(image.length) || !has_side(image.width) || image.strip_offsets.empty())
        return false;
    image.rows_per_strip = std::min(image.rows_per_strip, image.length);
    image.strips_per_plane = (image.length - 1) / image.rows_per_strip + 1;
    return true;
}

/// Compressions that are not for every kind of image.
bool compression_fits(const tiff_image& image)
{
    if (image.predictor == tiff_differences && image.compression != tiff_lzw)
        return false;
    if (image.compression == tiff_modified_huffman)
        return image.photometric <= tiff_black_is_zero && image.stored_depth == 1;
    if (image.compression != tiff_lzw)
        return true;
    const std::uint64_t planes = image.planar_rgb() ? colour_samples : 1;
    return image.row_bytes(0) * planes * image.rows_per_strip < tiff_lzw_decoder::strip_limit;
}

bool in_proportion(const tiff_image& image, std::uint32_t file_size)
{
    const std::uint64_t factor = image.compression == tiff_uncompressed ? most_bytes_for_one_raw
        : image.compression == tiff_packbits                            ? most_bytes_for_one_packed
                                                                        : most_bytes_for_one_coded;
    const std::uint64_t planes = image.planar_rgb() ? colour_samples : 1;
    const std::uint64_t row = image.row_bytes(0) * planes;
    return row <= std::numeric_limits<std::uint32_t>::max()
        && believable_size(row * image.length, file_size, factor);
}

void settle_units(tiff_image& image)
{
    if (image.grey_response_unit < 1 || image.grey_response_unit > 5)
        image.grey_response_unit = 2;
    if (image.resolution_unit < tiff_no_unit || image.resolution_unit > tiff_centimetre)
        image.resolution_unit = tiff_no_unit;
}

} // namespace

std::uint32_t tiff_image::bits_of_sample(std::uint32_t sample) const
{
    return bits_per_sample[std::min<std::size_t>(sample, bits_per_sample.size() - 1)];
}

std::uint16_t tiff_image::bitmap_depth() const
{
    switch (pixel_depth) {
    case 1:
        return 1;
    case 2:
    case 3:
    case 4:
        return 4;
    default:
        return pixel_depth < least_true_colour_depth ? 8 : 24;
    }
}

std::uint64_t tiff_image::row_bytes(std::uint32_t plane) const
{
    const std::uint32_t bits = planar_configuration == tiff_planar ? bits_of_sample(plane) : stored_depth;
    return (std::uint64_t{bits} * width + bits_per_byte - 1) / bits_per_byte;
}

oFILTER_STATUS check_image(tiff_image& image, std::uint32_t file_size)
{
    const bool foreign = foreign_photometric(image);
    if (!known_photometric(image) && !infer_photometric(image))
        return oFILTER_BAD_DATA;
    const bool planes_known
        = image.planar_configuration == tiff_chunky || image.planar_configuration == tiff_planar;
    if (!known_compression(image) || !planes_known
        || (image.predictor != tiff_no_predictor && image.predictor != tiff_differences))
        return oFILTER_BAD_DATA;
    if (!find_depths(image) || !find_strips(image) || !compression_fits(image))
        return oFILTER_BAD_DATA;
    if (image.photometric == tiff_palette && image.colour_map_entries != 1U << image.pixel_depth)
        return oFILTER_BAD_DATA;
    if (!plain_samples(image))
        return oFILTER_BAD_DATA;
    if (!in_proportion(image, file_size))
        return oFILTER_BAD_DATA;
    settle_units(image);
    return foreign ? oFILTER_UNSUPPORTED : oFILTER_OK;
}

} // namespace klv
