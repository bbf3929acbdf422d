#include "klv/bitmaps/detail/dib_stream.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::size_t bytes_per_pixel = 3;
constexpr std::size_t block_bytes = 12000;

/// Calls handle(coded offset, pixel offset, bytes) for every block. Blocks overlap by one pixel in the
/// picture, not in the code, and no block reaches beyond what the code carries.
template <class Handle> void for_each_block(std::size_t size, Handle handle)
{
    const std::size_t carried = size - size / block_bytes * bytes_per_pixel;
    std::size_t pixel_offset = 0;
    for (std::size_t coded = 0; coded < size; coded += block_bytes) {
        handle(coded, pixel_offset, std::min({block_bytes, size - coded, carried - pixel_offset}));
        pixel_offset += block_bytes - bytes_per_pixel;
    }
}

} // namespace

void encode_differences(std::span<const std::uint8_t> pixels, std::span<std::uint8_t> coded) noexcept
{
    std::ranges::fill(coded.last(std::min(coded.size(), bytes_per_pixel)), std::uint8_t{0});
    for_each_block(pixels.size(), [&](std::size_t at, std::size_t from, std::size_t bytes) {
        std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(from), std::min(bytes, bytes_per_pixel),
            coded.begin() + static_cast<std::ptrdiff_t>(at));
        for (std::size_t i = bytes_per_pixel; i < bytes; ++i)
            coded[at + i] = static_cast<std::uint8_t>(pixels[from + i] - pixels[from + i - bytes_per_pixel]);
    });
}

void decode_differences(std::span<const std::uint8_t> coded, std::span<std::uint8_t> pixels) noexcept
{
    for_each_block(coded.size(), [&](std::size_t at, std::size_t to, std::size_t bytes) {
        std::copy_n(coded.begin() + static_cast<std::ptrdiff_t>(at), std::min(bytes, bytes_per_pixel),
            pixels.begin() + static_cast<std::ptrdiff_t>(to));
        for (std::size_t i = bytes_per_pixel; i < bytes; ++i)
            pixels[to + i] = static_cast<std::uint8_t>(coded[at + i] + pixels[to + i - bytes_per_pixel]);
    });
}

} // namespace klv
