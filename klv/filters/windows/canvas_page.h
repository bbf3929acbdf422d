#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/filters/windows/canvas_mapping.h"
#include "klv/filters/windows/reading_policy.h"

#include <cstdint>
#include <optional>

namespace klv {

struct canvas_core;
class vMETAFILE;

/// The box that a file's header gives for its page, in the file's units, corners as they stand there.
struct page_box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int units_per_inch = 0;
};

/// The page that a file is drawn on: where its coordinates start, and the size that the picture gets at the
/// end.
class canvas_page {
public:
    canvas_page(const vMETAFILE& picture, const reading_policy& policy);

    /// The file's header names a box. Call it, if at all, before start.
    void box(const page_box& box) { box_ = box; }
    /// The mapping before the first record.
    [[nodiscard]] canvas_mapping start() const;
    /// The file set an extent of its window.
    void window_set() { has_window_ = true; }
    /// Gives the picture its size.
    void finish(canvas_core& core) const;

private:
    [[nodiscard]] vPOINT box_size() const { return {box_->right - box_->left, box_->bottom - box_->top}; }
    void finish_box(canvas_core& core) const;
    void finish_default_page(canvas_core& core) const;

    const reading_policy& policy_;
    vPOINT picture_size_; ///< logical, before the conversion
    bool default_page_; ///< the picture's page was the library's default
    std::optional<page_box> box_;
    bool has_window_ = false;
};

} // namespace klv
