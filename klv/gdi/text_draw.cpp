#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/glyph_mask.h"
#include "klv/gdi/text/text_run.h"

#include <array>
#include <utility>

namespace klv::gdi {
namespace {

struct vector {
    double x = 0;
    double y = 0;
};

/// Where a string stands in device pixels: the left end of its baseline and the directions of the baseline
/// and of its descenders.
struct placement {
    vector start;
    vector along;
    vector down;

    [[nodiscard]] POINT at(double distance, double depth) const
    {
        constexpr double limit = 1 << 28;
        const double x = start.x + along.x * distance + down.x * depth;
        const double y = start.y + along.y * distance + down.y * depth;
        return {static_cast<LONG>(std::lround(std::clamp(x, -limit, limit))),
            static_cast<LONG>(std::lround(std::clamp(y, -limit, limit)))};
    }
};

// Moves the reference point to the left end of the baseline.
placement place(POINT reference, std::uint32_t align, const realised_font& font, pixels length)
{
    placement p;
    p.along = {font.cosine(), -font.sine()};
    p.down = {font.sine(), font.cosine()};
    double back = 0;
    if ((align & TA_CENTER) == TA_CENTER)
        back = static_cast<double>(length / 2);
    else if ((align & TA_CENTER) == TA_RIGHT)
        back = static_cast<double>(length);
    double drop = font.measures().ascent;
    if ((align & TA_BASELINE) == TA_BASELINE)
        drop = 0;
    else if ((align & TA_BASELINE) == TA_BOTTOM)
        drop = -font.measures().descent;
    p.start = {
        reference.x - back * p.along.x + drop * p.down.x, reference.y - back * p.along.y + drop * p.down.y};
    return p;
}

/// What may be painted, in device pixels: the clip region's extents, cut by a rectangle where one clips.
struct paint_area {
    box extents{};
    box clip{};
    bool clipped = false;

    [[nodiscard]] const box* clip_box() const { return clipped ? &clip : nullptr; }
    /// The extents as seen from a pen.
    [[nodiscard]] RECT from(POINT pen) const
    {
        return {extents.x1 - pen.x, extents.y1 - pen.y, extents.x2 - pen.x, extents.y2 - pen.y};
    }
};

bool touches(const pen_mask& mask, const RECT& visible)
{
    return mask.left < visible.right && mask.top < visible.bottom && mask.left + mask.width > visible.left
        && mask.top + mask.height > visible.top;
}

void paint(drawing_context& dc, const paint_area& area, const pen_mask& mask, POINT pen)
{
    if (mask.width > 0 && mask.height > 0 && touches(mask, area.from(pen)))
        draw_mask(dc, {mask.bits, mask.stride, mask.width, mask.height, false}, pen.x + mask.left,
            pen.y + mask.top, area.clip_box());
}

void paint_characters(
    drawing_context& dc, const paint_area& area, realised_font& font, const text_run& run, const placement& p)
{
    run.for_each([&](const text_character& c, pixels distance) {
        const POINT pen = p.at(static_cast<double>(distance), 0);
        paint(dc, area, font.render(c, area.from(pen)), pen);
    });
}

// A bar along the baseline: from top to bottom pixels below it, for the whole length, in the text colour.
void paint_bar(
    drawing_context& dc, const paint_area& area, const placement& p, double length, double top, double bottom)
{
    const std::array corners{p.at(0, top), p.at(length, top), p.at(length, bottom), p.at(0, bottom)};
    const POINT pen = corners[0];
    std::array<FT_Vector, 4> points{};
    for (std::size_t i = 0; i < corners.size(); ++i)
        points[i] = {(FT_Pos{corners[i].x} - pen.x) * 64, (FT_Pos{pen.y} - corners[i].y) * 64};
    std::array<char, 4> on_curve{1, 1, 1, 1};
    std::array<short, 1> last_points{3};
    FT_Outline outline{1, 4, points.data(), on_curve.data(), last_points.data(), 0};
    std::vector<std::uint8_t> store;
    paint(dc, area, render_outline(outline, area.from(pen), store), pen);
}

void paint_lines(drawing_context& dc, const paint_area& area, const selected_font& selected,
    const placement& p, double length)
{
    const font_measures& px = selected.font->measures();
    const auto line = [&](std::int32_t top) { paint_bar(dc, area, p, length, top, top + px.line_thickness); };
    if (selected.object->logical.lfUnderline)
        line(px.underline_offset);
    if (selected.object->logical.lfStrikeOut)
        line(px.strikeout_offset);
}

void paint_background(
    drawing_context& dc, const paint_area& area, const realised_font& font, const placement& p, double length)
{
    const double top = -font.measures().ascent;
    const double bottom = font.measures().descent;
    if (!font.turned()) {
        const POINT a = p.at(0, top);
        const POINT b = p.at(length, bottom);
        fill_background(dc, intersection(ordered_box(a.x, a.y, b.x, b.y), area.extents));
        return;
    }
    const COLORREF text_colour = std::exchange(dc.state.text_colour, dc.state.background_colour);
    paint_bar(dc, area, p, length, top, bottom);
    dc.state.text_colour = text_colour;
}

void draw_text(drawing_context& dc, POINT at, std::string_view text, const LONG* dx, const paint_area& area)
{
    const selected_font selected = find_selected_font(dc);
    if (!selected.font)
        return;
    realised_font& font = *selected.font;
    const bool moves_position = (dc.state.text_align & TA_UPDATECP) != 0;
    const text_run run(dc, selected, text, dx);
    const pixels length = run.length();
    const POINT reference = dc.state.map.to_device(moves_position ? dc.state.position : at);
    const placement p = place(reference, dc.state.text_align, font, length);
    if (!is_empty(area.extents)) {
        if (dc.state.background_mode == OPAQUE)
            paint_background(dc, area, font, p, static_cast<double>(length));
        paint_characters(dc, area, font, run, p);
        paint_lines(dc, area, selected, p, static_cast<double>(length));
    }
    const bool centred = (dc.state.text_align & TA_CENTER) == TA_CENTER;
    if (moves_position && !centred) {
        const bool right = (dc.state.text_align & TA_CENTER) == TA_RIGHT;
        const double travel = static_cast<double>(right ? -length : length);
        const placement from_reference{
            {static_cast<double>(reference.x), static_cast<double>(reference.y)}, p.along, p.down};
        dc.state.position = dc.state.map.to_logical(from_reference.at(travel, 0));
    }
}

} // namespace
} // namespace klv::gdi

namespace klv {

int TextOutA(HDC dc, int x, int y, const char* text, int count) noexcept
{
    return count < 0 ? 0
                     : ExtTextOutA(dc, x, y, 0, nullptr, text, static_cast<std::uint32_t>(count), nullptr);
}

int ExtTextOutA(HDC handle, int x, int y, std::uint32_t options, const RECT* rect, const char* text,
    std::uint32_t count, const std::int32_t* dx) noexcept
{
    using namespace gdi;
    return guarded([&] {
        auto* dc = find_context(handle);
        if (!dc || (!text && count > 0))
            return 0;
        paint_area area;
        area.extents = dc->effective_clip().extents();
        if (rect && (options & (ETO_OPAQUE | ETO_CLIPPED)) != 0) {
            const RECT device = dc->state.map.to_device(*rect);
            area.clip = ordered_box(device.left, device.top, device.right, device.bottom);
            if ((options & ETO_OPAQUE) != 0)
                fill_background(*dc, area.clip);
            area.clipped = (options & ETO_CLIPPED) != 0;
            if (area.clipped)
                area.extents = intersection(area.extents, area.clip);
        }
        if (count > 0)
            draw_text(*dc, {x, y}, {text, count}, dx, area);
        return 1;
    });
}

} // namespace klv
