#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/attributes/font_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/memory.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/colour/colour.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/core/string.h"
#include "klv/geometry/shape.h"

#include <cstdint>
#include <memory>
#include <span>
#include <variant>
#include <vector>

namespace klv {

class oDIB;
class record_reader;
class record_writer;

/// The 16-bit code that starts a record of the recorded picture.
enum class record_code : std::uint16_t {
    push_state = 10,
    pop_state = 11,
    push_line = 12,
    pop_line = 13,
    push_fill = 14,
    pop_fill = 15,
    push_font = 16,
    pop_font = 17,
    push_clip = 18,
    pop_clip = 19,
    line_spec = 20,
    fill_spec = 21,
    font_spec = 22,
    clip_area = 23,
    polyline = 30,
    rectangle = 31,
    ellipse = 32,
    shape = 33,
    reserved_34 = 34,
    text = 35,
    bitmap = 36,
    reserved_37 = 37,
    text_transparency = 38,
    text_on_line = 39,
    arc = 40,
    pie = 41,
    chord = 42,
    round_rectangle = 43,
    end = 248,
};

// One struct for each kind of record: its fields are the payload in stream order. `holds` tells which codes
// the kind has. `write` appends the whole record, code first; where a value would have to be copied into the
// struct first, a static `write` takes it as it is. `read` takes the payload of a record whose code was read
// and answers false when the stream does not hold it.
//
// Everything that goes through the kinds (recording, playback, printing, counting) goes through the variant
// `metafile_record` below, so a kind that one of them forgets does not compile.

/// Pushes or pops state of the device that the picture is replayed on. Recording never makes one.
struct state_record {
    static constexpr bool holds(record_code c)
    {
        return c >= record_code::push_state && c <= record_code::pop_clip;
    }
    record_code code = record_code::push_state;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code read_code);
};

struct line_spec_record {
    static constexpr bool holds(record_code c) { return c == record_code::line_spec; }
    vLINESPEC spec;

    static void write(record_writer& out, const vLINESPEC& spec);
    void write(record_writer& out) const { write(out, spec); }
    bool read(record_reader& in, record_code);
};

/// Pictures of version 16 and 32 have no centre at the end of the fill.
struct fill_spec_record {
    static constexpr bool holds(record_code c) { return c == record_code::fill_spec; }
    vFILLSPEC spec;

    static void write(record_writer& out, const vFILLSPEC& spec);
    void write(record_writer& out) const { write(out, spec); }
    bool read(record_reader& in, record_code);
};

struct font_spec_record {
    static constexpr bool holds(record_code c) { return c == record_code::font_spec; }
    vFONTSPEC spec;

    static void write(record_writer& out, const vFONTSPEC& spec);
    void write(record_writer& out) const { write(out, spec); }
    bool read(record_reader& in, record_code);
};

/// A shape that the clip area is cut down to.
struct clip_area_record {
    static constexpr bool holds(record_code c) { return c == record_code::clip_area; }
    vSHAPE shape;

    static void write(record_writer& out, const vSHAPE& shape);
    void write(record_writer& out) const { write(out, shape); }
    bool read(record_reader& in, record_code);
};

/// A 16-bit count and that many points.
struct polyline_record {
    static constexpr bool holds(record_code c) { return c == record_code::polyline; }
    static constexpr std::size_t max_points = 65535;
    std::vector<vPOINT, vALLOCATOR<vPOINT>> points;

    /// points: at most max_points.
    static void write(record_writer& out, std::span<const vPOINT> points);
    void write(record_writer& out) const { write(out, points); }
    bool read(record_reader& in, record_code);
};

struct rectangle_record {
    static constexpr bool holds(record_code c) { return c == record_code::rectangle; }
    vRECT rect;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);
};

struct ellipse_record {
    static constexpr bool holds(record_code c) { return c == record_code::ellipse; }
    vRECT rect;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);
};

struct round_rectangle_record {
    static constexpr bool holds(record_code c) { return c == record_code::round_rectangle; }
    vRECT rect;
    vSIZE corner;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);
};

/// Pictures of version 16 may hold an older layout: box, 16-bit count and point records, without the
/// capacity and closed fields that the shape's stream form has after the count.
struct shape_record {
    static constexpr bool holds(record_code c) { return c == record_code::shape; }
    vSHAPE shape;

    static void write(record_writer& out, const vSHAPE& shape);
    void write(record_writer& out) const { write(out, shape); }
    bool read(record_reader& in, record_code);
};

/// An arc, pie or chord of the ellipse in rect.
struct arc_record {
    static constexpr bool holds(record_code c) { return c >= record_code::arc && c <= record_code::chord; }
    record_code code = record_code::arc;
    vRECT rect;
    vPOINT start;
    vPOINT end;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code read_code);
};

/// Codes that nothing is drawn for; they have no payload. Recording never makes one.
struct reserved_record {
    static constexpr bool holds(record_code c)
    {
        return c == record_code::reserved_34 || c == record_code::reserved_37;
    }
    record_code code = record_code::reserved_34;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code read_code);
};

/// Text in a rectangle. alignment is a vTEXTALIGN, as the stream has it.
struct text_record {
    static constexpr bool holds(record_code c) { return c == record_code::text; }
    vSTRING text;
    vRECT rect;
    std::uint16_t alignment = 0;

    static void write(record_writer& out, const vSTRING& text, const vRECT& rect, std::uint16_t alignment);
    void write(record_writer& out) const { write(out, text, rect, alignment); }
    bool read(record_reader& in, record_code);
};

/// Which fields stand before a bitmap; other values have none.
enum class bitmap_layout : std::uint16_t {
    centred = 1, ///< an ignored point; the centre follows the bitmap, which is drawn at its pixel size
    placed = 2, ///< the destination
    transparent = 3, ///< the destination, transparency, its colour and threshold; the one that we record
    cut = 4, ///< the destination, the part of the bitmap that is drawn
};

struct bitmap_record {
    static constexpr bool holds(record_code c) { return c == record_code::bitmap; }
    bitmap_layout layout = bitmap_layout::transparent;
    vPOINT ignored; ///< centred
    vPOINT centre; ///< centred
    vRECT destination; ///< placed, transparent, cut
    vRECT source; ///< cut; pixels of the bitmap
    std::int32_t transparency = 0; ///< transparent: non-zero, pixels of transparent_colour are left out
    vCOLOUR transparent_colour;
    std::int32_t threshold = 0; ///< transparent: how far a pixel's colour may be off, 0 to 100
    std::unique_ptr<oMEMDIB> bitmap;

    /// Writes the record's fields with another bitmap.
    void write(record_writer& out, const oDIB& pixels) const;
    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);

    /// Where the bitmap goes in the picture; for `centred`, its pixel size about the centre.
    vRECT place() const;
    /// The part of the bitmap that is drawn, pixels.
    vRECT part() const;
};

struct text_transparency_record {
    static constexpr bool holds(record_code c) { return c == record_code::text_transparency; }
    std::int16_t transparent = 0;

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);
};

/// Text from the left end of its baseline.
struct text_on_line_record {
    static constexpr bool holds(record_code c) { return c == record_code::text_on_line; }
    vSTRING text;
    vPOINT start;

    static void write(record_writer& out, const vSTRING& text, const vPOINT& start);
    void write(record_writer& out) const { write(out, text, start); }
    bool read(record_reader& in, record_code);
};

/// The end of the picture; what follows is not part of it.
struct end_record {
    static constexpr bool holds(record_code c) { return c == record_code::end; }

    void write(record_writer& out) const;
    bool read(record_reader& in, record_code);
};

/// The list of all kinds.
using metafile_record = std::variant<state_record, line_spec_record, fill_spec_record, font_spec_record,
    clip_area_record, polyline_record, rectangle_record, ellipse_record, shape_record, round_rectangle_record,
    arc_record, reserved_record, text_record, bitmap_record, text_transparency_record, text_on_line_record,
    end_record>;

/// Appends the record, code first.
void write_record(record_writer& out, const metafile_record& what);

/// Reads the next record. A shape may use the bytes of a memory stream in place, so the record must go before
/// the stream does. \return false when the code is unknown, the stream does not hold the record or memory is
/// out; the record is then an end_record.
bool read_record(record_reader& in, metafile_record& into) noexcept;

} // namespace klv
