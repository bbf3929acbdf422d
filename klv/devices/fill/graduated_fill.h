#pragma once

#include "klv/base/types.h"

#include <cstdint>

namespace klv {

class vDEVICE;
class vSHAPE;

/// Fills a shape with a graduation between the two colours of the device's current fill. A raster surface
/// is clipped to the shape and painted with bands over its bounding box; a native metafile, which can't
/// rely on clipping, gets the bands cut to the shape.
void GradFill(vDEVICE& device, const vSHAPE& shape) noexcept;

// Bands over a rectangle in device pixels, edges in order.

/// Rings, or on devices other than a display discs from the outside in. The first colour is in the middle.
void NewRadialFill(vDEVICE& device, const RECT& rect) noexcept;
/// Straight bands across the fill's angle.
void NewLinearFill(vDEVICE& device, const RECT& rect) noexcept;
/// Nested rectangles. The first colour is in the middle.
void NewBoxFill(vDEVICE& device, const RECT& rect) noexcept;

// Bands cut to a shape.

void LinearFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept;
void RadialFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept;
void BoxFillByPolygons(vDEVICE& device, const vSHAPE& shape) noexcept;

/// Pixels that a band has at least, by kind of fill and quality.
struct band_pixels {
    int full_quality;
    int low_quality;
};
inline constexpr band_pixels clipped_band{3, 7};
inline constexpr band_pixels cut_band{2, 5};

/// The two colours of a fill and how they blend along it; what the painters of bands share.
class gradation {
public:
    explicit gradation(const vDEVICE& device) noexcept;

    /// Steps that the colours are worth.
    int colour_steps() const noexcept { return colour_steps_; }
    /// Pixels a band has at least.
    int least_band(const band_pixels& pixels) const noexcept
    {
        return full_quality_ ? pixels.full_quality : pixels.low_quality;
    }
    /// Colour at a radius of a radial fill.
    COLORREF at_radius(double radius, double whole) const noexcept;
    /// Colour of band k of n + 1 of a linear fill.
    COLORREF of_band(int k, int n) const noexcept;
    /// The same with the coarser logarithm that cut bands use.
    COLORREF of_cut_band(int k, int n) const noexcept;
    /// Colour of nested rectangle k of n, the outermost first.
    COLORREF of_box(int k, int n) const noexcept;

private:
    int type_;
    COLORREF from_;
    COLORREF to_;
    int colour_steps_;
    bool full_quality_;
};

/// Paints band after band with a null pen; brushes live as long as their band.
class band_painter {
public:
    explicit band_painter(vDEVICE& device) noexcept;
    ~band_painter();
    band_painter(const band_painter&) = delete;
    band_painter& operator=(const band_painter&) = delete;

    HDC dc() const noexcept { return dc_; }
    /// Selects the brush of the next band.
    void colour(COLORREF colour) noexcept;

private:
    vDEVICE& device_;
    HDC dc_;
    HGDIOBJ old_pen_;
    HGDIOBJ old_brush_;
    HBRUSH brush_ = nullptr;
    int old_mode_;
};

/// Number of nested rectangles of a box fill, and rectangle k of them, the outermost first.
int box_steps(const gradation& colours, const RECT& rect) noexcept;
RECT nested_box(const RECT& rect, int k, int n) noexcept;

/// The whole-degree angle of the device's current fill.
int fill_angle(const vDEVICE& device) noexcept;

} // namespace klv
