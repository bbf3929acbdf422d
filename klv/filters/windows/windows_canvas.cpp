#include "klv/filters/windows/windows_canvas.h"

#include "klv/filters/windows/windows_attributes.h"
#include "klv/metafiles/metafile.h"

#include <utility>

namespace klv {

windows_canvas::windows_canvas(vMETAFILE& picture, const reading_policy& policy, std::size_t object_numbers)
    : core_(picture, policy, canvas_mapping(vPOINT(1, 1), 1))
    , page_(picture, policy)
    , clip_(core_)
    , attributes_(core_, object_numbers)
    , figures_(core_)
    , text_(core_, attributes_)
    , bitmaps_(core_)
{
}

void windows_canvas::before(what_follows next)
{
    if (next == what_follows::line_segment)
        return;
    figures_.finish_lines();
    if (next != what_follows::bitmap)
        bitmaps_.finish_pairs();
}

void windows_canvas::settle() { before(what_follows::other); }

void windows_canvas::finish()
{
    core_.picture.FillSpec(solid_fill(vCOLOUR(0, 0, 0)));
    page_.finish(core_);
    core_.picture.EndMetaFile();
}

void windows_canvas::save() { saved_.save(core_.state); }

void windows_canvas::restore(int which)
{
    constexpr int last = -1;
    const bool by_number = core_.policy.saves_whole_state && which != 0;
    auto restored = saved_.take(by_number ? which : last);
    if (!restored)
        return;
    if (core_.policy.saves_whole_state) {
        core_.state = std::move(*restored);
        attributes_.record_all();
        return;
    }
    auto& state = core_.state;
    restored->mapping.viewport_org = state.mapping.viewport_org;
    state.mapping = restored->mapping;
    state.text_colour = restored->text_colour;
    state.moves_points = restored->moves_points;
}

void windows_canvas::set_background_transparent(bool transparent)
{
    core_.picture.TextTransparency(transparent);
}

void windows_canvas::mapping_changed(const canvas_mapping& before)
{
    const auto& mapping = core_.state.mapping;
    if (before.window_ext() != mapping.window_ext() || before.viewport_ext() != mapping.viewport_ext()
        || before.world() != mapping.world())
        attributes_.mapping_rescaled();
}

} // namespace klv
