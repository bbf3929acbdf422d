#include "klv/gdi/state/palette.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"
#include "klv/gdi/state/screen.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace gdi {

INT palette_object::describe(INT size, void* buffer) const
{
    const auto count = static_cast<WORD>(entries.size());
    return copy_description(&count, sizeof count, size, buffer);
}

namespace {

constexpr std::size_t largest_palette = 65535;

rgb to_rgb(const PALETTEENTRY& e)
{
    return std::uint32_t{e.peRed} << 16 | std::uint32_t{e.peGreen} << 8 | e.peBlue;
}

std::uint32_t square_distance(rgb a, rgb b)
{
    const auto part = [&](int shift) {
        const int d = static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF);
        return static_cast<std::uint32_t>(d * d);
    };
    return part(0) + part(8) + part(16);
}

std::size_t nearest_entry(const palette_object& palette, rgb colour)
{
    const auto closer = [colour](const PALETTEENTRY& a, const PALETTEENTRY& b) {
        return square_distance(to_rgb(a), colour) < square_distance(to_rgb(b), colour);
    };
    const auto nearest = std::min_element(palette.entries.begin(), palette.entries.end(), closer);
    return static_cast<std::size_t>(nearest - palette.entries.begin());
}

/// How many of count entries from first on exist.
std::size_t entries_from(const palette_object& palette, UINT first, UINT count)
{
    return first >= palette.entries.size() ? 0 : std::min<std::size_t>(count, palette.entries.size() - first);
}

/// Gives an entry of the system palette to a logical colour. \return whether the system palette changed.
bool realise_entry(screen& s, const PALETTEENTRY& entry)
{
    auto& entries = s.table->entries;
    const RGBQUAD wanted = to_quad(to_rgb(entry));
    const bool may_share = (entry.peFlags & (PC_NOCOLLAPSE | PC_RESERVED)) == 0;
    const unsigned end_used = first_free_entry + s.realised;
    if (may_share)
        for (unsigned i = 0; i < 256; ++i)
            if ((i < end_used || i >= end_free_entry) && entries[i] == wanted)
                return false;
    if (end_used >= end_free_entry)
        return false;
    ++s.realised;
    if (entries[end_used] == wanted)
        return false;
    entries[end_used] = wanted;
    return true;
}

} // namespace

rgb resolve_colour(const drawing_context& dc, COLORREF colour)
{
    if (colour >> 24 == 0)
        return gdi::to_rgb(colour);
    constexpr COLORREF is_index = 0x01;
    constexpr COLORREF is_palette_rgb = 0x02;
    const auto& palette = dc.state.palette;
    const COLORREF kind = colour >> 24;
    if (kind == is_index && palette) {
        const std::size_t index = colour & 0xFFFF;
        return index < palette->entries.size() ? to_rgb(palette->entries[index]) : 0;
    }
    if (kind == is_palette_rgb && palette && !palette->entries.empty() && the_screen().bits == 8)
        return to_rgb(palette->entries[nearest_entry(*palette, gdi::to_rgb(colour))]);
    return gdi::to_rgb(colour);
}

} // namespace gdi

using namespace gdi;

HPALETTE CreatePalette(const LOGPALETTE* palette) noexcept
{
    return guarded([&]() -> HPALETTE {
        if (palette == nullptr || palette->palVersion != LOGPALETTE_VERSION || palette->palNumEntries == 0)
            return nullptr;
        std::vector<PALETTEENTRY> entries(palette->palNumEntries);
        std::memcpy(entries.data(), palette->palPalEntry, entries.size() * sizeof(PALETTEENTRY));
        return make_object<HPALETTE, palette_object>(std::move(entries));
    });
}

HPALETTE SelectPalette(HDC handle, HPALETTE palette, BOOL) noexcept
{
    auto* dc = find_context(handle);
    auto selected = find_shared<palette_object>(palette);
    if (dc == nullptr || !selected)
        return nullptr;
    const auto old = handle_of<HPALETTE>(dc->state.palette ? dc->state.palette->token : 0);
    dc->state.palette = std::move(selected);
    return old;
}

UINT RealizePalette(HDC handle) noexcept
{
    const auto* dc = find_context(handle);
    auto& s = the_screen();
    if (dc == nullptr || !dc->state.palette || dc->state.palette->stock || !s.table)
        return 0;
    UINT changed = 0;
    s.realised = 0;
    for (const PALETTEENTRY& e : dc->state.palette->entries)
        changed += realise_entry(s, e);
    if (changed != 0)
        s.table->changed();
    return changed;
}

BOOL UnrealizeObject(HGDIOBJ object) noexcept { return find_object(token_of(object)) != nullptr; }

UINT GetPaletteEntries(HPALETTE handle, UINT first, UINT count, PALETTEENTRY* entries) noexcept
{
    const auto* palette = find<palette_object>(handle);
    if (palette == nullptr)
        return 0;
    if (entries == nullptr)
        return static_cast<UINT>(palette->entries.size());
    const std::size_t n = entries_from(*palette, first, count);
    std::copy_n(palette->entries.begin() + first * (n != 0), n, entries);
    return static_cast<UINT>(n);
}

UINT SetPaletteEntries(HPALETTE handle, UINT first, UINT count, const PALETTEENTRY* entries) noexcept
{
    auto* palette = find<palette_object>(handle);
    if (palette == nullptr || palette->stock || entries == nullptr)
        return 0;
    const std::size_t n = entries_from(*palette, first, count);
    for (std::size_t i = 0; i < n; ++i)
        palette->entries[first + i] = entries[i];
    return static_cast<UINT>(n);
}

BOOL AnimatePalette(HPALETTE handle, UINT first, UINT count, const PALETTEENTRY* entries) noexcept
{
    auto* palette = find<palette_object>(handle);
    if (palette == nullptr || palette->stock || entries == nullptr)
        return FALSE;
    const std::size_t n = entries_from(*palette, first, count);
    for (std::size_t i = 0; i < n; ++i)
        if ((palette->entries[first + i].peFlags & PC_RESERVED) != 0)
            palette->entries[first + i] = entries[i];
    return n != 0;
}

BOOL ResizePalette(HPALETTE handle, UINT count) noexcept
{
    return guarded([&]() -> BOOL {
        auto* palette = find<palette_object>(handle);
        if (palette == nullptr || palette->stock || count == 0 || count > largest_palette)
            return FALSE;
        palette->entries.resize(count, PALETTEENTRY{});
        return TRUE;
    });
}

UINT GetNearestPaletteIndex(HPALETTE handle, COLORREF colour) noexcept
{
    const auto* palette = find<palette_object>(handle);
    if (palette == nullptr)
        return CLR_INVALID;
    return static_cast<UINT>(nearest_entry(*palette, gdi::to_rgb(colour)));
}

COLORREF GetNearestColor(HDC handle, COLORREF colour) noexcept
{
    auto* dc = find_context(handle);
    if (dc == nullptr)
        return CLR_INVALID;
    const rgb wanted = resolve_colour(*dc, colour);
    // Depths that show every colour need no pixels, so that asking does not make the screen's.
    if (dc->context == context_kind::screen && the_screen().bits >= 24)
        return to_colorref(wanted);
    const surface& s = dc->target();
    return s.top == nullptr ? to_colorref(wanted) : to_colorref(colour_of(s, pixel_of(s, wanted)));
}

UINT GetSystemPaletteEntries(HDC handle, UINT first, UINT count, PALETTEENTRY* entries) noexcept
{
    const auto& s = the_screen();
    if (find_context(handle) == nullptr || !s.table)
        return 0;
    if (entries == nullptr)
        return 256;
    const UINT n = first >= 256 ? 0 : std::min(count, 256 - first);
    for (UINT i = 0; i < n; ++i) {
        const RGBQUAD& q = s.table->entries[first + i];
        entries[i] = {q.rgbRed, q.rgbGreen, q.rgbBlue, 0};
    }
    return n;
}

} // namespace klv
