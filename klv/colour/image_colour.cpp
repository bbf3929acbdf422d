#include "klv/colour/image_colour.h"

#include <algorithm>

namespace klv {

namespace {

int percentage(int value) { return std::clamp(value, 0, 100); }

} // namespace

vIMAGECOLOUR::vIMAGECOLOUR(vCOLOUROVERRIDETYPE type, const vCOLOUR& c1, const vCOLOUR& c2, const vCOLOUR& c3,
    int brightness, int contrast, int saturation, vTRANSPARENCYTYPE ttype, const vCOLOUR& tcolour,
    int threshold) noexcept
    : type_(type)
    , background_(c2)
    , midtone_(c1)
    , foreground_(c3)
    , transparency_colour_(tcolour)
    , transparency_(ttype)
    , threshold_(percentage(threshold))
    , brightness_(percentage(brightness))
    , contrast_(percentage(contrast))
    , saturation_(percentage(saturation))
{
}

void vIMAGECOLOUR::SetBrightness(int percent) noexcept { brightness_ = percentage(percent); }
void vIMAGECOLOUR::SetContrast(int percent) noexcept { contrast_ = percentage(percent); }
void vIMAGECOLOUR::SetSaturation(int percent) noexcept { saturation_ = percentage(percent); }

bool operator==(const vIMAGECOLOUR& a, const vIMAGECOLOUR& b) noexcept
{
    return a.type_ == b.type_ && a.background_ == b.background_ && a.midtone_ == b.midtone_
        && a.foreground_ == b.foreground_ && a.brightness_ == b.brightness_ && a.contrast_ == b.contrast_
        && a.saturation_ == b.saturation_ && a.transparency_ == b.transparency_
        && a.transparency_colour_ == b.transparency_colour_ && a.threshold_ == b.threshold_;
}

} // namespace klv
