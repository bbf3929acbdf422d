#pragma once

#include "klv/gdi/state/dc.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv::gdi {

/// Turns pixel values of one surface into those of another that show the same colours. A monochrome source
/// takes the text and background colours of the destination's context; on a monochrome destination the
/// source's background colour becomes 1 and all else 0.
class pixel_converter {
public:
    pixel_converter(drawing_context& to, const surface& from, rgb source_background);

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
