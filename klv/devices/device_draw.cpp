#include "klv/base/buffer.h"
#include "klv/base/saturating.h"
#include "klv/core/collection.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/fill_engine.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/gdi/gdi.h"
#include "klv/geometry/primitive_shapes.h"

#include <algorithm>
#include <array>
#include <cstdlib>

/// The drawing operations: every figure is filled first and stroked second.
namespace klv {
namespace {

// Points handed to the platform's pen at a time.
constexpr std::size_t hairline_chunk = 256;
constexpr int widest_hairline = 1;

// A rectangle in device pixels, edges in order.
RECT device_rect(const vDEVICE& device, const vRECT& rect) noexcept
{
    vRECT mapped = rect;
    device.LPtoDP(mapped);
    return {std::min(mapped.Left(), mapped.Right()), std::min(mapped.Top(), mapped.Bottom()),
        std::max(mapped.Left(), mapped.Right()), std::max(mapped.Top(), mapped.Bottom())};
}

POINT device_point(const vDEVICE& device, const vPOINT& point) noexcept
{
    vPOINT mapped = point;
    device.LPtoDP(mapped);
    return mapped;
}

// Selects a pen and a brush for the length of one figure and deletes those it was given to own.
class selected_objects {
public:
    selected_objects(HDC dc, HPEN pen, HBRUSH brush) noexcept
        : dc_(dc)
        , pen_(pen)
        , brush_(brush)
        , old_pen_(SelectObject(dc, pen ? static_cast<HGDIOBJ>(pen) : GetStockObject(NULL_PEN)))
        , old_brush_(SelectObject(dc, brush ? static_cast<HGDIOBJ>(brush) : GetStockObject(NULL_BRUSH)))
    {
    }
    ~selected_objects()
    {
        SelectObject(dc_, old_pen_);
        SelectObject(dc_, old_brush_);
        if (pen_)
            DeleteObject(pen_);
        if (brush_)
            DeleteObject(brush_);
    }
    selected_objects(const selected_objects&) = delete;
    selected_objects& operator=(const selected_objects&) = delete;

private:
    HDC dc_;
    HPEN pen_;
    HBRUSH brush_;
    HGDIOBJ old_pen_;
    HGDIOBJ old_brush_;
};

} // namespace

// ---- Figures -------------------------------------------------------------------------------------------

bool vDEVICE::MayShow(const vRECT& bounds) noexcept
{
    const std::int64_t margin = std::max(0, line_.Width());
    const vRECT reach(saturated(std::min(bounds.Left(), bounds.Right()) - margin),
        saturated(std::min(bounds.Top(), bounds.Bottom()) - margin),
        saturated(std::max(bounds.Left(), bounds.Right()) + margin),
        saturated(std::max(bounds.Top(), bounds.Bottom()) + margin));
    return ClipAreaIntersect(reach) != 0;
}

void vDEVICE::DrawRect(const vRECT& rect) noexcept
{
    const active_dc dc(*this);
    if (!MayShow(rect))
        return;
    if (FillWanted())
        FillRect(rect);
    if (LineWanted())
        LineRect(rect);
}

void vDEVICE::DrawEllipse(const vRECT& rect) noexcept
{
    const active_dc dc(*this);
    if (!MayShow(rect))
        return;
    if (FillWanted())
        FillEllipse(rect);
    if (LineWanted())
        LineEllipse(rect);
}

void vDEVICE::DrawShape(const vSHAPE& shape) noexcept
{
    const active_dc dc(*this);
    if (!MayShow(shape.BoundBox()))
        return;
    if (FillWanted())
        FillShape(shape);
    if (LineWanted())
        LineShape(shape);
}

void vDEVICE::DrawRoundRect(const vRECT& rect, const vSIZE& corner) noexcept
{
    const int larger = std::abs(std::int64_t{rect.Width()}) >= std::abs(std::int64_t{rect.Height()})
        ? rect.Width()
        : rect.Height();
    const int diameter = larger < 0 ? saturated(-std::int64_t{corner.Width()}) : corner.Width();
    DrawShape(vROUNDRECTSHAPE(rect, vSIZE(diameter, diameter)));
}

void vDEVICE::LineRect(const vRECT& rect) noexcept { LineShape(vRECTSHAPE(rect)); }

void vDEVICE::LineEllipse(const vRECT& rect) noexcept { LineShape(vELPSSHAPE(rect)); }

void vDEVICE::FillRect(const vRECT& rect) noexcept
{
    if (fill_.Type() != vFILL_SOLID) {
        FillShape(vRECTSHAPE(rect));
        return;
    }
    const active_dc dc(*this);
    const RECT box = device_rect(*this, rect);
    const selected_objects selected(dc, nullptr, CreateBrush(fill_.Colour()));
    Rectangle(dc, box.left, box.top, box.right + 1, box.bottom + 1);
}

void vDEVICE::FillEllipse(const vRECT& rect) noexcept
{
    if (fill_.Type() != vFILL_SOLID) {
        FillShape(vELPSSHAPE(rect));
        return;
    }
    const active_dc dc(*this);
    const RECT box = device_rect(*this, rect);
    const selected_objects selected(dc, nullptr, CreateBrush(fill_.Colour()));
    Ellipse(dc, box.left, box.top, box.right + 1, box.bottom + 1);
}

void vDEVICE::FillShape(const vSHAPE& shape) noexcept
{
    const vBEZPOINT last = shape.GetLastPoint();
    if (!last.LineTo() && !last.Control())
        return;
    switch (fill_.Type()) {
    case vFILL_RADIAL:
    case vFILL_RADIAL_QUADRATIC:
    case vFILL_LINEAR_TWO_WAY:
    case vFILL_LINEAR_LOGARITHMIC:
    case vFILL_LINEAR:
    case vFILL_BOX:
        GradFill(*this, shape);
        break;
    default:
        if (fill_.Type() == vFILL_SOLID || fill_.Type() == vFILL_BITMAP || fill_.Hatched()
            || fill_.GemBrush())
            FillPolygons(*this, shape);
        break;
    }
}

// ---- Arcs ----------------------------------------------------------------------------------------------

void vDEVICE::DrawArcFigure(
    arc_figure figure, const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    const active_dc dc(*this);
    const bool pen_wanted = figure == arc_figure::arc ? line_.LineType() == vLINE_SOLID : LineWanted();
    const bool brush_wanted = figure != arc_figure::arc && FillWanted();
    HPEN pen = pen_wanted
        ? CreatePen(PS_SOLID, std::max(1, LHtoDH(line_.Width())), line_.Colour().PackedRGB())
        : nullptr;
    const selected_objects selected(dc, pen, brush_wanted ? CreateBrush(fill_.Colour()) : nullptr);

    vRECT box = rect;
    LPtoDP(box);
    const POINT from = device_point(*this, start);
    const POINT to = device_point(*this, end);
    switch (figure) {
    case arc_figure::arc:
        Arc(dc, box.Left(), box.Top(), box.Right(), box.Bottom(), from.x, from.y, to.x, to.y);
        break;
    case arc_figure::pie:
        Pie(dc, box.Left(), box.Top(), box.Right(), box.Bottom(), from.x, from.y, to.x, to.y);
        break;
    case arc_figure::chord:
        Chord(dc, box.Left(), box.Top(), box.Right(), box.Bottom(), from.x, from.y, to.x, to.y);
        break;
    }
}

void vDEVICE::DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    if (line_visible_ && MayShow(rect))
        DrawArcFigure(arc_figure::arc, rect, start, end);
}

void vDEVICE::DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    DrawArcFigure(arc_figure::pie, rect, start, end);
}

void vDEVICE::DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept
{
    DrawArcFigure(arc_figure::chord, rect, start, end);
}

// ---- Lines ---------------------------------------------------------------------------------------------

bool vDEVICE::HairlineWanted() noexcept
{
    return line_.LineType() == vLINE_SOLID && LHtoDH(line_.Width()) <= widest_hairline
        && line_.StartArrow() == vLINESPEC::no_arrow && line_.EndArrow() == vLINESPEC::no_arrow
        && NearestColour(line_.Colour()) == line_.Colour().PackedRGB();
}

void vDEVICE::Hairline(std::span<const vPOINT> points) noexcept
{
    const active_dc dc(*this);
    const COLORREF colour = line_.Colour().PackedRGB();
    const selected_objects selected(dc, CreatePen(PS_SOLID, 1, colour), nullptr);
    const unit_mapping mapping = Mapping();
    std::array<POINT, hairline_chunk> chunk;
    std::size_t filled = 0;
    for (const vPOINT& point : points) {
        if (filled == hairline_chunk) {
            Polyline(dc, chunk.data(), static_cast<int>(filled));
            chunk[0] = chunk[filled - 1];
            filled = 1;
        }
        chunk[filled++] = mapping(point.x, point.y);
    }
    if (filled > 1)
        Polyline(dc, chunk.data(), static_cast<int>(filled));
    // A pen leaves out the pixel it ends at.
    const POINT end = chunk[filled - 1];
    MoveToEx(dc, end.x, end.y, nullptr);
    SetPixelV(dc, end.x, end.y, colour);
}

void vDEVICE::LineThrough(std::span<const vPOINT> points) noexcept
{
    if (!LineWanted() || points.empty())
        return;
    const active_dc dc(*this);
    if (HairlineWanted()) {
        Hairline(points);
        return;
    }
    // Longer lines than a shape holds are drawn as several that share their end points.
    static thread_local vSHAPE shape;
    while (points.size() > 1) {
        const std::size_t part = std::min(points.size(), vSHAPE::max_points);
        if (!shape.assign_polyline(points.first(part), 0))
            return;
        LineShape(shape);
        points = points.subspan(part - 1);
    }
}

void vDEVICE::DrawLine(const vPOINT& from, const vPOINT& to) noexcept
{
    const vPOINT points[] = {from, to};
    LineThrough(points);
}

void vDEVICE::DrawLine(std::span<const vPOINT> points) noexcept { LineThrough(points); }

void vDEVICE::DrawLine(int count, vCOLLECTION& points) noexcept
{
    static thread_local vBUFFER<vPOINT> line;
    const int held = points.NoValues() / 2;
    const auto wanted = static_cast<std::uint16_t>(std::clamp(count, 0, held));
    line.clear();
    if (!line.reserve(wanted))
        return;
    for (std::uint16_t i = 0; i < wanted; ++i)
        (void)line.push_back(points.GetPoint(i));
    LineThrough(line.span());
}

// ---- The rest ------------------------------------------------------------------------------------------

void vDEVICE::TextTransparency(int transparent) noexcept
{
    const active_dc dc(*this);
    SetBkMode(dc, transparent ? TRANSPARENT : OPAQUE);
}

int vDEVICE::DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
    const vPOINT& pivot, double angle) noexcept
{
    const active_dc dc(*this);
    int done = 0;
    if (FillWanted())
        done |= FillText(text, rect, align, rotated, pivot, angle);
    if (LineWanted())
        done |= LineText(text, rect, align, rotated, pivot, angle);
    return done;
}

int vDEVICE::vDraw(const vRECT&) noexcept { return 0; }

void vDEVICE::LastPoint(POINT& point) noexcept
{
    const active_dc dc(*this);
    GetCurrentPositionEx(dc, &point);
}

} // namespace klv
