#pragma once

#include "klv/gdi/raster/canvas.h"

#include <optional>

namespace klv::gdi {

/// A brush with its colours looked up.
struct brush_ink {
    enum class kind : std::uint8_t { none, solid, hatched, tiled };

    kind what = kind::none;
    rgb colour = 0; ///< of a solid brush, or of a hatch's lines
    bool may_mix = false; ///< the surface may show a solid colour as a pattern of its own
    std::size_t hatch = 0; ///< HS_HORIZONTAL to HS_DIAGCROSS
    std::optional<rgb> gaps; ///< between a hatch's lines; none leaves what is there
    const surface* tile = nullptr;
    /// The tile's table holds indices into this palette.
    palette_view palette;
    rgb zero = 0; ///< what bits 0 and 1 of a monochrome tile show
    rgb one = 0xFFFFFF;

    static brush_ink solid(rgb colour)
    {
        brush_ink ink;
        ink.what = kind::solid;
        ink.colour = colour;
        return ink;
    }
};

/// A brush made ready for one surface and one mix mode. One exists at a time in a thread: tiles are kept in
/// its scratch memory.
class brush_painter {
public:
    brush_painter(const canvas& on, const brush_ink& brush, INT rop2);

    /// False for a null brush, a mode that changes nothing, or a canvas without pixels.
    [[nodiscard]] bool visible() const { return sink_ != nullptr; }
    [[nodiscard]] span_sink& sink() { return *sink_; }

private:
    std::optional<solid_painter> solid_;
    std::optional<tile_painter> tile_;
    span_sink* sink_ = nullptr;
};

/// The operations of a brush as a tile, solid brushes too (one pixel). False for a null brush.
bool make_brush_tile(const canvas& on, const brush_ink& brush, INT rop2, op_tile& tile);

/// What spans meet on their way to the pixels: the clip region, then the painter.
class clipped_output {
public:
    clipped_output(const region& clip, span_sink& painter)
        : clip_(clip)
    {
        if (clip_.is_rectangle())
            sink_ = &painter;
        else
            sink_ = &stage_.emplace(clip_, painter);
    }

    /// Spans must be cut to this box before they are handed to the sink.
    [[nodiscard]] const box& bounds() const { return clip_.extents(); }
    [[nodiscard]] span_sink& sink() { return *sink_; }

    /// Paints what of a box may be painted.
    void fill(const box& area);

private:
    const region& clip_;
    std::optional<clip_stage> stage_;
    span_sink* sink_ = nullptr;
};

} // namespace klv::gdi
