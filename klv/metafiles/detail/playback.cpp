#include "klv/metafiles/detail/playback.h"

#include "klv/base/saturating.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/core/progress.h"
#include "klv/devices/device.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/metafiles/detail/rectangles.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"

#include <algorithm>
#include <array>
#include <new>

namespace klv {

namespace {

constexpr int percent_scale = 10'000; // positions within a rectangle, in its ten-thousandths

bool encloses(const vRECT& outer, const vRECT& inner)
{
    return (outer ^ inner.TopLeft()) && (outer ^ inner.BottomRight());
}

bool changes_colours(const vIMAGECOLOUR& colour)
{
    return colour.GetType() != vOVERRIDE_NONE || !colour.IsNormalBalance();
}

// Neither turns nor mirrors: rectangles stay rectangles, the right way round.
bool only_scales(const IDistort& distort)
{
    return distort.IsLinear() && distort.Coefficient(1) == 0 && distort.Coefficient(3) == 0
        && distort.Coefficient(0) > 0 && distort.Coefficient(4) > 0;
}

vTEXTALIGN alignment_of(std::uint16_t stored)
{
    return stored <= static_cast<std::uint16_t>(vTEXT_CENTRE) ? static_cast<vTEXTALIGN>(stored) : vTEXT_LEFT;
}

} // namespace

void record_player::play() noexcept
try {
    record_cursor cursor(picture_);
    oPROGRESS* const progress = picture_.progress_;
    if (progress) {
        progress->oStart();
        progress->oFullScale(picture_.Length());
        progress->oSet(cursor.position());
    }
    metafile_record current;
    bool stopped = false;
    while (!stopped && cursor.next(current)) {
        std::visit(*this, current);
        if (progress) {
            progress->oSet(cursor.position());
            stopped = progress->Stop() != 0;
        }
    }
    if (progress) {
        progress->oSet(cursor.position());
        progress->oTerminate();
    }
} catch (const std::bad_alloc&) {
    // The record that memory was out for is the last one.
    if (picture_.progress_)
        picture_.progress_->oTerminate();
}

vPOINT record_player::mapped(vPOINT p) const
{
    if (mapping_.distort)
        mapping_.distort->Transform(&p, 1);
    return mapping_.inserted ? (*mapping_.inserted)(p) : p;
}

vRECT record_player::mapped(const vRECT& r) const
{
    vRECT box = in_order(r);
    if (mapping_.distort)
        r.DistortBbox(mapping_.distort, box);
    return mapping_.inserted ? in_order((*mapping_.inserted)(box)) : box;
}

bool record_player::mirrored() const
{
    bool flips = false;
    if (const IDistort* d = mapping_.distort; d && d->IsLinear())
        flips = d->Coefficient(0) * d->Coefficient(4) < d->Coefficient(1) * d->Coefficient(3);
    if (const insertion* in = mapping_.inserted)
        flips ^= (in->mirror_x != 0) != (in->mirror_y != 0);
    return flips;
}

vCOLOUR record_player::recoloured(const vCOLOUR& colour) const
{
    vCOLOUR result = colour;
    if (changes_colours(mapping_.colour))
        vDEVICE::RGBtoRGB(&colour, &result, mapping_.colour);
    return result;
}

int record_player::line_width(int width) const
{
    if (const insertion* in = mapping_.inserted) {
        const bool vertically = in->wider && !in->taller;
        return std::max(vertically ? device_.LVtoDV(width) : device_.LHtoDH(width), 1);
    }
    return truncate_saturated(std::max(width * mapping_.line_scale, 1.0));
}

void record_player::operator()(const state_record& r)
{
    switch (r.code) {
    case record_code::push_state:
        return device_.PushState();
    case record_code::pop_state:
        return device_.PopState();
    case record_code::push_line:
        return device_.PushLineSpec();
    case record_code::pop_line:
        return device_.PopLineSpec();
    case record_code::push_fill:
        return device_.PushFillSpec();
    case record_code::pop_fill:
        return device_.PopFillSpec();
    case record_code::push_font:
        return device_.PushFontSpec();
    case record_code::pop_font:
        return device_.PopFontSpec();
    case record_code::push_clip:
        return device_.PushClipArea();
    default:
        return device_.PopClipArea();
    }
}

void record_player::operator()(line_spec_record& r)
{
    r.spec.Colour(recoloured(r.spec.Colour()));
    r.spec.Width(line_width(r.spec.Width()));
    device_.LineSpec(r.spec);
}

void record_player::operator()(fill_spec_record& r)
{
    r.spec.ColourFrom(recoloured(r.spec.ColourFrom()));
    r.spec.ColourTo(recoloured(r.spec.ColourTo()));
    const auto whole_degrees = static_cast<short>(r.spec.Angle()() / static_cast<int>(vREAL::scale));
    r.spec.Angle(vANGLE(whole_degrees));
    device_.FillSpec(r.spec);
}

void record_player::operator()(const font_spec_record& r) { device_.FontSpec(r.spec); }

void record_player::operator()(clip_area_record& r)
{
    constexpr int clip_and = 1;
    if (!r.shape.IsValid())
        return;
    if (mapping_.distort)
        r.shape.Distort(mapping_.distort);
    device_.ClipArea(r.shape, clip_and);
}

void record_player::operator()(polyline_record& r)
{
    if (mapping_.distort && !r.points.empty())
        mapping_.distort->Transform(r.points.data(), static_cast<std::int32_t>(r.points.size()));
    if (mapping_.inserted)
        std::transform(r.points.begin(), r.points.end(), r.points.begin(), *mapping_.inserted);
    device_.DrawLine(r.points);
}

void record_player::operator()(const rectangle_record& r)
{
    scratch_ = vRECTSHAPE(r.rect);
    draw_scratch();
}

void record_player::operator()(const ellipse_record& r)
{
    scratch_ = vELPSSHAPE(r.rect);
    draw_scratch();
}

void record_player::operator()(const round_rectangle_record& r)
{
    scratch_ = vROUNDRECTSHAPE(r.rect, r.corner);
    draw_scratch();
}

void record_player::operator()(const shape_record& r)
{
    scratch_ = r.shape;
    draw_scratch();
}

// Devices rely on well-formed outlines; this is where those of a file are looked at.
void record_player::draw_scratch()
{
    if (scratch_.NoPoint() < 2 || !scratch_.IsValid())
        return;
    if (mapping_.distort)
        scratch_.Distort(mapping_.distort);
    if (mapping_.inserted)
        scratch_.map_points(*mapping_.inserted);
    device_.DrawShape(scratch_);

    picture_.last_point_ = scratch_.GetLastPoint();
    if (!mapping_.inserted)
        device_.LPtoDP(picture_.last_point_);
}

void record_player::operator()(const arc_record& r)
{
    const vRECT rect = mapped(r.rect);
    vPOINT start = mapped(r.start);
    vPOINT end = mapped(r.end);
    if (mirrored())
        std::swap(start, end); // arcs run one way round, whatever the mapping
    if (r.code == record_code::arc)
        device_.DrawArc(rect, start, end);
    else if (r.code == record_code::pie)
        device_.DrawPie(rect, start, end);
    else
        device_.DrawChord(rect, start, end);
}

void record_player::operator()(const bitmap_record& r)
{
    vIMAGECOLOUR colour = mapping_.colour;
    if (r.layout == bitmap_layout::transparent && r.transparency != 0) {
        const bool known
            = r.transparency >= vTRANSPARENCY_WHITE && r.transparency <= vTRANSPARENCY_ALL_BUT_COLOUR;
        colour.SetTransparency(known ? static_cast<vTRANSPARENCYTYPE>(r.transparency) : vTRANSPARENCY_COLOUR);
        colour.SetTransparencyColour(r.transparent_colour);
        colour.SetTransparencyThreshold(std::clamp(r.threshold, 0, 100));
    }

    const vRECT place = r.place();
    const vRECT visible = mapping_.source + vPOINT(picture_.LogicalXOffset(), picture_.LogicalYOffset());
    if (is_empty(place) || is_empty(visible) || !(visible & in_order(place)))
        return;
    if (encloses(visible, place) && mapping_.source.Width() == picture_.LogicalWidth()
        && mapping_.source.Height() == picture_.LogicalHeight())
        return draw_bitmap(*r.bitmap, place, r.part(), colour);

    // Only what lies in the visible part is drawn, which stands for the whole of the picture's extents.
    const vRECT shown = in_order(place) ^ visible;
    const vRECT extents(picture_.x0_, picture_.y0_, picture_.x1_, picture_.y1_);
    const vRECT part
        = r.part().PercentToRect(in_order(place).RectToPercent(shown, percent_scale), 0, percent_scale);
    const vRECT new_place
        = extents.PercentToRect(visible.RectToPercent(shown, percent_scale), 1, percent_scale);
    if (!is_empty(part) && !is_empty(new_place))
        draw_bitmap(*r.bitmap, new_place, part, colour);
}

void record_player::draw_bitmap(
    const oDIB& bitmap, const vRECT& place, const vRECT& part, const vIMAGECOLOUR& colour)
{
    vRECT destination = place;
    IDistort* distort = mapping_.bitmap_distort;
    if (distort && only_scales(*distort)) {
        // The device gets a plain rectangle, and a recording device the place where it will be seen.
        std::array<vPOINT, 2> corners{place.TopLeft(), place.BottomRight()};
        distort->Transform(corners.data(), 2);
        destination = vRECT(corners[0], corners[1]);
        distort = nullptr;
    }
    if (mapping_.inserted)
        destination = (*mapping_.inserted)(destination);
    oDIBCONTEXT context(bitmap.Width(), bitmap.Height(), &destination, &part, distort, colour, vTILEINFO());
    device_.DrawDIB(bitmap, context, nullptr, 0);
}

void record_player::operator()(const text_record& r)
{
    device_.DrawTextA(r.text, mapped(r.rect), alignment_of(r.alignment), 0, vPOINT(), 0.0);
}

void record_player::operator()(const text_transparency_record& r)
{
    device_.TextTransparency(r.transparent != 0 ? 1 : 0);
}

void record_player::operator()(const text_on_line_record& r)
{
    const vPOINT start = mapped(r.start);
    if (picture_.TextReplay() == vTEXTREPLAY::as_text || !has_context())
        draw_text(r.text, start);
    else
        draw_text_bitmap(r.text, start);
}

// A picture that records the playback has none.
bool record_player::has_context() const
{
    const bool has = device_.GetWinDC() != nullptr;
    device_.ReleaseWinDC();
    return has;
}

} // namespace klv
