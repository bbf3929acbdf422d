#include "klv/filters/windows/packed_bitmap.h"

#include "klv/base/memory.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <vector>

namespace klv {
namespace {

constexpr std::uint32_t info_header_size = 40;
constexpr std::uint32_t core_header_size = 12;
constexpr std::int32_t resolution_units_per_dpi = 25;

using bytes_buffer = std::vector<std::uint8_t, vALLOCATOR<std::uint8_t>>;

std::unique_ptr<oMEMDIB> dib_from(std::span<const std::uint8_t> packed)
{
    auto* bytes = const_cast<std::uint8_t*>(packed.data()); // the stream is only read
    vMEMSTREAM stream(&bytes, static_cast<std::uint32_t>(packed.size()), vSTRING("tmpStream"), 0);
    std::unique_ptr<oMEMDIB> dib(new oMEMDIB(stream, 0));
    if (!dib || !dib->HasPixels())
        return nullptr;
    return dib;
}

void put_u16(bytes_buffer& out, std::size_t at, std::uint32_t value)
{
    out[at] = static_cast<std::uint8_t>(value);
    out[at + 1] = static_cast<std::uint8_t>(value >> 8);
}

void put_u32(bytes_buffer& out, std::size_t at, std::uint32_t value)
{
    put_u16(out, at, value & 0xFFFF);
    put_u16(out, at + 2, value >> 16);
}

// The bitmap with the older 12-byte header (whose colours have 3 bytes) under the 40-byte one.
bytes_buffer with_info_header_from_core(byte_reader in)
{
    in.skip(4);
    const std::uint32_t width = in.u16le();
    const std::uint32_t height = in.u16le();
    in.skip(2);
    const std::uint32_t bits = in.u16le();
    const std::uint32_t colours = bits <= 8 ? 1u << bits : 0;
    bytes_buffer out(info_header_size);
    put_u32(out, 0, info_header_size);
    put_u32(out, 4, width);
    put_u32(out, 8, height);
    put_u16(out, 12, 1);
    put_u16(out, 14, bits);
    for (std::uint32_t i = 0; i < colours; ++i) {
        const auto bgr = in.bytes(3);
        out.insert(out.end(), bgr.begin(), bgr.end());
        out.push_back(0);
    }
    const auto rows = in.rest();
    out.insert(out.end(), rows.begin(), rows.end());
    return out;
}

// The bitmap with a longer header (masks and colour spaces follow the first 40 bytes) under the 40-byte one.
bytes_buffer with_info_header_from_longer(std::span<const std::uint8_t> packed, std::uint32_t header_size)
{
    constexpr std::uint32_t compression_bit_fields = 3;
    constexpr std::uint32_t masks_size = 12;
    byte_reader in(packed);
    in.seek(16);
    const bool has_masks = in.u32le() == compression_bit_fields;
    const std::uint32_t kept = info_header_size + (has_masks ? masks_size : 0);
    bytes_buffer out(packed.begin(), packed.begin() + std::min(kept, header_size));
    put_u32(out, 0, info_header_size);
    out.insert(out.end(), packed.begin() + header_size, packed.end());
    return out;
}

// What stands between the header and the rows of a bitmap.
enum class colour_table { colours, indices, missing };

struct palette_layout {
    std::uint32_t bits = 0;
    std::uint32_t colours = 0;
    std::uint64_t image_size = 0;
};

palette_layout palette_layout_of(std::span<const std::uint8_t> packed)
{
    byte_reader in(packed);
    in.skip(4);
    const auto width = static_cast<std::uint32_t>(std::abs(std::int64_t{in.i32le()}));
    const auto height = static_cast<std::uint32_t>(std::abs(std::int64_t{in.i32le()}));
    in.skip(2);
    palette_layout layout;
    layout.bits = in.u16le();
    const bool plain = in.u32le() == 0;
    in.skip(12);
    const std::uint32_t used = in.u32le();
    if (layout.bits == 0 || layout.bits > 8 || !plain)
        return {};
    layout.colours = used != 0 && used < 1u << layout.bits ? used : 1u << layout.bits;
    layout.image_size = dib_stride(width, layout.bits) * height;
    return layout;
}

colour_table table_kind(std::span<const std::uint8_t> packed, std::uint16_t colour_usage)
{
    const auto layout = palette_layout_of(packed);
    if (layout.bits == 0 || layout.image_size == 0)
        return colour_table::colours;
    const std::uint64_t room = packed.size() - info_header_size;
    if (room < layout.image_size + layout.colours * 2)
        return colour_table::missing;
    return colour_usage == 1 ? colour_table::indices : colour_table::colours;
}

// The bitmap with the colours of a palette as its colour table.
bytes_buffer with_palette(
    std::span<const std::uint8_t> packed, std::span<const RGBQUAD> palette, colour_table kind)
{
    const auto layout = palette_layout_of(packed);
    bytes_buffer out(packed.begin(), packed.begin() + info_header_size);
    put_u32(out, 32, layout.colours);
    byte_reader in(packed.subspan(info_header_size));
    for (std::uint32_t i = 0; i < layout.colours; ++i) {
        const std::size_t index = kind == colour_table::indices ? in.u16le() : i;
        const RGBQUAD colour = index < palette.size() ? palette[index] : RGBQUAD{};
        out.insert(out.end(), {colour.rgbBlue, colour.rgbGreen, colour.rgbRed, 0});
    }
    const auto rows = in.rest();
    out.insert(out.end(), rows.begin(), rows.end());
    return out;
}

} // namespace

std::unique_ptr<oMEMDIB> read_packed_bitmap(std::span<const std::uint8_t> packed, bool any_header,
    const canvas_colour_table& palette, std::uint16_t colour_usage)
{
    byte_reader in(packed);
    const std::uint32_t header_size = in.u32le();
    if (!in.ok())
        return nullptr;
    if (header_size == info_header_size) {
        const auto kind = palette ? table_kind(packed, colour_usage) : colour_table::colours;
        return kind == colour_table::colours ? dib_from(packed)
                                             : dib_from(with_palette(packed, *palette, kind));
    }
    if (!any_header)
        return nullptr;
    if (header_size == core_header_size)
        return dib_from(with_info_header_from_core(byte_reader(packed)));
    if (header_size > info_header_size && header_size <= packed.size())
        return dib_from(with_info_header_from_longer(packed, header_size));
    return nullptr;
}

std::unique_ptr<oSTREAMDIB> read_pattern_bitmap(byte_reader& in, std::uint16_t colour_usage)
{
    byte_reader header = in;
    if (header.u32le() != info_header_size)
        return nullptr;
    const std::int32_t width = header.i32le();
    const std::int32_t height = header.i32le();
    header.skip(2);
    const std::uint32_t bits = header.u16le();
    header.skip(8);
    const std::int32_t x_dpi = header.i32le() / resolution_units_per_dpi;
    const std::int32_t y_dpi = header.i32le() / resolution_units_per_dpi;
    const std::uint32_t colours_used = header.u32le();
    header.skip(4);
    if (!header.ok() || width <= 0 || height <= 0 || bits == 0 || bits > 32)
        return nullptr;

    const std::uint64_t stride = dib_stride(static_cast<std::uint32_t>(width), bits);
    if (stride * static_cast<std::uint32_t>(height) > header.left() + 4)
        return nullptr;
    const auto model = model_of_bits(bits);
    std::unique_ptr<oSTREAMDIB> pattern(new oSTREAMDIB(0));
    if (!pattern || !pattern->SetHeader(oDIBHEADER(width, height, x_dpi, y_dpi, model)))
        return nullptr;

    std::uint32_t colours = bits <= 8 ? 1u << bits : 0;
    if (colours_used != 0 && colours_used < colours)
        colours = colours_used;
    if (colour_usage == 0 && colours != 0) {
        std::array<RGBQUAD, 256> table{};
        for (std::uint32_t i = 0; i < colours; ++i) {
            const auto bgr = header.bytes(4);
            if (bgr.size() == 4)
                table[i] = {bgr[0], bgr[1], bgr[2], 0};
        }
        pattern->SetPalette(oDIBPALETTE(table.data(), static_cast<std::uint16_t>(colours)));
    }
    for (std::int32_t row = 0; row < height; ++row) {
        const auto line = header.bytes(static_cast<std::size_t>(stride));
        if (line.empty())
            break;
        pattern->SetImageLines(line.data(), model, row, 1);
    }
    return pattern;
}

} // namespace klv
