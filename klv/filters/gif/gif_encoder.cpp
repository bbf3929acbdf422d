#include "klv/filters/gif/gif_encoder.h"

#include "klv/base/buffer.h"
#include "klv/base/memory.h"
#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_reduce.h"
#include "klv/bitmaps/dib_rows.h"
#include "klv/core/progress.h"
#include "klv/filters/gif/gif_format.h"
#include "klv/filters/gif/gif_lzw_encoder.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

namespace klv {

namespace {

constexpr std::uint16_t most_bits = 8;
constexpr unsigned least_literal_bits = 2;
constexpr std::int32_t longest_side = std::numeric_limits<std::uint16_t>::max();
/// Lines are asked for in bands of at most so many bytes.
constexpr std::uint32_t band_bytes = 32767;
constexpr std::uint32_t band_rows_multiple = 8;

/// The lines of a bitmap from the top down, fetched a band at a time.
class line_reader {
public:
    explicit line_reader(const oDIB& bitmap)
        : bitmap_(bitmap)
        , band_rows_(rows_of_band(bitmap))
    {
    }
    [[nodiscard]] bool make_room()
    {
        return band_.resize(std::size_t{bitmap_.BytesPerLine()} * static_cast<std::size_t>(band_rows_));
    }
    /// Row 0 is the top one; the next call is for the row below or for row 0. Empty when it can't be had.
    std::span<const std::uint8_t> row(std::int32_t index)
    {
        const std::int32_t in_band = index % band_rows_;
        const std::int32_t rows = std::min(band_rows_, bitmap_.Height() - (index - in_band));
        const std::int32_t bottom = bitmap_.Height() - (index - in_band) - rows;
        if (in_band == 0 && !bitmap_.GetImageLines(bottom, rows, band_.data(), nullptr))
            return {};
        const std::size_t stride = bitmap_.BytesPerLine();
        return band_.span().subspan(stride * static_cast<std::size_t>(rows - 1 - in_band), stride);
    }
    [[nodiscard]] bool ends_band(std::int32_t index) const { return (index + 1) % band_rows_ == 0; }

private:
    static std::int32_t rows_of_band(const oDIB& bitmap)
    {
        std::uint32_t rows = std::max(band_bytes / bitmap.BytesPerLine(), 1U);
        if (rows > band_rows_multiple)
            rows -= rows % band_rows_multiple;
        return static_cast<std::int32_t>(std::min(rows, static_cast<std::uint32_t>(bitmap.Height())));
    }

    const oDIB& bitmap_;
    std::int32_t band_rows_;
    vBUFFER<std::uint8_t> band_;
};

/// A bitmap as rows of indices, whatever its depth.
class indexed_rows {
public:
    explicit indexed_rows(const oDIB& bitmap)
        : bitmap_(bitmap)
        , lines_(bitmap)
        , reducer_(bitmap.Width(), most_bits)
    {
    }
    /// Finds the colours of a bitmap that has no colour table.
    oFILTER_STATUS start()
    {
        const auto width = static_cast<std::size_t>(bitmap_.Width());
        if (!lines_.make_room() || !indices_.resize(width))
            return oFILTER_NO_MEMORY;
        if (!reduces())
            return oFILTER_OK;
        if (!pixels_.resize(3 * width))
            return oFILTER_NO_MEMORY;
        bool looking = true;
        for (std::int32_t row = 0; looking && row < bitmap_.Height(); ++row) {
            if (!read_as_24(row))
                return oFILTER_FAILED;
            looking = reducer_.look_at(pixels_.data());
        }
        return reducer_.start() ? oFILTER_OK : oFILTER_NO_MEMORY;
    }
    [[nodiscard]] std::span<const RGBQUAD> colours() const
    {
        return reduces() ? reducer_.colours() : bitmap_.colours();
    }
    /// Bits that every index fits into.
    [[nodiscard]] unsigned bits() const
    {
        if (!reduces())
            return bitmap_.ColourDepth();
        return std::max(static_cast<unsigned>(std::bit_width(colours().size() - 1)), 1U);
    }
    /// As line_reader::row.
    std::span<const std::uint8_t> row(std::int32_t index)
    {
        if (reduces()) {
            if (!read_as_24(index))
                return {};
            reducer_.reduce_line(pixels_.data(), indices_.data());
            return indices_.span();
        }
        const auto line = lines_.row(index);
        if (line.empty())
            return {};
        read_line_as_indices(line.data(), bitmap_.ColourDepth(), indices_.data(), bitmap_.Width());
        return indices_.span();
    }
    [[nodiscard]] bool ends_band(std::int32_t index) const { return lines_.ends_band(index); }

private:
    [[nodiscard]] bool reduces() const { return bitmap_.ColourDepth() > most_bits; }
    bool read_as_24(std::int32_t row)
    {
        const auto line = lines_.row(row);
        if (!line.empty())
            read_line_as_24(line, bitmap_.ColourDepth(), pixels_.data(), bitmap_.Width(), {});
        return !line.empty();
    }

    const oDIB& bitmap_;
    line_reader lines_;
    dib_reducer reducer_;
    vBUFFER<std::uint8_t> pixels_; ///< of one row, 24 bits each
    vBUFFER<std::uint8_t> indices_;
};

/// Signature, screen, colours and image descriptor, up to and with the minimum code size.
bool write_header(const oDIB& bitmap, const indexed_rows& rows, unsigned literal_bits, vSTREAM& out)
{
    byte_writer header(vMemResource());
    const auto width = static_cast<std::uint16_t>(bitmap.Width());
    const auto height = static_cast<std::uint16_t>(bitmap.Height());
    const unsigned bits = rows.bits();
    const auto packed = static_cast<std::uint8_t>(gif_table_flags::present | (bits - 1) << 4 | (bits - 1));
    header.text("GIF87a");
    gif_screen_descriptor{.width = width, .height = height, .flags = {packed}}.write(header);
    const auto colours = rows.colours();
    for (std::size_t i = 0; i < std::size_t{1} << bits; ++i) {
        const RGBQUAD colour = i < colours.size() ? colours[i] : RGBQUAD{};
        header.u8(colour.rgbRed);
        header.u8(colour.rgbGreen);
        header.u8(colour.rgbBlue);
    }
    header.u8(gif_image_separator);
    gif_image_descriptor{.width = width, .height = height, .flags = {}}.write(header);
    header.u8(static_cast<std::uint8_t>(literal_bits));
    const auto size = static_cast<std::uint32_t>(header.size());
    return out.WritePlain(header.data(), size) == size;
}

oFILTER_STATUS encode_rows(
    std::int32_t height, indexed_rows& rows, gif_lzw_encoder& encoder, oPROGRESS* progress)
{
    for (std::int32_t row = 0; row < height; ++row) {
        const auto indices = rows.row(row);
        if (indices.empty())
            return oFILTER_FAILED;
        if (!encoder.encode(indices))
            return oFILTER_WRITE_ERROR;
        if (!progress || !rows.ends_band(row))
            continue;
        if (progress->Stop())
            return oFILTER_CANCELLED;
        progress->oSet(static_cast<std::uint32_t>(row + 1));
    }
    return oFILTER_OK;
}

oFILTER_STATUS write_picture(const oDIB& bitmap, vSTREAM& out, oPROGRESS* progress)
{
    if (bitmap.Width() <= 0 || bitmap.Height() <= 0 || bitmap.BytesPerLine() == 0)
        return oFILTER_FAILED;
    if (bitmap.Width() > longest_side || bitmap.Height() > longest_side)
        return oFILTER_UNSUPPORTED;
    indexed_rows rows(bitmap);
    const oFILTER_STATUS started = rows.start();
    if (started != oFILTER_OK)
        return started;
    const unsigned literal_bits = std::max(rows.bits(), least_literal_bits);
    gif_lzw_encoder encoder(out);
    if (!encoder.start(literal_bits))
        return oFILTER_NO_MEMORY;
    if (!write_header(bitmap, rows, literal_bits, out))
        return oFILTER_WRITE_ERROR;
    const oFILTER_STATUS encoded = encode_rows(bitmap.Height(), rows, encoder, progress);
    if (encoded != oFILTER_OK)
        return encoded;
    const bool written = encoder.finish() && out.WritePlain(&gif_trailer, 1) == 1;
    return written ? oFILTER_OK : oFILTER_WRITE_ERROR;
}

} // namespace

oFILTER_STATUS write_gif(const oDIB& bitmap, vSTREAM& out, oPROGRESS* progress) noexcept
{
    if (progress) {
        progress->oStart();
        progress->oFullScale(static_cast<std::uint32_t>(std::max(bitmap.Height(), 0)));
    }
    oFILTER_STATUS status = oFILTER_NO_MEMORY;
    try {
        status = write_picture(bitmap, out, progress);
    } catch (const std::bad_alloc&) {
        // The answer stays "no memory".
    }
    if (progress)
        progress->oTerminate();
    return status;
}

} // namespace klv
