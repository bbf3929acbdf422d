#pragma once

#include "klv/filters/tiff/tiff_image.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

/// Most planes that are read; those of extra samples are left.
inline constexpr std::uint32_t tiff_most_planes = 3;
using tiff_plane_rows = std::array<std::span<const std::uint8_t>, tiff_most_planes>;

/// Turns stored rows of samples into lines of a bitmap.
class tiff_row_unpacker {
public:
    explicit tiff_row_unpacker(const tiff_image& image);

    /// True when stored rows already are lines of the bitmap, but for the bits after the last pixel.
    [[nodiscard]] bool stored_as_bitmap() const { return routine_ == nullptr; }
    /// Zeroes what follows the last pixel of such a line.
    void clear_rest(std::span<std::uint8_t> line) const;
    /// For all other rows: one for each plane that is read, row_bytes(plane) long. line: a line of the
    /// bitmap.
    void unpack(const tiff_plane_rows& rows, std::span<std::uint8_t> line) const;

private:
    /// Samples of a channel as 0 to 255.
    using channel_scale = std::array<std::uint8_t, 256>;
    using unpack_routine = void (tiff_row_unpacker::*)(const tiff_plane_rows&, std::uint8_t*) const;

    [[nodiscard]] unpack_routine routine_for(const tiff_image& image) const;
    void repack_indices(const tiff_plane_rows& rows, std::uint8_t* line) const;
    void join_planes(const tiff_plane_rows& rows, std::uint8_t* line) const;
    void swap_bytes(const tiff_plane_rows& rows, std::uint8_t* line) const;
    void scale_chunky(const tiff_plane_rows& rows, std::uint8_t* line) const;
    void scale_planar(const tiff_plane_rows& rows, std::uint8_t* line) const;

    std::uint32_t width_;
    std::uint32_t bitmap_depth_;
    std::uint32_t index_bits_; ///< bits that make an index, of all channels when they are chunky
    std::uint32_t extra_bits_; ///< of extra samples after each pixel
    std::array<std::uint32_t, tiff_most_planes> channel_bits_;
    std::array<channel_scale, tiff_most_planes> scales_{};
    unpack_routine routine_;
};

/// Undoes horizontal differencing (TIFF 6.0, section 14) for samples of 1 to 8 bits.
class tiff_predictor {
public:
    tiff_predictor(const tiff_image& image, std::uint32_t plane);

    /// Turns the differences of a stored row into samples.
    void undo(std::span<std::uint8_t> row);

private:
    void undo_fields(std::span<std::uint8_t> row);

    std::uint32_t width_;
    tiff_numbers sample_bits_; ///< of each sample of a pixel
    tiff_numbers left_; ///< the pixel before
    bool bytes_; ///< all samples of 8 bits
};

} // namespace klv
