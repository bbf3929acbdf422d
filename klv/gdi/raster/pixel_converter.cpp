#include "klv/gdi/raster/pixel_converter.h"

#include <algorithm>

namespace klv::gdi {

namespace {

bool same_format(const surface& a, const surface& b)
{
    if (a.bits != b.bits || a.monochrome != b.monochrome)
        return false;
    if (!a.has_table())
        return a.bits == 24 || a.masks == b.masks;
    return a.monochrome || a.table == b.table
        || (a.table->count == b.table->count && a.table->entries == b.table->entries);
}

bool is_plain_rgb(const surface& s) { return s.bits == 24 || (s.bits == 32 && s.masks == masks_888); }

} // namespace

pixel_converter::pixel_converter(const surface& to, const surface& from, const copy_colours& colours)
    : to_(to)
    , from_(from)
    , source_background_(colours.source_background)
{
    if (same_format(to_, from)) {
        how_ = method::none;
    } else if (is_plain_rgb(from) && is_plain_rgb(to_)) {
        how_ = method::plain;
    } else if (from.has_table()) {
        how_ = method::table;
        for (unsigned i = 0; i < from.table->count; ++i)
            table_[i] = from.monochrome ? pixel_of(to_, i == 0 ? colours.zero : colours.one)
                                        : pixel_for(to_rgb(from.table->entries[i]));
    }
}

std::uint32_t pixel_converter::pixel_for(rgb colour) const
{
    if (to_.monochrome)
        return colour == source_background_ ? 1 : 0;
    return pixel_of(to_, colour);
}

void pixel_converter::convert(std::span<std::uint32_t> pixels) const
{
    switch (how_) {
    case method::none:
        break;
    case method::plain:
        for (std::uint32_t& p : pixels)
            p &= 0xFFFFFF;
        break;
    case method::table:
        for (std::uint32_t& p : pixels)
            p = table_[p & 0xFF];
        break;
    case method::colour:
        for (std::uint32_t& p : pixels)
            p = pixel_for(colour_of(from_, p));
        break;
    }
}

void pixel_converter::convert_colours(std::span<std::uint32_t> colours) const
{
    for (std::uint32_t& c : colours)
        c = pixel_for(c);
}

} // namespace klv::gdi
