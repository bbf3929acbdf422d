#include "images/dib_convert.h"

#include "core/integer_math.h"
#include "images/colour_matcher.h"
#include "images/resample.h"

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

constexpr std::array<RGBQUAD, 16> standard_colours{
    {{0, 0, 0, 0}, {0, 0, 128, 0}, {0, 128, 0, 0}, {0, 128, 128, 0}, {128, 0, 0, 0}, {128, 0, 128, 0},
        {128, 128, 0, 0}, {192, 192, 192, 0}, {128, 128, 128, 0}, {0, 0, 255, 0}, {0, 255, 0, 0},
        {0, 255, 255, 0}, {255, 0, 0, 0}, {255, 0, 255, 0}, {255, 255, 0, 0}, {255, 255, 255, 0}}};

/// A 6 x 6 x 6 colour cube and, in the room that is left, a ramp of greys.
std::array<RGBQUAD, 256> make_colour_cube()
{
    constexpr int side = 6;
    constexpr int step = 255 / (side - 1);
    constexpr std::size_t cube_size = side * side * side;
    std::array<RGBQUAD, 256> colours{};
    for (std::size_t i = 0; i < cube_size; ++i) {
        const auto level = [&](std::size_t digit) { return static_cast<std::uint8_t>(digit % side * step); };
        colours[i] = {level(i), level(i / side), level(i / (side * side)), 0};
    }
    const std::size_t greys = colours.size() - cube_size;
    for (std::size_t i = 0; i < greys; ++i) {
        const auto grey = static_cast<std::uint8_t>((i + 1) * 255 / (greys + 1));
        colours[cube_size + i] = {grey, grey, grey, 0};
    }
    return colours;
}

/// The colours of 24-bit pixels in the order of their appearance, as long as there are at most `most`.
bool collect_colours(
    std::span<const std::uint8_t> pixels, std::int32_t width, std::size_t most, vBUFFER<RGBQUAD>& colours)
{
    const std::size_t stride = stride_of(width, 24);
    std::array<std::uint32_t, 1024> seen; // open addressing; more than twice as many slots as colours
    constexpr std::uint32_t empty = 0xFFFFFFFF;
    seen.fill(empty);
    std::uint32_t previous = empty;
    for (std::size_t row = 0; row < pixels.size(); row += stride) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
            const std::uint8_t* p = pixels.data() + row + 3 * x;
            const std::uint32_t colour = p[0] | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16;
            if (colour == previous)
                continue;
            previous = colour;
            std::size_t slot = (colour * 2654435761U) >> 22;
            while (seen[slot] != empty && seen[slot] != colour)
                slot = (slot + 1) % seen.size();
            if (seen[slot] == colour)
                continue;
            if (colours.size() == most || !colours.push_back({p[0], p[1], p[2], 0}))
                return false;
            seen[slot] = colour;
        }
    }
    return true;
}

bool choose_colours(
    std::span<const std::uint8_t> pixels, std::int32_t width, std::uint16_t bits, vBUFFER<RGBQUAD>& colours)
{
    const std::size_t most = std::size_t{1} << bits;
    if (collect_colours(pixels, width, most, colours))
        return true;
    if (bits == 1) {
        const std::array<RGBQUAD, 2> black_and_white{{{0, 0, 0, 0}, {255, 255, 255, 0}}};
        return colours.assign(black_and_white);
    }
    return bits == 4 ? colours.assign(standard_colours) : colours.assign(make_colour_cube());
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
    const std::size_t stride = stride_of(width, 24);
    vBUFFER<std::uint8_t> row;
    if (!row.resize(static_cast<std::size_t>(source.Width()) * 3)
        || !pixels.resize(stride * static_cast<std::size_t>(area.bottom - area.top)))
        return false;
    return for_each_line(source, area, [&](std::int32_t y, std::span<const std::uint8_t> line) {
        read_line_as_24(line, source.ColourDepth(), row.data(), source.Width(), source.colours());
        WriteLine24(row.data() + static_cast<std::size_t>(area.left) * 3,
            pixels.data() + stride * static_cast<std::size_t>(y), width);
    });
}

bool quantise_24(std::span<const std::uint8_t> pixels, std::int32_t width, dib_pixels& result) noexcept
{
    const std::uint16_t bits = result.header.ColourDepth();
    if (!choose_colours(pixels, width, bits, result.colours))
        return false;
    const colour_matcher matcher(result.colours.span());
    const dib_line_colours colours{{}, &matcher};
    vBUFFER<std::uint8_t> indices;
    if (!indices.resize(static_cast<std::size_t>(width)))
        return false;
    const std::size_t source_stride = stride_of(width, 24);
    const std::size_t target_stride = result.header.BytesPerLine();
    for (std::size_t y = 0; y < static_cast<std::size_t>(result.header.Height()); ++y) {
        ReadLine24To8(pixels.data() + source_stride * y, indices.data(), width, colours);
        write_indices(indices.data(), result.pixels.data() + target_stride * y, bits, width);
    }
    return true;
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

    const std::uint16_t source_bits = source.ColourDepth();
    if (source_bits <= 8 && source_bits <= bits && bits <= 8)
        return result.pixels.resize(result.header.Size())
            && convert_indices(source, area, width, height, result);
    if (bits != 24 && !result.pixels.resize(result.header.Size()))
        return false;
    return convert_through_24(source, area, width, height, smooth && source_bits > 8, result);
}

} // namespace klv
