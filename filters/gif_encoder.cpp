#include "filters/gif_encoder.h"

#include "core/buffer.h"
#include "core/memory.h"
#include "core/progress.h"
#include "filters/gif_format.h"
#include "filters/gif_lzw_encoder.h"
#include "images/dib_rows.h"
#include "images/memory_dib.h"
#include "streams/stream.h"

#include <algorithm>
#include <limits>
#include <new>

namespace klv {

namespace {

constexpr std::uint16_t most_bits = 8;
constexpr unsigned least_literal_bits = 2;
/// Lines are asked for in bands of at most so many bytes.
constexpr std::uint32_t band_bytes = 32767;
constexpr std::uint32_t band_rows_multiple = 8;

/// Signature, screen, colours and image descriptor, up to and with the minimum code size.
void put_header(const oDIB& bitmap, unsigned literal_bits, byte_writer& out)
{
    const unsigned bits = bitmap.ColourDepth();
    const auto width = static_cast<std::uint16_t>(bitmap.Width());
    const auto height = static_cast<std::uint16_t>(bitmap.Height());
    const auto packed = static_cast<std::uint8_t>(gif_table_flags::present | (bits - 1) << 4 | (bits - 1));
    out.text("GIF87a");
    gif_screen_descriptor{.width = width, .height = height, .flags = {packed}}.write(out);
    const auto colours = bitmap.colours();
    for (std::size_t i = 0; i < std::size_t{1} << bits; ++i) {
        const RGBQUAD colour = i < colours.size() ? colours[i] : RGBQUAD{};
        out.u8(colour.rgbRed);
        out.u8(colour.rgbGreen);
        out.u8(colour.rgbBlue);
    }
    out.u8(gif_image_separator);
    gif_image_descriptor{.width = width, .height = height, .flags = {}}.write(out);
    out.u8(static_cast<std::uint8_t>(literal_bits));
}

bool write_header(const oDIB& bitmap, unsigned literal_bits, vSTREAM& out)
{
    byte_writer header(vMemResource());
    put_header(bitmap, literal_bits, header);
    const auto size = static_cast<std::uint32_t>(header.size());
    return out.WritePlain(header.data(), size) == size;
}

std::int32_t rows_of_band(const oDIB& bitmap)
{
    std::uint32_t rows = std::max(band_bytes / bitmap.BytesPerLine(), 1U);
    if (rows > band_rows_multiple)
        rows -= rows % band_rows_multiple;
    return static_cast<std::int32_t>(std::min(rows, static_cast<std::uint32_t>(bitmap.Height())));
}

/// Encodes the lines from the top down, a band at a time.
oFILTER_STATUS encode_lines(const oDIB& bitmap, gif_lzw_encoder& encoder, oPROGRESS* progress)
{
    const std::int32_t band_rows = rows_of_band(bitmap);
    const std::size_t stride = bitmap.BytesPerLine();
    vBUFFER<std::uint8_t> band;
    vBUFFER<std::uint8_t> indices;
    if (!band.resize(stride * static_cast<std::size_t>(band_rows))
        || !indices.resize(static_cast<std::size_t>(bitmap.Width())))
        return oFILTER_NO_MEMORY;
    for (std::int32_t top = bitmap.Height(); top > 0; top -= band_rows) {
        const std::int32_t rows = std::min(band_rows, top);
        if (!bitmap.GetImageLines(top - rows, rows, band.data(), nullptr))
            return oFILTER_FAILED;
        for (std::int32_t row = rows; row-- > 0;) {
            read_line_as_indices(band.data() + stride * static_cast<std::size_t>(row), bitmap.ColourDepth(),
                indices.data(), bitmap.Width());
            if (!encoder.encode(indices.span()))
                return oFILTER_WRITE_ERROR;
        }
        if (progress && progress->Stop())
            return oFILTER_CANCELLED;
        if (progress)
            progress->oSet(static_cast<std::uint32_t>(bitmap.Height() - top + rows));
    }
    return oFILTER_OK;
}

oFILTER_STATUS write_indexed(const oDIB& bitmap, vSTREAM& out, oPROGRESS* progress)
{
    constexpr std::int32_t longest_side = std::numeric_limits<std::uint16_t>::max();
    if (bitmap.Width() <= 0 || bitmap.Height() <= 0 || bitmap.BytesPerLine() == 0)
        return oFILTER_FAILED;
    if (bitmap.Width() > longest_side || bitmap.Height() > longest_side)
        return oFILTER_UNSUPPORTED;
    const unsigned literal_bits = std::max<unsigned>(bitmap.ColourDepth(), least_literal_bits);
    gif_lzw_encoder encoder(out);
    if (!encoder.start(literal_bits))
        return oFILTER_NO_MEMORY;
    if (!write_header(bitmap, literal_bits, out))
        return oFILTER_WRITE_ERROR;
    const oFILTER_STATUS encoded = encode_lines(bitmap, encoder, progress);
    if (encoded != oFILTER_OK)
        return encoded;
    const bool written = encoder.finish() && out.WritePlain(&gif_trailer, 1) == 1;
    return written ? oFILTER_OK : oFILTER_WRITE_ERROR;
}

oFILTER_STATUS write_reduced(const oDIB& bitmap, vSTREAM& out, oPROGRESS* progress)
{
    if (bitmap.ColourDepth() <= most_bits)
        return write_indexed(bitmap, out, progress);
    const oMEMDIB reduced(bitmap, 0, 0, most_bits, 1, 0);
    if (bitmap.Width() > 0 && !reduced.HasPixels())
        return oFILTER_NO_MEMORY;
    return write_indexed(reduced, out, progress);
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
        status = write_reduced(bitmap, out, progress);
    } catch (const std::bad_alloc&) {
        // The answer stays "no memory".
    }
    if (progress)
        progress->oTerminate();
    return status;
}

} // namespace klv
