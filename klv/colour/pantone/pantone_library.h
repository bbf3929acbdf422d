#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace klv {

/// A reference into a Pantone book, as the colour library takes it.
struct pantone_reference {
    std::uint16_t marker;
    std::uint16_t simtype;
    std::uint16_t index;
};

/// What the outside colour library makes of the reference, in 16 bits a component. It is loaded and freed
/// by each call. Nothing when the library or an entry point is not there, or the library refuses.
std::optional<std::array<std::uint16_t, 3>> pantone_rgb(const pantone_reference& colour) noexcept;
std::optional<std::array<std::uint16_t, 4>> pantone_cmyk(const pantone_reference& colour) noexcept;

} // namespace klv
