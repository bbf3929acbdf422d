#include "klv/bitmaps/dib_context.h"
#include "klv/filters/wmf/wmf_reader.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

// Bitmap records of a Windows Metafile.

namespace klv {

/// Where a bitmap goes and which part of it, in the file's units.
struct wmf_reader::blit {
    wmf_rop rop = wmf_rop::source_copy;
    wmf_area source;
    wmf_area target;
    bool source_from_top = false; ///< source.y counts from the top row, as bit blits have it
};

namespace {

// A blit record without a bitmap has exactly as many words as its function number's high byte says, and 3.
bool has_bitmap(const wmf_record& record)
{
    return record.words != (static_cast<std::uint32_t>(record.function) >> 8) + 3;
}

// The source area in the bitmap's own rows, which are stored bottom row first. One that does not lie in the
// bitmap means all of it.
vRECT named_part(const oMEMDIB& bitmap, const wmf_area& source, bool from_top)
{
    const int width = std::abs(source.width);
    const int height = std::abs(source.height);
    const bool inside = width > 0 && height > 0 && source.x >= 0 && source.y >= 0
        && source.x + width <= bitmap.Width() && source.y + height <= bitmap.Height();
    if (!inside)
        return vRECT(0, 0, bitmap.Width(), bitmap.Height());
    const int first = from_top ? bitmap.Height() - source.y - height : source.y;
    return vRECT(vPOINT(source.x, first), width, height);
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
    if (record.function == wmf_function::stretch_dib) {
        stretch_dib(in);
        return true;
    }
    if (record.function == wmf_function::dib_stretch_blt && (has_bitmap(record) || !faithful_)) {
        dib_stretch_blt(in);
        return true;
    }
    return faithful_ && handle_faithful_bitmap(record, in);
}

bool wmf_reader::handle_faithful_bitmap(const wmf_record& record, byte_reader& in)
{
    switch (record.function) {
    case wmf_function::dib_bit_blt:
    case wmf_function::bit_blt:
    case wmf_function::stretch_blt:
    case wmf_function::dib_stretch_blt:
        if (!has_bitmap(record))
            blit_without_bitmap(record, in);
        else if (record.function == wmf_function::stretch_blt)
            stretch_blt(in);
        else
            bit_blt(in, record.function == wmf_function::bit_blt);
        return true;
    case wmf_function::set_dib_to_dev:
        set_dib_to_device(in);
        return true;
    default:
        return false;
    }
}

void wmf_reader::stretch_dib(byte_reader& in)
{
    wmf_stretch_dib r;
    if (wmf_read(in, r))
        draw_bitmap(read_wmf_dib(in.rest(), faithful_, palette_, r.colour_usage),
            {static_cast<wmf_rop>(r.rop), r.source, r.target, false});
}

void wmf_reader::dib_stretch_blt(byte_reader& in)
{
    wmf_stretch_blt r;
    if (wmf_read(in, r))
        draw_bitmap(read_wmf_dib(in.rest(), faithful_, palette_),
            {static_cast<wmf_rop>(r.rop), r.source, r.target, true});
}

void wmf_reader::stretch_blt(byte_reader& in)
{
    wmf_stretch_blt r;
    if (wmf_read(in, r))
        draw_bitmap(read_wmf_bitmap16(in, state_.text_colour, state_.background),
            {static_cast<wmf_rop>(r.rop), r.source, r.target, true});
}

// A blit without a bitmap is a pattern blit under another name: operation, source, an unused word, target.
void wmf_reader::blit_without_bitmap(const wmf_record& record, byte_reader& in)
{
    const std::size_t source_words = record.function == wmf_function::dib_stretch_blt ? 4 : 2;
    wmf_pat_blt pattern;
    pattern.rop = in.u32le();
    in.skip(2 * source_words + 2);
    blits_.flush(picture_);
    if (wmf_read(in, pattern.target))
        pattern_blit(pattern);
}

void wmf_reader::bit_blt(byte_reader& in, bool device_dependent)
{
    wmf_bit_blt r;
    if (!wmf_read(in, r))
        return;
    auto bitmap = device_dependent ? read_wmf_bitmap16(in, state_.text_colour, state_.background)
                                   : read_wmf_dib(in.rest(), true, palette_);
    const wmf_area source{r.target.height, r.target.width, r.source.y, r.source.x};
    draw_bitmap(std::move(bitmap), {static_cast<wmf_rop>(r.rop), source, r.target, true});
}

void wmf_reader::set_dib_to_device(byte_reader& in)
{
    wmf_set_dib_to_dev r;
    if (!wmf_read(in, r))
        return;
    const wmf_area source{r.target.height, r.target.width, r.source.y, r.source.x};
    draw_bitmap(read_wmf_dib(in.rest(), true, palette_, r.colour_usage),
        {wmf_rop::source_copy, source, r.target, false});
}

void wmf_reader::draw_bitmap(std::unique_ptr<oMEMDIB> bitmap, const blit& where)
{
    if (!bitmap)
        return;
    record_clip();
    const wmf_area& to = where.target;
    if (transparent_bitmap_.collecting()) {
        transparent_bitmap_.add_piece(*bitmap, to.x, to.y, to.height);
        return;
    }
    const vRECT target(map(to.x, to.y), map(to.x + to.width, to.y + to.height));
    if (!faithful_) {
        const vRECT source(0, 0, bitmap->Width(), bitmap->Height());
        oDIBCONTEXT context(
            bitmap->Width(), bitmap->Height(), &target, &source, nullptr, nullptr, nullptr, 0.0, 0, 0, 0, 0);
        picture_.DrawDIB(*bitmap, context, nullptr, 0);
        return;
    }
    const vRECT part = named_part(*bitmap, where.source, where.source_from_top);
    const bool flip_h = (target.Width() < 0) != (where.source.width < 0);
    const bool flip_v = (target.Height() < 0) != (where.source.height < 0);
    const vRECT ordered(std::min(target.Left(), target.Right()), std::min(target.Top(), target.Bottom()),
        std::max(target.Left(), target.Right()), std::max(target.Top(), target.Bottom()));
    blits_.draw(picture_, part_of(std::move(bitmap), part, flip_h, flip_v), ordered, where.rop);
}

} // namespace klv
