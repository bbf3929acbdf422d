#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/dib_source.h"
#include "klv/gdi/raster/pixel_rows.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/state/screen.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace gdi {

INT bitmap_object::describe(INT size, void* buffer) const
{
    DIBSECTION d{};
    d.dsBm = {0, pixels.width, pixels.height, static_cast<LONG>(std::abs(pixels.stride)), 1,
        static_cast<WORD>(pixels.bits), section ? memory.first() : nullptr};
    if (!section || (buffer != nullptr && size < static_cast<INT>(sizeof d)))
        return copy_description(&d.dsBm, sizeof d.dsBm, size, buffer);
    d.dsBmih.biSize = sizeof d.dsBmih;
    d.dsBmih.biWidth = pixels.width;
    d.dsBmih.biHeight = top_down ? -pixels.height : pixels.height;
    d.dsBmih.biPlanes = 1;
    d.dsBmih.biBitCount = static_cast<WORD>(pixels.bits);
    d.dsBmih.biSizeImage = static_cast<DWORD>(std::abs(pixels.stride) * pixels.height);
    d.dsBmih.biClrUsed = pixels.table ? pixels.table->count : 0;
    if (pixels.bits == 16 || (pixels.bits == 32 && pixels.masks != masks_888)) {
        d.dsBmih.biCompression = BI_BITFIELDS;
        d.dsBitfields[0] = pixels.masks.red;
        d.dsBitfields[1] = pixels.masks.green;
        d.dsBitfields[2] = pixels.masks.blue;
    }
    return copy_description(&d, sizeof d, size, buffer);
}

std::shared_ptr<bitmap_object> new_bitmap(std::int32_t width, std::int32_t height, int bits, bool bottom_up)
{
    auto bitmap = std::make_shared<bitmap_object>();
    bitmap->pixels = bitmap->memory.make(width, height, bits, bottom_up);
    bitmap->top_down = !bottom_up;
    return bitmap->pixels.top == nullptr ? nullptr : bitmap;
}

namespace {

bool is_depth(UINT bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

/// The colours that the screen's bitmaps of a depth have; they share the screen's own.
std::shared_ptr<colour_table> device_table(int bits)
{
    if (bits > 8)
        return nullptr;
    const std::lock_guard lock(screen_mutex());
    return bits == 8 && the_screen().table ? the_screen().table : default_colour_table(bits);
}

/// A device-dependent bitmap: monochrome, or with the screen's colours.
std::shared_ptr<bitmap_object> new_device_bitmap(INT width, INT height, int bits)
{
    auto bitmap = new_bitmap(width, height, bits, false);
    if (!bitmap)
        return nullptr;
    bitmap->pixels.monochrome = bits == 1;
    bitmap->pixels.table = device_table(bits);
    return bitmap;
}

HBITMAP handle_for(const std::shared_ptr<bitmap_object>& bitmap)
{
    return handle_of<HBITMAP>(bitmap ? register_object(bitmap) : 0);
}

/// Bytes of a row as CreateBitmap takes them: padded to two.
std::size_t word_row_bytes(const surface& s)
{
    return static_cast<std::size_t>(
        (static_cast<std::uint64_t>(s.width) * static_cast<std::uint64_t>(s.bits) + 15) / 16 * 2);
}

void set_word_rows(const surface& s, const std::uint8_t* bits)
{
    const std::size_t row_bytes = word_row_bytes(s);
    for (std::int32_t y = 0; y < s.height; ++y, bits += row_bytes)
        std::memcpy(s.row(y), bits, row_bytes);
}

/// The colours of a bitmap's pixels; a monochrome one is black and white.
rgb colour_at(const surface& s, std::uint32_t pixel)
{
    return s.monochrome ? ((pixel & 1) != 0 ? 0xFFFFFFU : 0U) : colour_of(s, pixel);
}

/// Neighbours are often equal, so the last answer is kept.
void convert_pixels(const surface& from, const surface& to, std::vector<std::uint32_t>& row)
{
    if (row.empty())
        return;
    std::uint32_t last = row.front();
    std::uint32_t converted = pixel_of(to, colour_at(from, last));
    for (std::uint32_t& p : row) {
        if (p != last) {
            last = p;
            converted = pixel_of(to, colour_at(from, last));
        }
        p = converted;
    }
}

/// A row of single bits at once: each of the two values becomes one of the target's. False for other rows.
bool copy_bit_row(const surface& from, std::int32_t from_y, const surface& to, std::int32_t to_y)
{
    if (from.bits != 1 || to.bits != 1 || from.width != to.width)
        return false;
    const std::uint32_t zero = pixel_of(to, colour_at(from, 0)) & 1;
    const std::uint32_t one = pixel_of(to, colour_at(from, 1)) & 1;
    const auto keep = static_cast<std::uint8_t>(zero != one ? 0xFF : 0);
    const auto flip = static_cast<std::uint8_t>(zero != 0 ? 0xFF : 0);
    const auto bytes = (static_cast<std::size_t>(from.width) + 7) / 8;
    std::transform(from.row(from_y), from.row(from_y) + bytes, to.row(to_y),
        [=](std::uint8_t b) { return static_cast<std::uint8_t>((b & keep) ^ flip); });
    return true;
}

/// Copies pixels by their colours; equal formats by value.
void copy_row(const surface& from, std::int32_t from_y, const surface& to, std::int32_t to_y,
    std::vector<std::uint32_t>& row)
{
    if (copy_bit_row(from, from_y, to, to_y))
        return;
    const bool same_table
        = from.table == to.table || (from.table && to.table && from.table->entries == to.table->entries);
    const bool raw
        = from.bits == to.bits && from.monochrome == to.monochrome && same_table && from.masks == to.masks;
    row.resize(static_cast<std::size_t>(std::min(from.width, to.width)));
    load_pixels(from, 0, from_y, row);
    if (!raw)
        convert_pixels(from, to, row);
    store_pixels(to, 0, to_y, row);
}

/// Rows start to start + lines of a bitmap, counted from the bottom for a bottom-up layout.
template <class Visit> INT for_rows(const surface& s, bool top_down, UINT start, UINT lines, Visit visit)
{
    const auto height = static_cast<std::uint32_t>(s.height);
    if (start >= height)
        return 0;
    const UINT count = std::min(lines, height - start);
    for (UINT i = 0; i < count; ++i) {
        const auto line = static_cast<std::int32_t>(start + i);
        visit(i, top_down ? line : s.height - 1 - line);
    }
    return static_cast<INT>(count);
}

void fill_in_header(const surface& s, BITMAPINFOHEADER& h)
{
    h.biWidth = s.width;
    h.biHeight = s.height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(s.bits);
    h.biCompression = s.bits == 16 || (s.bits == 32 && s.masks != masks_888) ? BI_BITFIELDS : BI_RGB;
    h.biSizeImage
        = static_cast<DWORD>(dib_row_bytes(static_cast<std::uint64_t>(s.width), static_cast<unsigned>(s.bits))
            * static_cast<std::uint64_t>(s.height));
    h.biXPelsPerMeter = 0;
    h.biYPelsPerMeter = 0;
    h.biClrUsed = 0;
    h.biClrImportant = 0;
}

/// The colours that a bitmap read at the given depth gets: its own when the depths agree.
std::shared_ptr<colour_table> table_for_reading(const surface& s, int bits)
{
    return bits == s.bits && s.table ? s.table : default_colour_table(bits);
}

/// Writes the colour table that readers of the rows need. Palette indices count up from 0.
void write_colour_table(BITMAPINFO& info, const dib_layout& layout, UINT usage, const colour_table& table)
{
    auto* entry = reinterpret_cast<std::uint8_t*>(&info) + layout.table_offset;
    const unsigned count = 1U << layout.bits;
    for (unsigned i = 0; i < count; ++i, entry += layout.table_entry_size) {
        if (usage == DIB_PAL_COLORS) {
            const auto index = static_cast<WORD>(i);
            std::memcpy(entry, &index, sizeof index);
        } else {
            std::memcpy(entry, &table.entries[i], layout.table_entry_size);
        }
    }
}

} // namespace

} // namespace gdi

using namespace gdi;

HBITMAP CreateBitmap(INT width, INT height, UINT planes, UINT bits_per_pixel, const void* bits) noexcept
{
    return guarded([&]() -> HBITMAP {
        if (planes != 1 || !is_depth(bits_per_pixel))
            return nullptr;
        const auto bitmap = new_device_bitmap(width, height, static_cast<int>(bits_per_pixel));
        if (bitmap && bits != nullptr)
            set_word_rows(bitmap->pixels, static_cast<const std::uint8_t*>(bits));
        return handle_for(bitmap);
    });
}

HBITMAP CreateCompatibleBitmap(HDC handle, INT width, INT height) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> HBITMAP {
        const surface like = dc.out->format(dc.state);
        const auto bitmap = new_device_bitmap(width, height, like.bits);
        if (bitmap) {
            bitmap->pixels.masks = like.masks;
            bitmap->pixels.monochrome = like.monochrome;
            if (like.table)
                bitmap->pixels.table = like.table;
        }
        return handle_for(bitmap);
    });
}

HBITMAP CreateDIBSection(
    HDC handle, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD) noexcept
{
    if (bits != nullptr)
        *bits = nullptr;
    return guarded([&]() -> HBITMAP {
        dib_layout layout;
        if (info == nullptr || section != nullptr || usage > DIB_PAL_COLORS || !layout.read(info, usage)
            || layout.compression == BI_RLE4 || layout.compression == BI_RLE8)
            return nullptr;
        const auto bitmap = new_bitmap(layout.width, layout.height, layout.bits, !layout.top_down);
        if (!bitmap)
            return nullptr;
        bitmap->section = true;
        bitmap->pixels.masks = layout.masks;
        if (layout.bits <= 8) {
            bitmap->pixels.table = std::make_shared<colour_table>();
            read_colour_table(info, layout, usage, palette_of(find_context(handle)), *bitmap->pixels.table);
        }
        if (bits != nullptr)
            *bits = bitmap->memory.first();
        return handle_for(bitmap);
    });
}

UINT GetDIBColorTable(HDC handle, UINT first, UINT count, RGBQUAD* colours) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr || !dc->state.bitmap || !dc->state.bitmap->pixels.table || colours == nullptr)
        return 0;
    const colour_table& table = *dc->state.bitmap->pixels.table;
    const UINT n = first >= table.count ? 0 : std::min(count, table.count - first);
    std::copy_n(table.entries.begin() + first % 256, n, colours);
    return n;
}

INT GetDIBits(
    HDC dc, HBITMAP handle, UINT start, UINT lines, void* bits, BITMAPINFO* info, UINT usage) noexcept
{
    return guarded([&]() -> INT {
        const auto* bitmap = find<bitmap_object>(handle);
        if (find_context(dc) == nullptr || bitmap == nullptr || info == nullptr || usage > DIB_PAL_COLORS)
            return 0;
        const surface& s = bitmap->pixels;
        if (info->bmiHeader.biSize == sizeof(BITMAPINFOHEADER) && info->bmiHeader.biBitCount == 0) {
            fill_in_header(s, info->bmiHeader);
            return s.height;
        }
        dib_layout layout;
        if (!layout.read(info, usage) || layout.compression == BI_RLE4 || layout.compression == BI_RLE8)
            return 0;
        surface out;
        out.width = layout.width;
        out.bits = layout.bits;
        out.masks = layout.masks;
        if (layout.bits <= 8) {
            out.table = table_for_reading(s, layout.bits);
            write_colour_table(*info, layout, usage, *out.table);
        }
        if (info->bmiHeader.biSize >= sizeof(BITMAPINFOHEADER))
            info->bmiHeader.biSizeImage
                = static_cast<DWORD>(layout.row_bytes() * static_cast<std::size_t>(layout.height));
        if (bits == nullptr)
            return s.height;
        std::vector<std::uint32_t> row;
        out.height = 1;
        return for_rows(s, layout.top_down, start, lines, [&](UINT i, std::int32_t y) {
            out.top = static_cast<std::uint8_t*>(bits) + i * layout.row_bytes();
            copy_row(s, y, out, 0, row);
        });
    });
}

} // namespace klv
