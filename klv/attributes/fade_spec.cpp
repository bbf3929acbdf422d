#include "klv/attributes/fade_spec.h"

#include <algorithm>

namespace klv {

namespace {

int percentage(int value) { return std::clamp(value, 0, 100); }
int level(int value) { return std::clamp(value, 0, 255); }

} // namespace

vFADESPEC::vFADESPEC(vFADETYPE type, int range, int rate, double angle, const vCOLOUR& colour,
    const vSHAPE& shape, vFRAMESHAPE frame, int startLevel, int endLevel) noexcept
    : type_(type)
    , range_(percentage(range))
    , rate_(percentage(rate))
    , angle_(angle)
    , colour_(colour)
    , shape_(shape)
    , frame_(frame)
    , start_level_(startLevel)
    , end_level_(endLevel)
{
}

void vFADESPEC::SetFadeRange(int percent) noexcept { range_ = percentage(percent); }
void vFADESPEC::SetFadeRate(int percent) noexcept { rate_ = percentage(percent); }
void vFADESPEC::SetStartTransLevel(int value) noexcept { start_level_ = level(value); }
void vFADESPEC::SetEndTransLevel(int value) noexcept { end_level_ = level(value); }

bool vFADESPEC::operator==(const vFADESPEC& other) const noexcept
{
    return type_ == other.type_ && range_ == other.range_ && rate_ == other.rate_ && angle_ == other.angle_
        && colour_ == other.colour_ && frame_ == other.frame_ && shape_ == other.shape_
        && start_level_ == other.start_level_ && end_level_ == other.end_level_;
}

} // namespace klv
