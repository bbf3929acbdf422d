#include "klv/gdi/raster/glyph_mask.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/brush_painter.h"

#include <algorithm>

namespace klv::gdi {

namespace {

/// Whether a pixel of the mask is painted at all.
bool is_set(const glyph_mask& mask, std::int32_t x, std::int32_t y)
{
    return (mask.bits[y * mask.stride + x / 8] >> (7 - x % 8) & 1) != 0;
}

/// Hands the runs of a mask's set pixels to a sink. area is what of the mask can be seen, device units.
void draw_runs(const glyph_mask& mask, std::int32_t left, std::int32_t top, const box& area, span_sink& sink)
{
    span_batch out(sink);
    for (std::int32_t y = area.y1; y < area.y2; ++y)
        for (std::int32_t x = area.x1; x < area.x2; ++x) {
            if (!is_set(mask, x - left, y - top))
                continue;
            const std::int32_t start = x;
            while (x < area.x2 && is_set(mask, x - left, y - top))
                ++x;
            out.add(y, start, x);
        }
    out.flush();
}

} // namespace

void draw_mask(
    const canvas& on, const glyph_mask& mask, std::int32_t x, std::int32_t y, rgb colour, const box* box_clip)
{
    const surface& s = on.pixels;
    constexpr std::int32_t limit = 1 << 29;
    if (s.top == nullptr || x < -limit || x > limit || y < -limit || y > limit)
        return;
    box area = intersection({x, y, x + mask.width, y + mask.height}, on.clip.extents());
    if (box_clip != nullptr)
        area = intersection(area, *box_clip);
    if (is_empty(area))
        return;
    solid_painter painter(s, make_pixel_op(R2_COPYPEN, pixel_of(s, colour), used_bits(s)), on.meter);
    clipped_output out(on.clip, painter);
    draw_runs(mask, x, y, area, out.sink());
}

} // namespace klv::gdi
