#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/filters/filter.h"

#include <array>
#include <cstdint>
#include <vector>

namespace klv {

enum tiff_photometric : std::uint16_t {
    tiff_white_is_zero = 0,
    tiff_black_is_zero = 1,
    tiff_rgb = 2,
    tiff_palette = 3,
    tiff_mask = 4,
    tiff_separated = 5,
    tiff_ycbcr = 6,
    tiff_cielab = 8,
};

enum tiff_compression : std::uint16_t {
    tiff_uncompressed = 1,
    tiff_modified_huffman = 2,
    tiff_lzw = 5,
    tiff_packbits = 32773,
};

enum tiff_planes : std::uint16_t { tiff_chunky = 1, tiff_planar = 2 };

enum tiff_predictors : std::uint16_t { tiff_no_predictor = 1, tiff_differences = 2 };

enum tiff_fill_order : std::uint16_t { tiff_most_significant_first = 1, tiff_least_significant_first = 2 };

/// Which sides of the picture the first row and the first column are; eight ways, of which the others turn
/// it.
enum tiff_orientation : std::uint16_t { tiff_top_left = 1, tiff_left_bottom = 8 };
enum tiff_extra_sample : std::uint16_t { tiff_unspecified = 0, tiff_associated_alpha = 1 };
enum tiff_sample_format : std::uint16_t { tiff_unsigned = 1, tiff_undefined = 4 };

enum tiff_resolution_unit : std::uint16_t { tiff_no_unit = 1, tiff_inch = 2, tiff_centimetre = 3 };

struct tiff_rational {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 1;
};

using tiff_numbers = std::vector<std::uint32_t, vALLOCATOR<std::uint32_t>>;

/// The first image of a file: the fields of its directory, with their defaults, and what follows from them.
struct tiff_image {
    static constexpr std::uint16_t missing_word = 0xFFFF;
    static constexpr std::uint32_t missing_long = 0xFFFFFFFF;

    std::uint16_t photometric = missing_word;
    std::uint16_t compression = tiff_uncompressed;
    std::uint16_t planar_configuration = tiff_chunky;
    std::uint32_t length = missing_long; ///< rows
    std::uint32_t width = missing_long; ///< pixels
    std::uint16_t predictor = tiff_no_predictor;
    std::uint16_t colour_map_entries = 0;
    std::array<RGBQUAD, 256> colour_map{};
    tiff_numbers grey_response; ///< optical density of each grey, in grey_response_unit
    std::uint16_t grey_response_unit = 2; ///< 1 to 5: tenths to hundred-thousandths
    std::uint16_t resolution_unit = tiff_inch;
    tiff_rational x_resolution{150, 1}; ///< pixels in a resolution_unit
    tiff_rational y_resolution{150, 1};
    std::uint32_t rows_per_strip = missing_long;
    tiff_numbers strip_offsets; ///< of a planar image: the strips of the first plane, then those of the next
    tiff_numbers bits_per_sample{1};
    std::uint16_t samples_per_pixel = 1;
    std::uint32_t extra_sample_count = 0;
    std::uint16_t first_extra_sample = tiff_unspecified;
    std::uint16_t fill_order = tiff_most_significant_first;
    std::uint16_t orientation = tiff_top_left;
    std::uint16_t sample_format = tiff_unsigned;

    // Set by check_image.
    std::uint32_t pixel_depth = 0; ///< bits of a pixel without extra samples, 1 to 24
    std::uint32_t stored_depth = 0; ///< bits of a pixel with them
    std::uint32_t strips_per_plane = 0;

    /// Bits of a sample; a list that is too short goes on with its last number.
    [[nodiscard]] std::uint32_t bits_of_sample(std::uint32_t sample) const;
    /// Red, green and blue in planes of their own.
    [[nodiscard]] bool planar_rgb() const
    {
        return planar_configuration == tiff_planar && photometric == tiff_rgb;
    }
    /// Depth of the bitmap that the image becomes: 1, 4, 8 or 24.
    [[nodiscard]] std::uint16_t bitmap_depth() const;
    /// Bytes of a row of a plane, or of all samples when they are chunky. Any width.
    [[nodiscard]] std::uint64_t row_bytes(std::uint32_t plane) const;
};

/// Tells whether the own decoder handles the image (OK), and works out what follows from the fields.
/// file_size: bytes of the file, of which the image may not promise too large a multiple. UNSUPPORTED and
/// BAD_DATA otherwise.
[[nodiscard]] oFILTER_STATUS check_image(tiff_image& image, std::uint32_t file_size);

} // namespace klv
