#pragma once

#include "klv/gdi/raster/painter.h"
#include "klv/gdi/state/dc.h"

#include <optional>

namespace klv::gdi {

/// A brush made ready for one surface and one mix mode. One exists at a time: tiles are kept in a shared
/// buffer.
class brush_painter {
public:
    brush_painter(drawing_context& dc, const brush_object& brush, INT rop2);

    /// False for a null brush, a mode that changes nothing, or a context without pixels.
    [[nodiscard]] bool visible() const { return sink_ != nullptr; }
    [[nodiscard]] span_sink& sink() { return *sink_; }

private:
    std::optional<solid_painter> solid_;
    std::optional<tile_painter> tile_;
    span_sink* sink_ = nullptr;
};

/// The operations of a brush as a tile, solid brushes too (one pixel). False for a null brush.
bool make_brush_tile(drawing_context& dc, const brush_object& brush, INT rop2, op_tile& tile);

/// What spans meet on their way to the pixels: the clip region, then the painter.
class clipped_output {
public:
    clipped_output(drawing_context& dc, span_sink& painter)
        : clip_(dc.effective_clip())
    {
        if (clip_.is_rectangle())
            sink_ = &painter;
        else
            sink_ = &stage_.emplace(clip_, painter);
    }
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

private:
    const region& clip_;
    std::optional<clip_stage> stage_;
    span_sink* sink_ = nullptr;
};

} // namespace klv::gdi
