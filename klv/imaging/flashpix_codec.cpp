#include "klv/base/byte_reader.h"
#include "klv/imaging/flashpix_tiles.h"
#include "klv/imaging/pixel_lines.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

/// FlashPix pictures: a compound file that holds the picture in several resolutions, each cut into tiles of
/// 64 by 64 pixels.
///
///     Data Object Store 000001      in image views; in plain images the root itself
///         \5Image Contents          property set: colour spaces, JPEG tables
///         Resolution 0000           the smallest; the next is twice as large, and so on
///             Subimage 0000 Header  sizes and a descriptor of each tile
///             Subimage 0000 Data    the tiles
namespace klv::imaging {

namespace flashpix {

namespace {

constexpr std::array<std::uint8_t, 8> compound_signature{0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::uint64_t stream_header_bytes = 28;
constexpr std::size_t header_bytes = 36;
constexpr std::uint32_t least_descriptor_bytes = 16;
constexpr std::uint32_t most_descriptor_bytes = 64;
constexpr std::uint32_t greatest_tile_side = 256;
constexpr std::uint32_t most_channels = 4;
constexpr std::size_t most_resolutions = 29;
constexpr std::uint64_t most_contents_bytes = 1 << 22;
/// The channels of resolution n are described by property 02nn0002: two counts, then a number for each.
constexpr std::uint32_t colour_property = 0x02000002;

/// One resolution of the picture.
struct level {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t tile_count = 0;
    std::uint32_t tile_width = 0;
    std::uint32_t tile_height = 0;
    std::uint32_t channels = 0;
    std::uint32_t table_offset = 0;
    std::uint32_t descriptor_bytes = 0;

    static level read(byte_reader& in)
    {
        level found;
        in.skip(4); // size of the header
        found.width = in.u32le();
        found.height = in.u32le();
        found.tile_count = in.u32le();
        found.tile_width = in.u32le();
        found.tile_height = in.u32le();
        found.channels = in.u32le();
        found.table_offset = in.u32le();
        found.descriptor_bytes = in.u32le();
        return found;
    }

    [[nodiscard]] std::uint32_t across() const { return (width + tile_width - 1) / tile_width; }
    [[nodiscard]] std::uint32_t down() const { return (height + tile_height - 1) / tile_height; }
    [[nodiscard]] std::uint64_t table_bytes() const { return std::uint64_t{tile_count} * descriptor_bytes; }
    /// Whether the numbers make sense and the header stream can hold the descriptors.
    [[nodiscard]] bool plausible(std::uint64_t stream_size) const
    {
        constexpr std::uint32_t greatest_side = 1 << 20;
        const auto within = [](std::uint32_t value, std::uint32_t least, std::uint32_t most) {
            return value >= least && value <= most;
        };
        return within(width, 1, greatest_side) && within(height, 1, greatest_side)
            && within(tile_width, 1, greatest_tile_side) && within(tile_height, 1, greatest_tile_side)
            && within(channels, 1, most_channels)
            && within(descriptor_bytes, least_descriptor_bytes, most_descriptor_bytes)
            && std::uint64_t{across()} * down() <= tile_count
            && stream_header_bytes + table_offset + table_bytes() <= stream_size;
    }
};

std::optional<level> read_level(const compound_stream& header)
{
    std::vector<std::uint8_t> bytes;
    if (!header.read(stream_header_bytes, header_bytes, bytes))
        return std::nullopt;
    byte_reader in(bytes);
    const level found = level::read(in);
    if (!found.plausible(header.size()))
        return std::nullopt;
    return found;
}

/// The picture of an open file.
class picture {
public:
    [[nodiscard]] bool open(image_io& in)
    {
        if (!file_.open(in))
            return false;
        store_ = file_.find_storage(file_.root(), "Data Object Store 000001").value_or(file_.root());
        const auto contents = file_.find_stream(store_, "\005Image Contents");
        if (!contents || !contents->read(0, std::min(contents->size(), most_contents_bytes), contents_))
            return false;
        for (std::size_t i = 0; i < most_resolutions; ++i) {
            const auto header = stream_of(i, "Header");
            const auto found = header ? read_level(*header) : std::nullopt;
            if (!found)
                break;
            levels_.push_back(*found);
        }
        return !levels_.empty();
    }

    [[nodiscard]] std::span<const level> levels() const { return levels_; }
    [[nodiscard]] property_set contents() const { return property_set(contents_); }
    [[nodiscard]] std::optional<compound_stream> stream_of(std::size_t resolution, const char* part) const
    {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "Resolution %04zu", resolution);
        const auto storage = file_.find_storage(store_, name.data());
        std::snprintf(name.data(), name.size(), "Subimage 0000 %s", part);
        return storage ? file_.find_stream(*storage, name.data()) : std::nullopt;
    }
    /// The smallest resolution that is not smaller than wanted, else the largest.
    [[nodiscard]] std::size_t chosen(std::int32_t width, std::int32_t height) const
    {
        const auto found = std::ranges::find_if(levels_, [&](const level& each) {
            return width > 0 && height > 0 && each.width >= static_cast<std::uint32_t>(width)
                && each.height >= static_cast<std::uint32_t>(height);
        });
        return found == levels_.end() ? levels_.size() - 1
                                      : static_cast<std::size_t>(found - levels_.begin());
    }

private:
    compound_file file_;
    compound_file::storage store_{};
    std::vector<std::uint8_t> contents_;
    std::vector<level> levels_; ///< smallest first
};

/// Resolutions are numbered from the smallest on, as their storages are.
std::uint32_t space_of(const property_set& contents, std::size_t resolution, std::uint32_t channels)
{
    byte_reader in(contents.blob(colour_property | static_cast<std::uint32_t>(resolution) << 16));
    in.skip(8);
    const std::uint32_t channel = in.u32le();
    const std::uint32_t space = channel >> 16 & 0x7FFF;
    if (in.ok() && space >= space_grey && space <= space_rgb)
        return channels >= 3 ? std::max<std::uint32_t>(space, space_photo_ycc) : space_grey;
    return channels >= 3 ? space_rgb : space_grey;
}

std::uint8_t level_of(double value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5); }

/// A row of tile pixels as it is delivered: a grey, or blue, green and red. Opacity is left out.
void deliver_pixels(const std::uint8_t* pixels, std::uint32_t channels, std::uint32_t space,
    std::uint32_t width, std::uint8_t* line)
{
    for (std::uint32_t x = 0; x < width; ++x, pixels += channels) {
        if (space == space_grey) {
            *line++ = pixels[0];
            continue;
        }
        if (space == space_rgb) {
            line[0] = pixels[2];
            line[1] = pixels[1];
            line[2] = pixels[0];
        } else {
            // Photo CD's luminance and chrominances.
            const double light = 1.3584 * pixels[0];
            const double blue = 2.2179 * (pixels[1] - 156);
            const double red = 1.8215 * (pixels[2] - 137);
            line[0] = level_of(light + blue);
            line[1] = level_of(light - 0.194 * blue - 0.509 * red);
            line[2] = level_of(light + red);
        }
        line += 3;
    }
}

std::vector<tile_descriptor> read_descriptors(const compound_stream& header, const level& found)
{
    std::vector<std::uint8_t> bytes;
    std::vector<tile_descriptor> tiles;
    if (!header.read(
            stream_header_bytes + found.table_offset, static_cast<std::size_t>(found.table_bytes()), bytes))
        return tiles;
    tiles.reserve(found.tile_count);
    byte_reader in(bytes);
    for (std::uint32_t i = 0; i < found.tile_count; ++i) {
        byte_reader one = in.sub(found.descriptor_bytes);
        tile_descriptor tile;
        tile.offset = one.u32le();
        tile.size = one.u32le();
        tile.compression = one.u32le();
        tile.subtype = one.u32le();
        tiles.push_back(tile);
    }
    return tiles;
}

imaging_result load_level(
    const picture& source, std::size_t resolution, const bitmap_handle& bitmap, line_sink& sink)
{
    const level& found = source.levels()[resolution];
    const auto header = source.stream_of(resolution, "Header");
    const auto data = source.stream_of(resolution, "Data");
    if (!header || !data)
        return imaging_bad_data;
    const std::vector<tile_descriptor> tiles = read_descriptors(*header, found);
    if (tiles.empty())
        return imaging_bad_data;
    const property_set contents = source.contents();
    const std::uint32_t space = space_of(contents, resolution, found.channels);
    tile_decoder decoder(contents, *data, found.tile_width, found.tile_height, found.channels);

    const std::size_t pixel_bytes = space == space_grey ? 1 : 3;
    const auto line_bytes = static_cast<std::size_t>(bitmap.bytes_per_line);
    std::vector<std::uint8_t> band(line_bytes * found.tile_height);
    bool complete = true;
    for (std::uint32_t top = 0; top < found.height; top += found.tile_height) {
        const std::uint32_t lines = std::min(found.tile_height, found.height - top);
        std::ranges::fill(band, std::uint8_t{0});
        for (std::uint32_t column = 0; column < found.across(); ++column) {
            const auto pixels = decoder.decode(tiles[top / found.tile_height * found.across() + column]);
            complete = complete && !pixels.empty();
            const std::uint32_t left = column * found.tile_width;
            const std::uint32_t width = std::min(found.tile_width, found.width - left);
            for (std::uint32_t y = 0; y < lines && !pixels.empty(); ++y)
                deliver_pixels(pixels.data() + std::size_t{y} * found.tile_width * found.channels,
                    found.channels, space, width, band.data() + y * line_bytes + left * pixel_bytes);
        }
        for (std::uint32_t y = 0; y < lines; ++y) {
            std::uint8_t* const line = sink.next_line();
            if (!line)
                return imaging_aborted;
            std::copy_n(band.data() + y * line_bytes, line_bytes, line);
        }
    }
    if (!sink.finish())
        return imaging_aborted;
    return complete ? imaging_ok : imaging_read_error;
}

bool recognises(std::span<const std::uint8_t> start)
{
    return start.size() >= compound_signature.size()
        && std::ranges::equal(start.first(compound_signature.size()), compound_signature);
}

imaging_result info(image_io& in, file_info& info)
{
    picture source;
    if (!source.open(in))
        return imaging_bad_data;
    const std::size_t resolution = source.chosen(info.width, info.height);
    const level& found = source.levels()[resolution];
    info.width = static_cast<std::int32_t>(found.width);
    info.height = static_cast<std::int32_t>(found.height);
    info.bits_per_pixel = space_of(source.contents(), resolution, found.channels) == space_grey ? 8 : 24;
    info.perspective = top_left;
    return imaging_ok;
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    picture source;
    if (!source.open(in))
        return imaging_bad_data;
    if (bitmap.bits_per_pixel == 8)
        set_grey_colours(bitmap);
    line_sink sink(info, bitmap, callback, user);
    return load_level(source, source.chosen(info.width, info.height), bitmap, sink);
}

imaging_result dimensions(image_io& in, std::vector<dimension>& sizes)
{
    picture source;
    if (!source.open(in))
        return imaging_bad_data;
    for (const level& each : source.levels())
        sizes.push_back({static_cast<std::int32_t>(each.width), static_cast<std::int32_t>(each.height)});
    return imaging_ok;
}

} // namespace

} // namespace flashpix

const codec flashpix_codec{
    format_flashpix, flashpix::recognises, flashpix::info, flashpix::load, nullptr, flashpix::dimensions};

} // namespace klv::imaging
