#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/glyph_mask.h"
#include "klv/gdi/raster/raster_sink.h"
#include "klv/gdi/text/text_line.h"

#include <array>

/// Text as the masks of its glyphs.
namespace klv::gdi {

namespace {

class text_painter {
public:
    text_painter(const canvas& on, const drawing_state& state, const text_call& what)
        : on_(on)
        , state_(state)
        , extents_(on.clip.extents())
    {
        if (what.options == 0)
            return;
        const RECT device = state.map.to_device(what.box);
        clip_ = ordered_box(device.left, device.top, device.right, device.bottom);
        if ((what.options & ETO_OPAQUE) != 0)
            fill_background(clip_);
        clipped_ = (what.options & ETO_CLIPPED) != 0;
        if (clipped_)
            extents_ = intersection(extents_, clip_);
    }

    void paint(const text_line& line)
    {
        if (is_empty(extents_))
            return;
        const rgb ink = resolve_colour(state_, state_.text_colour);
        if (state_.background_mode == OPAQUE)
            paint_background(line);
        line.run().for_each([&](const text_character& c, pixels distance) {
            const POINT pen = line.place().at(static_cast<double>(distance), 0);
            paint(line.font().render(c, from(pen)), pen, ink);
        });
        const font_measures& px = line.font().measures();
        const auto rule = [&](std::int32_t top) { paint_bar(line, top, top + px.line_thickness, ink); };
        if (line.object().logical.lfUnderline)
            rule(px.underline_offset);
        if (line.object().logical.lfStrikeOut)
            rule(px.strikeout_offset);
    }

private:
    /// What may be painted as seen from a pen.
    [[nodiscard]] RECT from(POINT pen) const
    {
        return {extents_.x1 - pen.x, extents_.y1 - pen.y, extents_.x2 - pen.x, extents_.y2 - pen.y};
    }

    void paint(const pen_mask& mask, POINT pen, rgb ink)
    {
        const RECT visible = from(pen);
        if (mask.width > 0 && mask.height > 0 && mask.left < visible.right && mask.top < visible.bottom
            && mask.left + mask.width > visible.left && mask.top + mask.height > visible.top)
            draw_mask(on_, {mask.bits, mask.stride, mask.width, mask.height}, pen.x + mask.left,
                pen.y + mask.top, ink, clipped_ ? &clip_ : nullptr);
    }

    /// A bar along the baseline: from top to bottom pixels below it, for the whole length.
    void paint_bar(const text_line& line, double top, double bottom, rgb ink)
    {
        const text_placement& place = line.place();
        const auto length = static_cast<double>(line.length());
        const std::array corners{
            place.at(0, top), place.at(length, top), place.at(length, bottom), place.at(0, bottom)};
        const POINT pen = corners[0];
        std::array<FT_Vector, 4> points{};
        for (std::size_t i = 0; i < corners.size(); ++i)
            points[i] = {(FT_Pos{corners[i].x} - pen.x) * 64, (FT_Pos{pen.y} - corners[i].y) * 64};
        std::array<char, 4> on_curve{1, 1, 1, 1};
        std::array<short, 1> last_points{3};
        FT_Outline outline{1, 4, points.data(), on_curve.data(), last_points.data(), 0};
        paint(render_outline(outline, from(pen), on_.scratch.mask), pen, ink);
    }

    void paint_background(const text_line& line)
    {
        const double top = -line.font().measures().ascent;
        const double bottom = line.font().measures().descent;
        if (line.font().turned()) {
            paint_bar(line, top, bottom, background());
            return;
        }
        const POINT a = line.place().at(0, top);
        const POINT b = line.place().at(static_cast<double>(line.length()), bottom);
        fill_background(intersection(ordered_box(a.x, a.y, b.x, b.y), extents_));
    }

    void fill_background(const box& area)
    {
        const surface& s = on_.pixels;
        if (s.top == nullptr)
            return;
        solid_painter painter(
            s, make_pixel_op(R2_COPYPEN, pixel_of(s, background()), used_bits(s)), on_.meter);
        clipped_output(on_.clip, painter).fill(area);
    }

    [[nodiscard]] rgb background() const { return resolve_colour(state_, state_.background_colour); }

    const canvas& on_;
    const drawing_state& state_;
    box extents_; ///< of what may be painted, device pixels
    box clip_{};
    bool clipped_ = false;
};

} // namespace

void raster_sink::write(const drawing_state& state, const text_call& what)
{
    const canvas on = open(state);
    text_painter painter(on, state, what);
    if (what.line != nullptr)
        painter.paint(*what.line);
}

} // namespace klv::gdi
