#include "platform/byte_reader.h"
#include "platform/byte_writer.h"
#include "platform/imaging/buffered_input.h"
#include "platform/imaging/codec.h"
#include "platform/imaging/magick_codec.h"
#include "platform/imaging/pixel_lines.h"

#include <algorithm>
#include <array>
#include <vector>

namespace klv::imaging {

namespace {

constexpr std::size_t header_bytes = 18;
/// A run of 128 pixels of one byte takes two bytes; uncompressed pixels of single bits come eight in one.
constexpr std::uint64_t most_pixels_in_byte = 64;

enum image_type : std::uint8_t { indexed = 1, true_colour = 2, grey = 3 };
/// Added to the type when the pixels come in runs.
constexpr std::uint8_t run_lengths = 8;

/// Where the first pixel is, unless at the lower left.
enum descriptor : std::uint8_t { from_right = 0x10, from_top = 0x20 };

/// The header of 18 bytes.
struct targa_header {
    std::uint8_t identification_bytes = 0;
    std::uint8_t map_type = 0;
    std::uint8_t type = 0;
    std::uint16_t map_first = 0;
    std::uint16_t map_length = 0;
    std::uint8_t map_bits = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint8_t bits = 0;
    std::uint8_t descriptor = 0;

    static targa_header read(byte_reader& in)
    {
        targa_header found;
        found.identification_bytes = in.u8();
        found.map_type = in.u8();
        found.type = in.u8();
        found.map_first = in.u16le();
        found.map_length = in.u16le();
        found.map_bits = in.u8();
        in.skip(4); // origin
        found.width = in.u16le();
        found.height = in.u16le();
        found.bits = in.u8();
        found.descriptor = in.u8();
        return found;
    }

    [[nodiscard]] bool in_runs() const { return (type & run_lengths) != 0; }
    [[nodiscard]] std::size_t map_entry_bytes() const { return (map_bits + 7U) / 8; }
    [[nodiscard]] std::size_t pixel_bytes() const { return (bits + 7U) / 8; }
    [[nodiscard]] std::size_t line_bytes() const
    {
        const auto pixels = static_cast<std::size_t>(width);
        return bits == 1 ? (pixels + 7) / 8 : pixels * pixel_bytes();
    }

    /// Delivered bits per pixel; 0 for a layout that there is not.
    [[nodiscard]] std::int32_t delivered_bits() const
    {
        const bool deep = bits == 15 || bits == 16 || bits == 24 || bits == 32;
        switch (type & ~run_lengths) {
        case indexed:
            if (map_type != 1 || map_length == 0 || (bits != 8 && bits != 16))
                return 0;
            return bits == 8 ? 8 : 24;
        case true_colour:
            return deep ? 24 : 0;
        case grey:
            return bits == 1 || bits == 8 ? bits : bits == 16 ? 8 : 0; // 16: with opacity
        default:
            return 0;
        }
    }
};

/// There is no signature: a file whose header makes sense is one.
bool recognises(std::span<const std::uint8_t> start)
{
    byte_reader in(start);
    const targa_header header = targa_header::read(in);
    return start.size() > header_bytes && header.map_type <= 1 && header.width > 0 && header.height > 0
        && header.delivered_bits() != 0;
}

targa_header read_header(image_io& in)
{
    std::array<std::uint8_t, header_bytes> bytes{};
    const std::size_t size = in.read(bytes);
    byte_reader reader({bytes.data(), size});
    return targa_header::read(reader);
}

imaging_result info(image_io& in, file_info& info)
{
    const targa_header header = read_header(in);
    info.width = header.width;
    info.height = header.height;
    info.bits_per_pixel = header.delivered_bits();
    info.perspective = (header.descriptor & from_top) != 0 ? top_left : bottom_left;
    return promises_too_much(in, info, most_pixels_in_byte) ? imaging_bad_data : imaging_ok;
}

/// The lines of a file as they are stored, runs undone.
class stored_lines {
public:
    stored_lines(buffered_input& in, const targa_header& header)
        : in_(in)
        , in_runs_(header.in_runs())
        , pixel_(header.pixel_bytes())
    {
    }

    /// \return false when the file ended; what there was is in the line
    [[nodiscard]] bool read(std::span<std::uint8_t> line)
    {
        if (!in_runs_)
            return in_.read(line);
        while (!line.empty()) {
            if (left_ == 0 && !start_run())
                return false;
            const std::size_t pixels = std::min(left_, line.size() / pixel_.size());
            const auto part = line.first(pixels * pixel_.size());
            if (repeats_)
                repeat_pixel(part);
            else if (!in_.read(part))
                return false;
            left_ -= pixels;
            line = line.subspan(part.size());
        }
        return true;
    }

private:
    [[nodiscard]] bool start_run()
    {
        std::uint8_t head = 0;
        if (!in_.read(head))
            return false;
        left_ = (head & 0x7FU) + 1;
        repeats_ = (head & 0x80) != 0;
        return !repeats_ || in_.read(pixel_);
    }
    void repeat_pixel(std::span<std::uint8_t> part) const
    {
        for (std::size_t at = 0; at < part.size(); at += pixel_.size())
            std::ranges::copy(pixel_, part.begin() + static_cast<std::ptrdiff_t>(at));
    }

    buffered_input& in_;
    bool in_runs_;
    std::vector<std::uint8_t> pixel_; ///< that the run repeats
    std::size_t left_ = 0; ///< pixels of the run
    bool repeats_ = false;
};

RGBQUAD colour_of(std::span<const std::uint8_t> entry)
{
    bitmap_handle one{};
    one.width = 1;
    one.bits_per_pixel = static_cast<std::int32_t>(8 * entry.size());
    std::array<std::uint8_t, 3> bgr{};
    expand_to_24(one, entry.data(), bgr.data());
    return {bgr[0], bgr[1], bgr[2], 0};
}

/// The colours by index; those before the first entry are black.
bool read_map(buffered_input& in, const targa_header& header, std::vector<RGBQUAD>& map)
{
    map.assign(std::size_t{header.map_first} + header.map_length, RGBQUAD{});
    std::array<std::uint8_t, 4> entry{};
    const std::size_t size = header.map_entry_bytes();
    for (std::size_t i = header.map_first; i < map.size(); ++i) {
        if (size < 2 || size > entry.size() || !in.read(std::span(entry).first(size)))
            return false;
        map[i] = colour_of(std::span(entry).first(size));
    }
    return true;
}

/// Turns stored lines into those of the bitmap.
class line_converter {
public:
    line_converter(const targa_header& header, const bitmap_handle& bitmap, std::vector<RGBQUAD> map)
        : header_(header)
        , map_(std::move(map))
        , stored_(bitmap)
    {
        stored_.bits_per_pixel = static_cast<std::int32_t>(8 * header.pixel_bytes());
    }

    void convert(std::span<std::uint8_t> stored, std::uint8_t* line) const
    {
        const auto width = static_cast<std::size_t>(header_.width);
        if (header_.bits == 1) {
            std::ranges::copy(stored, line);
            return;
        }
        if ((header_.descriptor & from_right) != 0)
            mirror_pixels(stored.data(), width, header_.pixel_bytes());
        if (header_.delivered_bits() == 8)
            for (std::size_t x = 0; x < width; ++x)
                line[x] = stored[x * header_.pixel_bytes()];
        else if ((header_.type & ~run_lengths) == indexed)
            look_up(stored, line);
        else
            expand_to_24(stored_, stored.data(), line);
    }

private:
    void look_up(std::span<const std::uint8_t> stored, std::uint8_t* line) const
    {
        byte_reader in(stored);
        for (std::int32_t x = 0; x < header_.width; ++x, line += 3) {
            const std::size_t index = in.u16le();
            const RGBQUAD colour = index < map_.size() ? map_[index] : RGBQUAD{};
            line[0] = colour.rgbBlue;
            line[1] = colour.rgbGreen;
            line[2] = colour.rgbRed;
        }
    }

    const targa_header& header_;
    std::vector<RGBQUAD> map_;
    bitmap_handle stored_;
};

void set_colours(const targa_header& header, std::span<const RGBQUAD> map, bitmap_handle& bitmap)
{
    set_grey_colours(bitmap);
    if ((header.type & ~run_lengths) != indexed)
        return;
    std::fill_n(bitmap.colours, bitmap.colour_count, RGBQUAD{});
    std::copy_n(map.begin(), std::min<std::size_t>(map.size(), bitmap.colour_count), bitmap.colours);
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    const targa_header header = read_header(in);
    if (!in.seek(header_bytes + header.identification_bytes))
        return imaging_read_error;
    buffered_input bytes(in);
    std::vector<RGBQUAD> map;
    if (header.map_type == 1 && !read_map(bytes, header, map))
        return imaging_bad_data;
    if (bitmap.bits_per_pixel <= 8)
        set_colours(header, map, bitmap);
    const line_converter converter(header, bitmap, std::move(map));
    stored_lines lines(bytes, header);
    std::vector<std::uint8_t> stored(header.line_bytes());
    line_sink sink(info, bitmap, callback, user);
    for (std::int32_t y = 0; y < header.height; ++y) {
        const bool complete = lines.read(stored);
        std::uint8_t* const line = complete ? sink.next_line() : nullptr;
        if (!line)
            return sink.finish() && !complete ? imaging_read_error : imaging_aborted;
        converter.convert(stored, line);
    }
    return sink.finish() ? imaging_ok : imaging_aborted;
}

// ---- Writing: uncompressed, from the lower left, as every reader takes it

byte_writer header_of(const bitmap_handle& bitmap, image_type type)
{
    byte_writer out;
    const bool has_map = type == indexed;
    out.u8(0);
    out.u8(has_map);
    out.u8(type);
    out.u16le(0);
    out.u16le(has_map ? 256 : 0);
    out.u8(has_map ? 24 : 0);
    out.fill(4); // origin
    out.u16le(static_cast<std::uint16_t>(bitmap.width));
    out.u16le(static_cast<std::uint16_t>(bitmap.height));
    out.u8(type == true_colour ? 24 : 8);
    out.u8(0);
    for (std::size_t i = 0; has_map && i < 256; ++i) {
        out.u8(bitmap.colours[i].rgbBlue);
        out.u8(bitmap.colours[i].rgbGreen);
        out.u8(bitmap.colours[i].rgbRed);
    }
    return out;
}

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    if (bitmap.bits_per_pixel > 24 || bitmap.width > UINT16_MAX || bitmap.height > UINT16_MAX)
        return imaging_unsupported;
    const bool deep = bitmap.bits_per_pixel > 8;
    const image_type type = deep                                 ? true_colour
        : bitmap.bits_per_pixel == 8 && has_grey_colours(bitmap) ? grey
                                                                 : indexed;
    if (!out.write(header_of(bitmap, type).span()))
        return imaging_write_error;
    const auto width = static_cast<std::size_t>(bitmap.width);
    std::vector<std::uint8_t> row(deep ? 3 * width : width);
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        const std::uint8_t* const line = lines.line_from_bottom(y);
        if (!line)
            return imaging_aborted;
        if (deep)
            expand_to_24(bitmap, line, row.data());
        else
            unpack_indices(line, row.data(), width, bitmap.bits_per_pixel);
        if (!out.write(row))
            return imaging_write_error;
    }
    return imaging_ok;
}

} // namespace

const codec targa_codec{format_targa, recognises, info, load, save, nullptr};

} // namespace klv::imaging
