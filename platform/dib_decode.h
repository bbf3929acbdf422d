#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

/// The two ways in which a Windows bitmap packs its pixels beyond plain rows: channel masks (16 and 32 bits)
/// and run lengths (4 and 8 bits).
namespace klv {

struct channel_masks {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
};

/// The masks of a bitmap of 16 (5-5-5) or 32 bits that does not bring its own.
[[nodiscard]] constexpr channel_masks default_channel_masks(unsigned bits)
{
    if (bits == 16)
        return {0x7C00, 0x03E0, 0x001F};
    return {0x00FF0000, 0x0000FF00, 0x000000FF};
}

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

/// Decodes run-length data (BI_RLE8 for 8 bits, BI_RLE4 for 4) into rows of stride bytes, row 0 the first
/// in the data. Pixels that the data skips keep their value; data beyond the last row is ignored.
/// \return true when the data reached its end mark or filled the rows
bool decode_run_lengths(std::span<const std::uint8_t> data, unsigned bits, std::int32_t width,
    std::int32_t height, std::uint8_t* rows, std::size_t stride);

} // namespace klv
