#pragma once

#include "klv/gdi/raster/surface.h"

#include <memory>

namespace klv::gdi {

/// The process's screen: size and depth are known at once, the pixels are made when they are first asked
/// for.
struct screen {
    std::int32_t width = 1280;
    std::int32_t height = 1024;
    int bits = 32;
    std::shared_ptr<colour_table> table; ///< 8 bits only: the system palette
    std::shared_ptr<bitmap_object> pixels;
    /// Entries of the system palette given away by the last realised foreground palette.
    unsigned realised = 0;

    [[nodiscard]] const surface& target();
};

screen& the_screen();

/// Entries of the system palette that are not static.
inline constexpr unsigned static_entries = 20;
inline constexpr unsigned first_free_entry = static_entries / 2;
inline constexpr unsigned end_free_entry = 256 - static_entries / 2;

} // namespace klv::gdi
