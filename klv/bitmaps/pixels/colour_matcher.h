#pragma once

#include "klv/base/types.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

/// Finds the entry of a colour table that is nearest to a colour (least squares of the channels, the first
/// of equals). Remembers recent answers, so that pictures cost little more than a table look-up a pixel.
class colour_matcher {
public:
    /// At most 256 colours, which must outlive the matcher.
    explicit colour_matcher(std::span<const RGBQUAD> colours);

    [[nodiscard]] std::uint8_t nearest(std::uint8_t blue, std::uint8_t green, std::uint8_t red) const
    {
        const std::uint32_t colour = std::uint32_t{red} << 16 | std::uint32_t{green} << 8 | blue;
        remembered& slot = recent_[(colour * hash_factor) >> (32 - slot_bits)];
        if (slot.colour != colour)
            slot = {colour, search(blue, green, red)};
        return slot.index;
    }

private:
    static constexpr int slot_bits = 10;
    static constexpr std::uint32_t hash_factor = 2654435761U; // Knuth's multiplicative hash
    static constexpr std::uint32_t no_colour = 0xFFFFFFFF;
    struct remembered {
        std::uint32_t colour = no_colour;
        std::uint8_t index = 0;
    };

    [[nodiscard]] std::uint8_t search(int blue, int green, int red) const;

    std::span<const RGBQUAD> colours_;
    mutable std::array<remembered, 1 << slot_bits> recent_{};
};

} // namespace klv
