#pragma once

#include "klv/filters/tiff/tiff_image.h"
#include "klv/filters/tiff/tiff_samples.h"
#include "klv/filters/tiff/tiff_source.h"

#include <array>
#include <cstdint>
#include <memory>

namespace klv {

/// The rows of one plane (or of all samples, when they are chunky), strip by strip.
class tiff_plane;

/// Decodes the rows of an image that check_image accepted.
class tiff_decoder {
public:
    /// Throws std::bad_alloc.
    tiff_decoder(const tiff_image& image, tiff_source& source);
    ~tiff_decoder();
    tiff_decoder(const tiff_decoder&) = delete;
    tiff_decoder& operator=(const tiff_decoder&) = delete;

    /// Decodes the next row, from the top, into a line of the bitmap. Throws std::bad_alloc.
    [[nodiscard]] oFILTER_STATUS next_line(std::span<std::uint8_t> line);
    /// File position up to which bytes were used.
    [[nodiscard]] std::uint32_t position() const;

private:
    [[nodiscard]] oFILTER_STATUS begin_strip();

    const tiff_image& image_;
    tiff_row_unpacker unpacker_;
    std::uint32_t plane_count_;
    std::array<std::unique_ptr<tiff_plane>, tiff_most_planes> planes_;
    std::array<tiff_buffer, tiff_most_planes> rows_; ///< as stored; not used when that is how bitmaps are
    std::uint32_t row_ = 0;
};

} // namespace klv
