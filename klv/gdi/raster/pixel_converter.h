#pragma once

#include "klv/gdi/raster/surface.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv::gdi {

/// What a copy makes of the bits of a monochrome surface: a monochrome source shows zero and one; on a
/// monochrome destination the source's background colour becomes 1 and all else 0.
struct copy_colours {
    rgb zero = 0;
    rgb one = 0xFFFFFF;
    rgb source_background = 0xFFFFFF;
};

/// Turns pixel values of one surface into those of another that show the same colours.
class pixel_converter {
public:
    pixel_converter(const surface& to, const surface& from, const copy_colours& colours);

    [[nodiscard]] bool is_identity() const { return how_ == method::none; }
    void convert(std::span<std::uint32_t> pixels) const;
    /// The same for colours (of a source that is not monochrome).
    void convert_colours(std::span<std::uint32_t> colours) const;

private:
    enum class method : std::uint8_t { none, plain, table, colour };
    [[nodiscard]] std::uint32_t pixel_for(rgb colour) const;

    const surface& to_;
    const surface& from_;
    rgb source_background_;
    method how_ = method::colour;
    std::array<std::uint32_t, 256> table_;
};

} // namespace klv::gdi
