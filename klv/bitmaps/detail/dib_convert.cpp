#include "klv/bitmaps/detail/dib_convert.h"

#include "klv/bitmaps/dib_reduce.h"
#include "klv/bitmaps/pixels/resample.h"
#include "klv/core/integer_math.h"

#include <algorithm>
#include <array>

namespace klv {

namespace {

std::size_t stride_of(std::int32_t width, std::uint32_t bits)
{
    return static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(width), bits));
}

/// Calls handle(row index from the area's bottom, line bytes) for every line of the area.
template <class Handle> bool for_each_line(const oDIB& source, const RECT& area, Handle handle)
{
    vBUFFER<std::uint8_t> line;
    if (!line.resize(source.BytesPerLine()))
        return false;
    for (std::int32_t y = area.top; y < area.bottom; ++y) {
        if (!source.GetImageLines(y, 1, line.data(), nullptr))
            return false;
        handle(y - area.top, line.span());
    }
    return true;
}

/// The area as one index a byte, rows not padded.
bool read_area_as_indices(const oDIB& source, const RECT& area, vBUFFER<std::uint8_t>& indices)
{
    const auto width = static_cast<std::size_t>(area.right - area.left);
    vBUFFER<std::uint8_t> row;
    if (!row.resize(static_cast<std::size_t>(source.Width()))
        || !indices.resize(width * static_cast<std::size_t>(area.bottom - area.top)))
        return false;
    return for_each_line(source, area, [&](std::int32_t y, std::span<const std::uint8_t> line) {
        read_line_as_indices(line.data(), source.ColourDepth(), row.data(), source.Width());
        std::copy_n(row.data() + area.left, width, indices.data() + width * static_cast<std::size_t>(y));
    });
}

bool scale(vBUFFER<std::uint8_t>& pixels, const pixel_rows& from, const mutable_pixel_rows& to,
    std::size_t target_size, bool smooth)
{
    vBUFFER<std::uint8_t> scaled;
    if (!scaled.resize(target_size))
        return false;
    pixel_rows source = from;
    source.first = pixels.data();
    mutable_pixel_rows target = to;
    target.first = scaled.data();
    if (!(smooth ? resample_smooth(source, target) : resample_nearest(source, target)))
        return false;
    pixels.swap(scaled);
    return true;
}

/// Runs both passes of a reduction over lines that read(y) delivers, into the lines of the result. Line y is
/// read once more before it is written, and never after that.
template <class ReadLine> bool reduce_lines(dib_pixels& result, ReadLine read)
{
    const std::int32_t height = result.header.Height();
    dib_reducer reducer(result.header.Width(), result.header.ColourDepth());
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* const line = read(y);
        if (!line)
            return false;
        if (!reducer.look_at(line))
            break;
    }
    if (!reducer.start() || !result.colours.assign(reducer.colours()))
        return false;
    const std::size_t stride = result.header.BytesPerLine();
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* const line = read(y);
        if (!line)
            return false;
        std::uint8_t* const target = result.pixels.data() + stride * static_cast<std::size_t>(y);
        std::fill_n(target, stride, std::uint8_t{0});
        reducer.reduce_line(line, target);
    }
    return true;
}

/// The lines of an area of a bitmap as 24-bit pixels, one at a time.
class area_lines {
public:
    area_lines(const oDIB& source, const RECT& area)
        : source_(source)
        , area_(area)
    {
    }
    [[nodiscard]] bool make_room()
    {
        return line_.resize(source_.BytesPerLine())
            && row_.resize(static_cast<std::size_t>(source_.Width()) * 3);
    }
    /// Line y of the area, counted from its bottom; null when the bitmap does not deliver it.
    [[nodiscard]] const std::uint8_t* operator()(std::int32_t y)
    {
        if (!source_.GetImageLines(area_.top + y, 1, line_.data(), nullptr))
            return nullptr;
        read_line_as_24(line_.span(), source_.ColourDepth(), row_.data(), source_.Width(), source_.colours());
        return row_.data() + static_cast<std::size_t>(area_.left) * 3;
    }

private:
    const oDIB& source_;
    const RECT& area_;
    vBUFFER<std::uint8_t> line_;
    vBUFFER<std::uint8_t> row_;
};

/// To fewer bits in the same size, without a copy in 24 bits.
bool reduce_area(const oDIB& source, const RECT& area, dib_pixels& result)
{
    area_lines lines(source, area);
    return lines.make_room() && reduce_lines(result, [&](std::int32_t y) { return lines(y); });
}

bool convert_through_24(const oDIB& source, const RECT& area, std::int32_t width, std::int32_t height,
    bool smooth, dib_pixels& result)
{
    vBUFFER<std::uint8_t> pixels;
    if (!read_area_as_24(source, area, pixels))
        return false;
    const std::int32_t area_width = area.right - area.left;
    const std::int32_t area_height = area.bottom - area.top;
    if (width != area_width || height != area_height) {
        const auto from_stride = static_cast<std::ptrdiff_t>(stride_of(area_width, 24));
        const std::size_t to_stride = stride_of(width, 24);
        if (!scale(pixels, {nullptr, from_stride, area_width, area_height, 3},
                {nullptr, static_cast<std::ptrdiff_t>(to_stride), width, height, 3},
                to_stride * static_cast<std::size_t>(height), smooth))
            return false;
    }
    if (result.header.ColourDepth() == 24) {
        result.pixels.swap(pixels);
        return true;
    }
    return quantise_24(pixels.span(), width, result);
}

/// Between colour tables of the same or a growing size the indices stay.
bool convert_indices(
    const oDIB& source, const RECT& area, std::int32_t width, std::int32_t height, dib_pixels& result)
{
    vBUFFER<std::uint8_t> indices;
    if (!read_area_as_indices(source, area, indices))
        return false;
    const std::int32_t area_width = area.right - area.left;
    const std::int32_t area_height = area.bottom - area.top;
    if ((width != area_width || height != area_height)
        && !scale(indices, {nullptr, area_width, area_width, area_height, 1},
            {nullptr, width, width, height, 1},
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height), false))
        return false;
    for (std::int32_t y = 0; y < height; ++y)
        write_indices(indices.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width),
            result.pixels.data() + static_cast<std::size_t>(y) * result.header.BytesPerLine(),
            result.header.ColourDepth(), width);
    return result.colours.assign(source.colours());
}

} // namespace

bool read_area_as_24(const oDIB& source, const RECT& area, vBUFFER<std::uint8_t>& pixels) noexcept
{
    const std::int32_t width = area.right - area.left;
    const std::int32_t height = area.bottom - area.top;
    const std::size_t stride = stride_of(width, 24);
    area_lines lines(source, area);
    if (!lines.make_room() || !pixels.resize(stride * static_cast<std::size_t>(height)))
        return false;
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* const line = lines(y);
        if (!line)
            return false;
        WriteLine24(line, pixels.data() + stride * static_cast<std::size_t>(y), width);
    }
    return true;
}

bool quantise_24(std::span<const std::uint8_t> pixels, std::int32_t width, dib_pixels& result) noexcept
{
    const std::size_t stride = stride_of(width, 24);
    return reduce_lines(
        result, [&](std::int32_t y) { return pixels.data() + stride * static_cast<std::size_t>(y); });
}

bool reduce_in_place(const oDIBHEADER& from, std::span<const RGBQUAD> colours, dib_pixels& bitmap) noexcept
{
    if (bitmap.header.ColourDepth() >= from.ColourDepth() || bitmap.header.Width() != from.Width()
        || bitmap.header.Height() != from.Height())
        return false;
    vBUFFER<std::uint8_t> row;
    if (!row.resize(static_cast<std::size_t>(from.Width()) * 3))
        return false;
    const std::size_t stride = from.BytesPerLine();
    // The lines get shorter, so that no line is written over one that is still to be read.
    const bool reduced = reduce_lines(bitmap, [&](std::int32_t y) {
        const auto line = bitmap.pixels.span().subspan(stride * static_cast<std::size_t>(y), stride);
        read_line_as_24(line, from.ColourDepth(), row.data(), from.Width(), colours);
        return row.data();
    });
    if (reduced)
        bitmap.pixels.truncate(bitmap.header.Size());
    return reduced;
}

bool convert_dib(const oDIB& source, const RECT& area, std::int32_t width, std::int32_t height,
    std::uint16_t bits, bool smooth, dib_pixels& result) noexcept
{
    const bool known_depth = bits == 1 || bits == 4 || bits == 8 || bits == 24;
    const bool inside = area.left >= 0 && area.top >= 0 && area.left < area.right && area.top < area.bottom
        && area.right <= source.Width() && area.bottom <= source.Height();
    if (!known_depth || !inside || width <= 0 || height <= 0)
        return false;
    oDIBHEADER source_header;
    source.GetHeader(source_header);
    result.header = oDIBHEADER(width, height, MulDiv(source_header.HorzDPI(), width, area.right - area.left),
        MulDiv(source_header.VertDPI(), height, area.bottom - area.top), model_of_bits(bits));
    if (result.header.Size() == 0)
        return false;
    const bool same_size = width == area.right - area.left && height == area.bottom - area.top;
    if (same_size) {
        // Exactly, and with it what stands for "no resolution".
        result.header.info().biXPelsPerMeter = source_header.info().biXPelsPerMeter;
        result.header.info().biYPelsPerMeter = source_header.info().biYPelsPerMeter;
    }

    const std::uint16_t source_bits = source.ColourDepth();
    if (source_bits <= 8 && source_bits <= bits && bits <= 8)
        return result.pixels.resize(result.header.Size())
            && convert_indices(source, area, width, height, result);
    if (bits != 24 && !result.pixels.resize(result.header.Size()))
        return false;
    if (bits != 24 && same_size)
        return reduce_area(source, area, result);
    return convert_through_24(source, area, width, height, smooth && source_bits > 8, result);
}

} // namespace klv
