#pragma once

#include "klv/filters/windows/canvas_attributes.h"
#include "klv/filters/windows/canvas_bitmaps.h"
#include "klv/filters/windows/canvas_clip.h"
#include "klv/filters/windows/canvas_core.h"
#include "klv/filters/windows/canvas_figures.h"
#include "klv/filters/windows/canvas_page.h"
#include "klv/filters/windows/canvas_text.h"

namespace klv {

/// What the readers of the two Windows formats draw on: the drawing state and its stack, objects, mapping,
/// clip, figures, text and bitmaps of the graphics interface that those formats record. A decoder turns the
/// bytes of its format into these calls, in the order of the file; the canvas turns them into the drawing
/// calls of one recorded picture. It knows no file format.
///
///     windows_canvas canvas(picture, policy, object_numbers);
///     canvas.page().box(...);                    what the header says
///     canvas.start();
///     for each record {
///         canvas.before(what_follows::other);    what the record is
///         canvas.figures().polygon(points);      ... or text(), bitmaps(), attributes(), change_mapping()
///     }
///     canvas.settle();
///     canvas.finish();
///
/// Memory that runs out is std::bad_alloc.
class windows_canvas {
public:
    /// \param policy must outlive the canvas.
    /// \param object_numbers how many objects a file can have at a time
    windows_canvas(vMETAFILE& picture, const reading_policy& policy, std::size_t object_numbers);
    windows_canvas(const windows_canvas&) = delete;
    windows_canvas& operator=(const windows_canvas&) = delete;

    void start() { core_.state.mapping = page_.start(); }
    /// What the next record is. Line segments and bitmaps wait for more of their kind: a line may go on, a
    /// mask may get its image.
    enum class what_follows { line_segment, bitmap, other };
    void before(what_follows next);
    /// Draws what waits, and nothing after it. Call once the last record is read, also where reading failed.
    void settle();
    /// The picture's size and end. Call once, after settle.
    void finish();

    [[nodiscard]] const reading_policy& policy() const { return core_.policy; }
    [[nodiscard]] vMETAFILE& picture() { return core_.picture; }
    [[nodiscard]] const canvas_state& state() const { return core_.state; }

    [[nodiscard]] canvas_page& page() { return page_; }
    [[nodiscard]] canvas_clip& clip() { return clip_; }
    [[nodiscard]] canvas_attributes& attributes() { return attributes_; }
    [[nodiscard]] canvas_figures& figures() { return figures_; }
    [[nodiscard]] canvas_text& text() { return text_; }
    [[nodiscard]] canvas_bitmaps& bitmaps() { return bitmaps_; }

    // ---- State -----------------------------------------------------------------------------------------

    void save();
    /// which as canvas_state_stack::take has it; 0 is the last one saved.
    void restore(int which);
    void set_text_colour(COLORREF colour) { core_.state.text_colour = colour; }
    void set_background(COLORREF colour) { core_.state.background = colour; }
    void set_background_transparent(bool transparent);
    void set_text_align(std::uint16_t align) { core_.state.text_align = align; }
    /// R2_ values.
    void set_drawing_mode(std::uint16_t rop2) { core_.graduation.drawing_mode(rop2); }
    /// The fill of the next figure, which traces in the file stand for.
    void set_next_fill(const vFILLSPEC& fill) { core_.graduation.comment(fill); }

    /// Changes the mapping by change(mapping); pens and fonts follow where the policy says so.
    template <class Change> void change_mapping(Change change)
    {
        const canvas_mapping before = core_.state.mapping;
        change(core_.state.mapping);
        mapping_changed(before);
    }

private:
    void mapping_changed(const canvas_mapping& before);

    canvas_core core_;
    canvas_state_stack saved_;
    canvas_page page_;
    canvas_clip clip_;
    canvas_attributes attributes_;
    canvas_figures figures_;
    canvas_text text_;
    canvas_bitmaps bitmaps_;
};

} // namespace klv
