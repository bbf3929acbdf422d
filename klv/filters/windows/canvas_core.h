#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/filters/windows/canvas_state.h"
#include "klv/filters/windows/reading_policy.h"
#include "klv/filters/windows/strip_graduation.h"
#include "klv/filters/windows/text_measurer.h"

namespace klv {

class vMETAFILE;

/// What the parts of a canvas share: the picture that they draw into, how literally they take the file, and
/// the drawing state.
struct canvas_core {
    canvas_core(vMETAFILE& target, const reading_policy& how, const canvas_mapping& start)
        : picture(target)
        , policy(how)
        , state(start)
    {
    }

    /// A point of the file in picture units, moved into the clip rectangle or the documented range of
    /// coordinates where the policy wants that.
    [[nodiscard]] vPOINT map(double x, double y) const;
    [[nodiscard]] vRECT map(const RECT& rect) const;
    /// Call before anything is drawn.
    void record_clip();
    /// A rectangle without an outline, in picture units; pen and brush stay as they are.
    void fill_plainly(const vRECT& rect, const vFILLSPEC& fill);

    vMETAFILE& picture;
    const reading_policy& policy;
    canvas_state state;
    strip_graduation graduation;
    text_measurer measurer;

private:
    clip_recorder clips_;
};

} // namespace klv
