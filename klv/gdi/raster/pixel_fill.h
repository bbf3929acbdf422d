#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace klv::gdi {

/// Sets count pixels, at least one, to one value. Most runs of a figure are a few pixels long, so short ones
/// are written with two blocks that may overlap instead of a loop with a rest.
template <class Pixel> void fill_pixels(Pixel* to, std::size_t count, Pixel value)
{
    if constexpr (sizeof(Pixel) == 1) {
        std::memset(to, value, count);
    } else {
        constexpr std::size_t block = 16 / sizeof(Pixel);
        [[maybe_unused]] constexpr std::size_t long_run = 2048 / sizeof(Pixel);
        if (count < block) {
            if constexpr (block == 4) {
                // One, two or three pixels, without asking which.
                to[0] = value;
                to[count / 2] = value;
                to[count - 1] = value;
            } else {
                std::fill_n(to, count, value);
            }
            return;
        }
#if defined(__x86_64__) && defined(__GNUC__)
        // String stores do not read the lines that they are going to overwrite, as memset knows.
        if (sizeof(Pixel) == 4 && count >= long_run) {
            asm volatile("rep stosl" : "+D"(to), "+c"(count) : "a"(value) : "memory");
            return;
        }
#endif
        Pixel blocks[block];
        std::fill_n(blocks, block, value);
        if (count <= 4 * block) {
            // Up to four blocks, without asking how many.
            const std::size_t last_at = count - block;
            for (const std::size_t at : {std::size_t{0}, block, 2 * block, last_at})
                std::memcpy(to + std::min(at, last_at), blocks, sizeof blocks);
            return;
        }
        Pixel* const last = to + count - block;
        for (; to < last; to += block)
            std::memcpy(to, blocks, sizeof blocks);
        std::memcpy(last, blocks, sizeof blocks);
    }
}

} // namespace klv::gdi
