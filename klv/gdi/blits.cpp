#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/dib_source.h"
#include "klv/gdi/raster/rop3.h"
#include "klv/gdi/state/context.h"

#include <algorithm>
#include <cstdlib>

namespace klv {

using namespace gdi;

BOOL PatBlt(HDC handle, INT x, INT y, INT width, INT height, DWORD rop) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        if (rop3(rop).uses_source())
            return FALSE;
        dc.out->fill(dc.state, pattern_block{{x, y, width, height}, rop});
        return TRUE;
    });
}

BOOL BitBlt(
    HDC dc, INT x, INT y, INT width, INT height, HDC source, INT x_source, INT y_source, DWORD rop) noexcept
{
    return StretchBlt(dc, x, y, width, height, source, x_source, y_source, width, height, rop);
}

BOOL StretchBlt(HDC handle, INT x, INT y, INT width, INT height, HDC source_handle, INT x_source,
    INT y_source, INT source_width, INT source_height, DWORD rop) noexcept
{
    if (!rop3(rop).uses_source())
        return PatBlt(handle, x, y, width, height, rop);
    return with_context(handle, [=](drawing_context& dc) -> BOOL {
        auto* source = find_context(source_handle);
        if (source == nullptr)
            return FALSE;
        const shared_surface_lock lock(*source);
        const surface* pixels = source->out->pixels(source->state);
        if (pixels == nullptr)
            return FALSE;
        const block from
            = source->state.map.to_device(block{x_source, y_source, source_width, source_height});
        const rgb background = resolve_colour(source->state, source->state.background_colour);
        return dc.out->copy(dc.state, context_block{{x, y, width, height}, *pixels, from, background, rop});
    });
}

INT StretchDIBits(HDC handle, INT x, INT y, INT width, INT height, INT x_source, INT y_source,
    INT source_width, INT source_height, const void* bits, const BITMAPINFO* info, UINT usage,
    DWORD rop) noexcept
{
    if (!rop3(rop).uses_source())
        return PatBlt(handle, x, y, width, height, rop) ? std::abs(std::max(height, -INT32_MAX)) : 0;
    return with_context(handle, [=](drawing_context& dc) {
        dib_source source;
        if (!source.open(info, bits, usage, palette_of(&dc)))
            return 0;
        const dib_block what{{x, y, width, height}, {x_source, y_source, source_width, source_height},
            {source, info, bits, usage}, rop};
        return dc.out->copy(dc.state, what) ? source.layout().height : 0;
    });
}

INT SetDIBitsToDevice(HDC handle, INT x, INT y, DWORD width, DWORD height, INT x_source, INT y_source,
    UINT start_line, UINT lines, const void* bits, const BITMAPINFO* info, UINT usage) noexcept
{
    constexpr DWORD largest = 1 << 30;
    if (width > largest || height > largest || start_line > largest || lines > largest)
        return 0;
    return with_context(handle, [=](drawing_context& dc) {
        dib_source source;
        if (!source.open(info, bits, usage, palette_of(&dc), static_cast<INT>(lines)))
            return 0;
        const dib_band what{
            {x, y}, width, height, x_source, y_source, start_line, lines, {source, info, bits, usage}};
        return dc.out->copy(dc.state, what) ? source.pixels().height : 0;
    });
}

} // namespace klv
