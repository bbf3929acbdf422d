#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/devices/device.h"
#include "klv/devices/font_detail.h"
#include "klv/metafiles/detail/playback.h"
#include "klv/metafiles/detail/rectangles.h"
#include "klv/metafiles/detail/text_bitmap.h"
#include "klv/metafiles/metafile.h"

#include <cmath>
#include <memory>

namespace klv {

// Black text on white, left at the start point and centred on its height.
void record_player::draw_text_bitmap(const vSTRING& text, const vPOINT& start)
{
    const std::unique_ptr<oMEMDIB> bitmap = text_as_bitmap(device_, text);
    if (!bitmap)
        return;
    const vPOINT size(device_.DHtoLH(bitmap->Width()), device_.DVtoLV(bitmap->Height()));
    const vRECT place(start - vPOINT(0, size.y / 2), size.x, size.y);
    if (place != in_order(place))
        return; // past the limits of coordinates
    oDIBCONTEXT context(
        bitmap->Width(), bitmap->Height(), &place, nullptr, nullptr, mapping_.colour, vTILEINFO());
    device_.DrawDIB(*bitmap, context, nullptr, 0);
}

// Devices place text by the upper left corner of its first character, pictures by the baseline: the ascent
// leads from one to the other, square to the text's direction.
void record_player::draw_text(const vSTRING& text, const vPOINT& baseline_start)
{
    vPOINT start = baseline_start;
    if (has_context()) {
        if (vFONTDETAIL* font = device_.GetCurFontDetail()) {
            font->GetCharHeight(); // realises the font, and with it the ascent
            const double angle = font->Angle().Radians();
            start.x = wrap_sub(start.x, device_.DHtoLH(round_wrapped(font->Ascent() * std::sin(angle))));
            start.y = wrap_sub(start.y, device_.DVtoLV(round_wrapped(font->Ascent() * std::cos(angle))));
        }
    }
    device_.DrawTextOnLine(text, start, nullptr, 0);
}

} // namespace klv
