#include "klv/filters/windows/canvas_clip.h"

namespace klv {

// Clips themselves are not moved into one another.
vRECT canvas_clip::unmoved(const RECT& rect) const
{
    const auto& mapping = core_.state.mapping;
    return vRECT(mapping.map(rect.left, rect.top), mapping.map(rect.right, rect.bottom));
}

void canvas_clip::intersect(const RECT& rect)
{
    auto& state = core_.state;
    const vRECT mapped = unmoved(rect);
    if (core_.policy.records_clips)
        state.clip.intersect(mapped);
    state.moved_into = mapped;
    state.moves_points = true;
}

void canvas_clip::exclude(const RECT& rect)
{
    if (core_.policy.records_clips)
        core_.state.clip.exclude(unmoved(rect));
}

void canvas_clip::move(int x, int y)
{
    auto& state = core_.state;
    if (core_.policy.records_clips)
        state.clip.move(vPOINT(state.mapping.map_width(x), state.mapping.map_height(y)));
}

void canvas_clip::remove() { core_.state.clip = clip_area(); }

} // namespace klv
