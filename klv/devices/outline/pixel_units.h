#pragma once

#include "klv/core/point.h"
#include "klv/devices/device.h"

namespace klv {

/// Makes a device's logical units its pixels, without an origin, for as long as the object lives.
class pixel_units {
public:
    explicit pixel_units(vDEVICE& device) noexcept
        : device_(device)
        , horizontal_(device.LogUnitsPerHorzInch())
        , vertical_(device.LogUnitsPerVertInch())
        , origin_(device.Origin())
    {
        device.LogUnitsPerHorzInch(device.DevUnitsPerHorzInch());
        device.LogUnitsPerVertInch(device.DevUnitsPerVertInch());
        device.Origin(vPOINT());
    }
    ~pixel_units()
    {
        device_.LogUnitsPerHorzInch(horizontal_);
        device_.LogUnitsPerVertInch(vertical_);
        device_.Origin(origin_);
    }
    pixel_units(const pixel_units&) = delete;
    pixel_units& operator=(const pixel_units&) = delete;

private:
    vDEVICE& device_;
    int horizontal_;
    int vertical_;
    vPOINT origin_;
};

} // namespace klv
