#include "klv/metafiles/metafile.h"

#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/core/collection.h"
#include "klv/core/progress.h"
#include "klv/metafiles/detail/record_stream.h"
#include "klv/metafiles/metafile_records.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace klv {

namespace {

std::shared_ptr<vSTREAM> new_memory_stream()
try {
    constexpr std::uint32_t create_mode = 0x40000000;
    return std::allocate_shared<vMEMSTREAM>(
        vALLOCATOR<vMEMSTREAM>(), vSTRING("QXJCD_tmpMetafileStream"), create_mode);
} catch (const std::bad_alloc&) {
    return nullptr;
}

} // namespace

vMETAFILE::vMETAFILE() noexcept
    : owned_stream_(new_memory_stream())
{
    vDEVICE::LogUnitsPerHorzInch(units_per_inch);
    vDEVICE::LogUnitsPerVertInch(units_per_inch);
    if (owned_stream_)
        vMETAFILE::Constructor(*owned_stream_);
}

vMETAFILE::vMETAFILE(vSTREAM& stream) noexcept
{
    vDEVICE::LogUnitsPerHorzInch(units_per_inch);
    vDEVICE::LogUnitsPerVertInch(units_per_inch);
    vMETAFILE::Constructor(stream);
}

vMETAFILE& vMETAFILE::operator=(vMETAFILE& other) noexcept
{
    if (this == &other)
        return *this;
    vDEVICE::operator=(other);
    status_ = other.status_;
    owned_stream_ = other.owned_stream_;
    stream_ = other.stream_;
    progress_ = other.progress_;
    text_replay_ = other.text_replay_;
    x0_ = other.x0_;
    x1_ = other.x1_;
    y0_ = other.y0_;
    y1_ = other.y1_;
    physical_width_ = other.physical_width_;
    physical_height_ = other.physical_height_;
    record_count_ = other.record_count_;
    native_ = other.native_;
    last_point_ = other.last_point_;
    return *this;
}

vMETAFILE::~vMETAFILE() = default;

vMETAFILE& vMETAFILE::operator>>(vSTREAM& out) noexcept
{
    if (stream_) {
        stream_->MoveFromStart(0);
        out = *stream_;
    }
    return *this;
}

vMETAFILE& vMETAFILE::operator<<(vSTREAM& in) noexcept
{
    if (stream_) {
        stream_->MoveFromStart(0);
        *stream_ = in;
        Constructor(*stream_);
    }
    return *this;
}

int vMETAFILE::LogicalWidth() const noexcept { return wrap_abs(wrap_sub(x1_, x0_)); }

int vMETAFILE::LogicalHeight() const noexcept { return wrap_abs(wrap_sub(y1_, y0_)); }

int vMETAFILE::LogicalXOffset() const noexcept { return std::min(x0_, x1_); }

int vMETAFILE::LogicalYOffset() const noexcept { return std::min(y0_, y1_); }

std::uint32_t vMETAFILE::Length() const noexcept { return stream_ ? stream_->Size() : 0; }

oPROGRESS* vMETAFILE::RemoveProgressInd() noexcept { return std::exchange(progress_, nullptr); }

void vMETAFILE::UpdateExtents(int x, int y) noexcept
{
    if (x0_ == unset_extent && x1_ == unset_extent)
        x0_ = x1_ = x;
    if (y0_ == unset_extent && y1_ == unset_extent)
        y0_ = y1_ = y;
    x0_ = std::min(x0_, x);
    x1_ = std::max(x1_, x);
    y0_ = std::min(y0_, y);
    y1_ = std::max(y1_, y);
}

void vMETAFILE::update_extents(const vRECT& rect) noexcept
{
    UpdateExtents(rect.Left(), rect.Top());
    UpdateExtents(rect.Right(), rect.Bottom());
}

template <class Record, class... Fields> void vMETAFILE::append(const Fields&... fields) noexcept
{
    count_record();
    if (!stream_)
        return;
    record_writer out(*stream_);
    Record::write(out, fields...);
}

template <class Record> void vMETAFILE::append_whole(const Record& what) noexcept
{
    count_record();
    if (!stream_)
        return;
    record_writer out(*stream_);
    what.write(out);
}

// Attributes

void vMETAFILE::LogUnitsPerHorzInch(const int& units) noexcept { vDEVICE::LogUnitsPerHorzInch(units); }
int vMETAFILE::LogUnitsPerHorzInch() const noexcept { return vDEVICE::LogUnitsPerHorzInch(); }
void vMETAFILE::LogUnitsPerVertInch(const int& units) noexcept { vDEVICE::LogUnitsPerVertInch(units); }
int vMETAFILE::LogUnitsPerVertInch() const noexcept { return vDEVICE::LogUnitsPerVertInch(); }

void vMETAFILE::PushState() noexcept { vDEVICE::PushState(); }
void vMETAFILE::PopState() noexcept { vDEVICE::PopState(); }
void vMETAFILE::PushLineSpec() noexcept { vDEVICE::PushLineSpec(); }
void vMETAFILE::PopLineSpec() noexcept { vDEVICE::PopLineSpec(); }
void vMETAFILE::PushFillSpec() noexcept { vDEVICE::PushFillSpec(); }
void vMETAFILE::PopFillSpec() noexcept { vDEVICE::PopFillSpec(); }
void vMETAFILE::PushFontSpec() noexcept { vDEVICE::PushFontSpec(); }
void vMETAFILE::PopFontSpec() noexcept { vDEVICE::PopFontSpec(); }
void vMETAFILE::PushClipArea() noexcept { vDEVICE::PushClipArea(); }
void vMETAFILE::PopClipArea() noexcept { vDEVICE::PopClipArea(); }

void vMETAFILE::LineSpec(const vLINESPEC& spec) noexcept
{
    append<line_spec_record>(spec);
    vDEVICE::LineSpec(spec);
}

void vMETAFILE::FillSpec(const vFILLSPEC& spec) noexcept
{
    append<fill_spec_record>(spec);
    vDEVICE::FillSpec(spec);
}

void vMETAFILE::FontSpec(const vFONTSPEC& spec) noexcept { append<font_spec_record>(spec); }

void vMETAFILE::ClipArea(const vSHAPE& shape) noexcept { append<clip_area_record>(shape); }

void vMETAFILE::ClipArea(const vRECT&) noexcept { }

void vMETAFILE::TextTransparency(int transparent) noexcept
{
    const auto low_word = static_cast<std::uint16_t>(static_cast<std::uint32_t>(transparent) & 0xFFFF);
    append_whole(text_transparency_record{static_cast<std::int16_t>(low_word)});
}

// Figures

void vMETAFILE::DrawLine(const vPOINT& from, const vPOINT& to) noexcept
{
    const vPOINT ends[] = {from, to};
    DrawLine(std::span<const vPOINT>(ends));
}

void vMETAFILE::DrawLine(std::span<const vPOINT> points) noexcept
{
    for (const vPOINT& p : points)
        UpdateExtents(p.x, p.y);
    while (points.size() > polyline_record::max_points) {
        append<polyline_record>(points.first(polyline_record::max_points));
        points = points.subspan(polyline_record::max_points - 1);
    }
    append<polyline_record>(points);
}

void vMETAFILE::DrawLine(int count, vCOLLECTION& points) noexcept
try {
    const std::size_t n = std::clamp<std::size_t>(count < 0 ? 0 : count, 0, polyline_record::max_points);
    std::vector<vPOINT, vALLOCATOR<vPOINT>> line;
    line.reserve(n);
    for (std::size_t i = 0; i < n; ++i)
        line.push_back(points.GetPoint(static_cast<std::uint16_t>(i)));
    DrawLine(std::span<const vPOINT>(line));
} catch (const std::bad_alloc&) {
    // Without memory the line is left out.
}

void vMETAFILE::DrawRect(const vRECT& rect) noexcept
{
    update_extents(rect);
    append_whole(rectangle_record{rect});
}

void vMETAFILE::DrawRoundRect(const vRECT& rect, const vSIZE& corner) noexcept
{
    update_extents(rect);
    append_whole(round_rectangle_record{rect, corner});
}

void vMETAFILE::DrawEllipse(const vRECT& rect) noexcept
{
    update_extents(rect);
    append_whole(ellipse_record{rect});
}

void vMETAFILE::DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    update_extents(rect);
    append_whole(arc_record{record_code::arc, rect, start, end});
}

void vMETAFILE::DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    update_extents(rect);
    append_whole(arc_record{record_code::pie, rect, start, end});
}

void vMETAFILE::DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    update_extents(rect);
    append_whole(arc_record{record_code::chord, rect, start, end});
}

void vMETAFILE::DrawShape(const vSHAPE& shape) noexcept
{
    if (shape.IsValid()) // else it has no box
        update_extents(shape.BoundBox());
    append<shape_record>(shape);
}

void vMETAFILE::DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align) noexcept
{
    update_extents(rect);
    append<text_record>(text, rect, static_cast<std::uint16_t>(align));
}

int vMETAFILE::DrawTextA(
    const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int, const vPOINT&, double) noexcept
{
    DrawTextA(text, rect, align);
    return 1;
}

void vMETAFILE::DrawTextOnLine(const vSTRING& text, const vPOINT& start, const short*) noexcept
{
    UpdateExtents(start.x, start.y);
    append<text_on_line_record>(text, start);
}

int vMETAFILE::DrawTextOnLine(const vSTRING& text, const vPOINT& start, const short* advances, int) noexcept
{
    DrawTextOnLine(text, start, advances);
    return 1;
}

void vMETAFILE::RecordPushClipArea() noexcept { append_whole(state_record{record_code::push_clip}); }

void vMETAFILE::RecordPopClipArea() noexcept { append_whole(state_record{record_code::pop_clip}); }

void vMETAFILE::DrawChar(const vCHAR&, const vPOINT&, std::uint16_t) noexcept { count_record(); }

void vMETAFILE::DrawDIB(const oDIB& bitmap, oDIBCONTEXT& context, vRECT* rect, int small) noexcept
{
    if (!stream_)
        return;
    bitmap_record fields;
    // A turned bitmap is stored as it looks in the bounds of its destination.
    const vRECT& place = context.GetRotAngle() != 0 ? context.GetBoundingRect() : context.GetDstRect();
    fields.destination = rect ? *rect : place;
    fields.transparency = context.GetTransparency();
    fields.transparent_colour = context.GetTransColour();
    fields.threshold = context.GetTransThreshold();
    if (bitmap.Width() <= 0)
        return; // no reader could tell where the record ends

    update_extents(fields.destination);
    const oDIB* stored = CreateExportDIB(bitmap, context, small);
    count_record();
    record_writer out(*stream_);
    fields.write(out, *stored);
    if (stored != &bitmap)
        delete stored;
}

void vMETAFILE::EndMetaFile() noexcept
{
    if (stream_)
        stream_->MoveFromEnd(0);
    append_whole(end_record());
    LogicalExtents(x0_, x1_, y0_, y1_);
}

void vMETAFILE::LastPoint(POINT& point) noexcept { point = last_point_; }

} // namespace klv
