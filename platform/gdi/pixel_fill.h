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
        Pixel* const last = to + count - block;
        for (; to < last; to += block)
            std::memcpy(to, blocks, sizeof blocks);
        std::memcpy(last, blocks, sizeof blocks);
    }
}

/// The same for bytes, of which short runs are the rule: the rows of surfaces of one or four bits.
inline void fill_bytes(std::uint8_t* to, std::size_t count, std::uint8_t value)
{
    constexpr std::size_t block = 8;
    if (count < block) {
        for (std::size_t i = 0; i < count; ++i)
            to[i] = value;
    } else if (count <= 2 * block) {
        const std::uint64_t bytes = value * 0x0101010101010101U;
        std::memcpy(to, &bytes, block);
        std::memcpy(to + count - block, &bytes, block);
    } else {
        std::memset(to, value, count);
    }
}

} // namespace klv::gdi
