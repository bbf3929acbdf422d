#include "klv/filters/windows/canvas_bitmaps.h"

#include "klv/bitmaps/dib_context.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

namespace klv {
namespace {

// The source area in the bitmap's own rows, which are stored bottom row first. One that does not lie in the
// bitmap means all of it.
vRECT named_part(const oMEMDIB& bitmap, const blit_area& source, bool from_top)
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

void canvas_bitmaps::draw(std::unique_ptr<oMEMDIB> bitmap, const blit& where)
{
    if (!bitmap)
        return;
    core_.record_clip();
    const blit_area& to = where.target;
    const vRECT target(core_.map(to.x, to.y), core_.map(to.x + to.width, to.y + to.height));
    if (!core_.policy.honours_raster_operations) {
        draw_whole(*bitmap, target);
        return;
    }
    const vRECT part = named_part(*bitmap, where.source, where.source_from_top);
    const bool flip_h = (target.Width() < 0) != (where.source.width < 0);
    const bool flip_v = (target.Height() < 0) != (where.source.height < 0);
    const vRECT ordered(std::min(target.Left(), target.Right()), std::min(target.Top(), target.Bottom()),
        std::max(target.Left(), target.Right()), std::max(target.Top(), target.Bottom()));
    pairs_.draw(core_.picture, part_of(std::move(bitmap), part, flip_h, flip_v), ordered, where.operation);
}

void canvas_bitmaps::draw_whole(const oMEMDIB& bitmap, const vRECT& target)
{
    const vRECT source(0, 0, bitmap.Width(), bitmap.Height());
    oDIBCONTEXT context(
        bitmap.Width(), bitmap.Height(), &target, &source, nullptr, nullptr, nullptr, 0.0, 0, 0, 0, 0);
    core_.picture.DrawDIB(bitmap, context, nullptr, 0);
}

void canvas_bitmaps::finish_pairs() { pairs_.flush(core_.picture); }

} // namespace klv
