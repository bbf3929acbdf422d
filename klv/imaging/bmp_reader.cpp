#include "klv/base/byte_reader.h"
#include "klv/formats/believable_size.h"
#include "klv/formats/dib_decode.h"
#include "klv/imaging/bmp_layout.h"
#include "klv/imaging/memory_file.h"
#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/resolution.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <vector>

namespace klv::imaging::bmp {

namespace {

/// Headers and colour table are looked for in so many bytes from the start.
constexpr std::size_t head_bytes = 1 << 16;
constexpr std::size_t piece_bytes = 1 << 16;

/// What a file's headers say: the info header with its masks, wherever they stood, and its size as a positive
/// number of rows.
struct layout {
    dib_header header;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t bits = 0;
    std::uint32_t colours = 0; ///< entries that the table really has
    std::size_t table_offset = 0;
    std::size_t pixel_offset = 0;

    [[nodiscard]] bool run_lengths() const
    {
        return header.compression == BI_RLE8 || header.compression == BI_RLE4
            || (header.is_os2() && header.compression == BI_OS2_RLE24);
    }
    /// The codec of a whole image file that stands for the pixels; null where there is none.
    [[nodiscard]] const codec* embedded() const
    {
        return header.is_os2()              ? nullptr
            : header.compression == BI_JPEG ? &jpeg_codec
            : header.compression == BI_PNG  ? &png_codec
                                            : nullptr;
    }
    [[nodiscard]] std::int32_t delivered_bits() const { return bits == 2 ? 4 : bits == 64 ? 24 : bits; }
    [[nodiscard]] std::size_t stride() const { return static_cast<std::size_t>(header.stride()); }
};

/// Reads the info header and the masks behind it.
std::optional<dib_header> read_headers(byte_reader& in)
{
    auto header = dib_header::read(in);
    if (!header || header->masks_behind() == 0)
        return header;
    byte_reader masks = in.sub(header->masks_behind());
    header->masks = channel_masks::read(masks);
    return in.ok() ? header : std::nullopt;
}

bool readable(const layout& found)
{
    const auto bits_are = [&found](std::initializer_list<int> possible) {
        return std::ranges::find(possible, found.bits) != possible.end();
    };
    switch (found.header.compression) {
    case BI_RGB:
        return bits_are({1, 2, 4, 8, 16, 24, 32, 64});
    case BI_RLE8:
        return bits_are({8});
    case BI_RLE4:
        return bits_are({4});
    case BI_BITFIELDS:
    case BI_ALPHABITFIELDS:
        // The number stands for a facsimile code in OS/2 files.
        return !found.header.is_os2() && bits_are({16, 32});
    case BI_OS2_RLE24: // and BI_JPEG
        return !found.header.is_os2() || bits_are({24});
    case BI_PNG:
        return !found.header.is_os2();
    default:
        return false;
    }
}

void place_colours_and_pixels(
    layout& found, std::size_t headers_end, std::uint32_t stored_offset, std::uint32_t size)
{
    const bool offset_is_good = stored_offset >= headers_end && stored_offset < size;
    const std::uint32_t announced = found.header.colours_used;
    found.table_offset = headers_end;
    if (found.bits > 8) {
        // Deep bitmaps may carry a table for displays with fewer colours.
        const std::size_t skipped = std::min<std::size_t>(announced, (size - headers_end) / 4) * 4;
        found.pixel_offset = offset_is_good ? stored_offset : headers_end + skipped;
        return;
    }
    const std::size_t colour_bytes = found.header.colour_bytes();
    std::size_t colours = std::min<std::size_t>(found.header.colours(), (size - headers_end) / colour_bytes);
    // Some programs write fewer colours than they announce; the pixels' place tells.
    if (offset_is_good)
        colours = std::min(colours, (stored_offset - headers_end) / colour_bytes);
    found.pixel_offset = offset_is_good ? stored_offset : headers_end + colours * colour_bytes;
    found.colours = static_cast<std::uint32_t>(std::min(colours, std::size_t{1} << found.bits));
}

imaging_result parse_layout(std::span<const std::uint8_t> head, std::uint32_t file_size, layout& found)
{
    byte_reader in(head);
    const auto file = dib_file_header::read(in);
    const auto header = read_headers(in);
    if (!file || !header || header->width <= 0 || header->height == 0 || header->height == INT32_MIN)
        return imaging_bad_data;
    found.header = *header;
    found.width = header->width;
    found.height = static_cast<std::int32_t>(header->rows());
    found.bits = header->bits;
    if (!readable(found))
        return imaging_unsupported;
    if (found.embedded()) {
        found.pixel_offset = file->pixel_offset;
        return imaging_ok;
    }
    place_colours_and_pixels(found, in.position(), file->pixel_offset, file_size);
    return believable_size(header->plain_image_size(), file_size,
               found.run_lengths() ? most_dib_bytes_for_one_run : most_dib_bytes_for_one_plain)
        ? imaging_ok
        : imaging_bad_data;
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
    read_colour_table(in, found.header.colour_bytes(), std::span(bitmap.colours).first(found.colours));
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
        , masked_(found.header.masks, found.bits)
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
    info.x_resolution = dots_per_inch_of_metre(found.header.x_pixels_per_metre);
    info.y_resolution = dots_per_inch_of_metre(found.header.y_pixels_per_metre);
    info.perspective = found.header.top_down() ? top_left : bottom_left;
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
