#include "klv/filters/windows/packed_bitmap.h"
#include "klv/filters/wmf/wmf_bitmap16.h"
#include "klv/filters/wmf/wmf_record_decoding.h"

#include <utility>

// Bitmap records.

namespace klv {
namespace {

// A blit record without a bitmap has exactly as many words as its function number's high byte says, and 3.
bool has_bitmap(const wmf_record& record)
{
    return record.words != (static_cast<std::uint32_t>(record.function) >> 8) + 3;
}

blit_area area_of(const wmf_area& a) { return {a.x, a.y, a.width, a.height}; }

// The source has the target's size.
blit_area source_like(const wmf_area& target, const wmf_pair& at)
{
    return {at.x, at.y, target.width, target.height};
}

ternary_operation operation_of(std::uint32_t rop) { return static_cast<ternary_operation>(rop); }

void draw(windows_canvas& canvas, wmf_transparent_bitmap& transparent, std::unique_ptr<oMEMDIB> bitmap,
    const blit& where)
{
    if (bitmap && transparent.collecting())
        transparent.add_piece(*bitmap, where.target.x, where.target.y, where.target.height);
    else
        canvas.bitmaps().draw(std::move(bitmap), where);
}

// A blit without a bitmap is a pattern blit under another name: operation, source, an unused word, target.
void decode_blit_without_bitmap(const wmf_record& record, windows_canvas& canvas)
{
    byte_reader in(record.parameters);
    const bool has_source_size
        = record.function == wmf_function::dib_stretch_blt || record.function == wmf_function::stretch_blt;
    const std::size_t source_words = has_source_size ? 4 : 2;
    const std::uint32_t rop = in.u32le();
    in.skip(2 * source_words + 2);
    wmf_area to;
    canvas.bitmaps().finish_pairs();
    if (wmf_read(in, to))
        canvas.figures().pattern_fill(box_of(to), rop);
}

std::unique_ptr<oMEMDIB> read_device_bitmap(byte_reader& in, const canvas_state& state)
{
    return read_wmf_bitmap16(in, state.text_colour, state.background);
}

} // namespace

bool is_wmf_bitmap(const wmf_record& record, const reading_policy& policy)
{
    switch (record.function) {
    case wmf_function::stretch_dib:
    case wmf_function::dib_stretch_blt:
        return true;
    case wmf_function::dib_bit_blt:
    case wmf_function::bit_blt:
    case wmf_function::stretch_blt:
    case wmf_function::set_dib_to_dev:
        return policy.reads_every_drawing;
    default:
        return false;
    }
}

void decode_wmf_bitmap(const wmf_record& record, windows_canvas& canvas, wmf_transparent_bitmap& transparent)
{
    byte_reader in(record.parameters);
    const auto& palette = canvas.attributes().palette();
    const bool any_header = canvas.policy().reads_every_header;
    wmf_stretch_dib stretch_dib;
    wmf_stretch_blt stretch;
    wmf_bit_blt plain;
    wmf_set_dib_to_dev to_device;
    const bool is_blit
        = record.function != wmf_function::stretch_dib && record.function != wmf_function::set_dib_to_dev;
    if (is_blit && canvas.policy().reads_every_drawing && !has_bitmap(record)) {
        decode_blit_without_bitmap(record, canvas);
        return;
    }
    switch (record.function) {
    case wmf_function::stretch_dib:
        if (wmf_read(in, stretch_dib))
            draw(canvas, transparent,
                read_packed_bitmap(in.rest(), any_header, palette, stretch_dib.colour_usage),
                {operation_of(stretch_dib.rop), area_of(stretch_dib.source), area_of(stretch_dib.target),
                    false});
        return;
    case wmf_function::set_dib_to_dev:
        if (wmf_read(in, to_device))
            draw(canvas, transparent,
                read_packed_bitmap(in.rest(), any_header, palette, to_device.colour_usage),
                {ternary_operation::source_copy, source_like(to_device.target, to_device.source),
                    area_of(to_device.target), false});
        return;
    case wmf_function::dib_stretch_blt:
        if (wmf_read(in, stretch))
            draw(canvas, transparent, read_packed_bitmap(in.rest(), any_header, palette),
                {operation_of(stretch.rop), area_of(stretch.source), area_of(stretch.target), true});
        return;
    case wmf_function::stretch_blt:
        if (wmf_read(in, stretch))
            draw(canvas, transparent, read_device_bitmap(in, canvas.state()),
                {operation_of(stretch.rop), area_of(stretch.source), area_of(stretch.target), true});
        return;
    case wmf_function::dib_bit_blt:
    case wmf_function::bit_blt:
        if (wmf_read(in, plain))
            draw(canvas, transparent,
                record.function == wmf_function::bit_blt ? read_device_bitmap(in, canvas.state())
                                                         : read_packed_bitmap(in.rest(), any_header, palette),
                {operation_of(plain.rop), source_like(plain.target, plain.source), area_of(plain.target),
                    true});
        return;
    default:
        return;
    }
}

} // namespace klv
