#include "klv/filters/wmf/wmf_reader.h"

#include "klv/core/integer_math.h"
#include "klv/core/progress.h"
#include "klv/filters/wmf/wmf_attributes.h"
#include "klv/metafiles/metafile.h"
#include "klv/streams/stream.h"
#include "klv/streams/stream_bytes.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>
#include <variant>

// Headers, the loop over the records, drawing state and the page.

namespace klv {
namespace {

// The page of a new picture, micrometres.
constexpr int default_page_width = 210000;
constexpr int default_page_height = 297000;
constexpr int micrometres_per_inch = 25400;

constexpr int default_extent = 1000;

// At the faithful level the longer side of the page has about this many picture units, so that what other
// programs drew in fine units does not collapse into the few units of a placeable box.
constexpr int fine_extent = 16000;

// A file of SAVEDC records alone may not cost more than this many states.
constexpr std::size_t most_saved_states = 1000;

// A clip area is recorded anew whenever it changes. Past this many rectangles in all, a file that changes it
// all the time gets bounds, so that the picture does not grow with the square of the file.
constexpr std::size_t most_clip_rectangles = 250000;

constexpr std::uint16_t winding_mode = 2;
constexpr std::uint16_t transparent_mode = 1;

int detail_for(const vPOINT& extent)
{
    const int longer = std::max(std::abs(extent.x), std::abs(extent.y));
    return std::max(1, fine_extent / std::max(1, longer));
}

vPOINT start_extent(const vMETAFILE& picture)
{
    const vPOINT extent(picture.LogicalWidth(), picture.LogicalHeight());
    return extent.x > 0 && extent.y > 0 ? extent : vPOINT(default_extent, default_extent);
}

std::int16_t to_word(int v) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(v & 0xFFFF)); }

wmf_pair read_pair(byte_reader& in)
{
    wmf_pair pair;
    wmf_read(in, pair);
    return pair;
}

} // namespace

wmf_reader::wmf_reader(vMETAFILE& picture, bool faithful, oPROGRESS* progress)
    : picture_(picture)
    , faithful_(faithful)
    , progress_(progress)
    , state_(wmf_mapping(start_extent(picture), 1))
{
    default_page_
        = picture.PhysicalWidth() == default_page_width && picture.PhysicalHeight() == default_page_height;
    sized_before_ = picture.LogicalWidth() > 0 && picture.LogicalHeight() > 0;
}

oFILTER_STATUS wmf_reader::read(vSTREAM& stream)
{
    const std::uint32_t start = stream.CurrentPos();
    const stream_bytes source(stream);
    byte_reader in(source.bytes());
    if (!read_headers(in))
        return oFILTER_FAILED;
    oFILTER_STATUS status = oFILTER_OK;
    try {
        status = read_all(in);
    } catch (const std::bad_alloc&) {
        status = oFILTER_NO_MEMORY;
    }
    if (status == oFILTER_OK && !source.complete())
        status = oFILTER_NO_MEMORY;
    finish_picture();
    stream.MoveFromStart(start + static_cast<std::uint32_t>(in.position()));
    return status;
}

bool wmf_reader::read_headers(byte_reader& in)
{
    wmf_placeable_header placeable;
    byte_reader ahead = in;
    vPOINT extent = state_.mapping.window_ext();
    vPOINT origin;
    if (wmf_read(ahead, placeable) && placeable.key == wmf_placeable_key) {
        in = ahead;
        placeable_ = placeable;
        extent = vPOINT(placeable.right - placeable.left, placeable.bottom - placeable.top);
        if (faithful_) {
            extent = vPOINT(std::abs(extent.x), std::abs(extent.y));
            origin = vPOINT(
                std::min(placeable.left, placeable.right), std::min(placeable.top, placeable.bottom));
        }
    }
    if (extent.x <= 0 || extent.y <= 0)
        extent = vPOINT(default_extent, default_extent);
    state_.mapping = wmf_mapping(extent, faithful_ ? detail_for(extent) : 1);
    state_.mapping.window_org = origin;

    if (!wmf_read(in, header_) || !header_.valid())
        return false;
    in.skip(header_.header_words * std::size_t{2} - wmf_header_size);
    return true;
}

oFILTER_STATUS wmf_reader::read_all(byte_reader& in)
{
    const std::uint32_t words
        = header_.file_words > header_.header_words ? header_.file_words - header_.header_words : 0;
    if (progress_) {
        progress_->oStart();
        progress_->oFullScale(words);
    }
    const auto status = read_records(in);
    flush_lines();
    blits_.flush(picture_);
    if (progress_)
        progress_->oTerminate();
    return status;
}

oFILTER_STATUS wmf_reader::read_records(byte_reader& in)
{
    std::uint64_t words_left
        = header_.file_words > header_.header_words ? header_.file_words - header_.header_words : 0;
    oFILTER_STATUS status = oFILTER_OK;
    // Some programs leave the file's size 0 or too small, so the faithful level goes by the bytes there are.
    while (faithful_ ? !in.at_end() : words_left > 0) {
        const auto record = next_record(in, status);
        if (!record)
            return status;
        if (progress_) {
            progress_->oIncrement(record->words);
            if (progress_->Stop())
                return oFILTER_CANCELLED;
        }
        if (faithful_ && record->function == wmf_function::end_of_file)
            return status;
        handle(*record);
        words_left -= std::min<std::uint64_t>(words_left, record->words);
    }
    return status;
}

// Nothing at the end of the records; the status then says whether that end was a proper one.
std::optional<wmf_record> wmf_reader::next_record(byte_reader& in, oFILTER_STATUS& status) const
{
    if (in.left() < sizeof(std::uint32_t)) {
        status = oFILTER_OK;
        in.skip(in.left());
        return std::nullopt;
    }
    wmf_record record;
    record.words = in.u32le();
    const bool too_long = record.words > header_.largest_record_words;
    if (record.words < wmf_shortest_record_words || (too_long && !faithful_)) {
        status = oFILTER_FAILED;
        return std::nullopt;
    }
    record.function = static_cast<wmf_function>(in.u16le());
    record.parameters = in.bytes(record.words * std::size_t{2} - wmf_record_head_size);
    if (!in.ok()) {
        status = oFILTER_FAILED;
        return std::nullopt;
    }
    return record;
}

void wmf_reader::handle(const wmf_record& record)
{
    byte_reader in(record.parameters);
    if (record.function == wmf_function::line_to) {
        const auto to = read_pair(in);
        line_to(vPOINT(to.x, to.y));
        return;
    }
    flush_lines();
    if (handle_bitmap(record, in))
        return;
    blits_.flush(picture_);
    if (!handle_figure(record, in) && !handle_state(record, in) && !handle_object(record, in))
        handle_text(record, in);
}

bool wmf_reader::handle_state(const wmf_record& record, byte_reader& in)
{
    switch (record.function) {
    case wmf_function::set_text_color:
        state_.text_colour = in.u32le();
        return true;
    case wmf_function::set_bk_color:
        state_.background = in.u32le();
        return true;
    case wmf_function::set_bk_mode:
        picture_.TextTransparency(in.u16le() == transparent_mode);
        return true;
    case wmf_function::set_text_align:
        state_.text_align = in.u16le();
        return true;
    case wmf_function::set_poly_fill_mode:
        state_.winding = in.u16le() == winding_mode;
        if (faithful_)
            select_brush();
        return true;
    case wmf_function::set_rop2:
        graduation_.drawing_mode(in.u16le());
        return true;
    case wmf_function::set_window_org:
    case wmf_function::set_window_ext:
    case wmf_function::set_viewport_org:
    case wmf_function::set_viewport_ext:
    case wmf_function::offset_window_org:
    case wmf_function::offset_viewport_org:
    case wmf_function::scale_window_ext:
    case wmf_function::scale_viewport_ext:
        change_mapping(record.function, in);
        return true;
    case wmf_function::intersect_clip_rect:
    case wmf_function::exclude_clip_rect:
    case wmf_function::offset_clip_rgn:
        change_clip(record.function, in);
        return true;
    case wmf_function::select_clip_region:
        select_clip_region(in.u16le());
        return true;
    case wmf_function::save_dc:
        save_state();
        return true;
    case wmf_function::restore_dc:
        restore_state(in.i16le());
        return true;
    case wmf_function::escape:
        handle_escape(in);
        return true;
    default:
        return false;
    }
}

void wmf_reader::change_mapping(wmf_function function, byte_reader& in)
{
    auto& mapping = state_.mapping;
    const auto before = mapping;
    const auto moved = [](const vPOINT& by, const wmf_pair& p) {
        return vPOINT(to_word(by.x + p.x), to_word(by.y + p.y));
    };
    switch (function) {
    case wmf_function::scale_window_ext:
        scale_extent(true, in);
        break;
    case wmf_function::scale_viewport_ext:
        scale_extent(false, in);
        break;
    default: {
        const auto pair = read_pair(in);
        if (!in.ok())
            return;
        const vPOINT point(pair.x, pair.y);
        if (function == wmf_function::set_window_org)
            mapping.window_org = point;
        else if (function == wmf_function::offset_window_org)
            mapping.window_org = moved(mapping.window_org, pair);
        else if (function == wmf_function::set_viewport_org)
            mapping.viewport_org = point;
        else if (function == wmf_function::offset_viewport_org)
            mapping.viewport_org = moved(mapping.viewport_org, pair);
        else if (function == wmf_function::set_viewport_ext)
            mapping.viewport_ext(point);
        else {
            mapping.window_ext(point);
            has_window_ = true;
        }
    }
    }
    const bool rescaled
        = before.window_ext() != mapping.window_ext() || before.viewport_ext() != mapping.viewport_ext();
    if (faithful_ && rescaled) {
        select_pen();
        select_font();
    }
}

void wmf_reader::scale_extent(bool window, byte_reader& in)
{
    wmf_scale by;
    if (!wmf_read(in, by) || by.x_denominator == 0 || by.y_denominator == 0)
        return;
    auto& mapping = state_.mapping;
    const vPOINT& extent = window ? mapping.window_ext() : mapping.viewport_ext();
    const vPOINT scaled(to_word(extent.x * by.x_numerator / by.x_denominator),
        to_word(extent.y * by.y_numerator / by.y_denominator));
    if (window)
        mapping.window_ext(scaled);
    else
        mapping.viewport_ext(scaled);
}

void wmf_reader::save_state()
{
    if (saved_.size() < most_saved_states)
        saved_.push_back(state_);
}

// Negative counts back from the last state saved, positive names a state by its place from 1.
void wmf_reader::restore_state(int which)
{
    if (saved_.empty())
        return;
    const auto count = static_cast<int>(saved_.size());
    int place = count - 1;
    if (faithful_ && which != 0)
        place = which < 0 ? count + which : which - 1;
    if (place < 0 || place >= count)
        return;
    const wmf_state before = std::move(state_);
    state_ = std::move(saved_[static_cast<std::size_t>(place)]);
    saved_.erase(saved_.begin() + place, saved_.end());
    apply_state(before);
}

// What the picture needs to be told after a restore.
void wmf_reader::apply_state(const wmf_state& before)
{
    if (faithful_) {
        select_pen();
        select_brush();
        select_font();
        return;
    }
    // The documented level saves the mapping, the text colour and whether points are clipped.
    wmf_state restored = before;
    restored.mapping = state_.mapping;
    restored.mapping.viewport_org = before.mapping.viewport_org;
    restored.text_colour = state_.text_colour;
    restored.clipping = state_.clipping;
    state_ = std::move(restored);
}

void wmf_reader::change_clip(wmf_function function, byte_reader& in)
{
    if (function == wmf_function::offset_clip_rgn) {
        const auto by = read_pair(in);
        if (faithful_)
            state_.clip.move(vPOINT(state_.mapping.map_width(by.x), state_.mapping.map_height(by.y)));
    } else {
        wmf_rect rect;
        if (!wmf_read(in, rect))
            return;
        const vRECT scaled(
            state_.mapping.map(rect.left, rect.top), state_.mapping.map(rect.right, rect.bottom));
        if (function == wmf_function::exclude_clip_rect) {
            if (faithful_)
                state_.clip.exclude(scaled);
        } else {
            if (faithful_)
                state_.clip.intersect(scaled);
            state_.clip_rect = scaled;
            state_.clipping = true;
        }
    }
}

// A number that names no region takes the clip area away.
void wmf_reader::select_clip_region(std::size_t object_number)
{
    const auto* object = objects_.find(object_number);
    if (!object || !std::holds_alternative<wmf_reserved_object>(*object))
        state_.clip = wmf_clip_area();
}

void wmf_reader::record_clip()
{
    if (!faithful_ || state_.clip == recorded_clip_)
        return;
    clip_rectangles_ += state_.clip.record(picture_, clip_recorded_, clip_rectangles_ < most_clip_rectangles);
    recorded_clip_ = state_.clip;
    clip_recorded_ = !recorded_clip_.whole();
}

void wmf_reader::handle_escape(byte_reader& in)
{
    const auto function = in.u16le();
    const auto count = in.u16le();
    if (function != wmf_comment_escape || !in.holds(count))
        return;
    const auto comment = in.bytes(count);
    if (const auto fill = read_wmf_fill_comment(comment))
        graduation_.comment(*fill);
    else if (!transparent_bitmap_.start(comment))
        transparent_bitmap_.end(comment, picture_, state_.mapping);
}

void wmf_reader::finish_picture()
{
    picture_.FillSpec(wmf_solid_fill(vCOLOUR(0, 0, 0)));
    set_extents();
    picture_.EndMetaFile();
}

void wmf_reader::set_extents()
{
    const int detail = state_.mapping.detail();
    if (placeable_) {
        const int box_width = std::abs(placeable_->right - placeable_->left);
        const int box_height = std::abs(placeable_->bottom - placeable_->top);
        const bool sized = box_width > 0 && box_height > 0;
        int width = sized ? box_width * detail : default_extent * detail;
        int height = sized ? box_height * detail : default_extent * detail;
        if (!faithful_) {
            width = std::max(width, picture_.LogicalWidth());
            height = std::max(height, picture_.LogicalHeight());
        }
        const int units = std::max<int>(1, placeable_->units_per_inch) * detail;
        picture_.PhysicalExtents(
            MulDiv(width, micrometres_per_inch, units), MulDiv(height, micrometres_per_inch, units));
        picture_.LogicalExtents(0, width, 0, height);
        return;
    }
    if (default_page_) {
        // The page takes the proportions of the window; the coordinates span what they were mapped into.
        vPOINT window(std::abs(state_.mapping.window_ext().x), std::abs(state_.mapping.window_ext().y));
        vRECT space = state_.mapping.viewport();
        const bool drawn_size = sized_before_
            || (faithful_ && !has_window_ && picture_.LogicalWidth() > 0 && picture_.LogicalHeight() > 0);
        if (drawn_size) {
            window = vPOINT(picture_.LogicalWidth(), picture_.LogicalHeight());
            space = vRECT(vPOINT(picture_.LogicalXOffset(), picture_.LogicalYOffset()), window.x, window.y);
        }
        if (window.y < window.x)
            picture_.PhysicalExtents(default_page_width, MulDiv(window.y, default_page_width, window.x));
        else
            picture_.PhysicalExtents(MulDiv(window.x, default_page_height, window.y), default_page_height);
        picture_.LogicalExtents(space.Left(), space.Right(), space.Top(), space.Bottom());
    }
    const int left = picture_.LogicalXOffset();
    const int top = picture_.LogicalYOffset();
    picture_.LogicalExtents(left, left + picture_.LogicalWidth(), top, top + picture_.LogicalHeight());
}

} // namespace klv
