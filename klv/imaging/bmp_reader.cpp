#include "klv/base/byte_reader.h"
#include "klv/formats/dib_decode.h"
#include "klv/imaging/bmp_layout.h"
#include "klv/imaging/memory_file.h"
#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/resolution.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <vector>

namespace klv::imaging::bmp {

namespace {

/// How far a header may promise more than its file holds.
constexpr std::uint64_t free_image_bytes = 1 << 20;
constexpr std::uint64_t most_bytes_for_one_raw = 2;
constexpr std::uint64_t most_bytes_for_one_run = 256;
/// Headers and colour table are looked for in so many bytes from the start.
constexpr std::size_t head_bytes = 1 << 16;
constexpr std::size_t piece_bytes = 1 << 16;

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

    bool os2 = false;

    [[nodiscard]] bool run_lengths() const
    {
        return compression == BI_RLE8 || compression == BI_RLE4 || (os2 && compression == os2_rle24);
    }
    /// The codec of a whole image file that stands for the pixels; null where there is none.
    [[nodiscard]] const codec* embedded() const
    {
        return os2                         ? nullptr
            : compression == embedded_jpeg ? &jpeg_codec
            : compression == embedded_png  ? &png_codec
                                           : nullptr;
    }
    [[nodiscard]] std::int32_t delivered_bits() const { return bits == 2 ? 4 : bits == 64 ? 24 : bits; }
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

bool readable(const layout& found)
{
    const auto bits_are = [&found](std::initializer_list<int> possible) {
        return std::ranges::find(possible, found.bits) != possible.end();
    };
    switch (found.compression) {
    case BI_RGB:
        return bits_are({1, 2, 4, 8, 16, 24, 32, 64});
    case BI_RLE8:
        return bits_are({8});
    case BI_RLE4:
        return bits_are({4});
    case BI_BITFIELDS:
    case alpha_bitfields:
        // The number stands for a facsimile code in OS/2 files.
        return !found.os2 && bits_are({16, 32});
    case os2_rle24: // and embedded_jpeg
        return !found.os2 || bits_are({24});
    case embedded_png:
        return !found.os2;
    default:
        return false;
    }
}

void place_colours_and_pixels(
    layout& found, std::size_t headers_end, std::uint32_t stored_offset, std::uint32_t size)
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

imaging_result parse_layout(std::span<const std::uint8_t> head, std::uint32_t file_size, layout& found)
{
    byte_reader in(head);
    in.skip(10);
    const std::uint32_t stored_offset = in.u32le();
    const std::uint32_t header_size = in.u32le();
    found.os2 = header_size < info_header_size || header_size == os2_header_size;
    if (header_size == core_header_size)
        read_core_header(in, found);
    else if (header_size >= smallest_os2_header_size && in.holds(header_size - sizeof(std::uint32_t)))
        read_info_header(in, header_size, found);
    else
        return imaging_bad_data;
    if (!in.ok() || found.width <= 0 || found.height == 0 || found.height == INT32_MIN)
        return imaging_bad_data;
    if (!readable(found))
        return imaging_unsupported;
    found.top_down = found.height < 0;
    found.height = std::abs(found.height);
    if (found.embedded()) {
        found.pixel_offset = stored_offset;
        return imaging_ok;
    }
    place_colours_and_pixels(found, in.position(), stored_offset, file_size);

    const std::uint64_t bytes = std::uint64_t{found.stride()} * static_cast<std::uint32_t>(found.height);
    const std::uint64_t factor = found.run_lengths() ? most_bytes_for_one_run : most_bytes_for_one_raw;
    return bytes > free_image_bytes && bytes / factor > file_size ? imaging_bad_data : imaging_ok;
}

/// The start of a file with the headers and the colour table, and what they say.
struct bmp_head {
    std::vector<std::uint8_t> bytes;
    layout found;

    imaging_result read(image_io& in)
    {
        const std::uint32_t size = in.size();
        bytes.resize(std::min<std::size_t>(size, head_bytes));
        bytes.resize(in.read(bytes));
        return parse_layout(bytes, size, found);
    }
};

void read_colours(std::span<const std::uint8_t> file, const layout& found, bitmap_handle& bitmap)
{
    if (found.bits > 8)
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
    std::fill_n(line, (width + 1) / 2, std::uint8_t{0});
    for (std::int32_t x = 0; x < width; ++x) {
        const int index = row[x / 4] >> (6 - x % 4 * 2) & 3;
        line[x / 2] = static_cast<std::uint8_t>(line[x / 2] | index << (x % 2 == 0 ? 4 : 0));
    }
}

/// Pixels of four numbers with 13 bits after the point: linear light, blue first, and an opacity.
void linear_to_24(const std::uint8_t* row, std::uint8_t* line, std::int32_t width)
{
    constexpr double one = 8192;
    for (std::int32_t x = 0; x < width; ++x, row += 8, line += 3) {
        byte_reader in({row, 6});
        for (int i = 0; i < 3; ++i)
            line[i] = srgb_level(in.i16le() / one);
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
        if (found_.bits == 64)
            linear_to_24(row, line, found_.width);
        else if (found_.bits == 16 || found_.bits == 32)
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

/// What is left of a file, in pieces.
class file_pieces final : public byte_pieces {
public:
    explicit file_pieces(image_io& in)
        : in_(in)
        , piece_(piece_bytes)
    {
    }
    std::span<const std::uint8_t> next() override { return {piece_.data(), in_.read(piece_)}; }

private:
    image_io& in_;
    std::vector<std::uint8_t> piece_;
};

/// The rows in the order of the file, stored plainly or as runs.
class stored_rows {
public:
    stored_rows(image_io& in, const layout& found)
        : in_(in)
        , found_(found)
        , pieces_(in)
        , runs_(pieces_, found.bits, found.width)
        , row_(found.stride())
    {
    }
    /// The next row; complete becomes false when it is not all there.
    [[nodiscard]] const std::uint8_t* next(bool& complete)
    {
        if (found_.run_lengths()) {
            std::ranges::fill(row_, std::uint8_t{0});
            complete = runs_.next(row_.data());
        } else {
            complete = in_.read(row_) == row_.size();
        }
        return row_.data();
    }

private:
    image_io& in_;
    const layout& found_;
    file_pieces pieces_;
    run_length_rows runs_;
    std::vector<std::uint8_t> row_;
};

/// The image file that stands for the pixels.
std::vector<std::uint8_t> embedded_file(image_io& in, const layout& found)
{
    std::vector<std::uint8_t> bytes = in.read_all();
    bytes.erase(bytes.begin(),
        bytes.begin() + static_cast<std::ptrdiff_t>(std::min(found.pixel_offset, bytes.size())));
    return bytes;
}

imaging_result describe_embedded(image_io& in, const layout& found, file_info& info)
{
    const std::vector<std::uint8_t> bytes = embedded_file(in, found);
    memory_file file(bytes);
    const redirection io = file.io();
    image_io inner(io, nullptr, image_io::access::reading);
    return found.embedded()->info(inner, info);
}

imaging_result load_embedded(image_io& in, const layout& found, const file_info& info, bitmap_handle& bitmap,
    load_callback callback, void* user)
{
    const std::vector<std::uint8_t> bytes = embedded_file(in, found);
    memory_file file(bytes);
    const redirection io = file.io();
    image_io inner(io, nullptr, image_io::access::reading);
    return found.embedded()->load(inner, info, bitmap, callback, user);
}

} // namespace

imaging_result info(image_io& in, file_info& info)
{
    bmp_head head;
    const imaging_result result = head.read(in);
    if (result != imaging_ok)
        return result;
    const layout& found = head.found;
    if (found.embedded())
        return describe_embedded(in, found, info);
    info.width = found.width;
    info.height = found.height;
    info.bits_per_pixel = found.delivered_bits();
    info.x_resolution = dots_per_inch_of_metre(found.x_pixels_per_metre);
    info.y_resolution = dots_per_inch_of_metre(found.y_pixels_per_metre);
    info.perspective = found.top_down ? top_left : bottom_left;
    return imaging_ok;
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    bmp_head head;
    const imaging_result result = head.read(in);
    if (result != imaging_ok)
        return result;
    const layout& found = head.found;
    if (found.embedded())
        return load_embedded(in, found, info, bitmap, callback, user);
    read_colours(head.bytes, found, bitmap);
    if (!in.seek(static_cast<std::uint32_t>(found.pixel_offset)))
        return imaging_read_error;

    line_sink sink(info, bitmap, callback, user);
    const row_unpacker unpack(found);
    stored_rows rows(in, found);
    bool complete = true;
    for (std::int32_t y = 0; y < found.height && complete; ++y) {
        const std::uint8_t* const row = rows.next(complete);
        // Of runs that end early there is a part of the row; other rows are there or not.
        if (!complete && !found.run_lengths())
            break;
        std::uint8_t* const line = sink.next_line();
        if (!line)
            return imaging_aborted;
        unpack(row, line);
    }
    if (!sink.finish())
        return imaging_aborted;
    return complete ? imaging_ok : imaging_read_error;
}

} // namespace klv::imaging::bmp
