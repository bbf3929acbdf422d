#include "klv/filters/wmf/wmf_bitmaps.h"

#include "klv/base/memory.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/filters/wmf/wmf_attributes.h"
#include "klv/filters/wmf/wmf_mapping.h"
#include "klv/metafiles/metafile.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
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

// Divides upwards; the writer rounds positions down, so this finds the pixel that it meant.
std::int32_t pixel_of(std::int64_t distance, std::int64_t pixels, std::int64_t units)
{
    if (units <= 0)
        return 0;
    const std::int64_t product = distance * pixels;
    const std::int64_t pixel = product > 0 ? (product + units - 1) / units : product / units;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(pixel, INT32_MIN, INT32_MAX));
}

vRECT read_rect(byte_reader& in)
{
    const auto left = in.i32le();
    const auto top = in.i32le();
    const auto right = in.i32le();
    const auto bottom = in.i32le();
    return {left, top, right, bottom};
}

// A comment of the given size whose 24-byte text field holds exactly text.
bool is_comment(std::span<const std::uint8_t> comment, std::size_t size, std::string_view text)
{
    constexpr std::size_t text_field = 24;
    static_assert(text_field > 17);
    return comment.size() == size && std::memcmp(comment.data(), text.data(), text.size()) == 0
        && comment[text.size()] == 0;
}

std::uint8_t index_of_transparent(
    std::span<const RGBQUAD> palette, std::uint32_t colour, std::int32_t threshold)
{
    const int red = static_cast<int>(colour & 0xFF);
    const int green = static_cast<int>(colour >> 8 & 0xFF);
    const int blue = static_cast<int>(colour >> 16 & 0xFF);
    const auto worst = [&](const RGBQUAD& q) {
        return std::max({std::abs(q.rgbRed - red), std::abs(q.rgbGreen - green), std::abs(q.rgbBlue - blue)});
    };
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        if (worst(palette[i]) < threshold)
            return static_cast<std::uint8_t>(i);
        if (worst(palette[i]) < worst(palette[nearest]))
            nearest = i;
    }
    return static_cast<std::uint8_t>(nearest);
}

} // namespace

std::unique_ptr<oMEMDIB> read_wmf_dib(std::span<const std::uint8_t> packed, bool any_header,
    const wmf_colour_table& palette, std::uint16_t colour_usage)
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

std::unique_ptr<oSTREAMDIB> read_wmf_pattern(byte_reader& in, std::uint16_t colour_usage)
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

std::unique_ptr<oMEMDIB> read_wmf_bitmap16(byte_reader& in, COLORREF text_colour, COLORREF background)
{
    wmf_bitmap16 head;
    if (!wmf_read(in, head) || head.width <= 0 || head.height <= 0 || head.planes() != 1)
        return nullptr;
    const auto bits = static_cast<std::uint32_t>(head.depth());
    if (bits != 1 && bits != 24 && bits != 32)
        return nullptr;
    const auto stride = static_cast<std::size_t>(std::max<int>(head.width_bytes, 0));
    const std::size_t used = (static_cast<std::size_t>(head.width) * bits + 7) / 8;
    if (stride < used || !in.holds(static_cast<std::size_t>(head.height), stride))
        return nullptr;

    const auto out_bits = bits == 1 ? 1 : 24;
    std::unique_ptr<oMEMDIB> dib(new oMEMDIB(head.width, head.height, out_bits, model_of_bits(bits), 0));
    if (!dib || !dib->HasPixels())
        return nullptr;
    if (bits == 1) {
        const auto quad = [](COLORREF c) {
            return RGBQUAD{static_cast<std::uint8_t>(c >> 16), static_cast<std::uint8_t>(c >> 8),
                static_cast<std::uint8_t>(c), 0};
        };
        const std::array<RGBQUAD, 2> table{quad(text_colour), quad(background)};
        dib->SetPalette(oDIBPALETTE(table.data(), 2));
    }
    for (std::int32_t row = head.height - 1; row >= 0; --row) {
        const auto source = in.bytes(stride);
        const auto target = dib->line(row);
        if (bits != 32) {
            std::copy_n(source.begin(), std::min(used, target.size()), target.begin());
            continue;
        }
        for (std::size_t x = 0; x < static_cast<std::size_t>(head.width); ++x)
            std::copy_n(source.begin() + static_cast<std::ptrdiff_t>(4 * x), 3,
                target.begin() + static_cast<std::ptrdiff_t>(3 * x));
    }
    return dib;
}

bool wmf_transparent_bitmap::start(std::span<const std::uint8_t> comment)
{
    constexpr std::size_t size = 68;
    constexpr std::size_t text_field = 24;
    // A comment of a few bytes may not claim more memory than this.
    constexpr std::int64_t largest_bitmap = 16 << 20;
    if (!is_comment(comment, size, "ZYNStartTransBlit"))
        return false;

    byte_reader in(comment.subspan(text_field));
    colour_ = in.u32le();
    threshold_ = in.i32le();
    const std::uint32_t bits = in.u32le();
    source_ = read_rect(in);
    destination_ = read_rect(in);
    bitmap_.reset();
    first_piece_ = true;
    const std::int64_t width = std::int64_t{source_.Right()} - source_.Left();
    const std::int64_t height = std::int64_t{source_.Bottom()} - source_.Top();
    const bool sized = width > 0 && height > 0 && width <= largest_bitmap && height <= largest_bitmap
        && width * height * bits / 8 <= largest_bitmap;
    if (!sized || (bits != 8 && bits != 24))
        return true;
    bitmap_.reset(new oMEMDIB(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
        static_cast<std::int32_t>(bits), model_of_bits(bits), 0));
    if (bitmap_ && !bitmap_->HasPixels())
        bitmap_.reset();
    return true;
}

void wmf_transparent_bitmap::fill_with_transparent_colour(const oMEMDIB& piece)
{
    std::array<std::uint8_t, 3> bgr{static_cast<std::uint8_t>(colour_ >> 16),
        static_cast<std::uint8_t>(colour_ >> 8), static_cast<std::uint8_t>(colour_)};
    std::uint8_t index = 0;
    if (bitmap_->ColourDepth() == 8) {
        oDIBPALETTE* palette = nullptr;
        piece.GetPalette(&palette);
        if (palette)
            bitmap_->SetPalette(*palette);
        index = index_of_transparent(bitmap_->colours(), colour_, threshold_);
    }
    for (std::int32_t row = 0; row < bitmap_->Height(); ++row) {
        const auto line = bitmap_->line(row);
        if (bitmap_->ColourDepth() == 8)
            std::fill(line.begin(), line.end(), index);
        else
            for (std::size_t i = 0; i + 3 <= line.size(); i += 3)
                std::copy(bgr.begin(), bgr.end(), line.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void wmf_transparent_bitmap::add_piece(
    const oMEMDIB& piece, std::int32_t x, std::int32_t y, std::int32_t height)
{
    if (first_piece_)
        fill_with_transparent_colour(piece);
    first_piece_ = false;
    if (piece.ColourDepth() != bitmap_->ColourDepth())
        return;

    // The writer gives a piece by its lower edge and a negative height; rows are stored bottom row first.
    const std::int64_t bottom = height > 0 ? std::int64_t{y} + height : y;
    const std::int64_t column
        = pixel_of(std::int64_t{x} - destination_.Left(), bitmap_->Width(), destination_.Width());
    const std::int64_t row
        = pixel_of(std::int64_t{destination_.Bottom()} - bottom, bitmap_->Height(), destination_.Height());
    const std::int64_t pixel_bytes = bitmap_->ColourDepth() / 8;
    const std::int64_t first = std::max<std::int64_t>(0, -column);
    const std::int64_t last = std::min<std::int64_t>(piece.Width(), bitmap_->Width() - column);
    for (std::int32_t r = 0; r < piece.Height() && first < last; ++r) {
        if (row + r < 0 || row + r >= bitmap_->Height())
            continue;
        const auto source = piece.line(r);
        const auto target = bitmap_->line(static_cast<std::int32_t>(row + r));
        std::copy(source.begin() + first * pixel_bytes, source.begin() + last * pixel_bytes,
            target.begin() + (column + first) * pixel_bytes);
    }
}

bool wmf_transparent_bitmap::end(
    std::span<const std::uint8_t> comment, vMETAFILE& picture, const wmf_mapping& mapping)
{
    constexpr std::size_t size = 24;
    if (!is_comment(comment, size, "ZYNEndTransBlit"))
        return false;
    if (!bitmap_)
        return true;
    const vRECT target(mapping.map(destination_.Left(), destination_.Top()),
        mapping.map(destination_.Right(), destination_.Bottom()));
    const vCOLOUR transparent = wmf_colour(colour_);
    oDIBCONTEXT context(bitmap_->Width(), bitmap_->Height(), &target, &source_, nullptr, nullptr,
        &transparent, 0.0, 0, 0, 1, threshold_);
    picture.DrawDIB(*bitmap_, context, nullptr, 0);
    bitmap_.reset();
    return true;
}

} // namespace klv
