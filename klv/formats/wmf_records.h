#pragma once

#include "klv/base/byte_reader.h"
#include "klv/base/byte_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>

namespace klv {

// The Windows Metafile, a published format: an optional 22-byte placeable header, the 18-byte header, then
// records. A record is its size in 16-bit words (32 bits, its own 3 words included), a 16-bit function
// number and parameters. All numbers are little-endian.

constexpr std::uint32_t wmf_placeable_key = 0x9AC6CDD7;
constexpr std::uint32_t wmf_placeable_header_size = 22;
constexpr std::uint32_t wmf_header_size = 18;
constexpr std::uint32_t wmf_record_head_size = 6;
constexpr std::uint32_t wmf_shortest_record_words = 3;

enum class wmf_function : std::uint16_t {
    end_of_file = 0x0000,
    save_dc = 0x001E,
    realize_palette = 0x0035,
    set_palette_entries = 0x0037,
    create_palette = 0x00F7,
    set_bk_mode = 0x0102,
    set_map_mode = 0x0103,
    set_rop2 = 0x0104,
    set_rel_abs = 0x0105,
    set_poly_fill_mode = 0x0106,
    set_stretch_blt_mode = 0x0107,
    set_text_char_extra = 0x0108,
    restore_dc = 0x0127,
    invert_region = 0x012A,
    paint_region = 0x012B,
    select_clip_region = 0x012C,
    select_object = 0x012D,
    set_text_align = 0x012E,
    resize_palette = 0x0139,
    dib_create_pattern_brush = 0x0142,
    set_layout = 0x0149,
    delete_object = 0x01F0,
    create_pattern_brush = 0x01F9,
    set_bk_color = 0x0201,
    set_text_color = 0x0209,
    set_text_justification = 0x020A,
    set_window_org = 0x020B,
    set_window_ext = 0x020C,
    set_viewport_org = 0x020D,
    set_viewport_ext = 0x020E,
    offset_window_org = 0x020F,
    offset_viewport_org = 0x0211,
    line_to = 0x0213,
    move_to = 0x0214,
    offset_clip_rgn = 0x0220,
    fill_region = 0x0228,
    set_mapper_flags = 0x0231,
    select_palette = 0x0234,
    create_pen_indirect = 0x02FA,
    create_font_indirect = 0x02FB,
    create_brush_indirect = 0x02FC,
    create_bitmap_indirect = 0x02FD,
    polygon = 0x0324,
    polyline = 0x0325,
    scale_window_ext = 0x0410,
    scale_viewport_ext = 0x0412,
    exclude_clip_rect = 0x0415,
    intersect_clip_rect = 0x0416,
    ellipse = 0x0418,
    flood_fill = 0x0419,
    rectangle = 0x041B,
    set_pixel = 0x041F,
    frame_region = 0x0429,
    animate_palette = 0x0436,
    text_out = 0x0521,
    poly_polygon = 0x0538,
    ext_flood_fill = 0x0548,
    round_rect = 0x061C,
    pat_blt = 0x061D,
    escape = 0x0626,
    draw_text = 0x062F,
    create_bitmap = 0x06FE,
    create_region = 0x06FF,
    arc = 0x0817,
    pie = 0x081A,
    chord = 0x0830,
    bit_blt = 0x0922,
    dib_bit_blt = 0x0940,
    ext_text_out = 0x0A32,
    stretch_blt = 0x0B23,
    dib_stretch_blt = 0x0B41,
    set_dib_to_dev = 0x0D33,
    stretch_dib = 0x0F43,
};

/// Escape function of a comment record.
constexpr std::uint16_t wmf_comment_escape = 15;

/// Reads the fields of a record in file order. A record's struct says its order once, in `fields`, as a
/// tuple of references, for reading and for writing; every field there is an integer of 16 or 32 bits.
template <typename Record> bool wmf_read(byte_reader& in, Record& record)
{
    const auto read_one = [&in](auto& field) {
        if constexpr (sizeof(field) == 4)
            field = static_cast<std::remove_reference_t<decltype(field)>>(in.u32le());
        else
            field = static_cast<std::remove_reference_t<decltype(field)>>(in.u16le());
    };
    std::apply([&](auto&... field) { (read_one(field), ...); }, record.fields());
    return in.ok();
}

/// Writes the fields of a record in file order.
template <typename Record> void wmf_write(byte_writer& out, Record record)
{
    const auto write_one = [&out](const auto& field) {
        if constexpr (sizeof(field) == 4)
            out.u32le(static_cast<std::uint32_t>(field));
        else
            out.u16le(static_cast<std::uint16_t>(field));
    };
    std::apply([&](const auto&... field) { (write_one(field), ...); }, record.fields());
}

/// The placeable header, whose key makes it recognisable.
struct wmf_placeable_header {
    std::uint32_t key = 0;
    std::uint16_t handle = 0;
    std::int16_t left = 0;
    std::int16_t top = 0;
    std::int16_t right = 0;
    std::int16_t bottom = 0;
    std::uint16_t units_per_inch = 0;
    std::uint32_t reserved = 0;
    std::uint16_t checksum = 0; ///< exclusive or of the ten words before it

    auto fields()
    {
        return std::tie(key, handle, left, top, right, bottom, units_per_inch, reserved, checksum);
    }
};

/// The header of every file.
struct wmf_header {
    std::uint16_t type = 0; ///< 1 in memory, 2 on disk
    std::uint16_t header_words = 0;
    std::uint16_t version = 0;
    std::uint32_t file_words = 0;
    std::uint16_t object_count = 0;
    std::uint32_t largest_record_words = 0;
    std::uint16_t parameter_count = 0;

    auto fields()
    {
        return std::tie(
            type, header_words, version, file_words, object_count, largest_record_words, parameter_count);
    }
    bool valid() const
    {
        return (type == 1 || type == 2) && header_words >= wmf_header_size / 2
            && largest_record_words >= wmf_shortest_record_words;
    }
};

struct wmf_point {
    std::int16_t x = 0;
    std::int16_t y = 0;

    auto fields() { return std::tie(x, y); }
};

/// Most parameters that come as a pair are in y, x order: origins, extents, MOVETO, LINETO.
struct wmf_pair {
    std::int16_t y = 0;
    std::int16_t x = 0;

    auto fields() { return std::tie(y, x); }
};

/// A record whose only parameter is a number: modes, SELECTOBJECT, DELETEOBJECT, SELECTCLIPREGION and others.
struct wmf_number {
    std::uint16_t value = 0;

    auto fields() { return std::tie(value); }
};

/// SETTEXTCOLOR, SETBKCOLOR.
struct wmf_colour {
    std::uint32_t value = 0;

    auto fields() { return std::tie(value); }
};

/// SETTEXTJUSTIFICATION.
struct wmf_justification {
    std::uint16_t break_count = 0;
    std::uint16_t extra = 0;

    auto fields() { return std::tie(break_count, extra); }
};

/// SCALEWINDOWEXT and SCALEVIEWPORTEXT.
struct wmf_scale {
    std::int16_t y_denominator = 0;
    std::int16_t y_numerator = 0;
    std::int16_t x_denominator = 0;
    std::int16_t x_numerator = 0;

    auto fields() { return std::tie(y_denominator, y_numerator, x_denominator, x_numerator); }
};

/// RECTANGLE, ELLIPSE, INTERSECTCLIPRECT, EXCLUDECLIPRECT.
struct wmf_rect {
    std::int16_t bottom = 0;
    std::int16_t right = 0;
    std::int16_t top = 0;
    std::int16_t left = 0;

    auto fields() { return std::tie(bottom, right, top, left); }
};

struct wmf_round_rect {
    std::int16_t corner_height = 0;
    std::int16_t corner_width = 0;
    wmf_rect box;

    auto fields() { return std::tuple_cat(std::tie(corner_height, corner_width), box.fields()); }
};

/// ARC, PIE, CHORD.
struct wmf_arc {
    wmf_pair end;
    wmf_pair start;
    wmf_rect box;

    auto fields() { return std::tuple_cat(end.fields(), start.fields(), box.fields()); }
};

struct wmf_pen {
    std::uint16_t style = 0;
    wmf_point width; ///< the y part is not used
    std::uint32_t colour = 0;

    auto fields() { return std::tuple_cat(std::tie(style), width.fields(), std::tie(colour)); }
};

struct wmf_brush {
    std::uint16_t style = 0;
    std::uint32_t colour = 0;
    std::uint16_t hatch = 0;

    auto fields() { return std::tie(style, colour, hatch); }
};

/// CREATEFONTINDIRECT up to the face name, which follows as up to 32 bytes.
struct wmf_font {
    std::int16_t height = 0;
    std::int16_t width = 0;
    std::int16_t escapement = 0;
    std::int16_t orientation = 0;
    std::int16_t weight = 0;
    std::uint16_t italic_underline = 0; ///< italic in the low byte
    std::uint16_t strike_charset = 0; ///< character set in the high byte
    std::uint16_t precisions = 0;
    std::uint16_t quality_pitch = 0;

    auto fields()
    {
        return std::tie(height, width, escapement, orientation, weight, italic_underline, strike_charset,
            precisions, quality_pitch);
    }
    bool italic() const { return (italic_underline & 0xFF) != 0; }
    bool underline() const { return (italic_underline >> 8) != 0; }
    std::uint8_t charset() const { return static_cast<std::uint8_t>(strike_charset >> 8); }
};

/// A source or target area of a blit; negative sizes mirror.
struct wmf_area {
    std::int16_t height = 0;
    std::int16_t width = 0;
    std::int16_t y = 0;
    std::int16_t x = 0;

    auto fields() { return std::tie(height, width, y, x); }
};

struct wmf_pat_blt {
    std::uint32_t rop = 0;
    wmf_area target;

    auto fields() { return std::tuple_cat(std::tie(rop), target.fields()); }
};

/// BITBLT and DIBBITBLT with a bitmap, which follows. The source has the target's size.
struct wmf_bit_blt {
    std::uint32_t rop = 0;
    wmf_pair source;
    wmf_area target;

    auto fields() { return std::tuple_cat(std::tie(rop), source.fields(), target.fields()); }
};

/// STRETCHBLT and DIBSTRETCHBLT with a bitmap, which follows.
struct wmf_stretch_blt {
    std::uint32_t rop = 0;
    wmf_area source;
    wmf_area target;

    auto fields() { return std::tuple_cat(std::tie(rop), source.fields(), target.fields()); }
};

/// STRETCHDIB: as STRETCHBLT with the colour usage after the raster operation.
struct wmf_stretch_dib {
    std::uint32_t rop = 0;
    std::uint16_t colour_usage = 0;
    wmf_area source;
    wmf_area target;

    auto fields() { return std::tuple_cat(std::tie(rop, colour_usage), source.fields(), target.fields()); }
};

/// SETDIBTODEV with a bitmap, which follows. The source has the target's size.
struct wmf_set_dib_to_dev {
    std::uint16_t colour_usage = 0;
    std::uint16_t scan_count = 0;
    std::uint16_t start_scan = 0;
    wmf_pair source;
    wmf_area target;

    auto fields()
    {
        return std::tuple_cat(
            std::tie(colour_usage, scan_count, start_scan), source.fields(), target.fields());
    }
};

struct wmf_set_pixel {
    std::uint32_t colour = 0;
    std::int16_t y = 0;
    std::int16_t x = 0;

    auto fields() { return std::tie(colour, y, x); }
};

/// FLOODFILL.
struct wmf_flood_fill {
    std::uint32_t colour = 0;
    wmf_pair at;

    auto fields() { return std::tuple_cat(std::tie(colour), at.fields()); }
};

/// EXTFLOODFILL.
struct wmf_ext_flood_fill {
    std::uint16_t mode = 0;
    wmf_flood_fill fill;

    auto fields() { return std::tuple_cat(std::tie(mode), fill.fields()); }
};

/// FILLREGION; FRAMEREGION has the size of the frame too.
struct wmf_fill_region {
    std::uint16_t region = 0;
    std::uint16_t brush = 0;

    auto fields() { return std::tie(region, brush); }
};

struct wmf_frame_region {
    wmf_fill_region what;
    std::int16_t height = 0;
    std::int16_t width = 0;

    auto fields() { return std::tuple_cat(what.fields(), std::tie(height, width)); }
};

/// EXTTEXTOUT up to its rectangle, which is there when the options say so. The characters follow, padded to
/// 16 bits, then the advances.
struct wmf_ext_text_out {
    wmf_pair at;
    std::uint16_t count = 0;
    std::uint16_t options = 0;

    auto fields() { return std::tuple_cat(at.fields(), std::tie(count, options)); }
};

/// The rectangle of a text.
struct wmf_text_rect {
    std::int16_t left = 0;
    std::int16_t top = 0;
    std::int16_t right = 0;
    std::int16_t bottom = 0;

    auto fields() { return std::tie(left, top, right, bottom); }
};

/// DRAWTEXT; the characters follow, padded to 16 bits.
struct wmf_draw_text {
    std::uint16_t format = 0;
    std::uint16_t count = 0;
    wmf_text_rect rect;

    auto fields() { return std::tuple_cat(std::tie(format, count), rect.fields()); }
};

/// DIBCREATEPATTERNBRUSH; a packed bitmap follows.
struct wmf_pattern_brush {
    std::uint16_t style = 0;
    std::uint16_t colour_usage = 0;

    auto fields() { return std::tie(style, colour_usage); }
};

/// CREATEPALETTE (start is its version, 0x300), SETPALENTRIES and ANIMATEPALETTE; entries of red, green, blue
/// and flags follow.
struct wmf_palette {
    std::uint16_t start = 0;
    std::uint16_t count = 0;

    static constexpr std::size_t entry_size = 4;
    auto fields() { return std::tie(start, count); }
};

/// CREATEREGION up to its scans: each a count, a top, a bottom, the counted pairs of left and right, and the
/// count again.
struct wmf_region {
    std::uint16_t next_in_chain = 0;
    std::uint16_t object_type = 6;
    std::uint32_t object_count = 0;
    std::uint16_t region_bytes = 0;
    std::uint16_t scan_count = 0;
    std::uint16_t most_in_scan = 0;
    wmf_text_rect bounds;

    auto fields()
    {
        return std::tuple_cat(
            std::tie(next_in_chain, object_type, object_count, region_bytes, scan_count, most_in_scan),
            bounds.fields());
    }
};

/// ESCAPE; bytes_count bytes follow.
struct wmf_escape {
    std::uint16_t function = 0;
    std::uint16_t byte_count = 0;

    auto fields() { return std::tie(function, byte_count); }
};

/// A device-dependent bitmap as BITBLT and STRETCHBLT carry it; rows follow, top row first, each padded to
/// 16 bits.
struct wmf_bitmap16 {
    std::int16_t type = 0;
    std::int16_t width = 0;
    std::int16_t height = 0;
    std::int16_t width_bytes = 0;
    std::uint16_t planes_and_depth = 0; ///< planes in the low byte, bits per pixel in the high byte

    auto fields() { return std::tie(type, width, height, width_bytes, planes_and_depth); }
    int planes() const { return planes_and_depth & 0xFF; }
    int depth() const { return planes_and_depth >> 8; }
};

/// Points (x, y) as POLYGON, POLYLINE and POLYPOLYGON hold them, read where they stand.
class wmf_points {
public:
    /// Takes count points, or as many as there are.
    static wmf_points read(byte_reader& in, std::size_t count)
    {
        return wmf_points(in.bytes(std::min(count, in.left() / point_size) * point_size));
    }

    [[nodiscard]] std::size_t size() const { return bytes_.size() / point_size; }
    [[nodiscard]] wmf_point operator[](std::size_t i) const
    {
        return {word(i * point_size), word(i * point_size + 2)};
    }

private:
    static constexpr std::size_t point_size = 4;

    explicit wmf_points(std::span<const std::uint8_t> bytes)
        : bytes_(bytes)
    {
    }
    [[nodiscard]] std::int16_t word(std::size_t at) const
    {
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes_[at] | bytes_[at + 1] << 8));
    }

    std::span<const std::uint8_t> bytes_;
};

/// Counts of 16 bits, as many as there are: the polygons of POLYPOLYGON.
class wmf_counts {
public:
    static wmf_counts read(byte_reader& in, std::size_t count)
    {
        return wmf_counts(in.bytes(std::min(count, in.left() / 2) * 2));
    }

    [[nodiscard]] std::size_t size() const { return bytes_.size() / 2; }
    [[nodiscard]] std::size_t operator[](std::size_t i) const
    {
        return static_cast<std::size_t>(bytes_[2 * i] | bytes_[2 * i + 1] << 8);
    }

private:
    explicit wmf_counts(std::span<const std::uint8_t> bytes)
        : bytes_(bytes)
    {
    }

    std::span<const std::uint8_t> bytes_;
};

/// One record as it stands in the file.
struct wmf_record {
    wmf_function function = wmf_function::end_of_file;
    std::uint32_t words = 0;
    std::span<const std::uint8_t> parameters;
};

/// Writes a record: its size, its function number, its fields and what follows them, padded to whole words.
template <typename Record>
void wmf_write_record(
    byte_writer& out, wmf_function function, const Record& record, std::span<const std::uint8_t> rest = {})
{
    byte_writer parameters(out.memory());
    wmf_write(parameters, record);
    parameters.bytes(rest);
    parameters.align(2);
    out.u32le(static_cast<std::uint32_t>((wmf_record_head_size + parameters.size()) / 2));
    out.u16le(static_cast<std::uint16_t>(function));
    out.bytes(parameters.span());
}

/// Writes a record without parameters.
inline void wmf_write_record(byte_writer& out, wmf_function function)
{
    out.u32le(wmf_shortest_record_words);
    out.u16le(static_cast<std::uint16_t>(function));
}

} // namespace klv
