#include "klv/base/byte_reader.h"
#include "klv/formats/believable_size.h"
#include "klv/formats/packbits.h"
#include "klv/imaging/photoshop_layout.h"
#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/resolution.h"
#include "klv/imaging/samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

namespace klv::imaging::photoshop {

namespace {

constexpr std::uint32_t greatest_side = 300000;
constexpr std::uint64_t most_resource_bytes = 1 << 20;
/// A run of 128 bytes takes two.
constexpr std::uint64_t run_expansion = 64;
constexpr std::size_t most_colours = 4;

struct layout {
    bool large = false;
    std::uint16_t channels = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 8;
    std::uint16_t mode = mode_rgb;
    std::array<std::uint8_t, palette_bytes> palette{};
    std::int32_t x_resolution = 0;
    std::int32_t y_resolution = 0;
    std::uint16_t compression = compression_none;
    std::uint64_t picture_offset = 0; ///< behind the compression

    /// Channels that are shown; 0 for a mode that is not read.
    [[nodiscard]] std::size_t colours() const
    {
        switch (mode) {
        case mode_bitmap:
        case mode_grey:
        case mode_indexed:
        case mode_duotone:
            return 1;
        case mode_rgb:
        case mode_lab:
            return 3;
        case mode_cmyk:
            return 4;
        default:
            return 0;
        }
    }
    [[nodiscard]] std::int32_t delivered_bits() const
    {
        return mode == mode_bitmap ? 1 : colours() == 1 ? 8 : 24;
    }
    [[nodiscard]] std::size_t row_bytes() const { return (std::size_t{width} * bits + 7) / 8; }
};

/// Reads count bytes at an offset; shorter at the end of the file.
std::vector<std::uint8_t> bytes_at(image_io& in, std::uint64_t offset, std::size_t count)
{
    std::vector<std::uint8_t> bytes(count);
    if (offset > INT32_MAX || !in.seek(static_cast<std::uint32_t>(offset)))
        return {};
    bytes.resize(in.read(bytes));
    return bytes;
}

std::uint64_t length_at(image_io& in, std::uint64_t offset, bool wide)
{
    const auto bytes = bytes_at(in, offset, wide ? 8 : 4);
    byte_reader reader(bytes);
    const std::uint64_t high = wide ? reader.u32be() : 0;
    return high << 32 | reader.u32be();
}

bool read_header(image_io& in, layout& found)
{
    const auto bytes = bytes_at(in, 0, header_size);
    byte_reader reader(bytes);
    reader.skip(4);
    const std::uint16_t version = reader.u16be();
    reader.skip(6);
    found.large = version == large_version;
    found.channels = reader.u16be();
    found.height = reader.u32be();
    found.width = reader.u32be();
    found.bits = reader.u16be();
    found.mode = reader.u16be();
    return reader.ok() && (version == plain_version || version == large_version) && found.width > 0
        && found.height > 0 && found.width <= greatest_side && found.height <= greatest_side;
}

bool known_kind(const layout& found)
{
    const bool bits_fit = found.mode == mode_bitmap ? found.bits == 1
        : found.mode == mode_indexed                ? found.bits == 8
                                                    : found.bits == 8 || found.bits == 16 || found.bits == 32;
    return bits_fit && found.colours() != 0 && found.channels >= found.colours();
}

void read_resources(std::span<const std::uint8_t> bytes, layout& found)
{
    byte_reader in(bytes);
    while (in.holds(12)) {
        in.skip(4); // "8BIM"
        const std::uint16_t number = in.u16be();
        const std::size_t name = in.u8();
        in.skip(name + (name + 1) % 2);
        const std::uint32_t size = in.u32be();
        byte_reader body = in.sub(size);
        in.skip(size % 2);
        if (number == resolution_resource && body.holds(16)) {
            constexpr double fraction = 65536;
            found.x_resolution = whole_dots_per_inch(body.u32be() / fraction);
            body.skip(4);
            found.y_resolution = whole_dots_per_inch(body.u32be() / fraction);
        }
    }
}

imaging_result read_layout(image_io& in, layout& found)
{
    const std::uint64_t file_size = in.size();
    if (!read_header(in, found))
        return imaging_bad_data;
    if (!known_kind(found))
        return imaging_unsupported;
    std::uint64_t at = header_size;
    const std::uint64_t palette = length_at(in, at, false);
    if (found.mode == mode_indexed)
        std::ranges::copy(bytes_at(in, at + 4, palette_bytes), found.palette.begin());
    at += 4 + palette;
    const std::uint64_t resources = length_at(in, at, false);
    read_resources(
        bytes_at(in, at + 4, static_cast<std::size_t>(std::min({resources, most_resource_bytes, file_size}))),
        found);
    at += 4 + resources;
    at += (found.large ? 8 : 4) + length_at(in, at, found.large);
    const auto compression = bytes_at(in, at, 2);
    if (compression.size() < 2)
        return imaging_bad_data;
    found.compression = byte_reader(compression).u16be();
    found.picture_offset = at + 2;
    if (found.compression > compression_runs)
        return imaging_unsupported;
    const std::uint64_t bytes = std::uint64_t{found.row_bytes()} * found.height;
    const std::uint64_t expansion = found.compression == compression_runs ? run_expansion : 1;
    return believable_size(bytes, file_size, expansion) ? imaging_ok : imaging_bad_data;
}

/// The rows of the channels that are shown, from the top; each channel has its place in the file.
class channel_rows {
public:
    channel_rows(image_io& in, const layout& found)
        : in_(in)
        , found_(found)
    {
        for (auto& row : rows_)
            row.resize(found.row_bytes());
    }

    [[nodiscard]] bool prepare()
    {
        const std::uint64_t channel_bytes = std::uint64_t{found_.row_bytes()} * found_.height;
        for (std::size_t i = 0; i < found_.colours(); ++i)
            next_[i] = found_.picture_offset + i * channel_bytes;
        return found_.compression == compression_none || prepare_runs();
    }
    [[nodiscard]] bool next()
    {
        bool complete = true;
        for (std::size_t i = 0; i < found_.colours(); ++i)
            complete = next_row(i) && complete;
        ++y_;
        return complete;
    }
    [[nodiscard]] std::span<const std::uint8_t> channel(std::size_t number) const { return rows_[number]; }

private:
    /// The packed sizes of all rows come before the rows.
    bool prepare_runs()
    {
        const std::size_t width = found_.large ? 4 : 2;
        const std::size_t shown = found_.colours() * found_.height;
        const auto table = bytes_at(in_, found_.picture_offset, shown * width);
        if (table.size() < shown * width)
            return false;
        byte_reader reader(table);
        std::uint64_t at = found_.picture_offset + std::uint64_t{found_.channels} * found_.height * width;
        sizes_.resize(shown);
        for (std::size_t i = 0; i < shown; ++i) {
            if (i % found_.height == 0)
                next_[i / found_.height] = at;
            sizes_[i] = found_.large ? reader.u32be() : reader.u16be();
            at += sizes_[i];
        }
        return true;
    }
    bool next_row(std::size_t channel)
    {
        auto& row = rows_[channel];
        if (found_.compression == compression_none) {
            const bool there = next_[channel] <= INT32_MAX
                && in_.seek(static_cast<std::uint32_t>(next_[channel])) && in_.read(row) == row.size();
            next_[channel] += row.size();
            return there;
        }
        // Packed rows are hardly longer than plain ones; a size that says more is damaged.
        const std::uint32_t size = sizes_[channel * found_.height + y_];
        const auto packed
            = bytes_at(in_, next_[channel], std::min<std::size_t>(size, row.size() + row.size() / 64 + 16));
        next_[channel] += size;
        return unpack_bits(packed, row);
    }

    image_io& in_;
    const layout& found_;
    std::array<std::vector<std::uint8_t>, most_colours> rows_;
    std::array<std::uint64_t, most_colours> next_{};
    std::vector<std::uint32_t> sizes_;
    std::size_t y_ = 0;
};

/// Samples in the byte order of the machine.
void order_bytes(std::span<std::uint8_t> row, std::size_t sample_bytes)
{
    if constexpr (std::endian::native == std::endian::little)
        for (std::size_t at = 0; at + sample_bytes <= row.size(); at += sample_bytes)
            std::reverse(row.begin() + static_cast<std::ptrdiff_t>(at),
                row.begin() + static_cast<std::ptrdiff_t>(at + sample_bytes));
}

class line_maker {
public:
    explicit line_maker(const layout& found)
        : found_(found)
        , samples_(found.width)
        , pixels_(found.width * found.colours())
    {
        format_.bits = found.bits;
        format_.kind = found.bits == 32 ? sample_format::number::real : sample_format::number::natural;
    }

    void make(const channel_rows& rows, std::uint8_t* line)
    {
        const std::size_t count = found_.colours();
        if (count == 1 && found_.bits <= 8) {
            std::ranges::copy(rows.channel(0), line);
            return;
        }
        for (std::size_t i = 0; i < count; ++i) {
            unpack(rows.channel(i));
            // Red comes last in a line.
            std::uint8_t* to = pixels_.data() + (found_.mode == mode_rgb ? 2 - i : i);
            for (std::size_t x = 0; x < found_.width; ++x, to += count)
                *to = samples_[x];
        }
        if (found_.mode == mode_cmyk)
            inks_to_24(pixels_.data(), line, found_.width, true);
        else if (found_.mode == mode_lab)
            lab_to_24(pixels_.data(), line, found_.width);
        else
            std::ranges::copy(pixels_, line);
    }

private:
    void unpack(std::span<const std::uint8_t> row)
    {
        if (found_.bits == 8) {
            std::ranges::copy(row, samples_.begin());
            return;
        }
        ordered_.assign(row.begin(), row.end());
        order_bytes(ordered_, found_.bits / 8U);
        unpack_samples(ordered_, format_, samples_);
    }

    const layout& found_;
    sample_format format_;
    std::vector<std::uint8_t> ordered_;
    std::vector<std::uint8_t> samples_;
    std::vector<std::uint8_t> pixels_;
};

void set_colours(const layout& found, bitmap_handle& bitmap)
{
    if (bitmap.bits_per_pixel > 8)
        return;
    // Set bits are black.
    set_grey_colours(bitmap, found.mode == mode_bitmap);
    if (found.mode != mode_indexed)
        return;
    const std::uint8_t* const palette = found.palette.data();
    for (std::size_t i = 0; i < 256; ++i)
        bitmap.colours[i] = {palette[512 + i], palette[256 + i], palette[i], 0};
}

} // namespace

imaging_result info(image_io& in, file_info& info)
{
    layout found;
    const imaging_result result = read_layout(in, found);
    if (result != imaging_ok)
        return result;
    info.width = static_cast<std::int32_t>(found.width);
    info.height = static_cast<std::int32_t>(found.height);
    info.bits_per_pixel = found.delivered_bits();
    info.x_resolution = found.x_resolution;
    info.y_resolution = found.y_resolution;
    info.perspective = top_left;
    return imaging_ok;
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    layout found;
    const imaging_result result = read_layout(in, found);
    if (result != imaging_ok)
        return result;
    set_colours(found, bitmap);
    channel_rows rows(in, found);
    if (!rows.prepare())
        return imaging_bad_data;
    line_maker maker(found);
    line_sink sink(info, bitmap, callback, user);
    bool complete = true;
    for (std::uint32_t y = 0; y < found.height && complete; ++y) {
        complete = rows.next();
        std::uint8_t* const line = sink.next_line();
        if (!line)
            return imaging_aborted;
        maker.make(rows, line);
    }
    if (!sink.finish())
        return imaging_aborted;
    return complete ? imaging_ok : imaging_read_error;
}

} // namespace klv::imaging::photoshop
