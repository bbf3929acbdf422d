#include "klv/filters/windows/canvas_core.h"

#include "klv/filters/windows/windows_attributes.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>

namespace klv {
namespace {

constexpr int largest_coordinate = 32766;

} // namespace

vPOINT canvas_core::map(double x, double y) const
{
    const vPOINT p = state.mapping.map(x, y);
    if (policy.records_clips)
        return p;
    if (state.moves_points) {
        const vRECT& clip = state.moved_into;
        const auto within = [](int v, int a, int b) { return std::clamp(v, std::min(a, b), std::max(a, b)); };
        return {within(p.x, clip.Left(), clip.Right()), within(p.y, clip.Top(), clip.Bottom())};
    }
    return {std::min(p.x, largest_coordinate), std::min(p.y, largest_coordinate)};
}

vRECT canvas_core::map(const RECT& rect) const
{
    return vRECT(map(rect.left, rect.top), map(rect.right, rect.bottom));
}

void canvas_core::record_clip()
{
    if (policy.records_clips)
        clips_.record(picture, state.clip);
}

void canvas_core::fill_plainly(const vRECT& rect, const vFILLSPEC& fill)
{
    record_clip();
    picture.PushLineSpec();
    picture.PushFillSpec();
    picture.LineSpec(round_line(vLINE_NONE, 0, 0));
    picture.FillSpec(fill);
    picture.DrawRect(rect);
    picture.PopFillSpec();
    picture.PopLineSpec();
}

} // namespace klv
