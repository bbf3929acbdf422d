#include "klv/base/byte_writer.h"
#include "klv/imaging/bmp_layout.h"
#include "klv/imaging/resolution.h"

#include <limits>

namespace klv::imaging::bmp {

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    const std::uint32_t colours = bitmap.bits_per_pixel <= 8 ? 1U << bitmap.bits_per_pixel : 0;
    const std::uint32_t pixel_offset = file_header_size + info_header_size + 4 * colours;
    const auto stride = static_cast<std::uint32_t>(bitmap.bytes_per_line);
    const std::uint64_t image_size = std::uint64_t{stride} * static_cast<std::uint32_t>(bitmap.height);
    if (image_size > std::numeric_limits<std::uint32_t>::max() - pixel_offset)
        return imaging_unsupported;

    byte_writer header;
    header.text("BM");
    header.u32le(static_cast<std::uint32_t>(pixel_offset + image_size));
    header.u32le(0);
    header.u32le(pixel_offset);
    header.u32le(info_header_size);
    header.i32le(bitmap.width);
    header.i32le(bitmap.height);
    header.u16le(1);
    header.u16le(static_cast<std::uint16_t>(bitmap.bits_per_pixel));
    header.u32le(BI_RGB);
    header.u32le(static_cast<std::uint32_t>(image_size));
    header.i32le(pixels_per_metre(bitmap.x_resolution));
    header.i32le(pixels_per_metre(bitmap.y_resolution));
    header.u32le(colours);
    header.u32le(0);
    for (std::uint32_t i = 0; i < colours; ++i) {
        const RGBQUAD& colour = bitmap.colours[i];
        header.u8(colour.rgbBlue);
        header.u8(colour.rgbGreen);
        header.u8(colour.rgbRed);
        header.u8(0);
    }
    if (!out.write(header.span()))
        return imaging_write_error;
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        const std::uint8_t* const line = lines.line_from_bottom(y);
        if (!line)
            return imaging_aborted;
        if (!out.write({line, stride}))
            return imaging_write_error;
    }
    return imaging_ok;
}

} // namespace klv::imaging::bmp
