#pragma once

#include "klv/gdi/raster/paint_meter.h"
#include "klv/gdi/sink/calls.h"
#include "klv/gdi/sink/figure.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

namespace klv::gdi {

/// What a drawing context draws on. Every function of gdi.h that draws, or changes what later calls draw,
/// looks its context up, checks its arguments, brings the state up to date and tells the context's sink: no
/// function paints, so that pixels, a recording or a page can receive the same calls.
///
/// For the writer of a sink:
///
/// - There is one call for each meaning, and one for each figure however many spans it has. A refused call
///   (a wrong argument, a deleted handle) is not heard.
/// - Coordinates are logical, as the program gave them; state.map takes them to device units. Regions that
///   clip are in device units, as are state.clip and visible().
/// - The state comes with every call. A call that changes it is heard after the change, with its own
///   arguments, so that a sink may either record the call or look at the state when something is drawn and
///   leave these calls out; they do nothing here. Drawing calls that move the current position (line_to,
///   text with TA_UPDATECP) are heard before it moves.
/// - Objects are heard when they are selected. They live as long as the state, or whoever else keeps a share
///   of them; a deleted one has a token that find_object no longer knows.
/// - Colours are as given (state.text_colour, a pen's lopnColor): resolve_colour looks them up.
/// - A sink is called by one thread at a time. It may throw std::bad_alloc, which makes the function answer
///   that it failed, and nothing else.
class sink {
public:
    sink() = default;
    virtual ~sink() = default;
    sink(const sink&) = delete;
    sink& operator=(const sink&) = delete;

    // ---- Questions ----

    /// OBJ_DC, OBJ_MEMDC or OBJ_METADC.
    [[nodiscard]] virtual UINT type() const = 0;
    /// GetDeviceCaps; 0 for an index that it does not know.
    [[nodiscard]] virtual INT capability(const drawing_state& state, INT index) = 0;
    /// What can be drawn on: the clip region within the sink's own bounds. Holds until the next call.
    [[nodiscard]] virtual const region& visible(const drawing_state& state) = 0;
    /// Pixels that copies can be made from; null where there are none.
    [[nodiscard]] virtual const surface* pixels(const drawing_state& state) = 0;
    /// A surface, without pixels, of the format that compatible bitmaps get.
    [[nodiscard]] virtual surface format(const drawing_state& state) = 0;
    /// The colour that is shown for a solid pen of this one.
    [[nodiscard]] virtual rgb nearest(const drawing_state& state, rgb colour) = 0;
    /// CLR_INVALID where there is no such pixel.
    [[nodiscard]] virtual COLORREF get_pixel(const drawing_state& state, POINT at) = 0;

    [[nodiscard]] INT dots_per_inch() const { return dots_per_inch_; }
    void set_dots_per_inch(INT value) { dots_per_inch_ = value; }
    /// Programs know pixels of 96 to the inch: this many of the device's pixels are one of those.
    [[nodiscard]] INT common_pixel() const { return std::max(1, dots_per_inch_ / common_dots_per_inch); }
    /// Null while nobody counts.
    [[nodiscard]] const std::shared_ptr<paint_meter>& meter() const { return meter_; }
    void set_meter(std::shared_ptr<paint_meter> meter) { meter_ = std::move(meter); }

    // ---- State, for those that record it ----

    virtual void set(const drawing_state&, setting, std::span<const std::int32_t>) { }
    /// A pen, brush, font, bitmap or palette.
    virtual void select(const drawing_state&, const gdi_object&) { }
    virtual void change_clip(const drawing_state&, const clip_change&) { }
    /// SaveDC, when the state has been put aside.
    virtual void save(const drawing_state&) { }
    /// RestoreDC, with its own argument, when the state has been taken back.
    virtual void restore(const drawing_state&, INT) { }
    /// RealizePalette. \return entries whose realisation changed
    virtual UINT realise_palette(const drawing_state&) { return 0; }
    /// Escape; 0 for one that is not supported.
    virtual INT escape(const drawing_state&, INT, std::span<const char>, void*) { return 0; }

    // ---- Drawing ----

    virtual void draw(const drawing_state& state, const figure& what) = 0;
    virtual void fill(const drawing_state& state, const region_fill& what) = 0;
    virtual void fill(const drawing_state& state, const region_frame& what) = 0;
    virtual void fill(const drawing_state& state, const box_fill& what) = 0;
    virtual void fill(const drawing_state& state, const pattern_block& what) = 0;
    virtual void write(const drawing_state& state, const text_call& what) = 0;
    /// Copies answer whether there was anything to copy: no extent came out as zero.
    virtual bool copy(const drawing_state& state, const context_block& what) = 0;
    virtual bool copy(const drawing_state& state, const dib_block& what) = 0;
    virtual bool copy(const drawing_state& state, const dib_band& what) = 0;
    /// \return the colour that the pixel has got, CLR_INVALID where there is no such pixel
    virtual COLORREF set_pixel(const drawing_state& state, POINT at, COLORREF colour) = 0;
    /// ExtFloodFill. \return whether anything was filled
    virtual bool flood(const drawing_state& state, POINT from, COLORREF colour, UINT type) = 0;

private:
    static constexpr INT common_dots_per_inch = 96;

    INT dots_per_inch_ = common_dots_per_inch;
    std::shared_ptr<paint_meter> meter_;
};

} // namespace klv::gdi
