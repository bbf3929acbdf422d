#include "klv/filters/wmf/wmf_record_decoding.h"

// Lines and figures.

namespace klv {
namespace {

void decode_arc(byte_reader& in, canvas_figures& figures, ARCCLOSURE closure)
{
    wmf_arc r;
    if (wmf_read(in, r))
        figures.arc(box_of(r.box), {r.start.x, r.start.y}, {r.end.x, r.end.y}, closure);
}

void decode_round_rect(byte_reader& in, canvas_figures& figures)
{
    wmf_round_rect r;
    if (wmf_read(in, r))
        figures.round_rectangle(box_of(r.box), r.corner_width, r.corner_height);
}

void decode_poly_polygon(byte_reader& in, canvas_figures& figures)
{
    const auto counts = wmf_counts::read(in, in.u16le());
    figures.poly_polygon(counts, wmf_points::read(in, in.left()));
}

void decode_pattern_blit(byte_reader& in, canvas_figures& figures)
{
    wmf_pat_blt r;
    if (wmf_read(in, r))
        figures.pattern_fill(box_of(r.target), r.rop);
}

void decode_set_pixel(byte_reader& in, canvas_figures& figures)
{
    wmf_set_pixel r;
    if (wmf_read(in, r))
        figures.fill({r.x, r.y, r.x + 1, r.y + 1}, r.colour);
}

} // namespace

bool decode_wmf_figure(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    auto& figures = canvas.figures();
    wmf_rect rect;
    switch (record.function) {
    case wmf_function::move_to: {
        wmf_pair to;
        if (wmf_read(in, to))
            figures.move_to(to.x, to.y);
        return true;
    }
    case wmf_function::line_to: {
        wmf_pair to;
        wmf_read(in, to);
        figures.line_to(to.x, to.y);
        return true;
    }
    case wmf_function::rectangle:
        if (wmf_read(in, rect))
            figures.rectangle(box_of(rect));
        return true;
    case wmf_function::ellipse:
        if (wmf_read(in, rect))
            figures.ellipse(box_of(rect));
        return true;
    case wmf_function::round_rect:
        decode_round_rect(in, figures);
        return true;
    case wmf_function::polygon:
        figures.polygon(wmf_points::read(in, in.u16le()));
        return true;
    case wmf_function::polyline:
        figures.polyline(wmf_points::read(in, in.u16le()));
        return true;
    case wmf_function::poly_polygon:
        decode_poly_polygon(in, figures);
        return true;
    case wmf_function::arc:
        decode_arc(in, figures, ARC_OPEN);
        return true;
    case wmf_function::pie:
        decode_arc(in, figures, ARC_PIE);
        return true;
    case wmf_function::chord:
        decode_arc(in, figures, ARC_CHORD);
        return true;
    case wmf_function::pat_blt:
        decode_pattern_blit(in, figures);
        return true;
    case wmf_function::set_pixel:
        if (canvas.policy().reads_every_drawing)
            decode_set_pixel(in, figures);
        return true;
    default:
        return false;
    }
}

} // namespace klv
