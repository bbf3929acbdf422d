#include "klv/filters/wmf/wmf_comments.h"
#include "klv/filters/wmf/wmf_record_decoding.h"
#include "klv/gdi/gdi.h"

#include <variant>

// State, mapping, clip and escapes.

namespace klv {
namespace {

// Window and viewport have 16 bits in this format, and what leaves them wraps.
int to_word(int v) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(v & 0xFFFF)); }

vPOINT moved(const vPOINT& from, const wmf_pair& by)
{
    return {to_word(from.x + by.x), to_word(from.y + by.y)};
}

vPOINT scaled(const vPOINT& extent, const wmf_scale& by)
{
    return {to_word(extent.x * by.x_numerator / by.x_denominator),
        to_word(extent.y * by.y_numerator / by.y_denominator)};
}

void decode_scale(byte_reader& in, windows_canvas& canvas, bool window)
{
    wmf_scale by;
    if (!wmf_read(in, by) || by.x_denominator == 0 || by.y_denominator == 0)
        return;
    canvas.change_mapping([&](canvas_mapping& mapping) {
        if (window)
            mapping.window_ext(scaled(mapping.window_ext(), by));
        else
            mapping.viewport_ext(scaled(mapping.viewport_ext(), by));
    });
}

// A number that names no region takes the clip area away.
void select_clip_region(std::size_t number, windows_canvas& canvas)
{
    const auto* object = canvas.attributes().objects().find(number);
    if (!object || !std::holds_alternative<canvas_reserved>(*object))
        canvas.clip().remove();
}

} // namespace

bool decode_wmf_state(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    switch (record.function) {
    case wmf_function::set_text_color:
        canvas.set_text_colour(in.u32le());
        return true;
    case wmf_function::set_bk_color:
        canvas.set_background(in.u32le());
        return true;
    case wmf_function::set_bk_mode:
        canvas.set_background_transparent(in.u16le() == TRANSPARENT);
        return true;
    case wmf_function::set_text_align:
        canvas.set_text_align(in.u16le());
        return true;
    case wmf_function::set_poly_fill_mode:
        canvas.attributes().set_winding(in.u16le() == WINDING);
        return true;
    case wmf_function::set_rop2:
        canvas.set_drawing_mode(in.u16le());
        return true;
    case wmf_function::save_dc:
        canvas.save();
        return true;
    case wmf_function::restore_dc:
        canvas.restore(in.i16le());
        return true;
    default:
        return false;
    }
}

bool decode_wmf_mapping(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    if (record.function == wmf_function::scale_window_ext
        || record.function == wmf_function::scale_viewport_ext) {
        decode_scale(in, canvas, record.function == wmf_function::scale_window_ext);
        return true;
    }
    wmf_pair pair;
    const bool complete = wmf_read(in, pair);
    const vPOINT point(pair.x, pair.y);
    const auto change = [&](auto how) {
        if (complete)
            canvas.change_mapping(how);
        return true;
    };
    switch (record.function) {
    case wmf_function::set_window_org:
        return change([&](canvas_mapping& m) { m.window_org = point; });
    case wmf_function::offset_window_org:
        return change([&](canvas_mapping& m) { m.window_org = moved(m.window_org, pair); });
    case wmf_function::set_viewport_org:
        return change([&](canvas_mapping& m) { m.viewport_org = point; });
    case wmf_function::offset_viewport_org:
        return change([&](canvas_mapping& m) { m.viewport_org = moved(m.viewport_org, pair); });
    case wmf_function::set_viewport_ext:
        return change([&](canvas_mapping& m) { m.viewport_ext(point); });
    case wmf_function::set_window_ext:
        if (complete)
            canvas.page().window_set();
        return change([&](canvas_mapping& m) { m.window_ext(point); });
    default:
        return false;
    }
}

bool decode_wmf_clip(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    wmf_rect rect;
    switch (record.function) {
    case wmf_function::intersect_clip_rect:
        if (wmf_read(in, rect))
            canvas.clip().intersect(box_of(rect));
        return true;
    case wmf_function::exclude_clip_rect:
        if (wmf_read(in, rect))
            canvas.clip().exclude(box_of(rect));
        return true;
    case wmf_function::offset_clip_rgn: {
        wmf_pair by;
        wmf_read(in, by);
        canvas.clip().move(by.x, by.y);
        return true;
    }
    case wmf_function::select_clip_region:
        select_clip_region(in.u16le(), canvas);
        return true;
    default:
        return false;
    }
}

bool decode_wmf_escape(const wmf_record& record, windows_canvas& canvas, wmf_transparent_bitmap& transparent)
{
    if (record.function != wmf_function::escape)
        return false;
    byte_reader in(record.parameters);
    wmf_escape escape;
    if (!wmf_read(in, escape) || escape.function != wmf_comment_escape || !in.holds(escape.byte_count))
        return true;
    const auto comment = in.bytes(escape.byte_count);
    if (const auto fill = read_wmf_fill_comment(comment))
        canvas.set_next_fill(*fill);
    else if (!transparent.start(comment))
        transparent.end(comment, canvas.picture(), canvas.state().mapping);
    return true;
}

} // namespace klv
