#pragma once

#include "klv/base/types.h"
#include "klv/filters/tiff/tiff_image.h"

#include <array>
#include <cstdint>

namespace klv {

/// The colour table of an image: 2^depth entries, none for images deeper than 8 bits.
struct tiff_colours {
    std::array<RGBQUAD, 256> entries{};
    std::uint16_t count = 0;
};

/// BAD_DATA when the grey response curve is too short for the depth.
[[nodiscard]] oFILTER_STATUS make_colours(const tiff_image& image, tiff_colours& colours);

/// 65535 x 10^(-density / 1000) as a grey of 8 bits; density in thousandths.
[[nodiscard]] std::uint8_t reflectance_of_density(std::uint32_t density);

} // namespace klv
