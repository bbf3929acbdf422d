#include "klv/base/saturating.h"
#include "klv/core/string.h"
#include "klv/devices/device.h"
#include "klv/devices/font_detail.h"
#include "klv/gdi/gdi.h"
#include "klv/geometry/primitive_shapes.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

/// Text: in a rectangle, along a line, and character by character.
namespace klv {
namespace {

constexpr double square_units = 1.0;

// Character advances as the platform takes them, without an allocation for texts of usual length.
class advance_list {
public:
    advance_list(const short* advances, std::size_t count)
    {
        if (!advances)
            return;
        std::int32_t* into = few_.data();
        if (count > few_.size()) {
            many_.resize(count);
            into = many_.data();
        }
        std::copy_n(advances, count, into);
        advances_ = into;
    }
    const std::int32_t* data() const { return advances_; }

private:
    std::array<std::int32_t, 256> few_;
    std::vector<std::int32_t, vALLOCATOR<std::int32_t>> many_;
    const std::int32_t* advances_ = nullptr;
};

void set_text_attributes(HDC dc, const vCOLOUR& colour, std::uint32_t align)
{
    SetTextColor(dc, colour.PackedRGB());
    SetBkMode(dc, TRANSPARENT);
    SetTextJustification(dc, 0, 0);
    SetTextAlign(dc, align);
}

// Where a text is anchored in its rectangle: the alignment, and the x it refers to.
struct anchor {
    std::uint32_t align;
    int x;
};
anchor anchor_of(const vRECT& rect, vTEXTALIGN align)
{
    switch (align) {
    case vTEXT_RIGHT:
        return {TA_BASELINE | TA_RIGHT, rect.Right()};
    case vTEXT_CENTRE:
        return {TA_BASELINE | TA_CENTER, saturated((std::int64_t{rect.Left()} + rect.Right()) / 2)};
    default:
        return {TA_BASELINE | TA_LEFT, rect.Left()};
    }
}

int baseline_of(const vRECT& rect, int font_height)
{
    const std::int64_t height = std::int64_t{rect.Bottom()} - rect.Top();
    return saturated(rect.Bottom() - (height - font_height) / 2);
}

} // namespace

int vDEVICE::TextOutA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
    const vPOINT& pivot, double angle) noexcept
{
    const active_dc dc(*this);
    if (!ActivateFont(rotated))
        return 0;
    const anchor place = anchor_of(rect, align);
    set_text_attributes(dc, FillSpec().Colour(), place.align);
    vPOINT start(place.x, baseline_of(rect, log_font_height_));
    vRECT bounds = rect;
    if (angle != 0) {
        start = vPOINT(start, pivot, angle, square_units);
        vRECTSHAPE turned(rect);
        turned.Rotate(pivot, angle, square_units);
        bounds = turned.BoundBox();
    }
    if (!ClipAreaIntersect(bounds))
        return 1;
    LPtoDP(start);
    LPtoDP(bounds);
    const RECT clip = bounds;
    return ExtTextOutA(dc, start.x, start.y, ETO_CLIPPED, &clip, text(), text.Length(), nullptr);
}

int vDEVICE::FillText(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
    const vPOINT& pivot, double angle) noexcept
{
    return FillSpec().Type() == vFILL_SOLID ? TextOutA(text, rect, align, rotated, pivot, angle) : 0;
}

int vDEVICE::LineText(const vSTRING&, const vRECT&, vTEXTALIGN, int, const vPOINT&, double) noexcept
{
    return 0;
}

int vDEVICE::DrawTextOnLine(
    const vSTRING& text, const vPOINT& start, const short* advances, int rotated) noexcept
{
    if (!FillVisible())
        return 1;
    const active_dc dc(*this);
    if (!ActivateFont(rotated))
        return 0;
    set_text_attributes(dc, FillSpec().Colour(), TA_TOP | TA_LEFT);
    vPOINT at = start;
    LPtoDP(at);
    try {
        const advance_list distances(advances, text.Length());
        return ExtTextOutA(dc, at.x, at.y, 0, nullptr, text(), text.Length(), distances.data());
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void vDEVICE::DrawChar(const vCHAR& character, const vPOINT& point) noexcept
{
    const active_dc dc(*this);
    TEXTMETRICA metrics{};
    if (!FillVisible() || !ActivateFont(0) || !GetTextMetricsA(dc, &metrics))
        return;
    set_text_attributes(dc, FillSpec().Colour(), TA_BASELINE | TA_LEFT);
    const int ascent = DVtoLV(metrics.tmAscent);
    const int descent = DVtoLV(metrics.tmDescent);
    const int width = DHtoLH(current_font_->GetCharWidthA(character));
    vRECT cell(point.x, saturated(std::int64_t{point.y} - ascent), saturated(std::int64_t{point.x} + width),
        point.y);
    LPtoDP(cell);
    const RECT clip = cell;
    const char byte = character();
    ExtTextOutA(dc, LHtoDH(point.x), saturated(std::int64_t{LVtoDV(point.y)} - descent), ETO_CLIPPED, &clip,
        &byte, 1, nullptr);
}

} // namespace klv
