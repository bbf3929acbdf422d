#include "klv/gdi/raster/paint_meter.h"

namespace klv::gdi {

paint_meter* paint_meter::active_ = nullptr;

paint_meter::paint_meter() { active_ = this; }

paint_meter::~paint_meter() { active_ = nullptr; }

} // namespace klv::gdi
