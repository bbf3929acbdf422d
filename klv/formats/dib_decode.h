#pragma once

#include "klv/formats/dib_header.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

/// The two ways in which a Windows bitmap packs its pixels beyond plain rows: channel masks (16 and 32 bits)
/// and run lengths (4 and 8 bits).
namespace klv {

/// Turns pixels of 16 or 32 bits into 24-bit pixels (blue, green, red) by their masks. Any mask is allowed;
/// an empty one gives 0.
class masked_pixels {
public:
    masked_pixels(const channel_masks& masks, unsigned bits);

    /// source holds width pixels of the depth given to the constructor.
    void to_24(const std::uint8_t* source, std::uint8_t* line, std::int32_t width) const;

private:
    struct channel {
        explicit channel(std::uint32_t channel_mask);
        [[nodiscard]] std::uint8_t value(std::uint32_t pixel) const
        {
            const std::uint32_t raw = (pixel & mask) >> shift;
            return greatest <= 0xFF ? small[raw]
                                    : static_cast<std::uint8_t>(std::uint64_t{raw} * 255 / greatest);
        }

        std::uint32_t mask;
        int shift;
        std::uint32_t greatest;
        std::array<std::uint8_t, 256> small{}; ///< scaled values where the mask has at most 8 bits
    };

    channel red_;
    channel green_;
    channel blue_;
    bool wide_; ///< 32 bits
    bool plain_bgr_; ///< 32 bits in the default order
};

/// Bytes that arrive piece by piece.
class byte_pieces {
public:
    virtual ~byte_pieces() = default;
    /// The next bytes, valid until the next call; empty at the end.
    [[nodiscard]] virtual std::span<const std::uint8_t> next() = 0;
};

/// Decodes run-length data (BI_RLE8 for 8 bits, BI_RLE4 for 4, and the 24 bits of OS/2) row by row, in the
/// order of the data.
class run_length_rows {
public:
    run_length_rows(byte_pieces& source, unsigned bits, std::int32_t width);

    /// Decodes into the next row; pixels that the data skips keep their value.
    /// \return false when the data ended inside the row, without its end mark
    [[nodiscard]] bool next(std::uint8_t* row);

private:
    [[nodiscard]] bool read(std::span<std::uint8_t> bytes);
    [[nodiscard]] bool run(std::uint8_t* row, std::uint32_t count, std::uint8_t first);
    [[nodiscard]] bool literals(std::uint8_t* row, std::uint32_t count);
    void put(std::uint8_t* row, const std::uint8_t* pixels, std::uint32_t count, bool repeated);

    byte_pieces& source_;
    std::span<const std::uint8_t> piece_;
    unsigned bits_;
    std::uint32_t width_;
    std::uint32_t x_ = 0; ///< at most width_
    std::uint32_t rows_to_skip_ = 0;
    bool ended_ = false;
};

/// Decodes run-length data of 4 or 8 bits into rows of stride bytes, row 0 the first in the data. Pixels that
/// the data skips keep their value; data beyond the last row is ignored. \return true when the data reached
/// its end mark or filled the rows
bool decode_run_lengths(std::span<const std::uint8_t> data, unsigned bits, std::int32_t width,
    std::int32_t height, std::uint8_t* rows, std::size_t stride);

} // namespace klv
