#include "klv/metafiles/record_text.h"

#include "klv/bitmaps/dib.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace klv {

namespace {

template <class Record> record_code code_of_kind(const Record& r)
{
    if constexpr (requires { r.code; }) {
        return r.code;
    } else {
        // A kind without a code field has one code only.
        constexpr auto only = [] {
            for (std::uint16_t c = 0;; ++c)
                if (Record::holds(record_code{c}))
                    return record_code{c};
        }();
        return only;
    }
}

// Builds up the line of one record.
class printer {
public:
    explicit printer(record_line& line)
        : line_(line)
    {
    }

    void operator()(const state_record&) { }
    void operator()(const line_spec_record& r)
    {
        add(" type %d width %d", r.spec.LineType(), r.spec.Width());
        colour("colour", r.spec.Colour());
        add(" corner %d dash %d pattern", r.spec.CornerType(), r.spec.DashType());
        for (unsigned short i = 0; i < vLINESPEC::pattern_length; ++i)
            add(" %d", r.spec.Pattern(i));
    }
    void operator()(const fill_spec_record& r)
    {
        add(" type %d mode %d", r.spec.Type(), r.spec.Mode());
        colour("from", r.spec.ColourFrom());
        colour("to", r.spec.ColourTo());
        add(" angle %g centre", r.spec.Angle().Double());
        point(r.spec.Centre());
        if (oDIB* dib = nullptr; r.spec.Bitmap(&dib))
            bitmap(*dib);
    }
    void operator()(const font_spec_record& r)
    {
        text(r.spec.Name());
        add(" style %d height %d expansion %g angle %g", r.spec.Style(), r.spec.Height(),
            r.spec.Expansion().Double(), r.spec.Angle().Double());
    }
    void operator()(const clip_area_record& r) { shape(r.shape); }
    void operator()(const polyline_record& r)
    {
        for (const vPOINT& p : r.points)
            point(p);
    }
    void operator()(const rectangle_record& r) { rect(r.rect); }
    void operator()(const ellipse_record& r) { rect(r.rect); }
    void operator()(const shape_record& r) { shape(r.shape); }
    void operator()(const round_rectangle_record& r)
    {
        rect(r.rect);
        add(" corner %d x %d", r.corner.x, r.corner.y);
    }
    void operator()(const arc_record& r)
    {
        rect(r.rect);
        add(" from");
        point(r.start);
        add(" to");
        point(r.end);
    }
    void operator()(const reserved_record&) { }
    void operator()(const text_record& r)
    {
        text(r.text);
        rect(r.rect);
        add(" alignment %d", r.alignment);
    }
    void operator()(const bitmap_record& r)
    {
        add(" layout %d", static_cast<int>(r.layout));
        rect(r.place());
        if (r.layout == bitmap_layout::cut) {
            add(" part");
            rect(r.source);
        }
        if (r.layout == bitmap_layout::transparent) {
            add(" transparency %d", r.transparency);
            colour("colour", r.transparent_colour);
            add(" threshold %d", r.threshold);
        }
        bitmap(*r.bitmap);
    }
    void operator()(const text_transparency_record& r) { add(" %d", r.transparent); }
    void operator()(const text_on_line_record& r)
    {
        text(r.text);
        add(" at");
        point(r.start);
    }
    void operator()(const end_record&) { }

private:
    [[gnu::format(printf, 2, 3)]] void add(const char* format, ...)
    {
        std::array<char, 128> piece;
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(piece.data(), piece.size(), format, arguments);
        va_end(arguments);
        line_ += piece.data();
    }
    void point(const vPOINT& p) { add(" (%d, %d)", p.x, p.y); }
    void rect(const vRECT& r) { add(" (%d, %d, %d, %d)", r.Left(), r.Top(), r.Right(), r.Bottom()); }

    // In the model that it was given in: rgb(r, g, b), or the model's letters and the packed value.
    void colour(const char* label, const vCOLOUR& c)
    {
        switch (c.GetNativeFormat()) {
        case vCOLOUR_RGB:
            add(" %s rgb(%d, %d, %d)", label, c.Red(), c.Green(), c.Blue());
            break;
        case vCOLOUR_HLS:
            add(" %s hls(%d, %d, %d)", label, c.Hue(), c.Light(), c.Saturation());
            break;
        case vCOLOUR_CMYK:
            add(" %s cmyk(%d, %d, %d, %d)", label, c.Cyan(), c.Magenta(), c.Yellow(), c.Black());
            break;
        default:
            add(" %s model %d", label, static_cast<int>(c.GetNativeFormat()));
            break;
        }
        if (c.GetTint() != 100)
            add(" tint %d", c.GetTint());
        if (c.Spot())
            add(" spot");
    }

    void text(const vSTRING& s)
    {
        line_ += " \"";
        for (const char c : s.View()) {
            const auto code = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\')
                add("\\%c", c);
            else if (code >= 0x20 && code < 0x7F)
                line_ += c;
            else
                add("\\x%02X", code);
        }
        line_ += '"';
    }

    // As a path: M starts a contour, L a straight and C a curved segment, Z closes the contour.
    void shape(const vSHAPE& s)
    {
        rect(s.BoundBox());
        add(" %d points:", s.NoPoint());
        bool curved = false; // whether the segment to the next point on the outline is a curve
        for (const point_record& p : s.records()) {
            if (p.has(point_flags::first))
                line_ += " M";
            else if (p.has(point_flags::control))
                line_ += " c";
            else
                line_ += curved ? " C" : " L";
            add(" %d,%d", p.x(), p.y());
            if (p.has(point_flags::control))
                continue;
            curved = p.has(point_flags::curve_to);
            if (p.has(point_flags::last) && p.has(point_flags::segment))
                line_ += " Z";
        }
    }

    void bitmap(const oDIB& dib)
    {
        add(" bitmap %d x %d x %d", dib.Width(), dib.Height(), dib.ColourDepth());
    }

    record_line& line_;
};

} // namespace

record_code code_of(const metafile_record& what)
{
    return std::visit([](const auto& r) { return code_of_kind(r); }, what);
}

const char* name_of(record_code code)
{
    switch (code) {
    case record_code::push_state:
        return "push state";
    case record_code::pop_state:
        return "pop state";
    case record_code::push_line:
        return "push line";
    case record_code::pop_line:
        return "pop line";
    case record_code::push_fill:
        return "push fill";
    case record_code::pop_fill:
        return "pop fill";
    case record_code::push_font:
        return "push font";
    case record_code::pop_font:
        return "pop font";
    case record_code::push_clip:
        return "push clip";
    case record_code::pop_clip:
        return "pop clip";
    case record_code::line_spec:
        return "line";
    case record_code::fill_spec:
        return "fill";
    case record_code::font_spec:
        return "font";
    case record_code::clip_area:
        return "clip";
    case record_code::polyline:
        return "polyline";
    case record_code::rectangle:
        return "rectangle";
    case record_code::ellipse:
        return "ellipse";
    case record_code::shape:
        return "shape";
    case record_code::reserved_34:
        return "reserved 34";
    case record_code::text:
        return "text";
    case record_code::bitmap:
        return "bitmap";
    case record_code::reserved_37:
        return "reserved 37";
    case record_code::text_transparency:
        return "text transparency";
    case record_code::text_on_line:
        return "text on line";
    case record_code::arc:
        return "arc";
    case record_code::pie:
        return "pie";
    case record_code::chord:
        return "chord";
    case record_code::round_rectangle:
        return "round rectangle";
    case record_code::end:
        return "end";
    }
    return "unknown";
}

void describe(const metafile_record& what, record_line& line)
{
    line += name_of(code_of(what));
    std::visit(printer(line), what);
}

} // namespace klv
