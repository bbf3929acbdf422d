#include "klv/formats/dib_header.h"

#include "klv/base/byte_order.h"

#include <algorithm>
#include <utility>

namespace klv {

namespace {

constexpr std::size_t size_field = sizeof(std::uint32_t);

bool is_known_size(std::uint32_t size)
{
    return size == dib_header::core_size || size >= dib_header::smallest_os2_size;
}

bool holds_masks(std::uint32_t header_size)
{
    return header_size >= dib_header::size_with_masks && header_size != dib_header::os2_size;
}

void read_core_fields(byte_reader& in, dib_header& header)
{
    header.width = in.u16le();
    header.height = in.u16le();
    header.planes = in.u16le();
    header.bits = in.u16le();
}

/// Fields that a short header lacks read as 0.
void read_info_fields(byte_reader& in, dib_header& header)
{
    header.width = in.i32le();
    header.height = in.i32le();
    header.planes = in.u16le();
    header.bits = in.u16le();
    header.compression = in.u32le();
    header.image_size = in.u32le();
    header.x_pixels_per_metre = in.i32le();
    header.y_pixels_per_metre = in.i32le();
    header.colours_used = in.u32le();
    header.colours_important = in.u32le();
}

} // namespace

channel_masks channel_masks::read(byte_reader& in)
{
    channel_masks masks;
    masks.red = in.u32le();
    masks.green = in.u32le();
    masks.blue = in.u32le();
    return masks;
}

std::optional<dib_header> dib_header::read(byte_reader& in)
{
    dib_header header;
    header.size = in.u32le();
    if (!is_known_size(header.size) || !in.holds(header.size - size_field))
        return std::nullopt;
    byte_reader fields = in.sub(header.size - size_field);
    header.is_core() ? read_core_fields(fields, header) : read_info_fields(fields, header);
    header.masks = default_channel_masks(header.bits);
    if (header.has_masks() && holds_masks(header.size))
        header.masks = channel_masks::read(fields);
    return header;
}

std::optional<dib_header> dib_header::read_trusted(const void* header)
{
    const auto* const bytes = static_cast<const std::uint8_t*>(header);
    const auto size = load_le<size_field>(bytes);
    byte_reader in({bytes, std::max<std::size_t>(size, size_field)});
    auto found = read(in);
    if (found && found->masks_behind() != 0) {
        byte_reader masks({bytes + size, channel_masks::stored_size});
        found->masks = channel_masks::read(masks);
    }
    return found;
}

std::array<std::uint8_t, dib_header::info_size> dib_header::stored() const noexcept
{
    std::array<std::uint8_t, info_size> bytes{};
    std::uint8_t* at = bytes.data();
    const auto u16 = [&at](std::uint16_t value) { store_le<2>(std::exchange(at, at + 2), value); };
    const auto u32 = [&at](std::uint32_t value) { store_le<4>(std::exchange(at, at + 4), value); };
    u32(info_size);
    u32(static_cast<std::uint32_t>(width));
    u32(static_cast<std::uint32_t>(height));
    u16(planes);
    u16(bits);
    u32(compression);
    u32(image_size);
    u32(static_cast<std::uint32_t>(x_pixels_per_metre));
    u32(static_cast<std::uint32_t>(y_pixels_per_metre));
    u32(colours_used);
    u32(colours_important);
    return bytes;
}

std::size_t dib_header::masks_behind() const noexcept
{
    if (!has_masks() || holds_masks(size))
        return 0;
    constexpr std::size_t opacity_mask = 4;
    return channel_masks::stored_size + (compression == BI_ALPHABITFIELDS ? opacity_mask : 0);
}

std::size_t read_colour_table(byte_reader& in, std::size_t entry_bytes, std::span<RGBQUAD> colours)
{
    std::size_t read = 0;
    for (; read < colours.size(); ++read) {
        const auto bgr = in.bytes(entry_bytes);
        if (bgr.empty())
            break;
        colours[read] = {bgr[0], bgr[1], bgr[2], 0};
    }
    return read;
}

void write_colour_table(byte_writer& out, std::span<const RGBQUAD> colours)
{
    for (const RGBQUAD& colour : colours)
        out.bytes(stored_colour(colour));
}

std::optional<dib_file_header> dib_file_header::read(byte_reader& in)
{
    const bool begins = in.u8() == 'B' && in.u8() == 'M';
    dib_file_header header;
    header.file_size = in.u32le();
    in.skip(2 * sizeof(std::uint16_t)); // reserved
    header.pixel_offset = in.u32le();
    return begins && in.ok() ? std::optional(header) : std::nullopt;
}

void dib_file_header::write(byte_writer& out) const
{
    out.text("BM");
    out.u32le(file_size);
    out.u32le(0); // reserved
    out.u32le(pixel_offset);
}

} // namespace klv
