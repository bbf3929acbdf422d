#pragma once

#include "klv/base/byte_reader.h"
#include "klv/base/byte_writer.h"
#include "klv/base/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// The headers of Windows and OS/2 bitmaps (device-independent bitmaps), in files and in memory. A bitmap is
///
///     file header       14 bytes, in files only
///     info header       12 to 124 bytes; its first field is its own size
///     channel masks     12 or 16 bytes, where the info header is too short to hold them
///     colour table      entries of 3 or 4 bytes
///     rows of pixels    each padded to a multiple of 4 bytes, the bottom row first
///
/// and these are the info headers, by their size:
///
/// - 12: BITMAPCOREHEADER, OS/2 1: sizes of 16 bits, planes, depth; colours have 3 bytes.
/// - 16 to 64: OS/2 2: the fields of 40, cut short (what is missing is 0) or with fields of its own behind.
/// - 40: BITMAPINFOHEADER, Windows 3.
/// - 52 and 56: the same with 3 or 4 masks.
/// - 108 and 124: V4 and V5: masks, then colour space and profile.
namespace klv {

/// Compressions beside those of the platform's vocabulary.
inline constexpr std::uint32_t BI_JPEG = 4; ///< the pixels are a JPEG file
inline constexpr std::uint32_t BI_OS2_RLE24 = 4; ///< the same number in OS/2 headers: runs of 24-bit pixels
inline constexpr std::uint32_t BI_PNG = 5; ///< the pixels are a PNG file
inline constexpr std::uint32_t BI_ALPHABITFIELDS = 6; ///< four channel masks

/// Bytes of one row of width pixels, padded to a multiple of 4. 64 bits, so that no width overflows it.
[[nodiscard]] constexpr std::uint64_t dib_stride(std::uint32_t width, std::uint32_t bits) noexcept
{
    return (std::uint64_t{width} * bits + 31) / 32 * 4;
}

/// Which bits of a pixel of 16 or 32 bits are which channel.
struct channel_masks {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    friend bool operator==(const channel_masks&, const channel_masks&) = default;

    static constexpr std::size_t stored_size = 12;
    [[nodiscard]] static channel_masks read(byte_reader& in);
};

/// The masks of a bitmap of 16 (5-5-5) or 32 bits that does not bring its own.
[[nodiscard]] constexpr channel_masks default_channel_masks(unsigned bits) noexcept
{
    if (bits == 16)
        return {0x7C00, 0x03E0, 0x001F};
    return {0x00FF0000, 0x0000FF00, 0x000000FF};
}

/// An info header as it was stored. It is not judged here: what a reader takes, it asks for itself.
struct dib_header {
    static constexpr std::uint32_t core_size = 12;
    static constexpr std::uint32_t smallest_os2_size = 16;
    static constexpr std::uint32_t info_size = 40;
    static constexpr std::uint32_t size_with_masks
        = 52; ///< headers from here on hold the masks, OS/2's apart
    static constexpr std::uint32_t os2_size = 64;

    std::uint32_t size = info_size; ///< of the header itself
    std::int32_t width = 0;
    std::int32_t height = 0; ///< rows; negative for top-down
    std::uint16_t planes = 1;
    std::uint16_t bits = 0; ///< per pixel
    std::uint32_t compression = BI_RGB;
    std::uint32_t image_size = 0; ///< bytes as announced: 0 is common, and so are wrong ones
    std::int32_t x_pixels_per_metre = 0;
    std::int32_t y_pixels_per_metre = 0;
    std::uint32_t colours_used = 0; ///< entries of the colour table; 0 for all that the depth can have
    std::uint32_t colours_important = 0;
    channel_masks masks{}; ///< those in the header; the depth's own where there are none in it

    /// Reads the header and passes over all of it. Nothing when the size is none of the table's or the bytes
    /// end before the header does.
    [[nodiscard]] static std::optional<dib_header> read(byte_reader& in);
    /// A header in memory that is trusted to be as long as it says, with its masks behind it where they
    /// belong.
    [[nodiscard]] static std::optional<dib_header> read_trusted(const void* header);
    /// The 40 bytes of a BITMAPINFOHEADER, whatever the size field says.
    [[nodiscard]] std::array<std::uint8_t, info_size> stored() const noexcept;
    void write(byte_writer& out) const { out.bytes(stored()); }

    [[nodiscard]] bool is_core() const noexcept { return size == core_size; }
    /// Compression numbers from 3 on mean other things in OS/2 headers.
    [[nodiscard]] bool is_os2() const noexcept { return size < info_size || size == os2_size; }
    [[nodiscard]] bool top_down() const noexcept { return height < 0; }
    [[nodiscard]] std::uint32_t rows() const noexcept
    {
        const auto rows = static_cast<std::uint32_t>(height);
        return top_down() ? 0 - rows : rows;
    }
    /// True when the compression says that the masks are the bitmap's own.
    [[nodiscard]] bool has_masks() const noexcept
    {
        return compression == BI_BITFIELDS || compression == BI_ALPHABITFIELDS;
    }
    /// Bytes of masks between header and colour table.
    [[nodiscard]] std::size_t masks_behind() const noexcept;
    /// Entries of the colour table: as announced, else 2^bits, none above 8 bits.
    [[nodiscard]] std::uint32_t colours() const noexcept
    {
        return colours_used != 0 ? colours_used : bits <= 8 ? std::uint32_t{1} << bits : 0;
    }
    [[nodiscard]] std::size_t colour_bytes() const noexcept { return is_core() ? 3 : 4; }
    /// Where the colour table starts, from the header's start.
    [[nodiscard]] std::size_t table_offset() const noexcept { return size + masks_behind(); }
    /// Bytes of one row. \pre width > 0
    [[nodiscard]] std::uint64_t stride() const noexcept
    {
        return dib_stride(static_cast<std::uint32_t>(width), bits);
    }
    /// Bytes of all rows without compression. \pre width > 0
    [[nodiscard]] std::uint64_t plain_image_size() const noexcept { return stride() * rows(); }
};

/// Reads entries of entry_bytes (3 or 4: blue, green, red) into colours. \return how many were there
std::size_t read_colour_table(byte_reader& in, std::size_t entry_bytes, std::span<RGBQUAD> colours);
/// An entry of 4 bytes, the last of them 0.
[[nodiscard]] constexpr std::array<std::uint8_t, 4> stored_colour(const RGBQUAD& colour) noexcept
{
    return {colour.rgbBlue, colour.rgbGreen, colour.rgbRed, 0};
}
/// Writes entries of 4 bytes.
void write_colour_table(byte_writer& out, std::span<const RGBQUAD> colours);

/// The 14 bytes before the info header in a file.
struct dib_file_header {
    static constexpr std::uint32_t stored_size = 14;

    std::uint32_t file_size = 0;
    std::uint32_t pixel_offset = 0; ///< from the start of the file

    /// Nothing when the bytes don't begin with "BM" or are too few.
    [[nodiscard]] static std::optional<dib_file_header> read(byte_reader& in);
    void write(byte_writer& out) const;
};

/// What one stored byte can become (see believable_size.h).
inline constexpr std::uint64_t most_dib_bytes_for_one_plain = 2; ///< half of the rows may be missing
inline constexpr std::uint64_t most_dib_bytes_for_one_run = 256; ///< a run of 255 pixels takes two

} // namespace klv
