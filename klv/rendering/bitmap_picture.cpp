#include "klv/rendering/bitmap_picture.h"

#include "klv/bitmaps/dib_context.h"
#include "klv/metafiles/record_cursor.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>
#include <variant>

namespace klv {
namespace {

constexpr double micrometres_per_inch = 25400;
constexpr int usual_dpi = 96;
// Stored bitmaps of more are taken for damaged ones.
constexpr int greatest_dpi = 32000;
// The longest side of a page. The units of a picture are 32-bit, and what computes with them needs room.
constexpr double longest_page = 1e9;

int resolution_of(std::int32_t pixels_per_metre, int pixels)
{
    const bool unset = pixels_per_metre == oDIBHEADER().info().biXPelsPerMeter;
    const int dpi = unset ? 0 : pixels_per_metre / oDIBHEADER::pixels_per_metre_of_dpi;
    const bool usable
        = dpi >= 1 && dpi <= greatest_dpi && pixels * micrometres_per_inch / dpi <= longest_page;
    return usable ? dpi : usual_dpi;
}

std::int32_t page_side(int pixels, int dpi)
{
    return static_cast<std::int32_t>(std::lround(pixels * micrometres_per_inch / dpi));
}

int dpi_on_page(int pixels, int page_micrometres)
{
    if (page_micrometres <= 0)
        return usual_dpi;
    return static_cast<int>(
        std::clamp<double>(std::round(pixels * micrometres_per_inch / page_micrometres), 1, greatest_dpi));
}

void set_resolution(oMEMDIB& bitmap, int horizontal_dpi, int vertical_dpi)
{
    oDIBHEADER header;
    bitmap.GetHeader(header);
    header.info().biXPelsPerMeter = horizontal_dpi * oDIBHEADER::pixels_per_metre_of_dpi;
    header.info().biYPelsPerMeter = vertical_dpi * oDIBHEADER::pixels_per_metre_of_dpi;
    bitmap.SetHeader(header);
}

} // namespace

render_status record_bitmap(oMEMDIB& bitmap, vSTREAM& out) noexcept
{
    const int width = bitmap.Width();
    const int height = bitmap.Height();
    const int horizontal_dpi = resolution_of(bitmap.InfoHeader().biXPelsPerMeter, width);
    const int vertical_dpi = resolution_of(bitmap.InfoHeader().biYPelsPerMeter, height);
    set_resolution(bitmap, horizontal_dpi, vertical_dpi);

    vMETAFILE picture(out);
    picture.PhysicalExtents(page_side(width, horizontal_dpi), page_side(height, vertical_dpi));
    vRECT page(0, 0, width, height);
    oDIBCONTEXT context(width, height, &page, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    picture.DrawDIB(bitmap, context, &page, 0);
    picture.EndMetaFile();
    return out.Status() == vSTREAM_OK ? render_status() : render_code::unwritable;
}

std::unique_ptr<oMEMDIB> held_bitmap(vMETAFILE& picture) noexcept
try {
    const int left = picture.LogicalXOffset();
    const int top = picture.LogicalYOffset();
    const vRECT page(vPOINT(left, top), picture.LogicalWidth(), picture.LogicalHeight());
    std::unique_ptr<oMEMDIB> bitmap;
    record_cursor cursor(picture);
    metafile_record record;
    while (cursor.next(record)) {
        if (std::holds_alternative<end_record>(record))
            break;
        auto* const held = std::get_if<bitmap_record>(&record);
        if (!held || bitmap || held->layout != bitmap_layout::transparent || held->transparency != 0
            || held->place() != page || !held->bitmap || !held->bitmap->HasPixels())
            return nullptr;
        bitmap = std::move(held->bitmap);
    }
    if (bitmap)
        set_resolution(*bitmap, dpi_on_page(bitmap->Width(), picture.PhysicalWidth()),
            dpi_on_page(bitmap->Height(), picture.PhysicalHeight()));
    return bitmap;
} catch (const std::bad_alloc&) {
    return nullptr;
}

} // namespace klv
