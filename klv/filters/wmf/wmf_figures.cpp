#include "klv/filters/wmf/wmf_attributes.h"
#include "klv/filters/wmf/wmf_reader.h"
#include "klv/geometry/arc.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <variant>

// Objects and figures of a Windows Metafile.

namespace klv {
namespace {

constexpr int largest_coordinate = 32766;
constexpr std::size_t most_polygons = 255;
constexpr std::size_t most_shape_points = 65535;
constexpr int pen_style_null = 5;
constexpr std::uint16_t pen_style_mask = 0x0F;
constexpr std::uint16_t brush_hollow = 1;
constexpr std::uint16_t brush_hatched = 2;
constexpr std::uint16_t hatch_styles = 6;

vLINETYPE line_type_of(int pen_style)
{
    switch (pen_style) {
    case 0:
    case 6:
        return vLINE_SOLID;
    case 1:
        return vLINE_DASH;
    case 2:
        return vLINE_DOT;
    case 3:
        return vLINE_DASH_DOT;
    case pen_style_null:
        return vLINE_NONE;
    default:
        return vLINE_DASH_DOT_DOT;
    }
}

vLINESPEC line_of(vLINETYPE type, COLORREF colour, int width)
{
    return vLINESPEC(type, wmf_colour(colour), width, vCORNER_ROUND, vDASH_ROUND, nullptr,
        vLINESPEC::no_arrow, vLINESPEC::no_arrow);
}

constexpr std::uint32_t no_operation = 0x00AA0029;

// The third byte of a raster operation tells the result for each combination of pattern, source and target
// bits, P * 4 + S * 2 + D being the number of the bit. There is no source here.
COLORREF pattern_operation(std::uint32_t rop, COLORREF pattern, COLORREF target)
{
    constexpr std::uint32_t channels = 0xFFFFFF;
    const auto when = [rop](int combination) { return (rop >> (16 + combination) & 1) != 0 ? channels : 0; };
    return (when(0) & ~pattern & ~target & channels) | (when(1) & ~pattern & target)
        | (when(4) & pattern & ~target) | (when(5) & pattern & target);
}

} // namespace

// Objects

bool wmf_reader::handle_object(const wmf_record& record, byte_reader& in)
{
    switch (record.function) {
    case wmf_function::create_pen_indirect:
        create_pen(in);
        return true;
    case wmf_function::create_brush_indirect: {
        const auto brush = read_wmf_brush(in);
        graduation_.brush_created(brush.colour);
        objects_.add(brush);
        return true;
    }
    case wmf_function::create_font_indirect:
        create_font(in);
        return true;
    case wmf_function::dib_create_pattern_brush:
        create_pattern_brush(in);
        return true;
    case wmf_function::create_palette:
        objects_.add(read_wmf_palette(in));
        return true;
    case wmf_function::select_palette:
        if (const auto* object = objects_.find(in.u16le()))
            if (const auto* palette = std::get_if<wmf_palette_object>(object))
                palette_ = palette->colours;
        return true;
    case wmf_function::create_pattern_brush:
    case wmf_function::create_bitmap_indirect:
    case wmf_function::create_bitmap:
    case wmf_function::create_region:
        objects_.add(wmf_reserved_object());
        return true;
    case wmf_function::delete_object:
        objects_.remove(in.u16le());
        return true;
    case wmf_function::select_object:
        if (const auto* object = objects_.find(in.u16le()))
            select(*object);
        return true;
    default:
        return false;
    }
}

int wmf_reader::pen_width(const wmf_pen_object& pen) const
{
    return std::max(1, std::abs(state_.mapping.map_width(pen.file_width)));
}

void wmf_reader::create_pen(byte_reader& in)
{
    auto pen = read_wmf_pen(in);
    pen.width = pen_width(pen);
    objects_.add(pen);
}

void wmf_reader::create_font(byte_reader& in)
{
    auto font = read_wmf_font(in);
    font.height = std::abs(state_.mapping.map_height(font.file_height));
    objects_.add(std::move(font));
}

void wmf_reader::create_pattern_brush(byte_reader& in)
{
    in.skip(2); // style
    const auto colour_usage = in.u16le();
    auto bitmap = read_wmf_pattern(in, colour_usage);
    if (bitmap)
        objects_.add(wmf_pattern_brush_object{std::move(bitmap)});
    else if (faithful_)
        objects_.add(wmf_reserved_object());
}

void wmf_reader::select(const wmf_object& object)
{
    if (const auto* pen = std::get_if<wmf_pen_object>(&object)) {
        state_.pen = *pen;
        select_pen();
    } else if (const auto* brush = std::get_if<wmf_brush_object>(&object)) {
        state_.brush = *brush;
        select_brush();
    } else if (const auto* font = std::get_if<wmf_font_object>(&object)) {
        state_.font = *font;
        select_font();
    } else if (const auto* pattern = std::get_if<wmf_pattern_brush_object>(&object)) {
        vFILLSPEC fill(*pattern->bitmap);
        if (faithful_ && state_.winding)
            fill.Mode(vFILL_WINDING);
        picture_.FillSpec(fill);
    }
}

void wmf_reader::select_pen()
{
    const auto& pen = state_.pen;
    const int style = faithful_ ? pen.style & pen_style_mask : pen.style;
    const auto line = line_of(line_type_of(style), pen.colour, faithful_ ? pen_width(pen) : pen.width);
    if (!faithful_ || !(line == picture_.LineSpec()))
        picture_.LineSpec(line);
}

void wmf_reader::select_brush()
{
    const auto& brush = state_.brush;
    const auto mode = faithful_ && state_.winding ? vFILL_WINDING : vFILL_ALTERNATE;
    auto fill = wmf_solid_fill(wmf_colour(brush.colour), mode);
    if (brush.style == brush_hollow)
        fill.Type(vFILL_NONE);
    else if (faithful_ && brush.style == brush_hatched && brush.hatch < hatch_styles)
        fill.Type(static_cast<vFILLTYPE>(vFILL_HATCH_FIRST + brush.hatch));
    if (!faithful_ || fill != picture_.FillSpec())
        picture_.FillSpec(fill);
}

wmf_text_size wmf_reader::text_size(const wmf_font_object& font) const
{
    const int height = std::abs(state_.mapping.map_height(font.file_height));
    return {font.character_height ? -height : height, std::abs(state_.mapping.map_width(font.file_width))};
}

void wmf_reader::select_font()
{
    if (!state_.font)
        return;
    const auto& font = *state_.font;
    if (faithful_) {
        const auto& measures = measurer_.measure(font, text_size(font));
        picture_.FontSpec(faithful_font(font, measures.em, measures.expansion));
        return;
    }
    picture_.FontSpec(vFONTSPEC(font.face, vFONT_NORMAL, font.height, vREAL(), 100,
        font.character_height ? vFONT_CHARACTER_HEIGHT : vFONT_CELL_HEIGHT, vANGLE()));
}

// Figures

bool wmf_reader::handle_figure(const wmf_record& record, byte_reader& in)
{
    wmf_rect rect;
    switch (record.function) {
    case wmf_function::move_to: {
        wmf_pair to;
        if (wmf_read(in, to)) {
            state_.current_point = map(to.x, to.y);
            lines_.clear();
        }
        return true;
    }
    case wmf_function::rectangle:
        if (wmf_read(in, rect))
            draw_figure([&] { picture_.DrawRect(map(rect)); });
        return true;
    case wmf_function::ellipse:
        if (wmf_read(in, rect))
            draw_figure([&] { picture_.DrawEllipse(map(rect)); });
        return true;
    case wmf_function::round_rect: {
        wmf_round_rect round;
        if (!wmf_read(in, round))
            return true;
        const vSIZE corner(std::abs(state_.mapping.map_width(round.corner_width)),
            std::abs(state_.mapping.map_height(round.corner_height)));
        draw_figure([&] { picture_.DrawRoundRect(map(round.box), corner); });
        return true;
    }
    case wmf_function::polygon:
        polygon(in, true);
        return true;
    case wmf_function::polyline:
        polygon(in, false);
        return true;
    case wmf_function::poly_polygon:
        poly_polygon(in);
        return true;
    case wmf_function::arc:
        arc(in, ARC_OPEN);
        return true;
    case wmf_function::pie:
        arc(in, ARC_PIE);
        return true;
    case wmf_function::chord:
        arc(in, ARC_CHORD);
        return true;
    case wmf_function::pat_blt: {
        wmf_pat_blt pattern;
        if (wmf_read(in, pattern))
            pattern_blit(pattern);
        return true;
    }
    case wmf_function::set_pixel:
        if (!faithful_)
            return false;
        set_pixel(in);
        return true;
    default:
        return false;
    }
}

vPOINT wmf_reader::map(int x, int y) const
{
    const vPOINT p = state_.mapping.map(x, y);
    if (faithful_)
        return p;
    if (state_.clipping) {
        vRECT clip = state_.clip_rect;
        const auto within = [](int v, int a, int b) { return std::clamp(v, std::min(a, b), std::max(a, b)); };
        return {within(p.x, clip.Left(), clip.Right()), within(p.y, clip.Top(), clip.Bottom())};
    }
    return {std::min(p.x, largest_coordinate), std::min(p.y, largest_coordinate)};
}

vRECT wmf_reader::map(const wmf_rect& rect) const
{
    return vRECT(map(rect.left, rect.top), map(rect.right, rect.bottom));
}

void wmf_reader::line_to(const vPOINT& point)
{
    if (lines_.empty())
        lines_.push_back(state_.current_point);
    state_.current_point = map(point.x, point.y);
    lines_.push_back(state_.current_point);
    if (lines_.size() == most_shape_points)
        flush_lines();
}

void wmf_reader::flush_lines()
{
    record_clip();
    if (lines_.size() >= 2 && !graduation_.silent())
        picture_.DrawLine(std::span<const vPOINT>(lines_));
    lines_.clear();
}

// Draws a figure in the fill that it was meant to have.
template <typename Draw> void wmf_reader::draw_figure(Draw draw)
{
    if (graduation_.silent())
        return;
    record_clip();
    switch (graduation_.judge(picture_.FillSpec())) {
    case wmf_graduation::verdict::skip:
        return;
    case wmf_graduation::verdict::draw:
        draw();
        return;
    case wmf_graduation::verdict::draw_in_fill:
        picture_.PushFillSpec();
        picture_.FillSpec(graduation_.fill());
        draw();
        picture_.PopFillSpec();
        return;
    }
}

// Appends up to count points, as many as the record holds, mapped.
void wmf_reader::read_points(byte_reader& in, std::size_t count)
{
    constexpr std::size_t point_size = 4;
    const auto bytes = in.bytes(std::min(count, in.left() / point_size) * point_size);
    const std::size_t first = points_.size();
    const std::size_t read = bytes.size() / point_size;
    points_.resize(first + read);
    const auto word = [&bytes](std::size_t at) {
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8));
    };
    for (std::size_t i = 0; i < read; ++i)
        points_[first + i] = map(word(i * point_size), word(i * point_size + 2));
}

void wmf_reader::polygon(byte_reader& in, bool closed)
{
    points_.clear();
    read_points(in, in.u16le());
    if (graduation_.silent()) {
        if (closed && !points_.empty())
            graduation_.strip(points_.front());
        return;
    }
    if (closed && points_.size() > 2 && points_.front() == points_.back())
        points_.pop_back();
    if (points_.size() < 2)
        return;
    if (shape_.assign_polyline(points_, closed))
        draw_figure([&] { picture_.DrawShape(shape_); });
}

void wmf_reader::poly_polygon(byte_reader& in)
{
    if (graduation_.silent())
        return;
    std::size_t polygons = in.u16le();
    if (!faithful_)
        polygons = std::min(polygons, most_polygons);
    byte_reader sizes = in.sub(std::min<std::size_t>(polygons, in.left() / 2) * 2);
    points_.clear();
    counts_.clear();
    while (!sizes.at_end()) {
        const std::size_t count = sizes.u16le();
        if (points_.size() + count > most_shape_points)
            draw_polygons();
        const std::size_t before = points_.size();
        read_points(in, count);
        if (points_.size() - before > 2 && points_[before] == points_.back())
            points_.pop_back();
        if (points_.size() - before < 2)
            points_.resize(before);
        else
            counts_.push_back(static_cast<std::int32_t>(points_.size() - before));
    }
    draw_polygons();
}

void wmf_reader::draw_polygons()
{
    if (!counts_.empty() && shape_.assign_polypolygon(points_, counts_, 1))
        draw_figure([&] { picture_.DrawShape(shape_); });
    points_.clear();
    counts_.clear();
}

// The file's arcs run counter-clockwise as seen, the arc routine clockwise: start and end change places.
void wmf_reader::arc(byte_reader& in, int closure)
{
    wmf_arc record;
    if (!wmf_read(in, record))
        return;
    const vRECT box = map(record.box);
    const vPOINT centre = box.Centre();
    const vPOINT radius1(std::abs(box.Width()) / 2, 0);
    const vPOINT radius2(0, std::abs(box.Height()) / 2);
    const vPOINT start = state_.mapping.map(record.start.x, record.start.y) - centre;
    const vPOINT end = state_.mapping.map(record.end.x, record.end.y) - centre;
    vSHAPE shape;
    ArcToBez(centre, radius1, radius2, end, start, shape, static_cast<ARCCLOSURE>(closure));
    draw_figure([&] { picture_.DrawShape(shape); });
}

void wmf_reader::fill_plainly(const vRECT& rect, const vFILLSPEC& fill)
{
    record_clip();
    picture_.PushLineSpec();
    picture_.PushFillSpec();
    picture_.LineSpec(line_of(vLINE_NONE, 0, 0));
    picture_.FillSpec(fill);
    picture_.DrawRect(rect);
    picture_.PopFillSpec();
    picture_.PopLineSpec();
}

void wmf_reader::pattern_blit(const wmf_pat_blt& record)
{
    const wmf_area& to = record.target;
    const vRECT rect(map(to.x, to.y), map(to.x + to.width, to.y + to.height));
    if (!faithful_) {
        draw_figure([&] { picture_.DrawRect(rect); });
        return;
    }
    const vFILLSPEC& current = picture_.FillSpec();
    if (static_cast<wmf_rop>(record.rop) == wmf_rop::pattern_copy || current.Type() != vFILL_SOLID) {
        if (record.rop != no_operation)
            draw_figure([&] { fill_plainly(rect, vFILLSPEC(picture_.FillSpec())); });
        return;
    }
    // What depends on the pixels below can't be recorded for a device not yet known; mostly it leaves them.
    const COLORREF pattern = current.Colour().PackedRGB();
    const COLORREF on_black = pattern_operation(record.rop, pattern, 0x000000);
    const COLORREF on_white = pattern_operation(record.rop, pattern, 0xFFFFFF);
    if (on_black == on_white)
        fill_plainly(rect, wmf_solid_fill(wmf_colour(on_black)));
}

void wmf_reader::set_pixel(byte_reader& in)
{
    wmf_set_pixel record;
    if (wmf_read(in, record))
        fill_plainly(vRECT(map(record.x, record.y), map(record.x + 1, record.y + 1)),
            wmf_solid_fill(wmf_colour(record.colour)));
}

} // namespace klv
