#include "platform/byte_reader.h"
#include "platform/dib_decode.h"
#include "platform/imaging/bmp_layout.h"
#include "platform/imaging/resolution.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace klv::imaging::bmp {

namespace {

/// How far a header may promise more than its file holds.
constexpr std::uint64_t free_image_bytes = 1 << 20;
constexpr std::uint64_t most_bytes_for_one_raw = 2;
constexpr std::uint64_t most_bytes_for_one_run = 256;

struct layout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool top_down = false;
    std::uint16_t bits = 0;
    std::uint32_t compression = BI_RGB;
    std::int32_t x_pixels_per_metre = 0;
    std::int32_t y_pixels_per_metre = 0;
    std::uint32_t colours = 0;
    channel_masks masks;
    std::size_t table_offset = 0;
    std::size_t colour_bytes = 4;
    std::size_t pixel_offset = 0;

    [[nodiscard]] bool run_lengths() const { return compression == BI_RLE8 || compression == BI_RLE4; }
    [[nodiscard]] std::size_t stride() const
    {
        return (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
    }
};

void read_core_header(byte_reader& in, layout& found)
{
    found.width = in.u16le();
    found.height = in.u16le();
    in.skip(2); // planes
    found.bits = in.u16le();
    found.colour_bytes = 3;
}

void read_info_header(byte_reader& in, std::uint32_t header_size, layout& found)
{
    // A short OS/2 header ends early: what is missing reads as 0.
    byte_reader fields(in.bytes(header_size - sizeof(std::uint32_t)));
    found.width = fields.i32le();
    found.height = fields.i32le();
    fields.skip(2); // planes
    found.bits = fields.u16le();
    found.compression = fields.u32le();
    fields.skip(4); // size of the pixels, often wrong
    found.x_pixels_per_metre = fields.i32le();
    found.y_pixels_per_metre = fields.i32le();
    found.colours = fields.u32le();
    fields.skip(4); // important colours
    found.masks = default_channel_masks(found.bits);
    if (found.compression != BI_BITFIELDS && found.compression != alpha_bitfields)
        return;
    const bool inside = header_size >= header_size_with_masks && header_size != os2_header_size;
    byte_reader& masks = inside ? fields : in;
    found.masks.red = masks.u32le();
    found.masks.green = masks.u32le();
    found.masks.blue = masks.u32le();
    if (!inside && found.compression == alpha_bitfields)
        masks.skip(4);
}

bool readable(const layout& found, std::uint32_t header_size)
{
    const bool os2 = header_size < info_header_size || header_size == os2_header_size;
    switch (found.compression) {
    case BI_RGB:
        return found.bits == 1 || found.bits == 2 || found.bits == 4 || found.bits == 8 || found.bits == 16
            || found.bits == 24 || found.bits == 32;
    case BI_RLE8:
        return found.bits == 8;
    case BI_RLE4:
        return found.bits == 4;
    case BI_BITFIELDS:
    case alpha_bitfields:
        // The number stands for a facsimile code in OS/2 files.
        return !os2 && (found.bits == 16 || found.bits == 32);
    default:
        return false;
    }
}

void place_colours_and_pixels(
    layout& found, std::size_t headers_end, std::uint32_t stored_offset, std::size_t size)
{
    const bool offset_is_good = stored_offset >= headers_end && stored_offset < size;
    found.table_offset = headers_end;
    if (found.bits > 8) {
        // Deep bitmaps may carry a table for displays with fewer colours.
        const std::size_t skipped = std::min<std::size_t>(found.colours, (size - headers_end) / 4) * 4;
        found.pixel_offset = offset_is_good ? stored_offset : headers_end + skipped;
        found.colours = 0;
        return;
    }
    const std::uint32_t most = std::uint32_t{1} << found.bits;
    std::size_t colours = found.colours == 0 ? most : found.colours;
    colours = std::min(colours, (size - headers_end) / found.colour_bytes);
    // Some programs write fewer colours than they announce; the pixels' place tells.
    if (offset_is_good)
        colours = std::min(colours, (stored_offset - headers_end) / found.colour_bytes);
    found.pixel_offset = offset_is_good ? stored_offset : headers_end + colours * found.colour_bytes;
    found.colours = static_cast<std::uint32_t>(std::min<std::size_t>(colours, most));
}

imaging_result read_layout(std::span<const std::uint8_t> file, layout& found)
{
    byte_reader in(file);
    in.skip(10);
    const std::uint32_t stored_offset = in.u32le();
    const std::uint32_t header_size = in.u32le();
    if (header_size == core_header_size)
        read_core_header(in, found);
    else if (header_size >= smallest_os2_header_size && in.holds(header_size - sizeof(std::uint32_t)))
        read_info_header(in, header_size, found);
    else
        return imaging_bad_data;
    if (!in.ok() || found.width <= 0 || found.height == 0 || found.height == INT32_MIN)
        return imaging_bad_data;
    if (!readable(found, header_size))
        return imaging_unsupported;
    found.top_down = found.height < 0;
    found.height = std::abs(found.height);
    place_colours_and_pixels(found, in.position(), stored_offset, file.size());

    const std::uint64_t bytes = std::uint64_t{found.stride()} * static_cast<std::uint32_t>(found.height);
    const std::uint64_t factor = found.run_lengths() ? most_bytes_for_one_run : most_bytes_for_one_raw;
    return bytes > free_image_bytes && bytes / factor > file.size() ? imaging_bad_data : imaging_ok;
}

void read_colours(std::span<const std::uint8_t> file, const layout& found, bitmap_handle& bitmap)
{
    if (bitmap.bits_per_pixel > 8)
        return;
    bitmap.colour_count = 1U << bitmap.bits_per_pixel;
    std::fill_n(bitmap.colours, bitmap.colour_count, RGBQUAD{});
    byte_reader in(file);
    in.seek(found.table_offset);
    for (std::uint32_t i = 0; i < found.colours; ++i) {
        const auto colour = in.bytes(found.colour_bytes);
        if (!colour.empty())
            bitmap.colours[i] = {colour[0], colour[1], colour[2], 0};
    }
}

/// Two-bit indices into four-bit ones.
void widen_indices(const std::uint8_t* row, std::uint8_t* line, std::int32_t width)
{
    for (std::int32_t x = 0; x < width; ++x) {
        const int index = row[x / 4] >> (6 - x % 4 * 2) & 3;
        line[x / 2] = static_cast<std::uint8_t>(line[x / 2] | index << (x % 2 == 0 ? 4 : 0));
    }
}

class row_unpacker {
public:
    explicit row_unpacker(const layout& found)
        : found_(found)
        , masked_(found.masks, found.bits)
    {
    }
    void operator()(const std::uint8_t* row, std::uint8_t* line) const
    {
        if (found_.bits == 16 || found_.bits == 32)
            masked_.to_24(row, line, found_.width);
        else if (found_.bits == 2)
            widen_indices(row, line, found_.width);
        else
            std::copy_n(row, found_.stride(), line);
    }

private:
    const layout& found_;
    masked_pixels masked_;
};

/// The rows in the order of the file, as far as they are there, each `stride` bytes.
std::vector<std::uint8_t> expand_run_lengths(
    std::span<const std::uint8_t> data, const layout& found, bool& complete)
{
    std::vector<std::uint8_t> rows(found.stride() * static_cast<std::size_t>(found.height));
    complete = decode_run_lengths(data, found.bits, found.width, found.height, rows.data(), found.stride());
    return rows;
}

} // namespace

imaging_result info(image_io& in, file_info& info)
{
    layout found;
    const auto file = in.read_all();
    const imaging_result result = read_layout(file, found);
    if (result != imaging_ok)
        return result;
    info.width = found.width;
    info.height = found.height;
    info.bits_per_pixel = found.bits == 2 ? 4 : found.bits;
    info.x_resolution = dots_per_inch_of_metre(found.x_pixels_per_metre);
    info.y_resolution = dots_per_inch_of_metre(found.y_pixels_per_metre);
    info.perspective = found.top_down ? top_left : bottom_left;
    return imaging_ok;
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    layout found;
    const auto file = in.read_all();
    const imaging_result result = read_layout(file, found);
    if (result != imaging_ok)
        return result;
    read_colours(file, found, bitmap);

    bool complete = true;
    std::span<const std::uint8_t> rows(file);
    rows = rows.subspan(std::min(found.pixel_offset, rows.size()));
    std::vector<std::uint8_t> expanded;
    if (found.run_lengths()) {
        expanded = expand_run_lengths(rows, found, complete);
        rows = expanded;
    }

    line_sink sink(info, bitmap, callback, user);
    const row_unpacker unpack(found);
    for (std::int32_t y = 0; y < found.height; ++y) {
        const std::size_t offset = found.stride() * static_cast<std::size_t>(y);
        if (rows.size() < offset + found.stride()) {
            complete = false;
            break;
        }
        std::uint8_t* const line = sink.next_line();
        if (!line)
            return imaging_aborted;
        unpack(rows.data() + offset, line);
    }
    if (!sink.finish())
        return imaging_aborted;
    return complete ? imaging_ok : imaging_read_error;
}

} // namespace klv::imaging::bmp
