#pragma once

#include "klv/bitmaps/pixels/resample.h"
#include "klv/colour/colour.h"
#include "klv/core/point.h"
#include "klv/devices/display_bitmap.h"

#include <cstdint>

namespace klv {

class vMETAFILE;

/// A band of rows of a page, each pixel a square of samples, on which a picture is drawn.
class sample_band {
public:
    /// Rows of output pixels for bands of a few megabytes. They are a multiple of the height of brush
    /// patterns, so that patterns go on from band to band.
    static int rows_for(const vSIZE& page, int samples) noexcept;

    sample_band(int width, int rows, int samples) noexcept;
    ~sample_band();
    sample_band(const sample_band&) = delete;
    sample_band& operator=(const sample_band&) = delete;

    /// False when memory was out; nothing else may be called then.
    [[nodiscard]] bool ready() const noexcept { return bits_ != nullptr; }
    [[nodiscard]] HDC context() const noexcept { return dc_; }
    /// Draws the rows of a page from one on.
    void draw(vMETAFILE& picture, const vSIZE& page, int first_row, const vCOLOUR& ground) noexcept;
    /// The samples of the first rows, blue, green, red and a fourth byte that says nothing, top row first.
    [[nodiscard]] mutable_pixel_rows samples(int rows) noexcept;

private:
    int samples_;
    int width_;
    int rows_;
    vDISPLAYBMP device_;
    HDC dc_ = nullptr;
    void* bits_ = nullptr;
};

} // namespace klv
