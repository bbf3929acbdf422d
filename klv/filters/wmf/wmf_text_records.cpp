#include "klv/filters/wmf/wmf_record_decoding.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <array>
#include <string_view>

// Text records.

namespace klv {
namespace {

constexpr std::size_t longest_text = 1000;

std::size_t padded(std::size_t count) { return count + count % 2; }

// The characters of a text field of count bytes, up to a zero byte; the reader passes over the padded field.
std::string_view read_characters(byte_reader& in, std::size_t count)
{
    const auto field = in.bytes(std::min(padded(count), in.left()));
    const auto kept = field.first(std::min({field.size(), count, longest_text}));
    const auto end = std::find(kept.begin(), kept.end(), std::uint8_t{0});
    return {reinterpret_cast<const char*>(kept.data()), static_cast<std::size_t>(end - kept.begin())};
}

void decode_text_out(byte_reader& in, canvas_text& text)
{
    const auto characters = read_characters(in, in.u16le());
    wmf_pair at;
    if (wmf_read(in, at))
        text.draw(characters, {at.x, at.y});
}

void decode_ext_text_out(byte_reader& in, windows_canvas& canvas)
{
    wmf_ext_text_out record;
    wmf_read(in, record);
    const bool by_flags = canvas.policy().reads_text_flags;
    const bool has_rect = by_flags ? (record.options & (ETO_OPAQUE | ETO_CLIPPED)) != 0 : record.options != 0;
    if (has_rect) {
        wmf_text_rect r;
        if (wmf_read(in, r) && by_flags && (record.options & ETO_OPAQUE) != 0)
            canvas.figures().fill({r.left, r.top, r.right, r.bottom}, canvas.state().background);
    }
    const auto characters = read_characters(in, record.count);
    if (!in.ok())
        return;
    std::array<std::int32_t, longest_text> advances;
    std::size_t count = 0;
    while (count < characters.size() && in.holds(sizeof(std::int16_t)))
        advances[count++] = in.i16le();
    canvas.text().draw(characters, {record.at.x, record.at.y}, std::span(advances).first(count));
}

// The rectangle is in the order in which the library's own writer puts it.
void decode_draw_text(byte_reader& in, canvas_text& text)
{
    wmf_draw_text record;
    wmf_read(in, record);
    const auto characters = read_characters(in, record.count);
    if (in.ok())
        text.draw(characters, {record.rect.left, record.rect.top});
}

} // namespace

bool decode_wmf_text(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    switch (record.function) {
    case wmf_function::text_out:
        decode_text_out(in, canvas.text());
        return true;
    case wmf_function::ext_text_out:
        decode_ext_text_out(in, canvas);
        return true;
    case wmf_function::draw_text:
        decode_draw_text(in, canvas.text());
        return true;
    default:
        return false;
    }
}

} // namespace klv
