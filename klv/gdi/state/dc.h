#pragma once

#include "klv/gdi/raster/region.h"
#include "klv/gdi/raster/surface.h"
#include "klv/gdi/state/brush.h"
#include "klv/gdi/state/objects.h"
#include "klv/gdi/state/palette.h"
#include "klv/gdi/state/pen.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace klv::gdi {

/// Window (logical) to viewport (device). The scale is viewport extent over window extent.
struct mapping {
    INT mode = 1; ///< MM_TEXT
    POINT window_origin{0, 0};
    SIZE window_extent{1, 1};
    POINT viewport_origin{0, 0};
    SIZE viewport_extent{1, 1};

    [[nodiscard]] bool is_identity() const
    {
        return window_extent == viewport_extent && window_origin == viewport_origin;
    }
    /// Rounded to the nearest, saturated at the ends of 32 bits.
    [[nodiscard]] POINT to_device(POINT p) const;
    [[nodiscard]] POINT to_logical(POINT p) const;
    /// Lengths: no origin; the sign is kept.
    [[nodiscard]] LONG width_to_device(LONG w) const;
    [[nodiscard]] LONG height_to_device(LONG h) const;
    [[nodiscard]] LONG width_to_logical(LONG w) const;
    [[nodiscard]] LONG height_to_logical(LONG h) const;
    /// Both corners, as they are (not ordered).
    [[nodiscard]] RECT to_device(const RECT& r) const;
};

/// What SaveDC saves.
struct dc_state {
    std::shared_ptr<pen_object> pen;
    std::shared_ptr<brush_object> brush;
    std::shared_ptr<gdi_object> font; ///< a font object, see the text functions
    std::shared_ptr<bitmap_object> bitmap; ///< memory contexts only
    std::shared_ptr<palette_object> palette;

    mapping map;
    POINT position{0, 0}; ///< logical
    POINT brush_origin{0, 0};

    COLORREF text_colour = 0x000000;
    COLORREF background_colour = 0xFFFFFF;
    INT background_mode = 2; ///< OPAQUE
    INT rop2 = 13; ///< R2_COPYPEN
    INT fill_mode = 1; ///< ALTERNATE
    INT stretch_mode = 1; ///< BLACKONWHITE
    INT arc_direction = 1; ///< AD_COUNTERCLOCKWISE

    std::uint32_t text_align = 0;
    INT character_extra = 0;
    INT justify_extra = 0;
    INT justify_count = 0;

    bool clipped = false;
    region clip; ///< device units; holds when clipped is set
};

enum class context_kind : std::uint8_t { screen, memory };

/// A drawing context: the state machine above a surface.
struct drawing_context : gdi_object {
    static constexpr object_kind kind_id = object_kind::context;
    drawing_context(context_kind k);
    ~drawing_context() override;

    context_kind context = context_kind::memory;
    dc_state state;
    std::vector<dc_state> saved;
    INT dots_per_inch_x = 96;
    INT dots_per_inch_y = 96;

    /// Programs know pixels of 96 to the inch. On a surface whose pixels are finer, a pixel of a pattern and
    /// the width of a thin line are so many of them.
    [[nodiscard]] INT pixels_of_common_pixel() const { return std::max(1, dots_per_inch_x / 96); }

    /// The pixels drawn on; the screen's are allocated here when they are first asked for. Its top is null
    /// when there is nothing to draw on.
    [[nodiscard]] const surface& target();
    /// The clip region within the surface.
    [[nodiscard]] const region& effective_clip();
    /// Call after any change of the clip region or the bitmap.
    void clip_changed() { clip_valid_ = false; }

private:
    region effective_clip_;
    bool clip_valid_ = false;
    SIZE clip_size_{0, 0}; ///< of the surface that effective_clip_ was made for
};

inline drawing_context* find_context(HDC dc) { return find<drawing_context>(dc); }

/// A colour argument as the context sees it: palette indices and palette-relative colours are looked up in
/// the selected palette.
[[nodiscard]] rgb resolve_colour(const drawing_context& dc, COLORREF colour);

/// Made by the text functions; index is that of GetStockObject.
std::shared_ptr<gdi_object> make_stock_font(INT index);

} // namespace klv::gdi
