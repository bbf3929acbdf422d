#include "filters/wmf_reader.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "images/dib_context.h"
#include "metafiles/metafile.h"

// Bitmap records of a Windows Metafile.

namespace klv {

/// Where a bitmap goes, and which part of it, in the file's units. A negative size mirrors.
struct wmf_reader::blit {
    wmf_rop rop = wmf_rop::source_copy;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    int source_x = 0;
    int source_y = 0;
    int source_width = 0;
    int source_height = 0;
    bool source_from_top = false; ///< source_y counts from the top row, as bit blits have it
};

namespace {

// A blit record without a bitmap has exactly as many words as its function number's high byte says, and 3.
bool has_bitmap(const wmf_record& record)
{
    return record.words != (static_cast<std::uint32_t>(record.function) >> 8) + 3;
}

// The part of the bitmap that the record names, mirrored where it says so; the bitmap itself when it is all
// of it as it stands.
std::unique_ptr<oMEMDIB> part_of(std::unique_ptr<oMEMDIB> bitmap, const vRECT& part, bool flip_h, bool flip_v)
{
    const vRECT whole(0, 0, bitmap->Width(), bitmap->Height());
    if (part == whole && !flip_h && !flip_v)
        return bitmap;
    const auto bits = bitmap->ColourDepth();
    const int width = part.Width();
    const int height = part.Height();
    std::unique_ptr<oMEMDIB> out(new oMEMDIB(width, height, bits, model_of_bits(bits), 0));
    if (!out || !out->HasPixels())
        return bitmap;
    oDIBPALETTE* palette = nullptr;
    if (bitmap->GetPalette(&palette) && palette)
        out->SetPalette(*palette);
    const auto pixel = [bits](std::span<const std::uint8_t> line, int x) -> std::uint32_t {
        const auto at = static_cast<std::size_t>(x);
        if (bits == 24)
            return line[3 * at] | line[3 * at + 1] << 8 | line[3 * at + 2] << 16;
        const std::size_t bit = at * bits;
        return static_cast<std::uint32_t>(line[bit / 8] >> (8 - bits - bit % 8)) & ((1u << bits) - 1);
    };
    for (int y = 0; y < height; ++y) {
        const auto source = std::as_const(*bitmap).line(part.Top() + (flip_v ? height - 1 - y : y));
        const auto target = out->line(y);
        for (int x = 0; x < width; ++x) {
            const auto value = pixel(source, part.Left() + (flip_h ? width - 1 - x : x));
            const auto at = static_cast<std::size_t>(x);
            if (bits == 24) {
                target[3 * at] = static_cast<std::uint8_t>(value);
                target[3 * at + 1] = static_cast<std::uint8_t>(value >> 8);
                target[3 * at + 2] = static_cast<std::uint8_t>(value >> 16);
            } else {
                const std::size_t bit = at * bits;
                auto& byte = target[bit / 8];
                byte = static_cast<std::uint8_t>(byte | value << (8 - bits - bit % 8));
            }
        }
    }
    return out;
}

} // namespace

bool wmf_reader::handle_bitmap(const wmf_record& record, byte_reader& in)
{
    switch (record.function) {
    case wmf_function::stretch_dib: stretch_dib(in); return true;
    case wmf_function::dib_stretch_blt:
        if (faithful_ && !has_bitmap(record))
            bit_blt(record, in, false);
        else
            dib_stretch_blt(in);
        return true;
    case wmf_function::dib_bit_blt:
    case wmf_function::bit_blt:
        if (faithful_)
            bit_blt(record, in, record.function == wmf_function::bit_blt);
        return faithful_;
    case wmf_function::stretch_blt:
        if (faithful_ && has_bitmap(record))
            stretch_blt(in);
        return faithful_;
    case wmf_function::set_dib_to_dev:
        if (faithful_)
            set_dib_to_device(in);
        return faithful_;
    default: return false;
    }
}

void wmf_reader::stretch_dib(byte_reader& in)
{
    wmf_stretch_dib r;
    if (!wmf_read(in, r))
        return;
    draw_bitmap(read_wmf_dib(in.rest(), faithful_, palette_, r.colour_usage),
        {.rop = static_cast<wmf_rop>(r.rop), .x = r.x, .y = r.y, .width = r.width, .height = r.height,
            .source_x = r.source_x, .source_y = r.source_y, .source_width = r.source_width,
            .source_height = r.source_height});
}

void wmf_reader::dib_stretch_blt(byte_reader& in)
{
    wmf_stretch_blt r;
    if (!wmf_read(in, r))
        return;
    draw_bitmap(read_wmf_dib(in.rest(), faithful_, palette_),
        {.rop = static_cast<wmf_rop>(r.rop), .x = r.x, .y = r.y, .width = r.width, .height = r.height,
            .source_x = r.source_x, .source_y = r.source_y, .source_width = r.source_width,
            .source_height = r.source_height, .source_from_top = true});
}

void wmf_reader::bit_blt(const wmf_record& record, byte_reader& in, bool device_dependent)
{
    if (!has_bitmap(record)) {
        // A pattern blit under another name: operation, source position, an unused word, size, position.
        const std::size_t source_words = record.function == wmf_function::dib_stretch_blt ? 4 : 2;
        wmf_pat_blt pattern;
        pattern.rop = in.u32le();
        in.skip(2 * source_words + 2);
        pattern.height = in.i16le();
        pattern.width = in.i16le();
        pattern.y = in.i16le();
        pattern.x = in.i16le();
        blits_.flush(picture_);
        if (in.ok())
            pattern_blit(pattern);
        return;
    }
    wmf_bit_blt r;
    if (!wmf_read(in, r))
        return;
    auto bitmap = device_dependent ? read_wmf_bitmap16(in, state_.text_colour, state_.background)
                                   : read_wmf_dib(in.rest(), true, palette_);
    draw_bitmap(std::move(bitmap),
        {.rop = static_cast<wmf_rop>(r.rop), .x = r.x, .y = r.y, .width = r.width, .height = r.height,
            .source_x = r.source_x, .source_y = r.source_y, .source_width = r.width, .source_height = r.height,
            .source_from_top = true});
}

void wmf_reader::stretch_blt(byte_reader& in)
{
    wmf_stretch_blt r;
    if (!wmf_read(in, r))
        return;
    draw_bitmap(read_wmf_bitmap16(in, state_.text_colour, state_.background),
        {.rop = static_cast<wmf_rop>(r.rop), .x = r.x, .y = r.y, .width = r.width, .height = r.height,
            .source_x = r.source_x, .source_y = r.source_y, .source_width = r.source_width,
            .source_height = r.source_height, .source_from_top = true});
}

void wmf_reader::set_dib_to_device(byte_reader& in)
{
    wmf_set_dib_to_dev r;
    if (!wmf_read(in, r))
        return;
    draw_bitmap(read_wmf_dib(in.rest(), true, palette_, r.colour_usage),
        {.x = r.x, .y = r.y, .width = r.width, .height = r.height, .source_x = r.source_x,
            .source_y = r.source_y, .source_width = r.width, .source_height = r.height});
}

void wmf_reader::draw_bitmap(std::unique_ptr<oMEMDIB> bitmap, const blit& where)
{
    if (!bitmap)
        return;
    record_clip();
    if (transparent_bitmap_.collecting()) {
        transparent_bitmap_.add_piece(*bitmap, where.x, where.y, where.height);
        return;
    }
    vRECT target(map(where.x, where.y), map(where.x + where.width, where.y + where.height));
    if (!faithful_) {
        const vRECT source(0, 0, bitmap->Width(), bitmap->Height());
        oDIBCONTEXT context(bitmap->Width(), bitmap->Height(), &target, &source, nullptr, nullptr, nullptr, 0.0,
            0, 0, 0, 0);
        picture_.DrawDIB(*bitmap, context, nullptr, 0);
        return;
    }

    const int width = bitmap->Width();
    const int height = bitmap->Height();
    const int part_width = std::abs(where.source_width);
    const int part_height = std::abs(where.source_height);
    vRECT part(0, 0, width, height);
    // A part that does not lie in the bitmap means all of it.
    if (part_width > 0 && part_height > 0 && where.source_x >= 0 && where.source_y >= 0
        && where.source_x + part_width <= width && where.source_y + part_height <= height) {
        const int top = where.source_from_top ? height - where.source_y - part_height : where.source_y;
        part = vRECT(vPOINT(where.source_x, top), part_width, part_height);
    }
    const bool flip_h = (target.Width() < 0) != (where.source_width < 0);
    const bool flip_v = (target.Height() < 0) != (where.source_height < 0);
    target = vRECT(std::min(target.Left(), target.Right()), std::min(target.Top(), target.Bottom()),
        std::max(target.Left(), target.Right()), std::max(target.Top(), target.Bottom()));
    blits_.draw(picture_, part_of(std::move(bitmap), part, flip_h, flip_v), target, where.rop);
}

} // namespace klv
