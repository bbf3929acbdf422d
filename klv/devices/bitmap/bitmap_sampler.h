#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/devices/unit_mapping.h"

#include <cstdint>

namespace klv {

class oDIBCONTEXT;
class oMEMDIB;
class colour_match;

/// x' = a x + b y + c, y' = d x + e y + f.
struct affine_map {
    double a = 1, b = 0, c = 0;
    double d = 0, e = 1, f = 0;

    double x(double px, double py) const noexcept { return a * px + b * py + c; }
    double y(double px, double py) const noexcept { return d * px + e * py + f; }
    /// This map first, then next.
    affine_map then(const affine_map& next) const noexcept;
    bool invertible() const noexcept;
    affine_map inverse() const noexcept;
};

/// Where a bitmap lies on a device: pixels of the bitmap (y from the top) to device pixels, and the part of
/// the plane of bitmap pixels that shows. Positions beyond the source rectangle repeat it.
struct bitmap_placement {
    affine_map to_device;
    RECT source; ///< normalised, inside the bitmap
    double first_u, last_u; ///< what shows, in bitmap pixels
    double first_v, last_v;
};

/// Works out the placement from a context. \return false when nothing can show
bool place_bitmap(const unit_mapping& units, const oDIBCONTEXT& context, int width, int height,
    bitmap_placement& out) noexcept;

/// Which pixels of a bitmap are left out.
struct transparency_key {
    const colour_match* match = nullptr; ///< null: none
    bool matching_are_transparent = true;
};

/// Draws a 24-bit bitmap pixel by pixel of the device, for what block copies can't do: turned, sheared,
/// repeated and transparent bitmaps. Each device pixel takes the bitmap pixel under its centre.
class bitmap_sampler {
public:
    /// \param keyed the bitmap in whose colours the key is looked for, of the same size
    bitmap_sampler(const oMEMDIB& bitmap, const oMEMDIB& keyed, const bitmap_placement& placement,
        const transparency_key& key) noexcept;
    void draw(HDC dc) noexcept;

private:
    RECT device_bounds() const noexcept;
    void draw_row(HDC dc, int y, int left, int right) noexcept;
    const std::uint8_t* pixel(double u, double v) const noexcept;
    void put_run(HDC dc, int x, int y, int count) noexcept;

    const oMEMDIB& bitmap_;
    const oMEMDIB& keyed_;
    const bitmap_placement& placement_;
    affine_map to_bitmap_;
    transparency_key key_;
    vBUFFER<std::uint8_t> row_; // the colours of one device row
};

} // namespace klv
