#include "klv/gdi/state/palette.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
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

rgb resolve_colour(const drawing_state& state, COLORREF colour)
{
    if (colour >> 24 == 0)
        return gdi::to_rgb(colour);
    constexpr COLORREF is_index = 0x01;
    constexpr COLORREF is_palette_rgb = 0x02;
    const auto& palette = state.palette;
    const COLORREF kind = colour >> 24;
    if (kind == is_index)
        return palette_colour(palette->entries, colour & 0xFFFF);
    if (kind == is_palette_rgb && !palette->entries.empty() && the_screen().bits == 8)
        return to_rgb(palette->entries[nearest_entry(*palette, gdi::to_rgb(colour))]);
    return gdi::to_rgb(colour);
}

UINT realise_on_screen(const palette_object& palette)
{
    const std::lock_guard lock(screen_mutex());
    auto& s = the_screen();
    if (palette.stock || !s.table)
        return 0;
    UINT changed = 0;
    s.realised = 0;
    for (const PALETTEENTRY& e : palette.entries)
        changed += realise_entry(s, e);
    if (changed != 0)
        s.table->changed();
    return changed;
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
    return with_context(handle, [=](drawing_context& dc) -> HPALETTE {
        auto selected = find_shared<palette_object>(palette);
        if (!selected)
            return nullptr;
        const auto old = std::exchange(dc.state.palette, std::move(selected));
        dc.out->select(dc.state, *dc.state.palette);
        return handle_of<HPALETTE>(old->token);
    });
}

UINT RealizePalette(HDC handle) noexcept
{
    return with_context(handle, [](drawing_context& dc) { return dc.out->realise_palette(dc.state); });
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

COLORREF GetNearestColor(HDC handle, COLORREF colour) noexcept
{
    return with_context(handle, CLR_INVALID, [=](drawing_context& dc) {
        return to_colorref(dc.out->nearest(dc.state, resolve_colour(dc.state, colour)));
    });
}

UINT GetSystemPaletteEntries(HDC handle, UINT first, UINT count, PALETTEENTRY* entries) noexcept
{
    const std::lock_guard lock(screen_mutex());
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
