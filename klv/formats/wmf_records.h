#pragma once

#include "klv/base/byte_reader.h"

#include <cstdint>
#include <span>
#include <tuple>

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
    create_palette = 0x00F7,
    set_bk_mode = 0x0102,
    set_map_mode = 0x0103,
    set_rop2 = 0x0104,
    set_poly_fill_mode = 0x0106,
    restore_dc = 0x0127,
    select_clip_region = 0x012C,
    select_object = 0x012D,
    set_text_align = 0x012E,
    dib_create_pattern_brush = 0x0142,
    delete_object = 0x01F0,
    create_pattern_brush = 0x01F9,
    set_bk_color = 0x0201,
    set_text_color = 0x0209,
    set_window_org = 0x020B,
    set_window_ext = 0x020C,
    set_viewport_org = 0x020D,
    set_viewport_ext = 0x020E,
    offset_window_org = 0x020F,
    offset_viewport_org = 0x0211,
    line_to = 0x0213,
    move_to = 0x0214,
    offset_clip_rgn = 0x0220,
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
    rectangle = 0x041B,
    set_pixel = 0x041F,
    text_out = 0x0521,
    poly_polygon = 0x0538,
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
/// tuple of references; every field there is a 16- or 32-bit integer or a pair of them.
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

/// One record as it stands in the file.
struct wmf_record {
    wmf_function function = wmf_function::end_of_file;
    std::uint32_t words = 0;
    std::span<const std::uint8_t> parameters;
};

} // namespace klv
