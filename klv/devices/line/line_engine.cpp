#include "klv/devices/line/line_engine.h"

#include "klv/devices/device.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <numeric>

namespace klv {
namespace {

constexpr int widest_line = 32767;
constexpr int widest_pen = 3;
constexpr int narrowest_round = 10;
constexpr int extended_cap = 2;
constexpr int flat_cap = 1;
// A native metafile has no clip box, but its coordinates have 16 bits.
constexpr RECT metafile_reach{-32768, -32768, 32767, 32767};

line_join join_of(vCORNERTYPE corner) noexcept
{
    return corner == vCORNER_ROUND ? line_join::round
        : corner == vCORNER_MITRE  ? line_join::mitre
                                   : line_join::bevel;
}

// Colours within 15 of black or white in every channel: a pen shows them truly on every surface.
bool is_nearly_pure(COLORREF colour) noexcept
{
    constexpr COLORREF far_from_pure = 0xF0F0F0;
    constexpr std::uint8_t top_bit = 0x80;
    const auto fold = [](std::uint8_t c) -> unsigned { return c & top_bit ? c ^ 0xFFU : c; };
    return (RGB(fold(GetRValue(colour)), fold(GetGValue(colour)), fold(GetBValue(colour))) & far_from_pure)
        == 0;
}

} // namespace

void LINEINFO::Init(vDEVICE& device) noexcept
{
    const vLINESPEC& line = device.LineSpec();
    device_ = &device;
    dc_ = device.ActivateDC();
    const int thinnest = device.RecordsNatively() ? 1 : ThinnestLine(dc_);
    width_ = std::clamp(device.LHtoDH(line.Width()), thinnest, widest_line);
    dashed_ = line.LineType() != vLINE_SOLID;
    join_ = join_of(line.CornerType());
    cap_ = line.DashType();
    continuing_ = false;
    run_points_ = 0;
    if (dashed_)
        take_dashes(device);

    method_ = choose_method(device);
    if (method_ == line_method::polygons) {
        if (width_ < narrowest_round) {
            cap_ = flat_cap;
            if (join_ == line_join::round)
                join_ = line_join::bevel;
        } else if (join_ == line_join::round || cap_ == round_cap) {
            circle_ = circle_table(width_);
        }
    }

    if (device.RecordsNatively() || GetClipBox(dc_, &reach_) == ERROR_REGION)
        reach_ = metafile_reach;
    const int margin = width_ + width_ / 2 + 2;
    reach_ = {reach_.left - margin, reach_.top - margin, reach_.right + margin, reach_.bottom + margin};

    list_ = &vDEVICE::GetListInfo();
    list_->ClearPolygons();
    select_objects(device);
}

void LINEINFO::take_dashes(vDEVICE& device) noexcept
{
    const vLINESPEC& line = device.LineSpec();
    const int unit = (width_ + 1) >> 1;
    for (std::size_t i = 0; i < pattern_length; ++i)
        pattern_[i] = line.Pattern(static_cast<unsigned short>(i)) * unit;
    if (cap_ == extended_cap) {
        for (std::size_t i = 0; i < pattern_length; i += 2) {
            if (pattern_[i] > 0)
                pattern_[i] += width_;
            if (pattern_[i] - width_ > 0)
                pattern_[i + 1] = pattern_[i] - width_;
        }
    }
    period_ = std::accumulate(pattern_.begin(), pattern_.end(), std::int64_t{0});
    // A pattern of zeros has no element to draw with; it draws solid.
    dashed_ = period_ > 0;
    dash_index_ = 0;
    dash_rest_ = pattern_[0];
}

line_method LINEINFO::choose_method(vDEVICE& device) const noexcept
{
    const bool thin = width_ == 1 || (width_ <= widest_pen && !dashed_);
    if (!thin)
        return line_method::polygons;
    if (vDEVICE::FastUpdate() || device.RecordsNatively())
        return line_method::pen;
    return is_nearly_pure(device.NearestColour(device.LineSpec().Colour())) ? line_method::pen
                                                                            : line_method::squares;
}

void LINEINFO::select_objects(vDEVICE& device) noexcept
{
    const vCOLOUR& colour = device.LineSpec().Colour();
    const bool fast = vDEVICE::FastUpdate() != 0;
    created_pen_ = nullptr;
    created_brush_ = nullptr;
    saved_pen_ = saved_brush_ = nullptr;
    switch (method_) {
    case line_method::polygons:
        saved_pen_ = SelectObject(dc_, GetStockObject(fast ? BLACK_PEN : NULL_PEN));
        if (!fast)
            created_brush_ = device.CreateBrush(colour);
        saved_brush_ = SelectObject(dc_, fast ? GetStockObject(NULL_BRUSH) : created_brush_);
        break;
    case line_method::pen:
        colour_ = fast ? RGB(0, 0, 0) : device.NearestColour(colour);
        if (!fast)
            created_pen_ = CreatePen(PS_INSIDEFRAME, width_, colour_);
        saved_pen_ = SelectObject(dc_, fast ? GetStockObject(BLACK_PEN) : created_pen_);
        break;
    case line_method::squares:
        created_brush_ = device.CreateBrush(colour);
        saved_brush_ = SelectObject(dc_, created_brush_);
        break;
    }
}

void LINEINFO::Term() noexcept
{
    if (!device_)
        return;
    if (saved_pen_)
        SelectObject(dc_, saved_pen_);
    if (saved_brush_)
        SelectObject(dc_, saved_brush_);
    if (created_pen_)
        DeleteObject(created_pen_);
    if (created_brush_)
        DeleteObject(created_brush_);
    list_->ClearPolygons();
    device_->ReleaseWinDC();
    device_ = nullptr;
    dc_ = nullptr;
}

int LINEINFO::segment(const POINT& from, const POINT& to) noexcept
{
    if (dashed_)
        DottedLineSegment(from, to);
    else
        StraightLineSegment(from, to);
    return 0;
}

void LINEINFO::StraightLineSegment(const POINT& from, const POINT& to) noexcept
{
    if (from == to)
        return;
    switch (method_) {
    case line_method::polygons:
        ThickLineSegment(from, to, CalcLineCoefs(from, to, width_));
        break;
    case line_method::pen:
        pen_segment(from, to);
        break;
    case line_method::squares:
        LineDDA(from, to);
        break;
    }
}

void LINEINFO::PartLineSegment(const POINT& from, const POINT& to, const line_offsets& offsets) noexcept
{
    if (method_ == line_method::polygons)
        ThickLineSegment(from, to, offsets);
    else
        StraightLineSegment(from, to);
}

void LINEINFO::ThickLineSegment(const POINT& from, const POINT& to, const line_offsets& offsets) noexcept
{
    LISTINFO& list = *list_;
    const POINT start_a = continuing_ ? edge_a_ : from + offsets.a;
    const POINT start_b = continuing_ ? edge_b_ : from - offsets.b;
    edge_b_ = to - offsets.b;
    edge_a_ = to + offsets.a;
    continuing_ = true;

    int count = list.AppendPoint(start_a);
    count += list.AppendPoint(start_b);
    count += list.AppendPoint(edge_b_);
    count += list.AppendPoint(edge_a_);
    count += list.AppendPoint(start_a);
    list.AppendCount(count);
}

void LINEINFO::CornerSegment(const POINT& before, const POINT& at, const POINT& after) noexcept
{
    if (method_ != line_method::polygons || !in_dash())
        return;
    continuing_ = false;
    AppendJoin(*list_, before, at, after, width_, join_, circle_);
}

void LINEINFO::EndOfContour() noexcept
{
    switch (method_) {
    case line_method::polygons:
        continuing_ = false;
        paint_polygons();
        break;
    case line_method::pen:
        paint_pen_runs();
        break;
    case line_method::squares:
        break;
    }
}

void LINEINFO::paint_polygons() noexcept
{
    LISTINFO& list = *list_;
    const std::span<const POINT> points = list.Points();
    const std::span<const int> counts = list.Counts();
    if (GetDeviceCaps(dc_, TECHNOLOGY) == DT_RASDISPLAY) {
        // One winding fill unites pieces that overlap; every piece turns the same way.
        const int mode = SetPolyFillMode(dc_, WINDING);
        if (!counts.empty())
            PolyPolygon(dc_, points.data(), counts.data(), static_cast<int>(counts.size()));
        SetPolyFillMode(dc_, mode);
    } else {
        const POINT* piece = points.data();
        for (const int count : counts) {
            Polygon(dc_, piece, count);
            piece += count;
        }
    }
    list.ClearPolygons();
}

void LINEINFO::pen_segment(const POINT& from, const POINT& to) noexcept
{
    LISTINFO& list = *list_;
    if (run_points_ == 0 || run_end_ != from) {
        end_pen_run();
        run_points_ = list.AppendPoint(from);
    }
    run_points_ += list.AppendPoint(to);
    run_end_ = to;
}

void LINEINFO::end_pen_run() noexcept
{
    if (run_points_ > 0)
        list_->AppendCount(run_points_);
    run_points_ = 0;
}

void LINEINFO::paint_pen_runs() noexcept
{
    end_pen_run();
    LISTINFO& list = *list_;
    const POINT* run = list.Points().data();
    for (const int count : list.Counts()) {
        Polyline(dc_, run, count);
        run += count;
    }
    // A pen leaves out the last pixel of the last run.
    if (!list.Points().empty())
        SetPixelV(dc_, list.Points().back().x, list.Points().back().y, colour_);
    list.ClearPolygons();
}

} // namespace klv
