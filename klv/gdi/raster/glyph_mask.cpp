#include "klv/gdi/raster/glyph_mask.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/pixel_rows.h"

#include <algorithm>

namespace klv::gdi {

namespace {

constexpr unsigned half_coverage = 128;

/// Whether a pixel of the mask is painted at all.
bool is_set(const glyph_mask& mask, std::int32_t x, std::int32_t y)
{
    const std::uint8_t* row = mask.bits + y * mask.stride;
    if (mask.coverage)
        return row[x] >= half_coverage;
    return (row[x / 8] >> (7 - x % 8) & 1) != 0;
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

std::vector<std::uint32_t>& shared_row()
{
    static std::vector<std::uint32_t> row;
    return row;
}

/// Blends one colour into a surface of 16 or more bits by the coverage of the mask.
class coverage_blender final : public span_sink {
public:
    coverage_blender(
        const surface& s, rgb colour, const glyph_mask& mask, std::int32_t left, std::int32_t top)
        : surface_(s)
        , colour_(colour)
        , mask_(mask)
        , left_(left)
        , top_(top)
    {
    }

    void draw(std::span<const span> spans) override
    {
        for (const span& s : spans) {
            row_.resize(static_cast<std::size_t>(s.x1 - s.x0));
            load_pixels(surface_, s.x0, s.y, row_);
            const std::uint8_t* coverage = mask_.bits + (s.y - top_) * mask_.stride + (s.x0 - left_);
            for (std::size_t i = 0; i < row_.size(); ++i)
                row_[i] = blend(row_[i], coverage[i]);
            store_pixels(surface_, s.x0, s.y, row_);
        }
    }

private:
    std::uint32_t blend(std::uint32_t pixel, unsigned coverage) const
    {
        if (coverage == 0)
            return pixel;
        const rgb under = colour_of(surface_, pixel);
        const auto channel = [&](unsigned shift) {
            const unsigned a = under >> shift & 0xFF;
            const unsigned b = colour_ >> shift & 0xFF;
            return ((a * (255 - coverage) + b * coverage + 127) / 255) << shift;
        };
        return pixel_of(surface_, channel(16) | channel(8) | channel(0));
    }

    const surface& surface_;
    rgb colour_;
    const glyph_mask& mask_;
    std::int32_t left_;
    std::int32_t top_;
    std::vector<std::uint32_t>& row_ = shared_row();
};

} // namespace

void draw_mask(
    drawing_context& dc, const glyph_mask& mask, std::int32_t x, std::int32_t y, const box* box_clip)
{
    const surface& s = dc.target();
    constexpr std::int32_t limit = 1 << 29;
    if (s.top == nullptr || x < -limit || x > limit || y < -limit || y > limit)
        return;
    const rgb colour = resolve_colour(dc, dc.state.text_colour);
    box area = intersection({x, y, x + mask.width, y + mask.height}, dc.effective_clip().extents());
    if (box_clip != nullptr)
        area = intersection(area, *box_clip);
    if (is_empty(area))
        return;
    if (mask.coverage && s.bits >= 16) {
        coverage_blender blender(s, colour, mask, x, y);
        clipped_output out(dc, blender);
        span_batch rows(out.sink());
        for (std::int32_t row = area.y1; row < area.y2; ++row)
            rows.add(row, area.x1, area.x2);
        rows.flush();
        return;
    }
    solid_painter painter(s, make_pixel_op(R2_COPYPEN, pixel_of(s, colour), used_bits(s)));
    clipped_output out(dc, painter);
    draw_runs(mask, x, y, area, out.sink());
}

void fill_background(drawing_context& dc, const box& area)
{
    const surface& s = dc.target();
    if (s.top == nullptr)
        return;
    const rgb colour = resolve_colour(dc, dc.state.background_colour);
    solid_painter painter(s, make_pixel_op(R2_COPYPEN, pixel_of(s, colour), used_bits(s)));
    clipped_output out(dc, painter);
    const box visible = intersection(area, out.bounds());
    if (is_empty(visible))
        return;
    span_batch rows(out.sink());
    for (std::int32_t y = visible.y1; y < visible.y2; ++y)
        rows.add(y, visible.x1, visible.x2);
    rows.flush();
}

} // namespace klv::gdi
