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

constexpr std::uint8_t manufacturer = 10;
constexpr std::uint8_t newest_version = 5;
/// Its writers left what they had in memory where the colours belong.
constexpr std::uint8_t version_without_colours = 3;
constexpr std::size_t header_bytes = 128;
constexpr std::size_t palette_16_bytes = 48;
/// Behind the pixels: this byte, then 256 colours.
constexpr std::uint8_t palette_mark = 12;
constexpr std::size_t palette_256_bytes = 768;
/// A byte with both highest bits is the length of a run of the next byte.
constexpr std::uint8_t run_mark = 0xC0;
constexpr std::uint8_t most_in_run = 0x3F;
/// A run of 63 bytes takes two; in a plane of single bits each holds 8 pixels.
constexpr std::uint64_t most_pixels_in_byte = 63 / 2 * 8 + 8;

/// The header of 128 bytes.
struct pcx_header {
    std::uint8_t version = 0;
    bool in_runs = true;
    std::uint8_t bits = 0; ///< of a pixel in a plane
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t x_resolution = 0;
    std::uint16_t y_resolution = 0;
    std::array<std::uint8_t, palette_16_bytes> palette{};
    std::uint8_t planes = 0;
    std::uint16_t plane_bytes = 0; ///< in a line

    static pcx_header read(byte_reader& in)
    {
        pcx_header found;
        in.skip(1); // manufacturer
        found.version = in.u8();
        found.in_runs = in.u8() != 0;
        found.bits = in.u8();
        const std::int32_t left = in.u16le();
        const std::int32_t top = in.u16le();
        found.width = in.u16le() - left + 1;
        found.height = in.u16le() - top + 1;
        found.x_resolution = in.u16le();
        found.y_resolution = in.u16le();
        for (std::uint8_t& byte : found.palette)
            byte = in.u8();
        in.skip(1);
        found.planes = in.u8();
        found.plane_bytes = in.u16le();
        return found;
    }

    [[nodiscard]] std::size_t needed_plane_bytes() const
    {
        return (static_cast<std::size_t>(width) * bits + 7) / 8;
    }
    /// Delivered bits per pixel; 0 for a layout that there is not.
    [[nodiscard]] std::int32_t delivered_bits() const
    {
        if (bits == 8)
            return planes == 1 ? 8 : planes == 3 ? 24 : 0;
        if (bits == 1 && planes == 1)
            return 1;
        const int indices = bits * planes;
        return (bits == 1 || planes == 1) && indices >= 2 && indices <= 4 ? 4 : 0;
    }
};

bool recognises(std::span<const std::uint8_t> start)
{
    return start.size() >= header_bytes && start[0] == manufacturer && start[1] <= newest_version
        && start[2] <= 1 && (start[3] == 1 || start[3] == 2 || start[3] == 4 || start[3] == 8);
}

imaging_result read_header(image_io& in, pcx_header& header)
{
    std::array<std::uint8_t, header_bytes> bytes{};
    const std::size_t size = in.read(bytes);
    byte_reader reader({bytes.data(), size});
    header = pcx_header::read(reader);
    if (!reader.ok() || header.width <= 0 || header.height <= 0)
        return imaging_bad_data;
    if (header.delivered_bits() == 0)
        return imaging_unsupported;
    return header.plane_bytes >= header.needed_plane_bytes() ? imaging_ok : imaging_bad_data;
}

imaging_result info(image_io& in, file_info& info)
{
    pcx_header header;
    const imaging_result read = read_header(in, header);
    if (read != imaging_ok)
        return read;
    info.width = header.width;
    info.height = header.height;
    info.bits_per_pixel = header.delivered_bits();
    info.perspective = top_left;
    info.x_resolution = header.x_resolution;
    info.y_resolution = header.y_resolution;
    return promises_too_much(in, info, most_pixels_in_byte) ? imaging_bad_data : imaging_ok;
}

// ---- Colours

void set_colours(std::span<const std::uint8_t> rgb, bitmap_handle& bitmap)
{
    byte_reader in(rgb);
    for (std::size_t i = 0; i < rgb.size() / 3 && i < bitmap.colour_count; ++i) {
        const std::uint8_t red = in.u8(), green = in.u8();
        bitmap.colours[i] = {in.u8(), green, red, 0};
    }
}

/// The colours of 256 lie at the end of the file; without them the pixels are greys.
void read_256_colours(image_io& in, bitmap_handle& bitmap)
{
    std::array<std::uint8_t, 1 + palette_256_bytes> bytes{};
    const std::uint32_t size = in.size();
    if (size >= header_bytes + bytes.size() && in.seek(size - static_cast<std::uint32_t>(bytes.size()))
        && in.read(bytes) == bytes.size() && bytes[0] == palette_mark)
        set_colours(std::span(bytes).subspan(1), bitmap);
}

/// The colours of the displays of that time: a bit each for blue, green, red and for twice the light.
void set_display_colours(bitmap_handle& bitmap)
{
    constexpr unsigned dark_yellow = 6;
    for (unsigned i = 0; i < bitmap.colour_count; ++i) {
        const unsigned base = (i & 8) != 0 ? 0x55 : 0;
        const auto level
            = [&](unsigned bit) { return static_cast<std::uint8_t>(base + ((i & bit) != 0 ? 0xAA : 0)); };
        bitmap.colours[i] = {level(1), level(2), level(4), 0};
    }
    bitmap.colours[dark_yellow].rgbGreen = 0x55; // shown as brown
}

/// Programs that knew black and white alone left the colours empty.
void read_colours(image_io& in, const pcx_header& header, bitmap_handle& bitmap)
{
    set_grey_colours(bitmap);
    if (bitmap.bits_per_pixel == 8)
        read_256_colours(in, bitmap);
    const bool named = header.version != version_without_colours
        && std::ranges::any_of(header.palette, [](std::uint8_t byte) { return byte != 0; });
    if (bitmap.bits_per_pixel < 8 && named)
        set_colours(header.palette, bitmap);
    else if (bitmap.bits_per_pixel == 4)
        set_display_colours(bitmap);
}

// ---- Pixels

/// The planes of a line, one behind the other. Runs may go on across planes and lines.
class stored_lines {
public:
    stored_lines(buffered_input& in, bool in_runs)
        : in_(in)
        , in_runs_(in_runs)
    {
    }

    [[nodiscard]] bool read(std::span<std::uint8_t> line)
    {
        if (!in_runs_)
            return in_.read(line);
        while (!line.empty()) {
            if (left_ == 0 && !start_run())
                return false;
            const std::size_t count = std::min(left_, line.size());
            std::ranges::fill(line.first(count), value_);
            left_ -= count;
            line = line.subspan(count);
        }
        return true;
    }

private:
    [[nodiscard]] bool start_run()
    {
        left_ = 1;
        if (!in_.read(value_))
            return false;
        if ((value_ & run_mark) != run_mark)
            return true;
        left_ = value_ & most_in_run;
        return in_.read(value_);
    }

    buffered_input& in_;
    bool in_runs_;
    std::uint8_t value_ = 0;
    std::size_t left_ = 0;
};

void convert_line(
    const pcx_header& header, std::span<const std::uint8_t> planes, std::uint8_t* line, std::int32_t bits)
{
    const auto width = static_cast<std::size_t>(header.width);
    if (header.planes == 1 && header.bits == bits) {
        std::copy_n(planes.data(), header.needed_plane_bytes(), line);
        return;
    }
    if (bits == 24) {
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t plane = 0; plane < 3; ++plane)
                line[3 * x + 2 - plane] = planes[plane * header.plane_bytes + x];
        return;
    }
    std::vector<std::uint8_t> indices(width);
    std::vector<std::uint8_t> of_plane(width);
    for (std::size_t plane = 0; plane < header.planes; ++plane) {
        unpack_indices(planes.data() + plane * header.plane_bytes, of_plane.data(), width, header.bits);
        for (std::size_t x = 0; x < width; ++x)
            indices[x] = static_cast<std::uint8_t>(indices[x] | of_plane[x] << plane);
    }
    pack_indices(indices.data(), line, width, bits);
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    pcx_header header;
    if (const imaging_result read = read_header(in, header); read != imaging_ok)
        return read;
    if (bitmap.bits_per_pixel <= 8)
        read_colours(in, header, bitmap);
    if (!in.seek(header_bytes))
        return imaging_read_error;
    buffered_input bytes(in);
    stored_lines lines(bytes, header.in_runs);
    std::vector<std::uint8_t> planes(std::size_t{header.planes} * header.plane_bytes);
    line_sink sink(info, bitmap, callback, user);
    for (std::int32_t y = 0; y < header.height; ++y) {
        const bool complete = lines.read(planes);
        std::uint8_t* const line = complete ? sink.next_line() : nullptr;
        if (!line)
            return sink.finish() && !complete ? imaging_read_error : imaging_aborted;
        convert_line(header, planes, line, bitmap.bits_per_pixel);
    }
    return sink.finish() ? imaging_ok : imaging_aborted;
}

// ---- Writing: one plane of indices, or three of colours

/// Planes have an even number of bytes in a line.
std::uint16_t written_plane_bytes(const bitmap_handle& bitmap)
{
    const std::int32_t bits = std::min(bitmap.bits_per_pixel, 8);
    return static_cast<std::uint16_t>((std::int64_t{bitmap.width} * bits + 15) / 16 * 2);
}

byte_writer header_of(const bitmap_handle& bitmap)
{
    byte_writer out;
    out.u8(manufacturer);
    out.u8(newest_version);
    out.u8(1); // runs
    out.u8(static_cast<std::uint8_t>(std::min(bitmap.bits_per_pixel, 8)));
    out.u16le(0);
    out.u16le(0);
    out.u16le(static_cast<std::uint16_t>(bitmap.width - 1));
    out.u16le(static_cast<std::uint16_t>(bitmap.height - 1));
    out.u16le(static_cast<std::uint16_t>(std::clamp(bitmap.x_resolution, 0, UINT16_MAX)));
    out.u16le(static_cast<std::uint16_t>(std::clamp(bitmap.y_resolution, 0, UINT16_MAX)));
    for (std::size_t i = 0; i < palette_16_bytes / 3; ++i) {
        out.u8(bitmap.colours[i].rgbRed);
        out.u8(bitmap.colours[i].rgbGreen);
        out.u8(bitmap.colours[i].rgbBlue);
    }
    out.u8(0);
    out.u8(bitmap.bits_per_pixel == 24 ? 3 : 1);
    out.u16le(written_plane_bytes(bitmap));
    out.u16le(1); // the palette is one of colours
    out.fill(header_bytes - out.size());
    return out;
}

void pack_runs(std::span<const std::uint8_t> plane, std::vector<std::uint8_t>& packed)
{
    for (std::size_t at = 0; at < plane.size();) {
        const std::size_t most = std::min<std::size_t>(plane.size() - at, most_in_run);
        std::size_t run = 1;
        while (run < most && plane[at + run] == plane[at])
            ++run;
        if (run > 1 || plane[at] >= run_mark)
            packed.push_back(static_cast<std::uint8_t>(run_mark | run));
        packed.push_back(plane[at]);
        at += run;
    }
}

imaging_result write_palette(image_io& out, const bitmap_handle& bitmap)
{
    byte_writer palette;
    palette.u8(palette_mark);
    for (std::size_t i = 0; i < palette_256_bytes / 3; ++i) {
        palette.u8(bitmap.colours[i].rgbRed);
        palette.u8(bitmap.colours[i].rgbGreen);
        palette.u8(bitmap.colours[i].rgbBlue);
    }
    return out.write(palette.span()) ? imaging_ok : imaging_write_error;
}

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    const std::int32_t bits = bitmap.bits_per_pixel;
    if ((bits > 8 && bits != 24) || bitmap.width > UINT16_MAX - 1 || bitmap.height > UINT16_MAX)
        return imaging_unsupported;
    if (!out.write(header_of(bitmap).span()))
        return imaging_write_error;
    const auto width = static_cast<std::size_t>(bitmap.width);
    const std::size_t planes = bits == 24 ? 3 : 1;
    std::vector<std::uint8_t> plane(written_plane_bytes(bitmap));
    std::vector<std::uint8_t> packed;
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        const std::uint8_t* const line = lines.line_from_top(y);
        if (!line)
            return imaging_aborted;
        packed.clear();
        for (std::size_t i = 0; i < planes; ++i) {
            if (bits == 24)
                for (std::size_t x = 0; x < width; ++x)
                    plane[x] = line[3 * x + 2 - i];
            else
                std::copy_n(line, (width * static_cast<std::size_t>(bits) + 7) / 8, plane.begin());
            pack_runs(plane, packed);
        }
        if (!out.write(packed))
            return imaging_write_error;
    }
    return bits == 8 ? write_palette(out, bitmap) : imaging_ok;
}

} // namespace

const codec pcx_codec{format_pcx, recognises, info, load, save, nullptr};

} // namespace klv::imaging
