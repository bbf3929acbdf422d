#include "klv/filters/windows/packed_bitmap.h"
#include "klv/filters/wmf/wmf_record_decoding.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

// Pens, brushes, fonts, palettes and their selection.

namespace klv {
namespace {

constexpr int bold_from_weight = 600;

vSTRING read_face_name(byte_reader& in)
{
    constexpr std::size_t face_name_size = 32;
    const auto field = in.bytes(std::min(in.left(), face_name_size));
    std::array<char, face_name_size + 1> text{};
    std::copy_n(reinterpret_cast<const char*>(field.data()), field.size(), text.begin());
    return vSTRING(text.data());
}

canvas_pen read_pen(byte_reader& in, const canvas_attributes& attributes)
{
    wmf_pen record;
    wmf_read(in, record);
    return attributes.make_pen(record.style, record.width.x, record.colour);
}

canvas_brush read_brush(byte_reader& in, canvas_attributes& attributes)
{
    wmf_brush record;
    wmf_read(in, record);
    return attributes.make_brush(record.style, record.colour, record.hatch);
}

canvas_font read_font(byte_reader& in, const canvas_attributes& attributes)
{
    wmf_font record;
    wmf_read(in, record);
    canvas_font font;
    font.file_height = record.height;
    font.file_width = record.width;
    font.bold = record.weight > bold_from_weight;
    font.italic = record.italic();
    font.escapement = record.escapement;
    font.charset = record.charset();
    font.face = read_face_name(in);
    return attributes.make_font(std::move(font));
}

canvas_palette read_palette(byte_reader& in)
{
    wmf_palette record;
    wmf_read(in, record);
    const std::size_t count = std::min<std::size_t>(record.count, in.left() / wmf_palette::entry_size);
    std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>> colours(count);
    for (auto& colour : colours) {
        const auto rgb = in.bytes(wmf_palette::entry_size);
        colour = {rgb[2], rgb[1], rgb[0], 0};
    }
    return {std::allocate_shared<const std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>>>(
        vALLOCATOR<RGBQUAD>(), std::move(colours))};
}

void add_pattern_brush(byte_reader& in, windows_canvas& canvas)
{
    wmf_pattern_brush record;
    wmf_read(in, record);
    auto& objects = canvas.attributes().objects();
    if (auto bitmap = read_pattern_bitmap(in, record.colour_usage))
        objects.add(canvas_pattern_brush{std::move(bitmap)});
    else if (canvas.policy().keeps_object_numbers)
        objects.add(canvas_reserved());
}

} // namespace

bool decode_wmf_object(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    auto& attributes = canvas.attributes();
    auto& objects = attributes.objects();
    switch (record.function) {
    case wmf_function::create_pen_indirect:
        objects.add(read_pen(in, attributes));
        return true;
    case wmf_function::create_brush_indirect:
        objects.add(read_brush(in, attributes));
        return true;
    case wmf_function::create_font_indirect:
        objects.add(read_font(in, attributes));
        return true;
    case wmf_function::dib_create_pattern_brush:
        add_pattern_brush(in, canvas);
        return true;
    case wmf_function::create_palette:
        objects.add(read_palette(in));
        return true;
    case wmf_function::create_pattern_brush:
    case wmf_function::create_bitmap_indirect:
    case wmf_function::create_bitmap:
    case wmf_function::create_region:
        objects.add(canvas_reserved());
        return true;
    case wmf_function::select_palette:
        attributes.select_palette(in.u16le());
        return true;
    case wmf_function::select_object:
        attributes.select(in.u16le());
        return true;
    case wmf_function::delete_object:
        objects.remove(in.u16le());
        return true;
    default:
        return false;
    }
}

} // namespace klv
