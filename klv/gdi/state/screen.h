#pragma once

#include "klv/gdi/raster/surface.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace klv::gdi {

/// The process's screen: size and depth are known at once, the pixels are made when they are first asked
/// for. Size and depth can be read at any time; all else under screen_mutex.
struct screen {
    std::atomic<std::int32_t> width = 1280;
    std::atomic<std::int32_t> height = 1024;
    std::atomic<int> bits = 32;
    std::shared_ptr<colour_table> table; ///< 8 bits only: the system palette
    /// Entries of the system palette given away by the last realised foreground palette.
    unsigned realised = 0;

    /// Without pixels where memory is out.
    [[nodiscard]] const surface& target();
    /// Its pixels start over.
    void reset() { pixels_ = {}; }

private:
    surface_memory memory_;
    surface pixels_;
};

screen& the_screen();
std::recursive_mutex& screen_mutex();

/// Entries of the system palette that are not static.
inline constexpr unsigned static_entries = 20;
inline constexpr unsigned first_free_entry = static_entries / 2;
inline constexpr unsigned end_free_entry = 256 - static_entries / 2;

} // namespace klv::gdi
