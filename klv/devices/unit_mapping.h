#pragma once

#include "klv/base/muldiv.h"
#include "klv/base/types.h"
#include "klv/core/point.h"
#include "klv/devices/outline/coordinates.h"

#include <cstdint>

namespace klv {

/// Logical units to device units along one axis, rounded half away from zero.
struct unit_scale {
    int device = 1;
    int logical = 1;

    std::int64_t to_device(std::int64_t value) const noexcept
    {
        return device == logical ? value : mul_div(value, device, logical);
    }
    std::int64_t to_logical(std::int64_t value) const noexcept
    {
        return device == logical ? value : mul_div(value, logical, device);
    }
};

/// The mapping of a device for the length of one figure.
struct unit_mapping {
    unit_scale x;
    unit_scale y;
    std::int64_t origin_x = 0;
    std::int64_t origin_y = 0;

    POINT operator()(std::int32_t logical_x, std::int32_t logical_y) const noexcept
    {
        return {clamp_coordinate(x.to_device(logical_x + origin_x)),
            clamp_coordinate(y.to_device(logical_y + origin_y))};
    }
};

} // namespace klv
