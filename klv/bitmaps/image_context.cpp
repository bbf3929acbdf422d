#include "klv/bitmaps/image_context.h"

#include "klv/base/angles.h"
#include "klv/core/integer_math.h"
#include "klv/geometry/matrix.h"

#include <cmath>

namespace klv {

namespace {

constexpr double full_turn = 360.0;

/// The angle raised by whole turns to 0 or above.
double raised_angle(double angle)
{
    if (!std::isfinite(angle))
        return 0.0;
    return angle < 0 ? angle + full_turn * std::ceil(-angle / full_turn) : angle;
}

int equal_distortions(const IDistort* a, const IDistort* b, int translations)
{
    if (!a || !b)
        return a == b;
    return a == b || a->IsEqual(*b, translations);
}

} // namespace

vIMAGECOLOUR image_colour_of(const vCOLOUR* override_colour, const vCOLOUR* background, int transparency,
    const vCOLOUR* transparent, std::int32_t threshold) noexcept
{
    vIMAGECOLOUR colour;
    if (override_colour) {
        colour.SetType(vOVERRIDE_MONOCHROME);
        colour.SetForegroundColour(*override_colour);
    }
    if (background) {
        const vCOLOUR foreground = override_colour ? *override_colour : vCOLOUR();
        colour.SetType(vOVERRIDE_TRITONE);
        colour.SetForegroundColour(foreground);
        colour.SetMidtoneColour(vCOLOUR(*background, foreground, 1, 2));
        colour.SetBackgroundColour(*background);
    }
    if (transparency)
        colour.SetTransparency(transparent ? vTRANSPARENCY_COLOUR : vTRANSPARENCY_WHITE);
    if (transparent)
        colour.SetTransparencyColour(*transparent);
    colour.SetTransparencyThreshold(threshold);
    return colour;
}

oIMGCONTEXT::oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, double angle, int flip_h, int flip_v, int transparency) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, angle, flip_h, flip_v,
        image_colour_of(nullptr, nullptr, transparency, nullptr, vIMAGECOLOUR().GetTransparencyThreshold()),
        vTILEINFO())
{
}

oIMGCONTEXT::oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, IDistort* distort, int transparency) noexcept
    : oIMGCONTEXT(pixel_width, pixel_height, destination, source, distort,
        image_colour_of(nullptr, nullptr, transparency, nullptr, vIMAGECOLOUR().GetTransparencyThreshold()),
        vTILEINFO())
{
}

oIMGCONTEXT::oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
    const vTILEINFO& tiles) noexcept
    : pixel_width_(pixel_width)
    , pixel_height_(pixel_height)
    , flip_h_(flip_h)
    , flip_v_(flip_v)
    , angle_(raised_angle(angle))
    , colour_(colour)
    , tiles_(tiles)
{
    set_rectangles(destination, source);
    SetupIDistort(&destination_);
    if (angle_ != 0)
        destination_.DistortBbox(distort_.get(), bounds_);
}

oIMGCONTEXT::oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
    const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept
    : pixel_width_(pixel_width)
    , pixel_height_(pixel_height)
    , colour_(colour)
    , tiles_(tiles)
    , distort_(distort)
{
    set_rectangles(destination, source);
}

void oIMGCONTEXT::set_rectangles(const vRECT* destination, const vRECT* source) noexcept
{
    destination_ = destination ? *destination : vRECT();
    source_ = source ? *source : vRECT(0, 0, pixel_width_, pixel_height_);
    bounds_ = destination_;
    bitmap_width_ = MulDiv(pixel_width_, destination_.Width(), source_.Width());
    bitmap_height_ = MulDiv(pixel_height_, destination_.Height(), source_.Height());
}

void oIMGCONTEXT::SetupIDistort(const vRECT* area) noexcept
{
    distort_ = distort_ref();
    oMATRIX* const matrix = oMATRIX::CreateMatrix();
    if (!matrix || !area)
        return;
    distort_ = distort_ref::adopt(matrix);
    const double left_and_right = static_cast<double>(area->Left()) + area->Right();
    const double top_and_bottom = static_cast<double>(area->Top()) + area->Bottom();
    if (flip_h_) {
        matrix->Scale(-1, 1);
        matrix->Translate(left_and_right, 0);
    }
    if (flip_v_) {
        matrix->Scale(1, -1);
        matrix->Translate(0, top_and_bottom);
    }
    if (angle_ != 0) {
        const vPOINT centre = area->Centre();
        matrix->Rotate(to_radians(angle_), centre.x, centre.y);
    }
}

void oIMGCONTEXT::MoveTo(const vPOINT& top_left) noexcept
{
    const vPOINT way = top_left - destination_.TopLeft();
    destination_ = destination_ + way;
    bounds_ = bounds_ + way;
    if (!distort_ || !distort_->IsLinear())
        return;
    oMATRIX* const moved = oMATRIX::CreateMatrix();
    if (!moved)
        return;
    moved->Translate(-static_cast<double>(way.x), -static_cast<double>(way.y));
    moved->Combine(*distort_);
    moved->Translate(way.x, way.y);
    distort_ = distort_ref::adopt(moved);
}

int oIMGCONTEXT::operator==(const oIMGCONTEXT& other) const noexcept
{
    return pixel_width_ == other.pixel_width_ && pixel_height_ == other.pixel_height_
        && destination_ == other.destination_ && colour_ == other.colour_ && tiles_ == other.tiles_
        && equal_distortions(distort_.get(), other.distort_.get(), 1);
}

int oIMGCONTEXT::CompareRenderInfo(const oIMGCONTEXT& other, int exact_tiles) const noexcept
{
    if (!(colour_ == other.colour_) || source_ != other.source_ || pixel_width_ != other.pixel_width_
        || pixel_height_ != other.pixel_height_
        || !equal_distortions(distort_.get(), other.distort_.get(), 0))
        return 0;
    return exact_tiles || QyFixedTile() ? tiles_ == other.tiles_ : tiles_.CompareNoScale(other.tiles_);
}

int oIMGCONTEXT::QyFixedTile() const noexcept
{
    const vTILEDRAWMODE mode = tiles_.GetTileDrawMode();
    return tiles_.GetType() != vTILE_NONE && (mode == vTILE_FIXED_SIZE || mode == vTILE_FIXED_SIZE_AND_ONE);
}

int oIMGCONTEXT::GetTransparency() const noexcept { return colour_.GetTransparency(); }
vCOLOUROVERRIDETYPE oIMGCONTEXT::GetColourOverride() const noexcept { return colour_.GetType(); }
vCOLOUR oIMGCONTEXT::GetFgColour() const noexcept { return colour_.GetForegroundColour(); }
vCOLOUR oIMGCONTEXT::GetMdColour() const noexcept { return colour_.GetMidtoneColour(); }
vCOLOUR oIMGCONTEXT::GetBkColour() const noexcept { return colour_.GetBackgroundColour(); }

} // namespace klv
