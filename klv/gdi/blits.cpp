#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/blitter.h"
#include "klv/gdi/raster/dib_source.h"

#include <algorithm>

namespace klv {

using namespace gdi;

namespace {

/// A logical rectangle of signed extents in device units, its direction kept.
struct device_extent {
    std::int32_t x, y, width, height;

    device_extent(const drawing_context& dc, INT left, INT top, INT w, INT h)
    {
        const auto sum = [](INT a, INT b) {
            return static_cast<INT>(std::clamp<std::int64_t>(std::int64_t{a} + b, INT32_MIN, INT32_MAX));
        };
        const RECT r = dc.state.map.to_device(RECT{left, top, sum(left, w), sum(top, h)});
        const auto extent = [](INT from, INT to) {
            return static_cast<INT>(std::clamp<std::int64_t>(std::int64_t{to} - from, -INT32_MAX, INT32_MAX));
        };
        x = r.left;
        y = r.top;
        width = extent(r.left, r.right);
        height = extent(r.top, r.bottom);
    }
};

bool set_axes(blit& job, const device_extent& to, const device_extent& from)
{
    return job.x.set(to.x, to.width, from.x, from.width) && job.y.set(to.y, to.height, from.y, from.height);
}

struct dib_rectangle {
    INT x, y, width, height;
};

/// A rectangle of a bitmap in memory, given from its lower left corner when the bitmap is bottom-up.
BOOL blit_dib(drawing_context& dc, const device_extent& to, const dib_rectangle& from,
    const dib_source& source, DWORD rop)
{
    const dib_layout& layout = source.layout();
    blit job;
    job.source = &source.pixels();
    job.operation = rop3(rop);
    const std::int64_t top = layout.top_down ? from.y : std::int64_t{layout.height} - from.y - from.height;
    const auto clamped
        = [](std::int64_t v) { return static_cast<INT>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX)); };
    if (!job.x.set(to.x, to.width, from.x, from.width)
        || !job.y.set(to.y, to.height, clamped(top), from.height))
        return FALSE;
    run_blit(dc, job);
    return TRUE;
}

} // namespace

BOOL PatBlt(HDC handle, INT x, INT y, INT width, INT height, DWORD rop) noexcept
{
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        const rop3 operation(rop);
        if (dc == nullptr || operation.uses_source())
            return FALSE;
        const device_extent to(*dc, x, y, width, height);
        const auto end = [](INT a, INT b) {
            return static_cast<INT>(std::clamp<std::int64_t>(std::int64_t{a} + b, INT32_MIN, INT32_MAX));
        };
        run_pattern_blit(*dc, ordered_box(to.x, to.y, end(to.x, to.width), end(to.y, to.height)), operation);
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
    return guarded([&]() -> BOOL {
        auto* dc = find_context(handle);
        auto* source = find_context(source_handle);
        const rop3 operation(rop);
        if (!operation.uses_source())
            return PatBlt(handle, x, y, width, height, rop);
        if (dc == nullptr || source == nullptr)
            return FALSE;
        blit job;
        const device_extent from(*source, x_source, y_source, source_width, source_height);
        if (!set_axes(job, device_extent(*dc, x, y, width, height), from))
            return FALSE;
        job.source = &source->target();
        job.source_background = resolve_colour(*source, source->state.background_colour);
        job.operation = operation;
        run_blit(*dc, job);
        return TRUE;
    });
}

INT StretchDIBits(HDC handle, INT x, INT y, INT width, INT height, INT x_source, INT y_source,
    INT source_width, INT source_height, const void* bits, const BITMAPINFO* info, UINT usage,
    DWORD rop) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        if (dc == nullptr)
            return 0;
        if (!rop3(rop).uses_source())
            return PatBlt(handle, x, y, width, height, rop) ? std::abs(std::max(height, -INT32_MAX)) : 0;
        dib_source source;
        if (!source.open(info, bits, usage, dc))
            return 0;
        const device_extent to(*dc, x, y, width, height);
        const dib_rectangle from{x_source, y_source, source_width, source_height};
        return blit_dib(*dc, to, from, source, rop) ? source.layout().height : 0;
    });
}

INT SetDIBitsToDevice(HDC handle, INT x, INT y, DWORD width, DWORD height, INT x_source, INT y_source,
    UINT start_line, UINT lines, const void* bits, const BITMAPINFO* info, UINT usage) noexcept
{
    return guarded([&]() -> INT {
        auto* dc = find_context(handle);
        dib_source source;
        constexpr DWORD largest = 1 << 30;
        if (dc == nullptr || width > largest || height > largest || start_line > largest || lines > largest
            || !source.open(info, bits, usage, dc, static_cast<INT>(lines)))
            return 0;
        // Sizes are in pixels whatever the mapping. The given lines are a band of the whole bitmap; the
        // part of the source rectangle above or below it is not drawn.
        const dib_layout& layout = source.layout();
        const POINT corner = dc->state.map.to_device(POINT{x, y});
        const std::int64_t rows = source.pixels().height;
        const std::int64_t first = start_line;
        const std::int64_t band_top = layout.top_down ? first : layout.height - first - rows;
        const std::int64_t source_top
            = layout.top_down ? y_source : std::int64_t{layout.height} - y_source - std::int64_t{height};
        blit job;
        job.source = &source.pixels();
        const auto size = [](DWORD v) { return static_cast<INT>(v); };
        const auto top
            = static_cast<INT>(std::clamp<std::int64_t>(source_top - band_top, INT32_MIN, INT32_MAX));
        if (!job.x.set(corner.x, size(width), x_source, size(width))
            || !job.y.set(corner.y, size(height), top, size(height)))
            return 0;
        run_blit(*dc, job);
        return static_cast<INT>(rows);
    });
}

} // namespace klv
