#include "klv/rendering/detail/pixel_output.h"

#include "klv/bitmaps/memory_dib.h"

#include <cstddef>
#include <utility>

namespace klv {
namespace {

bool red_first(pixel_order order) { return order == pixel_order::rgba || order == pixel_order::rgb; }

// From blue first to the order.
void arrange_row(const pixel_view& into, std::uint8_t* pixel, bool with_alpha)
{
    const int size = bytes_per_pixel(into.order);
    const bool swaps = red_first(into.order), fills = has_alpha(into.order) && !with_alpha;
    if (!swaps && !fills)
        return;
    for (int x = 0; x < into.width; ++x, pixel += size) {
        if (swaps)
            std::swap(pixel[0], pixel[2]);
        if (fills)
            pixel[3] = 0xFF;
    }
}

} // namespace

bool put_samples(
    const mutable_pixel_rows& samples, int per_axis, bool with_alpha, const pixel_view& into) noexcept
{
    const mutable_pixel_rows target{
        into.first, into.stride, into.width, into.height, bytes_per_pixel(into.order)};
    if (!reduce_box(read_only(samples), target, per_axis, per_axis))
        return false;
    for (int y = 0; y < into.height; ++y)
        arrange_row(into, into.row(y), with_alpha);
    return true;
}

bool put_bitmap(const oMEMDIB& bitmap, const pixel_view& into) noexcept
{
    const int size = bytes_per_pixel(into.order);
    for (int y = 0; y < into.height; ++y) {
        const auto line = bitmap.line(into.height - 1 - y);
        if (line.size() < std::size_t{3} * static_cast<std::size_t>(into.width))
            return false;
        std::uint8_t* pixel = into.row(y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(into.width); ++x, pixel += size)
            for (std::size_t channel = 0; channel < 3; ++channel)
                pixel[channel] = line[3 * x + channel];
        arrange_row(into, into.row(y), false);
    }
    return true;
}

} // namespace klv
