#include "klv/formats/dib_header.h"
#include "klv/imaging/bmp_layout.h"
#include "klv/imaging/resolution.h"

#include <limits>

namespace klv::imaging::bmp {

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    const std::uint32_t colours = bitmap.bits_per_pixel <= 8 ? 1U << bitmap.bits_per_pixel : 0;
    const std::uint32_t pixel_offset = dib_file_header::stored_size + dib_header::info_size + 4 * colours;
    const auto stride = static_cast<std::uint32_t>(bitmap.bytes_per_line);
    const std::uint64_t image_size = std::uint64_t{stride} * static_cast<std::uint32_t>(bitmap.height);
    if (image_size > std::numeric_limits<std::uint32_t>::max() - pixel_offset)
        return imaging_unsupported;

    byte_writer head;
    dib_file_header{static_cast<std::uint32_t>(pixel_offset + image_size), pixel_offset}.write(head);
    dib_header{.width = bitmap.width,
        .height = bitmap.height,
        .bits = static_cast<std::uint16_t>(bitmap.bits_per_pixel),
        .image_size = static_cast<std::uint32_t>(image_size),
        .x_pixels_per_metre = pixels_per_metre(bitmap.x_resolution),
        .y_pixels_per_metre = pixels_per_metre(bitmap.y_resolution),
        .colours_used = colours}
        .write(head);
    write_colour_table(head, std::span(bitmap.colours).first(colours));
    if (!out.write(head.span()))
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
