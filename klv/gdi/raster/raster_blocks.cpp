#include "klv/gdi/raster/blitter.h"
#include "klv/gdi/raster/inks.h"
#include "klv/gdi/raster/raster_sink.h"

#include <algorithm>

/// Block copies and pattern fills.
namespace klv::gdi {

namespace {

/// A copy in the colours of a state; the axes are still to be set.
blit make_job(const drawing_state& state, const surface& source, DWORD operation)
{
    blit job;
    job.source = &source;
    job.colours.zero = resolve_colour(state, state.text_colour);
    job.colours.one = resolve_colour(state, state.background_colour);
    job.operation = rop3(operation);
    job.stretch_mode = state.stretch_mode;
    if (job.operation.uses_pattern()) {
        job.brush = brush_of(state, *state.brush);
        // Gaps of a hatch have a colour here: there is no operation to leave them out of.
        job.brush.gaps = job.colours.one;
    }
    return job;
}

bool set_axes(blit& job, const block& to, const block& from)
{
    return job.x.set(to.x, to.width, from.x, from.width) && job.y.set(to.y, to.height, from.y, from.height);
}

} // namespace

void raster_sink::fill(const drawing_state& state, const pattern_block& what)
{
    const block to = state.map.to_device(what.to);
    const box area = ordered_box(
        to.x, to.y, saturate(std::int64_t{to.x} + to.width), saturate(std::int64_t{to.y} + to.height));
    run_pattern_blit(open(state), area, brush_of(state, *state.brush), rop3(what.operation));
}

bool raster_sink::copy(const drawing_state& state, const context_block& what)
{
    blit job = make_job(state, what.source, what.operation);
    job.colours.source_background = what.source_background;
    if (!set_axes(job, state.map.to_device(what.to), what.from))
        return false;
    run_blit(open(state), job);
    return true;
}

bool raster_sink::copy(const drawing_state& state, const dib_block& what)
{
    const dib_layout& layout = what.data.source.layout();
    blit job = make_job(state, what.data.source.pixels(), what.operation);
    block from = what.from;
    if (!layout.top_down)
        from.y = saturate(std::int64_t{layout.height} - from.y - from.height);
    if (!set_axes(job, state.map.to_device(what.to), from))
        return false;
    run_blit(open(state), job);
    return true;
}

bool raster_sink::copy(const drawing_state& state, const dib_band& what)
{
    // Sizes are in pixels whatever the mapping. The given lines are a band of the whole bitmap; the part of
    // the source rectangle above or below it is not drawn.
    const dib_layout& layout = what.data.source.layout();
    const std::int64_t rows = what.data.source.pixels().height;
    const std::int64_t first = what.start_line;
    const std::int64_t band_top = layout.top_down ? first : layout.height - first - rows;
    const std::int64_t source_top
        = layout.top_down ? what.y : std::int64_t{layout.height} - what.y - std::int64_t{what.height};
    const POINT corner = state.map.to_device(what.to);
    const auto width = static_cast<INT>(what.width);
    const auto height = static_cast<INT>(what.height);
    blit job = make_job(state, what.data.source.pixels(), SRCCOPY);
    if (!set_axes(job, {corner.x, corner.y, width, height},
            {what.x, saturate(source_top - band_top), width, height}))
        return false;
    run_blit(open(state), job);
    return true;
}

} // namespace klv::gdi
