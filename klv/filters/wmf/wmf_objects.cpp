#include "klv/filters/wmf/wmf_objects.h"

#include <algorithm>
#include <utility>

namespace klv {
namespace {

constexpr std::size_t face_name_size = 32;
constexpr int bold_from_weight = 600;

vSTRING read_face_name(byte_reader& in)
{
    const auto field = in.bytes(std::min(in.left(), face_name_size));
    std::array<char, face_name_size + 1> text{};
    std::copy_n(reinterpret_cast<const char*>(field.data()), field.size(), text.begin());
    return vSTRING(text.data());
}

} // namespace

void wmf_object_table::add(wmf_object object)
{
    const auto free = std::find_if(table_.begin(), table_.end(),
        [](const wmf_object& entry) { return std::holds_alternative<std::monostate>(entry); });
    if (free != table_.end())
        *free = std::move(object);
}

void wmf_object_table::remove(std::size_t number)
{
    if (number < table_.size())
        table_[number] = std::monostate();
}

const wmf_object* wmf_object_table::find(std::size_t number) const
{
    return number < table_.size() ? &table_[number] : nullptr;
}

wmf_pen_object read_wmf_pen(byte_reader& in)
{
    wmf_pen record;
    wmf_read(in, record);
    return {.style = record.style, .colour = record.colour, .file_width = record.width.x};
}

wmf_brush_object read_wmf_brush(byte_reader& in)
{
    wmf_brush record;
    wmf_read(in, record);
    return {record.style, record.colour, record.hatch};
}

wmf_font_object read_wmf_font(byte_reader& in)
{
    wmf_font record;
    wmf_read(in, record);
    wmf_font_object font;
    font.file_height = record.height;
    font.file_width = record.width;
    font.character_height = record.height < 0;
    font.bold = record.weight > bold_from_weight;
    font.italic = record.italic();
    font.escapement = record.escapement;
    font.charset = record.charset();
    font.face = read_face_name(in);
    return font;
}

wmf_palette_object read_wmf_palette(byte_reader& in)
{
    constexpr std::size_t entry_size = 4;
    in.skip(2); // version
    const std::size_t count = std::min<std::size_t>(in.u16le(), in.left() / entry_size);
    std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>> colours(count);
    for (auto& colour : colours) {
        const auto rgb = in.bytes(entry_size);
        colour = {rgb[2], rgb[1], rgb[0], 0};
    }
    return {std::allocate_shared<const std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>>>(
        vALLOCATOR<RGBQUAD>(), std::move(colours))};
}

} // namespace klv
