#include "klv/metafiles/metafile_records.h"

#include "klv/metafiles/detail/record_stream.h"

#include <array>
#include <new>

namespace klv {

namespace {

// Header versions whose fills end without a centre.
constexpr std::uint16_t version_of_old_shapes = 16;
constexpr std::uint16_t version_without_centre = 32;

// Bytes of the stream form of a shape: its box, and the fields between the box and the points.
constexpr std::uint32_t shape_box_size = 16;
constexpr std::uint32_t shape_count_size = 2;
constexpr std::uint32_t shape_current_fields_size = 6; // capacity and closed

bool starts_contour(std::uint8_t flags)
{
    return flags == point_flags::start_line || flags == point_flags::start_curve;
}

std::uint8_t byte_at(vSTREAM& stream, std::uint32_t position)
{
    if (position >= stream.Size())
        return 0;
    stream.MoveFromStart(position);
    return stream.ReadUByte();
}

// A shape of a version-16 picture, the stream standing before it, is in the older layout unless the field
// after the capacity can be the closed flag. Small coordinates can look like that flag; then the flags of
// the first point, where either layout has them, decide.
bool has_old_layout(vSTREAM& stream)
{
    const std::uint32_t start = stream.CurrentPos();
    const std::uint32_t after_count = start + shape_box_size + shape_count_size;
    stream.MoveFromStart(after_count + 2);
    const std::int32_t closed = stream.ReadSLong();
    const std::uint32_t first_flags = point_record::size - 1;
    const bool current_fits
        = starts_contour(byte_at(stream, after_count + shape_current_fields_size + first_flags));
    const bool old_fits = starts_contour(byte_at(stream, after_count + first_flags));
    stream.MoveFromStart(start);
    return (closed != 0 && closed != 1) || (old_fits && !current_fits);
}

bool read_old_shape(record_reader& in, vSHAPE& shape)
{
    in.rect(); // the box; the shape knows its own
    const std::size_t count = in.u16();
    if (!in.ok() || !in.holds(count, point_record::size))
        return false;
    std::vector<point_record, vALLOCATOR<point_record>> points(count);
    for (point_record& p : points) {
        const vPOINT at = in.point();
        p = point_record(at, in.stream().ReadUByte());
    }
    return in.ok() && shape.assign_records(points);
}

bool read_shape(record_reader& in, vSHAPE& shape)
{
    if (!in.holds(1, shape_box_size + shape_count_size))
        return false;
    if (in.version() == version_of_old_shapes && has_old_layout(in.stream()))
        return read_old_shape(in, shape);
    shape = vSHAPE(in.stream());
    return in.ok();
}

template <class... Kinds> bool read_kind(record_reader& in, record_code code, std::variant<Kinds...>& into)
{
    return ((Kinds::holds(code) && into.template emplace<Kinds>().read(in, code)) || ...);
}

} // namespace

void write_record(record_writer& out, const metafile_record& what)
{
    std::visit([&out](const auto& kind) { kind.write(out); }, what);
}

bool read_record(record_reader& in, metafile_record& into) noexcept
try {
    const record_code code = in.code();
    if (in.ok() && read_kind(in, code, into))
        return true;
    into = end_record();
    return false;
} catch (const std::bad_alloc&) {
    into = end_record();
    return false;
}

void state_record::write(record_writer& out) const { out.code(code); }

bool state_record::read(record_reader&, record_code read_code)
{
    code = read_code;
    return true;
}

void line_spec_record::write(record_writer& out, const vLINESPEC& spec)
{
    out.code(record_code::line_spec);
    out.value(spec);
}

bool line_spec_record::read(record_reader& in, record_code)
{
    in.value(spec);
    return in.ok();
}

void fill_spec_record::write(record_writer& out, const vFILLSPEC& spec)
{
    out.code(record_code::fill_spec);
    out.value(spec);
}

bool fill_spec_record::read(record_reader& in, record_code)
{
    in.value(spec);
    if (in.version() != version_of_old_shapes && in.version() != version_without_centre)
        spec.Centre(in.point());
    return in.ok();
}

void font_spec_record::write(record_writer& out, const vFONTSPEC& spec)
{
    out.code(record_code::font_spec);
    out.value(spec);
}

bool font_spec_record::read(record_reader& in, record_code)
{
    in.value(spec);
    return in.ok();
}

void clip_area_record::write(record_writer& out, const vSHAPE& shape)
{
    out.code(record_code::clip_area);
    out.value(shape);
}

bool clip_area_record::read(record_reader& in, record_code)
{
    shape = vSHAPE(in.stream());
    return in.ok();
}

void polyline_record::write(record_writer& out, std::span<const vPOINT> points)
{
    out.code(record_code::polyline);
    out.u16(static_cast<std::uint16_t>(points.size()));
    for (const vPOINT& p : points)
        out.point(p);
}

bool polyline_record::read(record_reader& in, record_code)
{
    constexpr std::size_t point_size = 8;
    const std::size_t count = in.u16();
    if (!in.ok() || !in.holds(count, point_size))
        return false;
    points.resize(count);
    for (vPOINT& p : points)
        p = in.point();
    return in.ok();
}

void rectangle_record::write(record_writer& out) const
{
    out.code(record_code::rectangle);
    out.rect(rect);
}

bool rectangle_record::read(record_reader& in, record_code)
{
    rect = in.rect();
    return in.ok();
}

void ellipse_record::write(record_writer& out) const
{
    out.code(record_code::ellipse);
    out.rect(rect);
}

bool ellipse_record::read(record_reader& in, record_code)
{
    rect = in.rect();
    return in.ok();
}

void round_rectangle_record::write(record_writer& out) const
{
    out.code(record_code::round_rectangle);
    out.rect(rect);
    out.point(corner);
}

bool round_rectangle_record::read(record_reader& in, record_code)
{
    rect = in.rect();
    const vPOINT size = in.point();
    corner = vSIZE(size.x, size.y);
    return in.ok();
}

void shape_record::write(record_writer& out, const vSHAPE& shape)
{
    out.code(record_code::shape);
    out.value(shape);
}

bool shape_record::read(record_reader& in, record_code) { return read_shape(in, shape); }

void arc_record::write(record_writer& out) const
{
    out.code(code);
    out.rect(rect);
    out.point(start);
    out.point(end);
}

bool arc_record::read(record_reader& in, record_code read_code)
{
    code = read_code;
    rect = in.rect();
    start = in.point();
    end = in.point();
    return in.ok();
}

void reserved_record::write(record_writer& out) const { out.code(code); }

bool reserved_record::read(record_reader&, record_code read_code)
{
    code = read_code;
    return true;
}

void text_record::write(record_writer& out, const vSTRING& text, const vRECT& rect, std::uint16_t alignment)
{
    out.code(record_code::text);
    out.value(text);
    out.rect(rect);
    out.u16(alignment);
}

bool text_record::read(record_reader& in, record_code)
{
    in.value(text);
    rect = in.rect();
    alignment = in.u16();
    return in.ok();
}

void bitmap_record::write(record_writer& out, const oDIB& pixels) const
{
    out.code(record_code::bitmap);
    out.u16(static_cast<std::uint16_t>(layout));
    switch (layout) {
    case bitmap_layout::centred:
        out.point(ignored);
        break;
    case bitmap_layout::placed:
        out.rect(destination);
        break;
    case bitmap_layout::transparent:
        out.rect(destination);
        out.i32(transparency);
        out.value(transparent_colour);
        out.i32(threshold);
        break;
    case bitmap_layout::cut:
        out.rect(destination);
        out.rect(source);
        break;
    }
    out.value(pixels);
    if (layout == bitmap_layout::centred)
        out.point(centre);
}

void bitmap_record::write(record_writer& out) const
{
    if (bitmap)
        write(out, *bitmap);
}

bool bitmap_record::read(record_reader& in, record_code)
{
    layout = bitmap_layout{in.u16()};
    switch (layout) {
    case bitmap_layout::centred:
        ignored = in.point();
        break;
    case bitmap_layout::placed:
        destination = in.rect();
        break;
    case bitmap_layout::transparent:
        destination = in.rect();
        transparency = in.i32();
        in.value(transparent_colour);
        threshold = in.i32();
        break;
    case bitmap_layout::cut:
        destination = in.rect();
        source = in.rect();
        break;
    }
    if (!in.ok())
        return false;
    bitmap.reset(new oMEMDIB(in.stream(), 0));
    if (!bitmap || !bitmap->HasPixels())
        return false;
    if (layout == bitmap_layout::centred)
        centre = in.point();
    return in.ok();
}

vRECT bitmap_record::place() const
{
    if (layout != bitmap_layout::centred)
        return destination;
    const int half_width = bitmap->Width() / 2;
    const int half_height = bitmap->Height() / 2;
    const vPOINT half(half_width, half_height);
    return vRECT(centre - half, centre + half);
}

vRECT bitmap_record::part() const
{
    return layout == bitmap_layout::cut ? source : vRECT(0, 0, bitmap->Width(), bitmap->Height());
}

void text_transparency_record::write(record_writer& out) const
{
    out.code(record_code::text_transparency);
    out.u16(static_cast<std::uint16_t>(transparent));
}

bool text_transparency_record::read(record_reader& in, record_code)
{
    transparent = in.i16();
    return in.ok();
}

void text_on_line_record::write(record_writer& out, const vSTRING& text, const vPOINT& start)
{
    out.code(record_code::text_on_line);
    out.value(text);
    out.point(start);
}

bool text_on_line_record::read(record_reader& in, record_code)
{
    in.value(text);
    start = in.point();
    return in.ok();
}

void end_record::write(record_writer& out) const { out.code(record_code::end); }

bool end_record::read(record_reader&, record_code) { return true; }

} // namespace klv
