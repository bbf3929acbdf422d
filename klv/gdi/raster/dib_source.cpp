#include "klv/gdi/raster/dib_source.h"

#include "klv/base/byte_reader.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstring>

namespace klv::gdi {

namespace {

constexpr DWORD core_header_size = 12;
constexpr DWORD info_header_size = 40;
// Later headers carry the channel masks inside.
constexpr DWORD header_size_with_masks = 52;
constexpr std::int32_t largest_side = 1 << 20;

template <class Record> Record copy_of(const void* bytes)
{
    Record r;
    std::memcpy(&r, bytes, sizeof r);
    return r;
}

const std::uint8_t* at(const void* header, std::size_t offset)
{
    return static_cast<const std::uint8_t*>(header) + offset;
}

bool is_compressed(DWORD compression) { return compression == BI_RLE8 || compression == BI_RLE4; }

bool depth_fits(const dib_layout& l)
{
    switch (l.compression) {
    case BI_RGB:
        return l.bits == 1 || l.bits == 4 || l.bits == 8 || l.bits == 16 || l.bits == 24 || l.bits == 32;
    case BI_RLE8:
        return l.bits == 8 && !l.top_down;
    case BI_RLE4:
        return l.bits == 4 && !l.top_down;
    case BI_BITFIELDS:
        return l.bits == 16 || l.bits == 32;
    default:
        return false;
    }
}

// Run-length coded rows (RLE4 and RLE8 of the bitmap file format), one byte a pixel when unpacked, the
// bottom row first. Pixels that the code skips stay 0.
class run_length_decoder {
public:
    run_length_decoder(
        std::span<const std::uint8_t> bytes, const dib_layout& layout, std::vector<std::uint8_t>& out)
        : in_(bytes)
        , width_(static_cast<std::size_t>(layout.width))
        , height_(static_cast<std::size_t>(layout.height))
        , nibbles_(layout.bits == 4)
        , out_(out)
    {
    }

    void run()
    {
        while (in_.ok() && !in_.at_end() && y_ < height_) {
            const unsigned count = in_.u8();
            const unsigned value = in_.u8();
            if (count != 0)
                put_run(count, value);
            else if (!escape(value))
                return;
        }
    }

private:
    void put(unsigned value)
    {
        if (x_ < width_ && y_ < height_)
            out_[y_ * width_ + x_] = static_cast<std::uint8_t>(value);
        ++x_;
    }

    void put_run(unsigned count, unsigned value)
    {
        for (unsigned i = 0; i < count; ++i)
            put(nibbles_ ? (i % 2 == 0 ? value >> 4 : value & 0x0F) : value);
    }

    bool escape(unsigned code)
    {
        constexpr unsigned end_of_line = 0;
        constexpr unsigned end_of_bitmap = 1;
        constexpr unsigned move = 2;
        switch (code) {
        case end_of_line:
            x_ = 0;
            ++y_;
            return true;
        case end_of_bitmap:
            return false;
        case move:
            x_ += in_.u8();
            y_ += in_.u8();
            return true;
        default:
            put_literal(code);
            return true;
        }
    }

    void put_literal(unsigned count)
    {
        const std::size_t bytes = nibbles_ ? (count + 1) / 2 : count;
        const auto literal = in_.bytes(bytes);
        for (unsigned i = 0; i < count && i / (nibbles_ ? 2 : 1) < literal.size(); ++i) {
            const unsigned byte = literal[nibbles_ ? i / 2 : i];
            put(nibbles_ ? (i % 2 == 0 ? byte >> 4 : byte & 0x0F) : byte);
        }
        in_.skip(bytes % 2);
    }

    byte_reader in_;
    std::size_t width_;
    std::size_t height_;
    bool nibbles_;
    std::vector<std::uint8_t>& out_;
    std::size_t x_ = 0;
    std::size_t y_ = 0;
};

/// A table that no bitmap holds any more, so that steady drawing does not allocate.
std::shared_ptr<colour_table> spare_table()
{
    static thread_local std::shared_ptr<colour_table> spare;
    if (!spare || spare.use_count() != 1)
        spare = std::make_shared<colour_table>();
    return spare;
}

} // namespace

bool dib_layout::read(const void* header, UINT usage)
{
    const auto size = copy_of<DWORD>(header);
    if (size == core_header_size) {
        const auto core = copy_of<BITMAPCOREHEADER>(header);
        width = core.bcWidth;
        height = core.bcHeight;
        bits = core.bcBitCount;
        colours = bits <= 8 ? 1U << bits : 0;
        table_entry_size = sizeof(RGBTRIPLE);
        table_offset = core_header_size;
    } else if (size >= info_header_size) {
        const auto info = copy_of<BITMAPINFOHEADER>(header);
        if (info.biHeight == INT32_MIN)
            return false;
        width = info.biWidth;
        height = info.biHeight < 0 ? -info.biHeight : info.biHeight;
        top_down = info.biHeight < 0;
        bits = info.biBitCount;
        compression = info.biCompression;
        image_bytes = info.biSizeImage;
        const unsigned all = bits <= 8 ? 1U << bits : 0;
        colours = info.biClrUsed != 0 ? std::min(info.biClrUsed, 256U) : all;
        table_entry_size = sizeof(RGBQUAD);
        table_offset = size;
        masks = bits == 16 ? masks_555 : masks_888;
        if (compression == BI_BITFIELDS) {
            masks = copy_of<channel_masks>(at(header, info_header_size));
            if (size < header_size_with_masks)
                table_offset += sizeof(channel_masks);
        }
    } else {
        return false;
    }
    if (usage == DIB_PAL_COLORS)
        table_entry_size = sizeof(WORD);
    bits_offset = table_offset + colours * table_entry_size;
    return width > 0 && height > 0 && width <= largest_side && height <= largest_side && depth_fits(*this);
}

void read_colour_table(const void* header, const dib_layout& layout, UINT usage, const palette_view& palette,
    colour_table& table)
{
    table.entries.fill({});
    table.count = layout.bits <= 8 ? 1U << layout.bits : 0;
    const std::uint8_t* entry = at(header, layout.table_offset);
    for (unsigned i = 0; i < std::min(layout.colours, table.count); ++i, entry += layout.table_entry_size) {
        if (usage == DIB_PAL_COLORS) {
            const WORD index = copy_of<WORD>(entry);
            table.entries[i] = to_quad(palette ? palette_colour(*palette, index) : index);
        } else {
            table.entries[i] = {entry[0], entry[1], entry[2], 0};
        }
    }
    table.changed();
}

bool dib_source::open(
    const BITMAPINFO* info, const void* bits, UINT usage, const palette_view& palette, std::int32_t lines)
{
    if (info == nullptr || bits == nullptr || usage > DIB_PAL_COLORS || !layout_.read(info, usage))
        return false;
    const std::int32_t rows = lines < 0 ? layout_.height : std::min(lines, layout_.height);
    if (rows == 0)
        return false;
    pixels_ = {};
    pixels_.width = layout_.width;
    pixels_.height = rows;
    pixels_.bits = layout_.bits;
    pixels_.masks = layout_.masks;
    if (layout_.bits <= 8) {
        pixels_.table = spare_table();
        read_colour_table(info, layout_, usage, palette, *pixels_.table);
    }
    if (is_compressed(layout_.compression))
        return unpack({static_cast<const std::uint8_t*>(bits), layout_.image_bytes});
    // A source is only read from, but shares its description with surfaces that are drawn on.
    auto* const first = const_cast<std::uint8_t*>(static_cast<const std::uint8_t*>(bits));
    const auto stride = static_cast<std::ptrdiff_t>(layout_.row_bytes());
    pixels_.stride = layout_.top_down ? stride : -stride;
    pixels_.top = layout_.top_down ? first : first + stride * (rows - 1);
    return true;
}

bool dib_source::open_packed(const void* packed, UINT usage, const palette_view& palette)
{
    dib_layout layout;
    if (packed == nullptr || !layout.read(packed, usage))
        return false;
    return open(static_cast<const BITMAPINFO*>(packed), at(packed, layout.bits_offset), usage, palette);
}

bool dib_source::unpack(std::span<const std::uint8_t> bytes)
{
    // A byte of code makes at most 255 pixels; a bitmap that announces far more than its bytes can hold is
    // not worth its memory.
    constexpr std::uint64_t most_pixels_of_a_byte = 256;
    const std::uint64_t pixels
        = static_cast<std::uint64_t>(layout_.width) * static_cast<std::uint64_t>(layout_.height);
    if (pixels > (bytes.size() + 1) * most_pixels_of_a_byte)
        return false;
    unpacked_.assign(static_cast<std::size_t>(pixels), 0);
    run_length_decoder(bytes, layout_, unpacked_).run();
    pixels_.bits = 8;
    pixels_.height = layout_.height;
    pixels_.stride = -std::ptrdiff_t{layout_.width};
    pixels_.top = unpacked_.data() + std::ptrdiff_t{layout_.width} * (layout_.height - 1);
    return true;
}

} // namespace klv::gdi
