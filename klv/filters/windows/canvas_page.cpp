#include "klv/filters/windows/canvas_page.h"

#include "klv/core/integer_math.h"
#include "klv/filters/windows/canvas_core.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cstdlib>

namespace klv {
namespace {

// The page of a new picture, micrometres.
constexpr int default_page_width = 210000;
constexpr int default_page_height = 297000;
constexpr int micrometres_per_inch = 25400;

constexpr int default_extent = 1000;

// The longer side of the page has about this many fine units, so that what other programs drew in fine units
// does not collapse into the few units of a placeable box.
constexpr int fine_extent = 16000;

bool is_area(const vPOINT& extent) { return extent.x > 0 && extent.y > 0; }

vPOINT magnitude(const vPOINT& p) { return {std::abs(p.x), std::abs(p.y)}; }

int detail_for(const vPOINT& extent)
{
    const int longer = std::max(std::abs(extent.x), std::abs(extent.y));
    return std::max(1, fine_extent / std::max(1, longer));
}

} // namespace

canvas_page::canvas_page(const vMETAFILE& picture, const reading_policy& policy)
    : policy_(policy)
    , picture_size_(picture.LogicalWidth(), picture.LogicalHeight())
    , default_page_(
          picture.PhysicalWidth() == default_page_width && picture.PhysicalHeight() == default_page_height)
{
}

canvas_mapping canvas_page::start() const
{
    vPOINT extent = is_area(picture_size_) ? picture_size_ : vPOINT(default_extent, default_extent);
    vPOINT origin;
    if (box_) {
        extent = box_size();
        if (policy_.takes_box_from_any_corner) {
            extent = magnitude(extent);
            origin = vPOINT(std::min(box_->left, box_->right), std::min(box_->top, box_->bottom));
        }
    }
    if (!is_area(extent))
        extent = vPOINT(default_extent, default_extent);
    canvas_mapping mapping(extent, policy_.uses_fine_units ? detail_for(extent) : 1);
    mapping.window_org = origin;
    return mapping;
}

void canvas_page::finish(canvas_core& core) const
{
    auto& picture = core.picture;
    if (box_) {
        finish_box(core);
        return;
    }
    if (default_page_)
        finish_default_page(core);
    const int left = picture.LogicalXOffset();
    const int top = picture.LogicalYOffset();
    picture.LogicalExtents(left, left + picture.LogicalWidth(), top, top + picture.LogicalHeight());
}

void canvas_page::finish_box(canvas_core& core) const
{
    auto& picture = core.picture;
    const int detail = core.state.mapping.detail();
    const vPOINT size = magnitude(box_size());
    int width = is_area(size) ? size.x * detail : default_extent * detail;
    int height = is_area(size) ? size.y * detail : default_extent * detail;
    if (!policy_.lets_file_size_page) {
        width = std::max(width, picture.LogicalWidth());
        height = std::max(height, picture.LogicalHeight());
    }
    const int units = std::max(1, box_->units_per_inch) * detail;
    picture.PhysicalExtents(
        MulDiv(width, micrometres_per_inch, units), MulDiv(height, micrometres_per_inch, units));
    picture.LogicalExtents(0, width, 0, height);
}

// The page takes the proportions of the window; the coordinates span what they were mapped into.
void canvas_page::finish_default_page(canvas_core& core) const
{
    auto& picture = core.picture;
    const auto& mapping = core.state.mapping;
    const vPOINT drawn(picture.LogicalWidth(), picture.LogicalHeight());
    vPOINT window = magnitude(mapping.window_ext());
    vRECT space = mapping.viewport();
    if (is_area(picture_size_) || (policy_.lets_file_size_page && !has_window_ && is_area(drawn))) {
        window = drawn;
        space = vRECT(vPOINT(picture.LogicalXOffset(), picture.LogicalYOffset()), window.x, window.y);
    }
    if (window.y < window.x)
        picture.PhysicalExtents(default_page_width, MulDiv(window.y, default_page_width, window.x));
    else
        picture.PhysicalExtents(MulDiv(window.x, default_page_height, window.y), default_page_height);
    picture.LogicalExtents(space.Left(), space.Right(), space.Top(), space.Bottom());
}

} // namespace klv
