#include "klv/filters/windows/canvas_attributes.h"

#include "klv/filters/windows/windows_attributes.h"
#include "klv/gdi/gdi.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cstdlib>
#include <variant>

namespace klv {
namespace {

// Bits above are the caps and joins of other kinds of pens.
constexpr std::uint16_t pen_style_mask = 0x0F;
constexpr std::uint16_t hatch_styles = 6;

vLINETYPE line_type_of(int pen_style)
{
    switch (pen_style) {
    case PS_SOLID:
    case PS_INSIDEFRAME:
        return vLINE_SOLID;
    case PS_DASH:
        return vLINE_DASH;
    case PS_DOT:
        return vLINE_DOT;
    case PS_DASHDOT:
        return vLINE_DASH_DOT;
    case PS_NULL:
        return vLINE_NONE;
    default:
        return vLINE_DASH_DOT_DOT;
    }
}

} // namespace

canvas_pen canvas_attributes::make_pen(std::uint16_t style, int width, COLORREF colour) const
{
    canvas_pen pen{.style = style, .colour = colour, .file_width = width};
    pen.width = scaled_width(pen);
    return pen;
}

canvas_brush canvas_attributes::make_brush(std::uint16_t style, COLORREF colour, std::uint16_t hatch)
{
    core_.graduation.brush_created(colour);
    return {style, colour, hatch};
}

canvas_font canvas_attributes::make_font(canvas_font font) const
{
    font.character_height = font.file_height < 0;
    font.height = std::abs(core_.state.mapping.map_height(font.file_height));
    return font;
}

void canvas_attributes::select(std::size_t number)
{
    const auto* object = objects_.find(number);
    if (!object)
        return;
    if (const auto* pen = std::get_if<canvas_pen>(object)) {
        core_.state.pen = *pen;
        record_pen();
    } else if (const auto* brush = std::get_if<canvas_brush>(object)) {
        core_.state.brush = *brush;
        record_brush();
    } else if (const auto* font = std::get_if<canvas_font>(object)) {
        core_.state.font = *font;
        record_font();
    } else if (const auto* pattern = std::get_if<canvas_pattern_brush>(object)) {
        record_pattern(*pattern);
    }
}

void canvas_attributes::select_palette(std::size_t number)
{
    if (const auto* object = objects_.find(number))
        if (const auto* palette = std::get_if<canvas_palette>(object))
            palette_ = palette->colours;
}

void canvas_attributes::set_winding(bool winding)
{
    core_.state.winding = winding;
    if (core_.policy.keeps_fill_mode)
        record_brush();
}

void canvas_attributes::mapping_rescaled()
{
    if (!core_.policy.rescales_objects)
        return;
    record_pen();
    record_font();
}

void canvas_attributes::record_all()
{
    record_pen();
    record_brush();
    record_font();
}

int canvas_attributes::scaled_width(const canvas_pen& pen) const
{
    return std::max(1, std::abs(core_.state.mapping.map_width(pen.file_width)));
}

text_size canvas_attributes::size_of(const canvas_font& font) const
{
    const auto& mapping = core_.state.mapping;
    const int height = std::abs(mapping.map_height(font.file_height));
    return {font.character_height ? -height : height, std::abs(mapping.map_width(font.file_width))};
}

void canvas_attributes::record_pen()
{
    const auto& pen = core_.state.pen;
    const auto& policy = core_.policy;
    const int style = policy.rescales_objects ? pen.style & pen_style_mask : pen.style;
    const auto line = round_line(
        line_type_of(style), pen.colour, policy.rescales_objects ? scaled_width(pen) : pen.width);
    if (!policy.skips_repeated_attributes || !(line == core_.picture.LineSpec()))
        core_.picture.LineSpec(line);
}

void canvas_attributes::record_brush()
{
    const auto& brush = core_.state.brush;
    const auto& policy = core_.policy;
    const bool winding = policy.keeps_fill_mode && core_.state.winding;
    auto fill = solid_fill(colour_of(brush.colour), winding ? vFILL_WINDING : vFILL_ALTERNATE);
    if (brush.style == BS_HOLLOW)
        fill.Type(vFILL_NONE);
    else if (policy.keeps_hatches && brush.style == BS_HATCHED && brush.hatch < hatch_styles)
        fill.Type(static_cast<vFILLTYPE>(vFILL_HATCH_FIRST + brush.hatch));
    if (!policy.skips_repeated_attributes || fill != core_.picture.FillSpec())
        core_.picture.FillSpec(fill);
}

void canvas_attributes::record_font()
{
    if (!core_.state.font)
        return;
    const auto& font = *core_.state.font;
    if (core_.policy.measures_text) {
        const auto& measures = core_.measurer.measure(font, size_of(font));
        core_.picture.FontSpec(measured_font(font, measures.em, measures.expansion));
        return;
    }
    core_.picture.FontSpec(vFONTSPEC(font.face, vFONT_NORMAL, font.height, vREAL(), 100,
        font.character_height ? vFONT_CHARACTER_HEIGHT : vFONT_CELL_HEIGHT, vANGLE()));
}

void canvas_attributes::record_pattern(const canvas_pattern_brush& pattern)
{
    vFILLSPEC fill(*pattern.bitmap);
    if (core_.policy.keeps_fill_mode && core_.state.winding)
        fill.Mode(vFILL_WINDING);
    core_.picture.FillSpec(fill);
}

} // namespace klv
