#pragma once

#include "klv/gdi/state/dc.h"

#include <span>

namespace klv::gdi {

/// The points in device units: the given ones where the mapping changes nothing, else a shared buffer that
/// stays good until the next call.
std::span<const POINT> to_device_points(const drawing_context& dc, std::span<const POINT> points);
/// The same with one more point in front.
std::span<const POINT> to_device_points(
    const drawing_context& dc, POINT first, std::span<const POINT> points);

} // namespace klv::gdi
