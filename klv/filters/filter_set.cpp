#include "klv/filters/filter_set.h"

#include "klv/filters/gif/gif_filter.h"
#include "klv/filters/raster/bmp_filter.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/filters/raster/flashpix_filter.h"
#include "klv/filters/raster/jpeg_filter.h"
#include "klv/filters/raster/pcx_filter.h"
#include "klv/filters/raster/photo_cd_filter.h"
#include "klv/filters/raster/photoshop_filter.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/raster/targa_filter.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/filters/wmf/wmf_filter.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <array>

namespace klv {
namespace {

struct format {
    oFILTER* (*make)();
    bool listed = true;
};

template <class Filter> oFILTER* make() { return new Filter; }

// Every format, in the order of probing. Those that are not listed come last.
constexpr std::array formats{format{make<EPSFILTER>}, format{make<FPXFILTER>}, format{make<GIFFILTER>},
    format{make<JPEGFILTER>}, format{make<PCXFILTER>}, format{make<PCDFILTER>}, format{make<PNGFILTER>},
    format{make<TIFFILTER>}, format{make<TGAFILTER>}, format{make<DIBFILTER>}, format{make<WMFFILTER>},
    format{make<PSDFILTER>, false}};

constexpr std::size_t longest_signature = 32;

bool holds(vSTREAM& stream, const format_signature& wanted)
{
    const auto size = static_cast<std::uint32_t>(wanted.bytes.size());
    const std::int64_t start
        = wanted.offset < 0 ? std::int64_t{stream.Size()} + wanted.offset : wanted.offset;
    if (size == 0 || size > longest_signature || start < 0 || start + size > stream.Size())
        return false;
    std::array<std::uint8_t, longest_signature> found{};
    stream.MoveFromStart(static_cast<std::uint32_t>(start));
    return stream.ReadPlain(found.data(), size) == size
        && std::equal(wanted.bytes.begin(), wanted.bytes.end(), found.begin(),
            [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

} // namespace

filter_set::filter_set() noexcept
{
    oFILTER** last = &first_;
    for (const auto& [make_filter, listed] : formats) {
        *last = make_filter();
        if (!*last) {
            complete_ = false;
            continue;
        }
        if (listed)
            ++listed_count_;
        else if (!unlisted_)
            unlisted_ = *last;
        last = &(*last)->next_;
    }
}

filter_set::~filter_set()
{
    while (first_) {
        oFILTER* const filter = first_;
        first_ = filter->next_;
        delete filter;
    }
}

template <class Accepts> oFILTER* filter_set::find(Accepts accepts) const
{
    oFILTER* filter = first_;
    while (filter && !accepts(*filter))
        filter = filter->next_;
    return filter;
}

template <class Accepts> oFILTER* filter_set::find_listed(Accepts accepts) const
{
    oFILTER* const found = find([&](oFILTER& filter) { return &filter == unlisted_ || accepts(filter); });
    return found == unlisted_ ? nullptr : found;
}

oFILTER* filter_set::at(std::uint16_t i) const noexcept
{
    return find([i, at = 0U](oFILTER&) mutable { return at++ == i; });
}

oFILTER* filter_set::recognise(vSTREAM& stream) const noexcept
{
    oFILTER* const by_name
        = find_listed([&](oFILTER& filter) { return filter.CheckExtension(&stream) != 0; });
    const auto name = stream.Name().View();
    if (!name.empty() && name.front() == '.')
        return by_name;
    if (by_name && by_name->CanTranslate(&stream))
        return by_name;
    // Filters without a recogniser of contents answer what CheckExtension found, so each is asked first.
    return find_listed([&](oFILTER& filter) {
        return filter.CheckExtension(&stream) == 0 && filter.CanTranslate(&stream) != 0;
    });
}

oFILTER* filter_set::reader_of(vSTREAM& stream) const noexcept
{
    if (oFILTER* const recognised = recognise(stream))
        return recognised;
    oFILTER* const told = find([&](oFILTER& filter) { return holds(stream, filter.Format().signature); });
    stream.MoveFromStart(0);
    if (told)
        return told;
    return find([&](oFILTER& filter) {
        return filter.Type() == oFILTER_BITMAP && filter.CheckExtension(&stream) != 0;
    });
}

oFILTER* filter_set::writer_of(std::string_view extension) const noexcept
{
    return find([&](oFILTER& filter) {
        return filter.Format().has_extension(extension) && filter.DoesExport() != 0;
    });
}

} // namespace klv
